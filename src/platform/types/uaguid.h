#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"
#include "uastring.h"

#include <QtCore/QMetaType>
#include <QtCore/QUuid>

/// A 16-byte globally unique identifier (OPC 10000-6, 5.1.3 and 5.2.2.6).
class KESTREL_EXPORT UaGuid
{
public:
    /// The null Guid.
    UaGuid() = default;
    explicit UaGuid(const OpcUa_Guid& value) : m_guid(value) {}
    explicit UaGuid(const QUuid& uuid);

    /// Reads 8-4-4-4-12 hexadecimal digits of either case, with or without braces. Good, or
    /// BadTypeMismatch with this Guid unchanged.
    [[nodiscard]] OpcUa_StatusCode fromString(const UaString& text);
    /// Braced, lower case.
    UaString toString() const;
    QUuid toQUuid() const;
    bool isNull() const { return *this == UaGuid(); }
    operator const OpcUa_Guid&() const { return m_guid; }

    friend KESTREL_EXPORT bool operator==(const UaGuid& a, const UaGuid& b);
    friend bool operator!=(const UaGuid& a, const UaGuid& b) { return !(a == b); }

private:
    OpcUa_Guid m_guid = {};
};

Q_DECLARE_METATYPE(UaGuid)
