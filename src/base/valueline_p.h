#pragma once

#include "platform/stack/opcuatypes.h"

#include <QtCore/QString>

#include <optional>

class UaVariant;

/// \file
/// A scalar as one line of text that can be read again, see QvelWidgetBase::valueText().

QString valueLine(const UaVariant& scalar);
/// Nothing for a text that is no value of the type. The empty text is the type's null value.
std::optional<UaVariant> valueOfLine(OpcUa_BuiltInType type, const QString& line);

/// As valueLine(), for a value of any type and shape. The empty value is the empty text.
QString jsonLine(const UaVariant& value);
std::optional<UaVariant> valueOfJsonLine(const QString& line);
