#pragma once

#include "platform/stack/checkmemory_p.h"

#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/UaString>

#include <QtCore/QByteArrayList>

#include <cstring>

inline void assign(OpcUa_String& target, const QByteArray& text)
{
    checkMemory(UaString(text).copyTo(&target));
}

template <class T>
T* stackArray(int count)
{
    const std::size_t size = std::size_t(count) * sizeof(T);
    return static_cast<T*>(std::memset(OpcUa_Memory_Alloc(size), 0, size));
}

inline void setDiscoveryUrls(OpcUa_ApplicationDescription& server, const QByteArrayList& urls)
{
    server.NoOfDiscoveryUrls = OpcUa_Int32(urls.size());
    server.DiscoveryUrls = stackArray<OpcUa_String>(server.NoOfDiscoveryUrls);
    for (int i = 0; i < urls.size(); ++i)
        assign(server.DiscoveryUrls[i], urls[i]);
}

inline void setTokens(OpcUa_EndpointDescription& endpoint, const QList<OpcUa_UserTokenType>& types)
{
    endpoint.NoOfUserIdentityTokens = OpcUa_Int32(types.size());
    endpoint.UserIdentityTokens = stackArray<OpcUa_UserTokenPolicy>(int(types.size()));
    for (int j = 0; j < types.size(); ++j) {
        OpcUa_UserTokenPolicy& policy = endpoint.UserIdentityTokens[j];
        const QByteArray number = QByteArray::number(j);
        assign(policy.PolicyId, "policy" + number);
        policy.TokenType = types[j];
        assign(policy.IssuedTokenType, "issued" + number);
        assign(policy.IssuerEndpointUrl, "issuer" + number);
        assign(policy.SecurityPolicyUri, "uri" + number);
    }
}

/// An endpoint description that owns its contents.
class Endpoint
{
public:
    Endpoint() { OpcUa_EndpointDescription_Initialize(&value); }
    Endpoint(const QByteArray& server, const QByteArray& url, const QByteArray& policy,
             OpcUa_MessageSecurityMode mode)
        : Endpoint()
    {
        assign(value.Server.ApplicationName.Text, server);
        assign(value.EndpointUrl, url);
        assign(value.SecurityPolicyUri, "http://opcfoundation.org/UA/SecurityPolicy#" + policy);
        value.SecurityMode = mode;
    }
    ~Endpoint() { OpcUa_EndpointDescription_Clear(&value); }
    Endpoint(const Endpoint&) = delete;
    Endpoint& operator=(const Endpoint&) = delete;

    OpcUa_EndpointDescription value;
};

/// A configuration without an empty field.
inline QvelDiscoverySetting fullSetting(int urls = 2, const QList<OpcUa_UserTokenType>& tokens = {
                                                          OpcUa_UserTokenType_UserName,
                                                          OpcUa_UserTokenType_IssuedToken})
{
    Endpoint endpoint("Pumpe Süd", "opc.tcp://plant7:4840", "Basic256",
                      OpcUa_MessageSecurityMode_SignAndEncrypt);
    OpcUa_ApplicationDescription& server = endpoint.value.Server;
    assign(server.ApplicationUri, "urn:plant7:pump");
    assign(server.ProductUri, "urn:pump");
    assign(server.ApplicationName.Locale, "de");
    server.ApplicationType = OpcUa_ApplicationType_ClientAndServer;
    assign(server.GatewayServerUri, "urn:gateway");
    assign(server.DiscoveryProfileUri, "urn:profile");
    QByteArrayList list;
    for (int i = 0; i < urls; ++i)
        list.append("opc.tcp://plant7:" + QByteArray::number(4840 + i));
    setDiscoveryUrls(server, list);
    checkMemory(OpcUa_ByteString_Assign(&endpoint.value.ServerCertificate, "\x30\x00\xff", 3));
    setTokens(endpoint.value, tokens);
    assign(endpoint.value.TransportProfileUri, "urn:transport");
    endpoint.value.SecurityLevel = 200;

    QvelDiscoverySetting setting;
    setting.setEndpointDescription(&endpoint.value);
    setting.setUserTokenType(OpcUa_UserTokenType_Certificate);
    setting.setSessionName("session");
    setting.setUserName("user");
    setting.setPassword("secret");
    setting.setStorePassword(true);
    setting.setCertificateFile("/own.der");
    setting.setPrivateKeyFile("/own.pem");
    return setting;
}
