#pragma once

#include <QtCore/QJsonObject>

struct OpcUa_EndpointDescription;
class QvelDiscoveryModel;
class QvelDiscoveryNode;

/// An endpoint description with the names of OPC 10000-4, 7.14, in lower camel case. Enumerations
/// are numbers, the certificate is lower-case hexadecimal, an absent text is an empty one.
QJsonObject endpointToJson(const OpcUa_EndpointDescription& endpoint);

/// A node of the discovery tree and everything below it: "type", "name", where it has one "url",
/// for an endpoint its description, and "children".
QJsonObject nodeToJson(QvelDiscoveryModel& model, QvelDiscoveryNode* node);
