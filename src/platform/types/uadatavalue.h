#pragma once

#include "uadatetime.h"
#include "uastatuscode.h"
#include "uavariant.h"

/// A value with its status and its times (OPC 10000-4, 7.11). Copies share their storage.
class KESTREL_EXPORT UaDataValue
{
public:
    /// No value, Good, no times.
    UaDataValue() = default;
    explicit UaDataValue(const UaVariant& value, UaStatusCode status = {},
                         UaDateTime sourceTimestamp = {}, UaDateTime serverTimestamp = {})
        : m_value(value), m_sourceTimestamp(sourceTimestamp), m_serverTimestamp(serverTimestamp),
          m_status(status)
    {
    }
    explicit UaDataValue(const OpcUa_DataValue& value) { assign(value, UaVariant(value.Value)); }
    /// Takes over what `value` holds, which is empty thereafter.
    void attach(OpcUa_DataValue* value)
    {
        UaVariant variant;
        variant.attach(&value->Value);
        assign(*value, std::move(variant));
        *value = {};
    }

    const UaVariant& value() const { return m_value; }
    void setValue(const UaVariant& value) { m_value = value; }
    UaStatusCode status() const { return m_status; }
    void setStatus(UaStatusCode status) { m_status = status; }
    /// When the source took the value, and when the server got it; null where that is not known.
    UaDateTime sourceTimestamp() const { return m_sourceTimestamp; }
    UaDateTime serverTimestamp() const { return m_serverTimestamp; }
    /// What a timestamp leaves out, in units of 10 ps, 0 to 9999.
    OpcUa_UInt16 sourcePicoseconds() const { return m_sourcePicoseconds; }
    OpcUa_UInt16 serverPicoseconds() const { return m_serverPicoseconds; }
    void setSourceTimestamp(UaDateTime time, OpcUa_UInt16 picoseconds = 0)
    {
        m_sourceTimestamp = time;
        m_sourcePicoseconds = picoseconds;
    }
    void setServerTimestamp(UaDateTime time, OpcUa_UInt16 picoseconds = 0)
    {
        m_serverTimestamp = time;
        m_serverPicoseconds = picoseconds;
    }

    friend bool operator==(const UaDataValue& a, const UaDataValue& b)
    {
        return a.m_value == b.m_value && a.m_status == b.m_status &&
               a.m_sourceTimestamp == b.m_sourceTimestamp &&
               a.m_serverTimestamp == b.m_serverTimestamp &&
               a.m_sourcePicoseconds == b.m_sourcePicoseconds &&
               a.m_serverPicoseconds == b.m_serverPicoseconds;
    }
    friend bool operator!=(const UaDataValue& a, const UaDataValue& b) { return !(a == b); }

private:
    void assign(const OpcUa_DataValue& value, UaVariant&& variant)
    {
        m_value = std::move(variant);
        m_status = value.Status;
        setSourceTimestamp(UaDateTime(value.SourceTimestamp), value.SourcePicoseconds);
        setServerTimestamp(UaDateTime(value.ServerTimestamp), value.ServerPicoseconds);
    }

    UaVariant m_value;
    UaDateTime m_sourceTimestamp;
    UaDateTime m_serverTimestamp;
    UaStatusCode m_status;
    OpcUa_UInt16 m_sourcePicoseconds = 0;
    OpcUa_UInt16 m_serverPicoseconds = 0;
};

Q_DECLARE_METATYPE(UaDataValue)
