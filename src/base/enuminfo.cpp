#include "enuminfo.h"

#include <QtCore/QStringList>

QvelEnumInfo::QvelEnumInfo() = default;
QvelEnumInfo::QvelEnumInfo(const QvelEnumInfo& other) = default;
QvelEnumInfo& QvelEnumInfo::operator=(const QvelEnumInfo& other) = default;
QvelEnumInfo::~QvelEnumInfo() = default;

QString QvelEnumInfo::toString(int value) const
{
    const QString number = QString::number(value, 10);
    const auto named = [&number](const QString& name) {
        return number + QStringLiteral(" (%1)").arg(name);
    };
    if (kind == Enumeration && values.contains(value))
        return named(values.value(value));
    if (kind == EnumerationFlags) {
        QStringList set;
        for (auto it = values.cbegin(); it != values.cend(); ++it) {
            if (it.key() & value)
                set << it.value();
        }
        const QString names = value == 0 ? values.value(0) : set.join(QLatin1String(" | "));
        if (!names.isEmpty())
            return named(names);
    }
    return number;
}
