#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"
#include "../types/uastacktypearray.h"
#include "../types/uastatuscode.h"
#include "../types/uastring.h"

namespace UaClientSdk {

/// Settings of one service call.
class ServiceSettings
{
public:
    /// Milliseconds for the whole call, name look-up, connect and close included. Must be positive.
    OpcUa_Int32 callTimeout = 10000;
};

/// How the client secures a connection. Discovery services are called without security
/// (OPC 10000-4, 5.5.1), so there is nothing to set yet.
class SessionSecurityInfo
{
};

/// The discovery services of OPC 10000-4, 5.5, over OPC UA TCP with SecurityPolicy None.
///
/// Each call connects, asks and closes; it blocks its thread for the call time-out at most and
/// may be made on any thread. It connects by whichever of the host's addresses answers first.
/// While it looks up the host and connects it runs an event loop that leaves out user input; then
/// it only waits. A call that takes longer gives BadTimeout; QThread::requestInterruption() ends
/// one with BadShutdown. What a server sends is bounded in size, number and depth.
///
/// What the server reports, as an Error message, a ServiceFault or a service result, is the status
/// of the call; an Uncertain service result comes with what was found. Any other status that is
/// not Good leaves the result empty: BadTcpEndpointUrlInvalid (the URL is not
/// `opc.tcp://host[:port][/path]`; blanks around it do not count), BadConnectionRejected (nobody
/// listens), BadConnectionClosed, BadCommunicationError (no such host, no way to it),
/// BadResourceUnavailable (too many look-ups of host names are stuck), BadUnknownResponse (an
/// answer to something else), BadDecodingError, BadEncodingLimitsExceeded, BadResponseTooLarge and
/// BadInvalidArgument (a time-out that is not positive).
class KESTREL_EXPORT UaDiscovery
{
public:
    static UaStatus findServers(const ServiceSettings& settings, const UaString& discoveryUrl,
                                const SessionSecurityInfo& security,
                                UaStackTypeArray<OpcUa_ApplicationDescription>& servers);
    static UaStatus getEndpoints(const ServiceSettings& settings, const UaString& discoveryUrl,
                                 const SessionSecurityInfo& security,
                                 UaStackTypeArray<OpcUa_EndpointDescription>& endpoints);
    /// All records that the server knows, from its first one on.
    static UaStatus findServersOnNetwork(const ServiceSettings& settings,
                                         const UaString& discoveryUrl,
                                         const SessionSecurityInfo& security,
                                         UaStackTypeArray<OpcUa_ServerOnNetwork>& servers);
};

} // namespace UaClientSdk
