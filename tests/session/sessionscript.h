#pragma once

#include "session/sessionmessages_p.h"
#include "session/sessionuser.h"
#include "support/hostileserver.h"
#include "support/identity.h"

#include <Kestrel/OpcUaStatusCodes>

#include "platform/stack/checkmemory_p.h"

using namespace UaWire;

/// \file
/// A server for sessions that does all right but what a test has it do.

inline constexpr char policyUri[] = "http://opcfoundation.org/UA/SecurityPolicy#Basic256Sha256";

template <class T>
void assign(T& field, const QByteArray& bytes)
{
    if constexpr (std::is_same_v<T, OpcUa_String>)
        checkMemory(OpcUa_String_Assign(&field, bytes.constData(), OpcUa_Int32(bytes.size())));
    else
        checkMemory(OpcUa_ByteString_Assign(&field, bytes.constData(), OpcUa_Int32(bytes.size())));
}

inline std::atomic<int> released{0}; // times that continuation points were given back

/// The server's end of a connection.
class Server
{
public:
    /// What a row has the server do: false where a good answer is to follow.
    using Fault = std::function<bool(Server&, const Message&, OpcUa_UInt32 type)>;

    Server(ServerPeer& p, const Identity& identity, OpcUa_UInt32 limit, const Fault& fault)
        : peer(p), m_identity(identity), m_limit(limit), m_fault(fault)
    {
    }

    void serve()
    {
        for (std::optional<Message> m; !ends && (m = peer.receive());) {
            QByteArrayView body = m->body;
            const OpcUa_UInt32 type = takeTypeId(body);
            if (m->type == MessageType::CloseSecureChannel)
                return;
            released += (type == BrowseNextRequest::encodingId &&
                         decoded<BrowseNextRequest>(*m).releaseContinuationPoints) ||
                        (type == HistoryReadRequest::encodingId &&
                         decoded<HistoryReadRequest>(*m).releaseContinuationPoints);
            if (type == PublishRequest::encodingId && handle == 0) {
                kept.push_back(std::move(*m)); // until there is an item
                continue;
            }
            if (m_fault && m_fault(*this, *m, type))
                continue;
            if (type == OpenSecureChannelRequest::encodingId)
                peer.giveToken(*m);
            serveOneOf<GetEndpointsRequest, CreateSessionRequest, ActivateSessionRequest,
                       ReadRequest, BrowseRequest, BrowseNextRequest, HistoryReadRequest,
                       CreateSubscriptionRequest, CreateMonitoredItemsRequest>(*m, type);
            if (type == CreateMonitoredItemsRequest::encodingId)
                for (const Message& publish : std::exchange(kept, {}))
                    m_fault(*this, publish, PublishRequest::encodingId);
        }
    }
    template <class Response>
    void reply(const Message& m, Response response)
    {
        peer.answer(m, response);
    }

    GetEndpointsResponse good(const GetEndpointsRequest&)
    {
        GetEndpointsResponse response;
        response.endpoints = endpoints();
        return response;
    }
    CreateSessionResponse good(const CreateSessionRequest& request)
    {
        const SecurityPolicy& policy = *securityPolicy(policyUri);
        CreateSessionResponse response;
        response.sessionId = UaNodeId(1);
        response.authenticationToken = UaNodeId(2);
        response.serverNonce = QByteArray(32, 'n');
        response.serverEndpoints = endpoints();
        response.serverCertificate = m_identity.certificate;
        response.serverSignature = {
            UaString(policy.signatureUri),
            sign(policy, m_identity.key.get(), request.clientCertificate + request.clientNonce)};
        return response;
    }
    ActivateSessionResponse good(const ActivateSessionRequest&)
    {
        ActivateSessionResponse response;
        response.serverNonce = QByteArray(32, 'm');
        return response;
    }
    // The value of an attribute is its number; the limits are m_limit.
    ReadResponse good(const ReadRequest& request)
    {
        ReadResponse response;
        static_cast<void>(response.results.create(OpcUa_UInt32(request.items.size())));
        for (OpcUa_UInt32 i = 0; i < response.results.length(); ++i) {
            OpcUa_Variant& value = response.results[i].Value;
            value.Datatype = OpcUaType_UInt32;
            value.Value.UInt32 = request.items.size() > 1 ? m_limit : request.items[i].attributeId;
        }
        return response;
    }
    // New references without an end, with the same continuation point.
    BrowseResponse good(const BrowseRequest&)
    {
        BrowseResponse response;
        response.results.resize(1);
        response.results[0].continuationPoint = "more";
        for (int i = 0; i < 10'000; ++i) {
            response.results[0].references.emplaceBack();
            response.results[0].references.last().nodeId =
                UaExpandedNodeId(UaNodeId(m_lastNode++), UaString(), 0);
        }
        return response;
    }
    BrowseNextResponse good(const BrowseNextRequest&)
    {
        return {{}, good(BrowseRequest()).results, {}};
    }
    HistoryReadResponse good(const HistoryReadRequest&)
    {
        HistoryData data;
        static_cast<void>(data.dataValues.create(100));
        HistoryReadResponse response;
        response.results = {{{}, "more" + QByteArray::number(m_lastNode++), encodeExtension(data)}};
        return response;
    }
    CreateSubscriptionResponse good(const CreateSubscriptionRequest& request)
    {
        CreateSubscriptionResponse response;
        response.subscriptionId = 1;
        response.revisedPublishingInterval = request.parameters.publishingInterval;
        response.revisedMaxKeepAliveCount = request.parameters.maxKeepAliveCount;
        return response;
    }
    CreateMonitoredItemsResponse good(const CreateMonitoredItemsRequest& request)
    {
        CreateMonitoredItemsResponse response;
        handle = request.itemsToCreate[0].requestedParameters.clientHandle;
        response.results.resize(request.itemsToCreate.size());
        response.results[0].monitoredItemId = 1;
        return response;
    }

