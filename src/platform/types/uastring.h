#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"

#include <QtCore/QByteArray>
#include <QtCore/QMetaType>
#include <QtCore/QString>

/// A UTF-8 text (OPC 10000-6, 5.2.2.4). Copies share their storage.
class KESTREL_EXPORT UaString
{
public:
    /// The null String.
    UaString() = default;
    /// A copy of a NUL-terminated text; null for a null pointer.
    UaString(const char* utf8);
    explicit UaString(const QByteArray& utf8);
    /// The text in UTF-8; null for a null one.
    explicit UaString(const QString& text);
    /// A copy of a stack string; null for a null pointer.
    explicit UaString(const OpcUa_String* value);

    bool isNull() const { return m_utf8.isNull(); }
    bool isEmpty() const { return m_utf8.isEmpty(); }
    /// Number of bytes.
    OpcUa_Int32 size() const { return OpcUa_Int32(m_utf8.size()); }
    /// NUL-terminated, never null, valid as long as this object is unchanged.
    const char* toUtf8() const { return m_utf8.constData(); }
    const QByteArray& bytes() const { return m_utf8; }
    /// The text, a U+FEFF at its beginning included. What is not UTF-8 becomes U+FFFD.
    QString toQString() const;
    /// Replaces the initialised or filled `target` by a copy.
    [[nodiscard]] OpcUa_StatusCode copyTo(OpcUa_String* target) const;

    /// The null String equals the empty one.
    friend bool operator==(const UaString& a, const UaString& b) { return a.m_utf8 == b.m_utf8; }
    friend bool operator!=(const UaString& a, const UaString& b) { return !(a == b); }

private:
    QByteArray m_utf8;
};

Q_DECLARE_METATYPE(UaString)
