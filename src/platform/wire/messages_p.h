#pragma once

/// \file
/// The messages of the discovery services and of the secure channel, with their field lists. They
/// serve both ends of a connection. The numbers are the NodeIds of the binary encodings
/// (OPC 10000-6, annex A).

#include "platform/wire/binarycodec_p.h"

#include "platform/types/uaextensionobject.h"
#include "platform/types/uanodeid.h"

namespace UaWire {

/// OPC 10000-4, 7.33.
struct RequestHeader
{
    UaNodeId authenticationToken; ///< null outside a session
    OpcUa_DateTime timestamp = 0;
    OpcUa_UInt32 requestHandle = 0;
    OpcUa_UInt32 returnDiagnostics = 0;
    UaString auditEntryId;
    OpcUa_UInt32 timeoutHint = 0; ///< milliseconds, 0 for none
    UaExtensionObject additionalHeader;
};

/// OPC 10000-4, 7.34.
struct ResponseHeader
{
    OpcUa_DateTime timestamp = 0;
    OpcUa_UInt32 requestHandle = 0;
    OpcUa_StatusCode serviceResult = 0;
    Owned<OpcUa_DiagnosticInfo> serviceDiagnostics;
    UaStackTypeArray<OpcUa_String> stringTable;
    UaExtensionObject additionalHeader;
};

/// OPC 10000-4, 7.35: the answer to a request that failed.
struct ServiceFault
{
    static constexpr OpcUa_UInt32 encodingId = 397;
    ResponseHeader header;
};

enum class SecurityTokenRequestType : OpcUa_UInt32 { Issue = 0, Renew = 1 };

/// OPC 10000-6, 6.7.4.
struct OpenSecureChannelRequest
{
    static constexpr OpcUa_UInt32 encodingId = 446;
    RequestHeader header;
    OpcUa_UInt32 clientProtocolVersion = 0;
    SecurityTokenRequestType requestType = SecurityTokenRequestType::Issue;
    OpcUa_MessageSecurityMode securityMode = OpcUa_MessageSecurityMode_None;
    QByteArray clientNonce;
    OpcUa_UInt32 requestedLifetime = 0; ///< milliseconds
};

struct ChannelSecurityToken
{
    OpcUa_UInt32 channelId = 0;
    OpcUa_UInt32 tokenId = 0;
    OpcUa_DateTime createdAt = 0;
    OpcUa_UInt32 revisedLifetime = 0; ///< milliseconds
};

struct OpenSecureChannelResponse
{
    static constexpr OpcUa_UInt32 encodingId = 449;
    ResponseHeader header;
    OpcUa_UInt32 serverProtocolVersion = 0;
    ChannelSecurityToken securityToken;
    QByteArray serverNonce;
};

/// Has no response: the server closes the connection.
struct CloseSecureChannelRequest
{
    static constexpr OpcUa_UInt32 encodingId = 452;
    RequestHeader header;
};

/// OPC 10000-4, 5.5.2.
struct FindServersRequest
{
    static constexpr OpcUa_UInt32 encodingId = 422;
    RequestHeader header;
    UaString endpointUrl;
    UaStackTypeArray<OpcUa_String> localeIds;
    UaStackTypeArray<OpcUa_String> serverUris; ///< empty for all servers
};

struct FindServersResponse
{
    static constexpr OpcUa_UInt32 encodingId = 425;
    ResponseHeader header;
    UaStackTypeArray<OpcUa_ApplicationDescription> servers;
};

/// OPC 10000-4, 5.5.3.
struct FindServersOnNetworkRequest
{
    static constexpr OpcUa_UInt32 encodingId = 12208;
    RequestHeader header;
    OpcUa_UInt32 startingRecordId = 0;
    OpcUa_UInt32 maxRecordsToReturn = 0; ///< 0 for no limit
    UaStackTypeArray<OpcUa_String> serverCapabilityFilter;
};

struct FindServersOnNetworkResponse
{
    static constexpr OpcUa_UInt32 encodingId = 12209;
    ResponseHeader header;
    OpcUa_DateTime lastCounterResetTime = 0;
    UaStackTypeArray<OpcUa_ServerOnNetwork> servers;
};

/// OPC 10000-4, 5.5.4.
struct GetEndpointsRequest
{
    static constexpr OpcUa_UInt32 encodingId = 428;
    RequestHeader header;
    UaString endpointUrl;
    UaStackTypeArray<OpcUa_String> localeIds;
    UaStackTypeArray<OpcUa_String> profileUris; ///< empty for all endpoints
};

struct GetEndpointsResponse
{
    static constexpr OpcUa_UInt32 encodingId = 431;
    ResponseHeader header;
    UaStackTypeArray<OpcUa_EndpointDescription> endpoints;
};

/// OPC 10000-6, 7.1.2.3. Sizes are in bytes; 0 stands for no limit.
struct Hello
{
    OpcUa_UInt32 protocolVersion = 0;
    OpcUa_UInt32 receiveBufferSize = 0;
    OpcUa_UInt32 sendBufferSize = 0;
    OpcUa_UInt32 maxMessageSize = 0;
    OpcUa_UInt32 maxChunkCount = 0;
    UaString endpointUrl;
};

/// OPC 10000-6, 7.1.2.4.
struct Acknowledge
{
    OpcUa_UInt32 protocolVersion = 0;
    OpcUa_UInt32 receiveBufferSize = 0;
    OpcUa_UInt32 sendBufferSize = 0;
    OpcUa_UInt32 maxMessageSize = 0;
    OpcUa_UInt32 maxChunkCount = 0;
};

/// OPC 10000-6, 7.1.2.5; also the body of an abort chunk (6.7.3).
struct Error
{
    OpcUa_StatusCode error = 0;
    UaString reason;
};

/// The code of a failure that a peer reports. A failure that claims to be Good is still one.
inline OpcUa_StatusCode asFailure(OpcUa_StatusCode code)
{
    return OpcUa_IsNotGood(code) ? code : OpcUa_BadUnexpectedError;
}

/// The body of a message: the NodeId of its encoding and its fields. It is not moved while it grows
/// to `room` bytes.
template <class Message>
QByteArray encodeMessage(const Message& message, qsizetype room = 0)
{
    QByteArray body;
    body.reserve(room);
    BinaryEncoder encoder(body);
    encoder.typeId(Message::encodingId);
    encoder(message);
    return body;
}

/// Decodes the fields of a Hello, Acknowledge or Error, or of a message after its NodeId, into a
/// fresh value. Bytes after the last field are ignored: a later version may have put them there.
template <class T>
OpcUa_StatusCode decodeFields(QByteArrayView bytes, T& value, const DecoderLimits& limits = {})
{
    BinaryDecoder decoder(bytes, limits);
    decoder(value);
    return decoder.status();
}

/// The NodeId that a body begins with, 0 if there is none; `body` becomes the rest.
inline OpcUa_UInt32 takeTypeId(QByteArrayView& body)
{
    BinaryDecoder decoder(body);
    const OpcUa_UInt32 id = decoder.typeId();
    body = decoder.rest();
    return id;
}

/// What the server says about a failure in its own words; null if it says nothing.
UaString reasonOf(const ResponseHeader& header);

/// Decodes the answer to a request. Not Bad only if it is decoded and answers that request; then it
/// is the service result. A fault, too, leaves its header in the response.
template <class Response>
OpcUa_StatusCode decodeResponse(QByteArrayView body, OpcUa_UInt32 requestHandle, Response& response,
                                const DecoderLimits& limits = {});

} // namespace UaWire

