#pragma once

#include <QtCore/QByteArray>

#include <algorithm>

/// UTF-8 as a field of a CSV file (RFC 4180): in quotes where it needs them.
inline QByteArray csvField(QByteArray text)
{
    const auto isSpecial = [](char c) { return c == ',' || c == '"' || c == '\r' || c == '\n'; };
    if (std::none_of(text.cbegin(), text.cend(), isSpecial))
        return text;
    return '"' + text.replace('"', "\"\"") + '"';
}
