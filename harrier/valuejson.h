#pragma once

#include <Kestrel/UaDateTime>
#include <Kestrel/UaVariant>

#include <QtCore/QByteArray>
#include <QtCore/QJsonValue>
#include <QtCore/QString>

#include <optional>

/// A text of JSON, which may be a single value; none when it is no JSON.
std::optional<QJsonValue> parseJson(const QByteArray& text);

/// Whether JSON names its type itself: {"Type": 6, "Body": -5}.
bool namesType(const QJsonValue& json);

/// The type that JSON suggests where nothing else tells it: Boolean, String, Double, or of the
/// integers the smallest of Int32 and Int64; the type of its elements for a list and for a matrix.
/// Null where it suggests none.
OpcUa_BuiltInType suggestedType(const QJsonValue& json);

/// Takes a value of a type from the bare Body of the reversible JSON (OPC 10000-6, 5.4.2.17), or
/// from an object with Body and Dimensions for a matrix; with type Null, from one that names its
/// type. Good, BadTypeMismatch when the JSON is none of this type or not of this ValueRank, or
/// BadOutOfRange; `value` is unchanged unless Good.
OpcUa_StatusCode valueFromJson(const QJsonValue& json, OpcUa_BuiltInType type,
                               OpcUa_Int32 valueRank, UaVariant& value);

/// An object of JSON on one line, with its fields in the order in which they are added.
class JsonLine
{
public:
    explicit JsonLine(const char* service);
    /// Null for a null text.
    JsonLine& add(const char* key, const UaString& text);
    JsonLine& add(const char* key, const QString& text) { return add(key, UaString(text)); }
    JsonLine& add(const char* key, bool value) { return addRaw(key, value ? "true" : "false"); }
    /// In its reversible form; null for the empty value.
    JsonLine& add(const char* key, const UaVariant& value) { return addRaw(key, value.toJson()); }
    /// ISO 8601; null for the null time.
    JsonLine& add(const char* key, const UaDateTime& time);
    /// A list of JSON texts; null for an empty one.
    JsonLine& add(const char* key, const QByteArrayList& values);
    /// With its line end.
    QByteArray text() const { return m_text + "}\n"; }

    static QByteArray quoted(const UaString& text);

private:
    JsonLine& addRaw(const char* key, const QByteArray& json);
    QByteArray m_text;
};
