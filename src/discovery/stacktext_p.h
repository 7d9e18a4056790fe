#pragma once

#include "platform/stack/opcuatypes.h"
#include "platform/types/utf8text_p.h"

/// The text of a stack string, which is UTF-8; what is not valid UTF-8 becomes U+FFFD.
inline QString toQString(const OpcUa_String& text)
{
    return textFromUtf8({OpcUa_String_GetRawString(&text), qsizetype(OpcUa_String_StrSize(&text))});
}
