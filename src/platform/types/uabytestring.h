#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"
#include "uastring.h"

#include <QtCore/QByteArray>
#include <QtCore/QMetaType>

/// A sequence of bytes (OPC 10000-6, 5.2.2.7). Copies share their storage.
class KESTREL_EXPORT UaByteString
{
public:
    /// The null ByteString.
    UaByteString() = default;
    /// A copy of `length` bytes; null for a null pointer or a negative length.
    UaByteString(OpcUa_Int32 length, const OpcUa_Byte* data);
    explicit UaByteString(const QByteArray& bytes);
    explicit UaByteString(const OpcUa_ByteString* value);

    bool isNull() const { return m_bytes.isNull(); }
    OpcUa_Int32 length() const { return OpcUa_Int32(m_bytes.size()); }
    const OpcUa_Byte* data() const
    {
        return reinterpret_cast<const OpcUa_Byte*>(m_bytes.constData());
    }
    const QByteArray& bytes() const { return m_bytes; }
    QByteArray toQByteArray() const { return m_bytes; }
    /// Lower-case hexadecimal digits without a prefix.
    UaString toString() const;
    /// Replaces the initialised or filled `target` by a copy.
    [[nodiscard]] OpcUa_StatusCode copyTo(OpcUa_ByteString* target) const;

    friend bool operator==(const UaByteString& a, const UaByteString& b)
    {
        return a.m_bytes == b.m_bytes;
    }
    friend bool operator!=(const UaByteString& a, const UaByteString& b) { return !(a == b); }

private:
    QByteArray m_bytes;
};

Q_DECLARE_METATYPE(UaByteString)
