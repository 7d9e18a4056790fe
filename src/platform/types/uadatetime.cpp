#include "uadatetime.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QtNumeric>

#include <limits>

namespace {

constexpr qint64 ticksPerSecond = 10'000'000;
constexpr qint64 secondsPerDay = 86'400;
constexpr qint64 ticksPerMillisecond = 10'000;
// Milliseconds from 1601-01-01, which is tick 0, to 1970-01-01, which is Qt's 0.
constexpr qint64 unixEpoch = 11'644'473'600'000;

// The Julian day of 1601-01-01.
constexpr qint64 firstDay = 2'305'814;

// Rounds towards the past, so that the remainder is never negative.
qint64 floorDivide(qint64 value, qint64 divisor)
{
    const qint64 quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

QByteArray padded(qint64 number, int width)
{
    return QByteArray::number(number).rightJustified(width, '0');
}

} // namespace

UaDateTime UaDateTime::now()
{
    return UaDateTime(QDateTime::currentDateTimeUtc());
}

UaDateTime::UaDateTime(const QDateTime& time)
{
    if (!time.isValid())
        return;
    using Limits = std::numeric_limits<qint64>;
    const qint64 milliseconds = time.toMSecsSinceEpoch();
    qint64 ticks = 0;
    if (qAddOverflow(milliseconds, unixEpoch, &ticks) ||
        qMulOverflow(ticks, ticksPerMillisecond, &ticks))
        ticks = milliseconds < 0 ? Limits::min() : Limits::max();
    m_ticks = ticks;
}

QDateTime UaDateTime::toQDateTime() const
{
    if (isNull())
        return QDateTime();
    return QDateTime::fromMSecsSinceEpoch(floorDivide(m_ticks, ticksPerMillisecond) - unixEpoch,
                                          Qt::UTC);
}

UaString UaDateTime::toString() const
{
    const qint64 seconds = floorDivide(m_ticks, ticksPerSecond);
    // Not by a product, which does not fit in the first second of all.
    const qint64 remainder = m_ticks % ticksPerSecond;
    const qint64 fraction = remainder < 0 ? remainder + ticksPerSecond : remainder;
    const qint64 days = floorDivide(seconds, secondsPerDay);
    const qint64 second = seconds - days * secondsPerDay;
    int year = 0, month = 0, day = 0;
    QDate::fromJulianDay(firstDay + days).getDate(&year, &month, &day);

    QByteArray text = (year < 0 ? "-" : "") + padded(qAbs(year), 4);
    text += '-' + padded(month, 2) + '-' + padded(day, 2);
    text += 'T' + padded(second / 3600, 2) + ':' + padded(second / 60 % 60, 2) + ':' +
            padded(second % 60, 2);
    if (fraction) {
        text += '.' + padded(fraction, 7);
        while (text.endsWith('0'))
            text.chop(1);
    }
    return UaString(text + 'Z');
}

UaDateTime UaDateTime::fromString(const UaString& text, bool* ok)
{
    static const QRegularExpression pattern(
        QStringLiteral("\\A\\s*([+-]?\\d{4,5})-(\\d\\d)-(\\d\\d)"
                       "(?:[Tt ](\\d\\d):(\\d\\d)(?::(\\d\\d)(?:[.,](\\d{1,7})\\d{0,5})?)?"
                       "\\s*([Zz]|[+-]\\d\\d:?\\d\\d)?)?\\s*\\z"));
    if (ok)
        *ok = false;
    constexpr int longest = 64;
    if (text.size() > longest)
        return UaDateTime();
    const auto match = pattern.match(text.toQString());
    if (!match.hasMatch())
        return UaDateTime();
    const auto number = [&match](int group) { return match.capturedView(group).toInt(); };

    const QDate date(number(1), number(2), number(3));
    const int hour = number(4), minute = number(5), second = number(6);
    if (!date.isValid() || hour > 23 || minute > 59 || second > 59)
        return UaDateTime();
    qint64 seconds =
        (date.toJulianDay() - firstDay) * secondsPerDay + hour * 3600 + minute * 60 + second;
    const QString zone = match.captured(8).remove(u':');
    if (zone.size() == 5) {
        const int hours = QStringView(zone).mid(1, 2).toInt();
        const int minutes = QStringView(zone).mid(3, 2).toInt();
        if (hours > 23 || minutes > 59)
            return UaDateTime();
        const int offset = hours * 3600 + minutes * 60;
        seconds += zone.startsWith(u'-') ? offset : -offset;
    }
    const qint64 fraction = match.captured(7).leftJustified(7, u'0').toInt();
    qint64 ticks = 0;
    // A negative second count plus its fraction may fit although the product alone does not.
    const qint64 carry = seconds < 0 ? ticksPerSecond : 0;
    if (qMulOverflow(seconds + (carry ? 1 : 0), ticksPerSecond, &ticks) ||
        qAddOverflow(ticks, fraction - carry, &ticks))
        return UaDateTime();
    if (ok)
        *ok = true;
    return UaDateTime(ticks);
}

OpcUa_Int32 UaDateTime::daysTo(const UaDateTime& other) const
{
    constexpr qint64 ticksPerDay = ticksPerSecond * secondsPerDay;
    // Each side apart: their difference may not fit.
    const qint64 days = other.m_ticks / ticksPerDay - m_ticks / ticksPerDay;
    const qint64 rest = other.m_ticks % ticksPerDay - m_ticks % ticksPerDay;
    return OpcUa_Int32((days * secondsPerDay + rest / ticksPerSecond) / secondsPerDay);
}
