#pragma once

#include "platform/stack/opcuatypes.h"

#include <QtCore/QString>

/// The text of a stack string, which is UTF-8; what is not valid UTF-8 becomes U+FFFD.
inline QString toQString(const OpcUa_String& text)
{
    return QString::fromUtf8(OpcUa_String_GetRawString(&text), OpcUa_String_StrSize(&text));
}
