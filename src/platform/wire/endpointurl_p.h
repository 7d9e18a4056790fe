#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace UaWire {

/// Where an `opc.tcp://host[:port][/path]` URL leads (OPC 10000-6, 7.2).
struct EndpointAddress
{
    QString host; ///< a name or an address; an IPv6 address without its brackets
    quint16 port = 4840;
};

/// None unless the URL is one of this form: UTF-8, at most 4096 bytes (OPC 10000-6, 7.1.2.3), with
/// a host, and with a port of 1 to 65535 if there is one.
std::optional<EndpointAddress> parseEndpointUrl(const QByteArray& url);

} // namespace UaWire
