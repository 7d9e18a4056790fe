#include "platform/network/uanetworkbrowser.h"

#include "platform/stack/opcuastatuscodes.h"

UaStatus UaNetworkBrowser::browse(const UaString&, QList<UaNetworkBrowseResult>& results)
{
    results.clear();
    return OpcUa_BadNotSupported;
}