KESTREL_STACK_FIELDS(UaWire::RequestHeader, v(s.authenticationToken...); v(s.timestamp...);
                     v(s.requestHandle...); v(s.returnDiagnostics...); v(s.auditEntryId...);
                     v(s.timeoutHint...); v(s.additionalHeader...);)
KESTREL_STACK_FIELDS(UaWire::ResponseHeader, v(s.timestamp...); v(s.requestHandle...);
                     v(s.serviceResult...); v(s.serviceDiagnostics...); v(s.stringTable...);
                     v(s.additionalHeader...);)
KESTREL_STACK_FIELDS(UaWire::ServiceFault, v(s.header...);)
KESTREL_STACK_FIELDS(UaWire::OpenSecureChannelRequest, v(s.header...);
                     v(s.clientProtocolVersion...); v(s.requestType...); v(s.securityMode...);
                     v(s.clientNonce...); v(s.requestedLifetime...);)
KESTREL_STACK_FIELDS(UaWire::ChannelSecurityToken, v(s.channelId...); v(s.tokenId...);
                     v(s.createdAt...); v(s.revisedLifetime...);)
KESTREL_STACK_FIELDS(UaWire::OpenSecureChannelResponse, v(s.header...);
                     v(s.serverProtocolVersion...); v(s.securityToken...); v(s.serverNonce...);)
