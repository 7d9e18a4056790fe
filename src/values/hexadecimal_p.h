#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QStringView>

#include <algorithm>
#include <optional>

/// The bytes that an even number of hexadecimal digits of either case spells; nothing for any
/// other text. The empty text is no byte.
inline std::optional<QByteArray> bytesFromHex(QStringView digits)
{
    const bool hexadecimal = std::all_of(digits.begin(), digits.end(), [](QChar c) {
        return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
    });
    if (!hexadecimal || digits.size() % 2)
        return std::nullopt;
    return QByteArray::fromHex(digits.toLatin1());
}

/// As bytesFromHex(), after a leading "0x" of either case.
inline std::optional<QByteArray> bytesFromPrefixedHex(QStringView text)
{
    return bytesFromHex(text.startsWith(u"0x", Qt::CaseInsensitive) ? text.mid(2) : text);
}
