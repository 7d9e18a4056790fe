#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"
#include "uastring.h"

#include <QtCore/QDateTime>
#include <QtCore/QMetaType>

/// A point in time with a resolution of 100 ns (OPC 10000-6, 5.2.2.5).
class KESTREL_EXPORT UaDateTime
{
public:
    /// The null DateTime: 1601-01-01 00:00 UTC.
    UaDateTime() = default;
    /// `ticks` of 100 ns since 1601-01-01 00:00 UTC.
    explicit UaDateTime(OpcUa_DateTime ticks) : m_ticks(ticks) {}
    /// The same moment; null for an invalid `time`. One out of range becomes the nearest in range.
    explicit UaDateTime(const QDateTime& time);

    static UaDateTime now();
    /// Reads ISO 8601: a date, optionally a time with up to 100 ns and a zone; no zone is UTC. A
    /// text that is none gives the null DateTime and a false `ok`, which may be null.
    static UaDateTime fromString(const UaString& text, bool* ok = nullptr);

    OpcUa_DateTime ticks() const { return m_ticks; }
    bool isNull() const { return m_ticks == 0; }
    /// The same moment in UTC, in whole milliseconds; invalid for the null DateTime.
    QDateTime toQDateTime() const;
    /// ISO 8601 in UTC, such as "2024-02-29T13:14:15.1234567Z", without needless zeros.
    UaString toString() const;
    /// Whole days from here to `other`; negative when it lies earlier.
    OpcUa_Int32 daysTo(const UaDateTime& other) const;

    friend bool operator==(const UaDateTime& a, const UaDateTime& b)
    {
        return a.m_ticks == b.m_ticks;
    }
    friend bool operator!=(const UaDateTime& a, const UaDateTime& b) { return !(a == b); }
    friend bool operator<(const UaDateTime& a, const UaDateTime& b)
    {
        return a.m_ticks < b.m_ticks;
    }
    friend bool operator>(const UaDateTime& a, const UaDateTime& b) { return b < a; }
    friend bool operator<=(const UaDateTime& a, const UaDateTime& b) { return !(b < a); }
    friend bool operator>=(const UaDateTime& a, const UaDateTime& b) { return !(a < b); }

private:
    OpcUa_DateTime m_ticks = 0;
};

Q_DECLARE_METATYPE(UaDateTime)
