#pragma once

#include <QtCore/QString>

/// A text of the command line, which is the same in every language: scripts read it.
inline QString english(const char* text)
{
    return QString::fromUtf8(text);
}
