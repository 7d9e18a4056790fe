#pragma once

#include "platform/stack/opcuatypes.h"

class UaString;
class UaVariant;

/// Reads a text as a scalar of a type. Good, BadTypeMismatch when the whole text is not of that
/// type (or the type cannot be read), or BadOutOfRange; `result` is set only when Good.
OpcUa_StatusCode parseValue(OpcUa_BuiltInType type, const UaString& text, UaVariant& result);
