#pragma once

#include "platform/stack/opcuatypes.h"
#include "platform/types/uastacktypearray.h"

#include <QtCore/QByteArray>

#include <vector>

/// What one server of the plant says of itself.
struct ServerFacts
{
    UaStackTypeArray<OpcUa_ApplicationDescription> servers; ///< for FindServers
    UaStackTypeArray<OpcUa_EndpointDescription> endpoints;  ///< for GetEndpoints
};

/// Number of servers, the discovery server included.
int plantSize();
/// The name of a server, for messages.
QByteArray plantServerName(int index);
/// The facts of all servers, given the port that each listens on. The first is the discovery
/// server, which knows all of them; each other one knows itself. Makes the certificates, which
/// takes a moment. Empty when one cannot be made.
std::vector<ServerFacts> describePlant(const std::vector<quint16>& ports);
