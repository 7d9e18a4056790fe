#include "uadiscovery.h"
#include "platform/wire/serviceconnection_p.h"

namespace UaClientSdk {

namespace {

// Users paste URLs with blanks around them.
UaString trimmed(const UaString& url)
{
    return UaString(url.bytes().trimmed());
}

template <class Response, class Request, class Element>
UaStatus callService(const ServiceSettings& settings, const UaString& url, Request& request,
                     UaStackTypeArray<Element> Response::*member, UaStackTypeArray<Element>& result)
{
    result.clear();
    if (settings.callTimeout <= 0)
        return OpcUa_BadInvalidArgument;
    UaWire::ServiceConnection connection(settings.callTimeout);
    OpcUa_StatusCode status = connection.open(url.bytes().trimmed());
    if (OpcUa_IsNotGood(status))
        return status;
    Response response;
    status = connection.call(request, response);
    if (!OpcUa_IsBad(status))
        result.swap(response.*member);
    return status;
}

} // namespace

UaStatus UaDiscovery::findServers(const ServiceSettings& settings, const UaString& discoveryUrl,
                                  const SessionSecurityInfo&,
                                  UaStackTypeArray<OpcUa_ApplicationDescription>& servers)
{
    UaWire::FindServersRequest request;
    request.endpointUrl = trimmed(discoveryUrl);
    return callService(settings, discoveryUrl, request, &UaWire::FindServersResponse::servers,
                       servers);
}

UaStatus UaDiscovery::getEndpoints(const ServiceSettings& settings, const UaString& discoveryUrl,
                                   const SessionSecurityInfo&,
                                   UaStackTypeArray<OpcUa_EndpointDescription>& endpoints)
{
    UaWire::GetEndpointsRequest request;
    request.endpointUrl = trimmed(discoveryUrl);
    return callService(settings, discoveryUrl, request, &UaWire::GetEndpointsResponse::endpoints,
                       endpoints);
}

UaStatus UaDiscovery::findServersOnNetwork(const ServiceSettings& settings,
                                           const UaString& discoveryUrl, const SessionSecurityInfo&,
                                           UaStackTypeArray<OpcUa_ServerOnNetwork>& servers)
{
    UaWire::FindServersOnNetworkRequest request;
    return callService(settings, discoveryUrl, request,
                       &UaWire::FindServersOnNetworkResponse::servers, servers);
}

} // namespace UaClientSdk
