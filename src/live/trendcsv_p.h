#pragma once

#include "live/trendseries_p.h"

#include <QtCore/QString>

class QIODevice;

/// A series as it was when this was made: its points are shared with the trend until that goes on.
struct TrendCsvSeries
{
    QString name;
    QString unit;
    TrendSeries points;
};

/// Writes the points from `from` to `to`, by time, as RFC 4180. False with the device's reason. Any
/// thread.
bool writeTrendCsv(const std::vector<TrendCsvSeries>& series, qint64 from, qint64 to,
                   QIODevice* device, QString* error);
