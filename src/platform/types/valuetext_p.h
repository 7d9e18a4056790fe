#pragma once

#include "platform/stack/opcuatypes.h"

#include <QtCore/QByteArray>

/// How much of a value its text tells.
enum class ValueText { Bare, Full };

/// The text of one element of a built-in type, whole.
QByteArray elementText(OpcUa_Byte builtInType, const void* element, ValueText form);
/// The text of a whole value; that of an array or matrix is bounded.
QByteArray variantText(const OpcUa_Variant& variant, ValueText form);
