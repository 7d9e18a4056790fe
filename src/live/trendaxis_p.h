#pragma once

#include <QtCore/QList>
#include <QtCore/QLocale>
#include <QtCore/QString>

#include <functional>

/// \file
/// Where the axes of a trend have their marks, and what stands there. All texts are in the locale.

/// The times that a trend can show, in ticks: the years 1601 to 9999.
inline constexpr qint64 firstTrendTime = 0;
inline constexpr qint64 lastTrendTime = 2'650'467'743'999'999'999;
inline constexpr qint64 trendTicksPerSecond = 10'000'000;

struct TrendValueMark
{
    double value = 0;
    QString label;
};

/// The step of 1, 2 or 5 times a power of ten of which at most `count` make `span`.
double trendStep(double span, int count);
/// At most `count` + 1 marks from `low` to `high`, with as many digits as tell one from the next.
QList<TrendValueMark> trendValueMarks(double low, double high, int count, const QLocale& locale);

struct TrendTimeMark
{
    qint64 time = 0;
    QString label;
    QString date; ///< where it begins to hold
};

/// Marks from `from` to `to` in local time, as close as their labels have room on `width` pixels.
QList<TrendTimeMark> trendTimeMarks(qint64 from, qint64 to, double width,
                                    const std::function<double(const QString&)>& textWidth,
                                    const QLocale& locale);
/// Date and time down to what `resolution` ticks tell apart.
QString trendTimeText(qint64 time, qint64 resolution, const QLocale& locale);
