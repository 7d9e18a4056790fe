#pragma once

#include "../kestrelexport.h"

#include <QtCore/QMap>
#include <QtCore/QMetaType>
#include <QtCore/QString>

/// Tells that integers are members of an enumeration or sets of flag bits, and how they are named
/// (OPC 10000-3, 8.40 and 8.41). A value; copies share the names. Any thread.
class KESTREL_EXPORT QvelEnumInfo
{
public:
    enum Kind {
        NoEnumeration = 0,   ///< plain numbers
        Enumeration = 1,     ///< each number is one member
        EnumerationFlags = 2 ///< each number is a set of bits
    };

    /// No enumeration, no names.
    QvelEnumInfo();
    QvelEnumInfo(const QvelEnumInfo& other);
    QvelEnumInfo& operator=(const QvelEnumInfo& other);
    ~QvelEnumInfo();

    /// The number, followed by its name or names in parentheses: "3 (Running)",
    /// "5 (Read | Execute)". A bit mask is named as soon as it has one bit in common with `value`.
    QString toString(int value) const;

    friend bool operator==(const QvelEnumInfo& a, const QvelEnumInfo& b)
    {
        return a.kind == b.kind && a.values == b.values;
    }
    friend bool operator!=(const QvelEnumInfo& a, const QvelEnumInfo& b) { return !(a == b); }

    int kind = NoEnumeration;  ///< a Kind; any other number counts as NoEnumeration
    QMap<int, QString> values; ///< from number, or bit mask, to name
};

Q_DECLARE_METATYPE(QvelEnumInfo)