    /// A notification whose value is its number; none without a value.
    PublishResponse notification(OpcUa_UInt32 number, bool hasValue = true)
    {
        PublishResponse response;
        response.subscriptionId = 1;
        response.notificationMessage.sequenceNumber = number;
        UaVariant value;
        value.setUInt32(number);
        if (hasValue)
            response.notificationMessage.notificationData = {
                encodeExtension(DataChangeNotification{{{handle, UaDataValue(value)}}, {}})};
        return response;
    }
    static ServiceFault faultOf(OpcUa_StatusCode status)
    {
        ServiceFault fault;
        fault.header.serviceResult = status;
        return fault;
    }

    ServerPeer& peer;
    bool ends = false;       // closes the connection
    OpcUa_UInt32 handle = 0; // of the item that was monitored last
    OpcUa_UInt32 count = 0;  // for the rows
    qsizetype acknowledged = 0;
    std::vector<Message> kept;

private:
    template <class Request>
    bool serveAs(const Message& m, OpcUa_UInt32 type)
    {
        if (type != Request::encodingId)
            return false;
        reply(m, good(decoded<Request>(m)));
        return true;
    }
    template <class... Request>
    void serveOneOf(const Message& m, OpcUa_UInt32 type)
    {
        static_cast<void>((serveAs<Request>(m, type) || ...));
    }
    UaStackTypeArray<OpcUa_EndpointDescription> endpoints() const
    {
        UaStackTypeArray<OpcUa_EndpointDescription> list;
        static_cast<void>(list.create(2));
        for (OpcUa_EndpointDescription& e : list) {
            const bool isSecure = &e != list.begin();
            assign(e.EndpointUrl, "opc.tcp://127.0.0.1");
            assign(e.Server.ApplicationUri, "urn:plant");
            assign(e.ServerCertificate, m_identity.certificate);
            assign(e.SecurityPolicyUri, isSecure ? policyUri : securityPolicyNone);
            e.SecurityMode = isSecure ? OpcUa_MessageSecurityMode_SignAndEncrypt
                                      : OpcUa_MessageSecurityMode_None;
            UaStackTypeArray<OpcUa_UserTokenPolicy> tokens;
            static_cast<void>(tokens.create(1));
            e.NoOfUserIdentityTokens = 1;
            e.UserIdentityTokens = tokens.detach();
        }
        return list;
    }

    const Identity& m_identity;
    const OpcUa_UInt32 m_limit;
    const Fault m_fault;
    OpcUa_UInt32 m_lastNode = 1;
};

/// Instead of the answer to one kind of request: a function of the server, the message and what it
/// asks for.
template <class Request, class Function>
Server::Fault on(Function function)
{
    return [function](Server& s, const Message& m, OpcUa_UInt32 type) {
        if (type != Request::encodingId)
            return false;
        const auto request = decoded<Request>(m);
        function(s, m, request);
        return true;
    };
}
/// A function that refuses.
inline auto refusal(OpcUa_StatusCode status)
{
    return [status](auto& s, auto& m, const auto&) { s.reply(m, Server::faultOf(status)); };
}
/// Changes a good answer.
template <class Request, class Change>
Server::Fault altered(Change change)
{
    return on<Request>([change](auto& s, auto& m, auto& request) {
        auto response = s.good(request);
        change(response);
        s.peer.answer(m, response);
    });
}
/// Instead of the answer to what the host reads; the server's tables have been read.
template <class Function>
Server::Fault onCall(Function function)
{
    return on<ReadRequest>([function](auto& s, auto& m, auto& request) {
        if (request.items.size() == 10)
            s.reply(m, s.good(request));
        else
            function(s, m, request);
    });
}