KESTREL_STACK_FIELDS(UaWire::CloseSecureChannelRequest, v(s.header...);)
KESTREL_STACK_FIELDS(UaWire::FindServersRequest, v(s.header...); v(s.endpointUrl...);
                     v(s.localeIds...); v(s.serverUris...);)
KESTREL_STACK_FIELDS(UaWire::FindServersResponse, v(s.header...); v(s.servers...);)
KESTREL_STACK_FIELDS(UaWire::FindServersOnNetworkRequest, v(s.header...); v(s.startingRecordId...);
                     v(s.maxRecordsToReturn...); v(s.serverCapabilityFilter...);)
KESTREL_STACK_FIELDS(UaWire::FindServersOnNetworkResponse, v(s.header...);
                     v(s.lastCounterResetTime...); v(s.servers...);)
KESTREL_STACK_FIELDS(UaWire::GetEndpointsRequest, v(s.header...); v(s.endpointUrl...);
                     v(s.localeIds...); v(s.profileUris...);)
KESTREL_STACK_FIELDS(UaWire::GetEndpointsResponse, v(s.header...); v(s.endpoints...);)
KESTREL_STACK_FIELDS(UaWire::Hello, v(s.protocolVersion...); v(s.receiveBufferSize...);
                     v(s.sendBufferSize...); v(s.maxMessageSize...); v(s.maxChunkCount...);
                     v(s.endpointUrl...);)
KESTREL_STACK_FIELDS(UaWire::Acknowledge, v(s.protocolVersion...); v(s.receiveBufferSize...);
                     v(s.sendBufferSize...); v(s.maxMessageSize...); v(s.maxChunkCount...);)
KESTREL_STACK_FIELDS(UaWire::Error, v(s.error...); v(s.reason...);)

template <class Response>
OpcUa_StatusCode UaWire::decodeResponse(QByteArrayView body, OpcUa_UInt32 requestHandle,
                                        Response& response, const DecoderLimits& limits)
{
    switch (takeTypeId(body)) {
    case Response::encodingId: {
        const OpcUa_StatusCode status = decodeFields(body, response, limits);
        if (OpcUa_IsBad(response.header.serviceResult))
            return response.header.serviceResult;
        if (OpcUa_IsNotGood(status))
            return status;
        if (response.header.requestHandle != requestHandle)
            return OpcUa_BadUnknownResponse;
        return response.header.serviceResult;
    }
    case ServiceFault::encodingId: {
        ServiceFault fault;
        const OpcUa_StatusCode status = decodeFields(body, fault, limits);
        response.header = std::move(fault.header);
        return OpcUa_IsGood(status) ? asFailure(response.header.serviceResult) : status;
    }
    default:
        return OpcUa_BadUnknownResponse;
    }
}
