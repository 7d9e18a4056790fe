#include "endpointurl_p.h"

#include "platform/types/utf8text_p.h"

#include <QtCore/QRegularExpression>
#include <QtNetwork/QHostAddress>

namespace UaWire {

std::optional<EndpointAddress> parseEndpointUrl(const QByteArray& url)
{
    constexpr qsizetype maxUrlLength = 4096;
    static const QRegularExpression form(
        QStringLiteral(R"(\A(?i:opc\.tcp)://(?:\[([0-9A-Fa-f:.]+(?:%[^\]\s/]+)?)\]|)"
                       R"(([^\x00-\x20\x7f\x{fffd}\[\]@:/?#\\]+)))"
                       R"((?::([0-9]{1,5}))?(?:[/?#][^\x00-\x1f\x7f\x{fffd}]*)?\z)"));
    if (url.size() > maxUrlLength)
        return {};
    const QRegularExpressionMatch match = form.match(textFromUtf8(url));
    if (!match.hasMatch())
        return {};

    EndpointAddress address;
    address.host = match.captured(2);
    if (address.host.isEmpty()) {
        address.host = match.captured(1).replace(QLatin1String("%25"), QLatin1String("%"));
        if (QHostAddress(address.host).protocol() != QAbstractSocket::IPv6Protocol)
            return {};
    }
    if (match.hasCaptured(3)) {
        bool ok = false;
        address.port = match.captured(3).toUShort(&ok);
        if (!ok || address.port == 0)
            return {};
    }
    return address;
}

} // namespace UaWire
