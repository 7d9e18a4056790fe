#pragma once

#include "platform/wire/messages_p.h"

#include <QtCore/QByteArrayList>

/// Values that fill every field of the discovery messages.
namespace Samples {

inline void assign(OpcUa_String& target, const QByteArray& bytes)
{
    OpcUa_String_Assign(&target, bytes.constData(), OpcUa_Int32(bytes.size()));
}

inline void assign(OpcUa_Int32& count, OpcUa_String*& elements, const QByteArrayList& texts)
{
    UaStackTypeArray<OpcUa_String> array;
    array.resize(OpcUa_UInt32(texts.size()));
    for (qsizetype i = 0; i < texts.size(); ++i)
        assign(array[OpcUa_UInt32(i)], texts[i]);
    count = OpcUa_Int32(texts.size());
    elements =
        static_cast<OpcUa_String*>(OpcUa_Memory_Alloc(sizeof(OpcUa_String) * array.length()));
    OpcUa_Memory_MemCpy(elements, array.data(), sizeof(OpcUa_String) * array.length());
    // The texts belong to the new block.
    for (OpcUa_String& text : array)
        text = {};
}

inline void fill(OpcUa_ApplicationDescription& server)
{
    assign(server.ApplicationUri, "urn:plant:server");
    assign(server.ProductUri, "urn:kestrel:test");
    assign(server.ApplicationName.Locale, "de");
    assign(server.ApplicationName.Text, "K\xc3\xbchlung");
    server.ApplicationType = OpcUa_ApplicationType_ClientAndServer;
    assign(server.GatewayServerUri, "");
    assign(server.DiscoveryProfileUri, "urn:profile");
    assign(server.NoOfDiscoveryUrls, server.DiscoveryUrls,
           {"opc.tcp://plant:4840", "", "opc.https://plant"});
}

inline void fill(OpcUa_EndpointDescription& endpoint)
{
    assign(endpoint.EndpointUrl, "opc.tcp://plant:4840");
    fill(endpoint.Server);
    OpcUa_ByteString_Assign(&endpoint.ServerCertificate, "\x30\x82\x00\xff", 4);
    endpoint.SecurityMode = OpcUa_MessageSecurityMode_SignAndEncrypt;
    assign(endpoint.SecurityPolicyUri, QByteArray("nul\0 and invalid \xff\xfe", 18));
    endpoint.UserIdentityTokens =
        static_cast<OpcUa_UserTokenPolicy*>(OpcUa_Memory_Alloc(2 * sizeof(OpcUa_UserTokenPolicy)));
    endpoint.NoOfUserIdentityTokens = 2;
    for (int i = 0; i < 2; ++i) {
        OpcUa_UserTokenPolicy& token = endpoint.UserIdentityTokens[i];
        OpcUa_UserTokenPolicy_Initialize(&token);
        assign(token.PolicyId, i ? "name" : "anonymous");
        token.TokenType = i ? OpcUa_UserTokenType_UserName : OpcUa_UserTokenType_Anonymous;
        assign(token.SecurityPolicyUri, "urn:policy");
    }
    assign(endpoint.TransportProfileUri, "urn:transport");
    endpoint.SecurityLevel = 200;
}

inline void fill(OpcUa_ServerOnNetwork& server)
{
    server.RecordId = 0xfffffffe;
    assign(server.ServerName, "Pump");
    assign(server.DiscoveryUrl, "opc.tcp://pump");
    assign(server.NoOfServerCapabilities, server.ServerCapabilities, {"DA", "LDS"});
}

template <class T>
UaStackTypeArray<T> array(OpcUa_UInt32 count)
{
    UaStackTypeArray<T> result;
    result.resize(count);
    for (T& element : result)
        fill(element);
    return result;
}

} // namespace Samples
