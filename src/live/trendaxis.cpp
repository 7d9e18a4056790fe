#include "trendaxis_p.h"

#include "platform/types/uadatetime.h"

#include <QtCore/QDateTime>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cmath>

double trendStep(double span, int count)
{
    const double raw = span / std::max(count, 1);
    const double power = std::pow(10., std::floor(std::log10(raw)));
    for (const double factor : {1., 2., 5.})
        if (factor * power >= raw)
            return factor * power;
    return 10 * power;
}

// Digits after the point that a multiple of `step` has.
static int decimalsOf(double step)
{
    return std::max(0, int(-std::floor(std::log10(step) + 1e-9)));
}

QList<TrendValueMark> trendValueMarks(double low, double high, int count, const QLocale& locale)
{
    const double magnitude = std::max(std::abs(low), std::abs(high));
    // Closer marks than these could not be told apart by a double.
    const double finest = std::max(magnitude * 1e-14, 1e-300);
    const double step = std::max(trendStep(std::max(high - low, finest), count), finest);
    const bool isPlain = magnitude < 1e7 && decimalsOf(step) <= 6;
    const int digits =
        isPlain
            ? decimalsOf(step)
            : std::max(0, int(std::floor(std::log10(magnitude)) - std::floor(std::log10(step))));
    QList<TrendValueMark> marks;
    const double first = std::ceil(low / step - 1e-9);
    for (int i = 0; i <= count; ++i) {
        const double value = (first + i) * step;
        if (value > high + step * 1e-9)
            break;
        marks.append({value, locale.toString(first + i == 0 ? 0. : value, isPlain ? 'f' : 'e',
                                             std::min(digits, 17))});
    }
    return marks;
}

namespace {

struct TimeStep
{
    qint64 ticks = 0;
    int days = 0;
    int months = 0;
};

constexpr qint64 second = trendTicksPerSecond, minute = 60 * second, hour = 60 * minute,
                 day = 24 * hour;

// Nominal lengths in ticks: up to an hour exact, else as the calendar has it.
QList<TimeStep> makeTimeSteps()
{
    QList<TimeStep> steps;
    for (qint64 power = 1; power < second; power *= 10)
        for (const int factor : {1, 2, 5})
            steps.append(TimeStep{factor * power});
    for (const qint64 unit : {second, minute})
        for (const int factor : {1, 2, 5, 10, 15, 30})
            steps.append(TimeStep{factor * unit});
    for (const int factor : {1, 2, 3, 6, 12})
        steps.append(TimeStep{factor * hour});
    for (const int days : {1, 2, 7, 14})
        steps.append({days * day, days});
    for (const int months : {1, 3, 6})
        steps.append({months * 30 * day, 0, months});
    for (int power = 1; power <= 1000; power *= 10)
        for (const int factor : {1, 2, 5})
            steps.append({factor * power * 365 * day, 0, factor * power * 12});
    return steps;
}

QDateTime localTime(qint64 ticks)
{
    // Rounded down, not by UaDateTime, whose 0 is no time.
    return QDateTime::fromMSecsSinceEpoch(ticks / 10'000 - 11'644'473'600'000);
}

qint64 ticksOf(const QDateTime& time)
{
    return UaDateTime(time).ticks();
}

// "HH:mm", with seconds and what a resolution below that asks for.
QString clockText(qint64 ticks, qint64 resolution, const QLocale& locale)
{
    static const QRegularExpression withSeconds(QStringLiteral("[:.]ss?"));
    QString format = locale.timeFormat(QLocale::ShortFormat).remove(withSeconds);
    const qsizetype minutes = format.indexOf(QLatin1String("mm"));
    if (resolution < minute && minutes > 0) {
        QString seconds = format.at(minutes - 1) + QStringLiteral("ss");
        if (resolution < second) {
            int digits = 0;
            for (qint64 unit = second; unit > resolution; unit /= 10)
                ++digits;
            const QString fraction =
                QString::number(ticks % second).rightJustified(7, u'0').left(digits);
            seconds += u'\'' + locale.decimalPoint() + fraction + u'\'';
        }
        format.insert(minutes + 2, seconds);
    }
    return locale.toString(localTime(ticks), format);
}

QString markText(qint64 time, const TimeStep& step, const QLocale& locale)
{
    const QDate date = localTime(time).date();
    if (step.months >= 12)
        return QString::number(date.year());
    if (step.months > 0)
        return locale.toString(date, QStringLiteral("MMM yyyy"));
    if (step.days > 0)
        return locale.toString(date, QLocale::ShortFormat);
    return clockText(time, step.ticks, locale);
}

// The multiples of a step in local time.
QList<qint64> multiples(qint64 from, qint64 to, const TimeStep& step)
{
    QList<qint64> times;
    const auto add = [&](qint64 time) {
        if (time >= from && time <= to)
            times.append(time);
        return time <= to;
    };
    const QDateTime start = localTime(from);
    const QDate date = start.date();
    if (step.months > 0) {
        const int month = (date.year() * 12 + date.month() - 1) / step.months * step.months;
        for (int at = month; at < 12 * 10'000; at += step.months)
            if (!add(ticksOf(QDate(at / 12, at % 12 + 1, 1).startOfDay())))
                break;
    } else if (step.days > 0) {
        const qint64 first = date.toJulianDay() / step.days * step.days;
        for (qint64 at = first; add(ticksOf(QDate::fromJulianDay(at).startOfDay()));
             at += step.days) {
        }
    } else if (step.ticks >= hour) {
        // Each day anew, since one may have 23 or 25 hours.
        for (QDate each = date;; each = each.addDays(1)) {
            const qint64 midnight = ticksOf(each.startOfDay());
            const qint64 next = ticksOf(each.addDays(1).startOfDay());
            for (qint64 at = midnight; at < next - step.ticks / 2; at += step.ticks)
                if (!add(at))
                    return times;
        }
    } else {
        const qint64 offset = start.offsetFromUtc() * second;
        for (qint64 at = (from + offset) / step.ticks * step.ticks - offset; add(at);
             at += step.ticks) {
        }
    }
    return times;
}

} // namespace

QList<TrendTimeMark> trendTimeMarks(qint64 from, qint64 to, double width,
                                    const std::function<double(const QString&)>& textWidth,
                                    const QLocale& locale)
{
    static const QList<TimeStep> steps = makeTimeSteps();
    const double gap = 2 * textWidth(QStringLiteral("0"));
    const TimeStep* chosen = &steps.last();
    for (const TimeStep& step : steps) {
        const double room = width * double(step.ticks) / double(to - from);
        if (room < 2 * gap)
            continue; // no label is that short
        double needed = 0;
        // Any two of them: late in the day, and late in the year.
        for (const qint64 sample : {from, to})
            needed = std::max(needed, textWidth(markText(sample, step, locale)));
        if (room >= needed * 1.1 + gap) {
            chosen = &step;
            break;
        }
    }
    QList<TrendTimeMark> marks;
    QDate shown;
    const auto times = multiples(from, to, *chosen);
    for (const qint64 time : times) {
        TrendTimeMark mark{time, markText(time, *chosen, locale), {}};
        const QDate date = localTime(time).date();
        if (chosen->ticks < day && date != shown)
            mark.date = locale.toString(date, QLocale::ShortFormat);
        shown = date;
        marks.append(mark);
    }
    return marks;
}

QString trendTimeText(qint64 time, qint64 resolution, const QLocale& locale)
{
    return locale.toString(localTime(time).date(), QLocale::ShortFormat) + u' ' +
           clockText(time, std::min(resolution, second), locale);
}
