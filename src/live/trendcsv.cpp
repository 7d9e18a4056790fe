#include "trendcsv_p.h"

#include "base/csvfield_p.h"
#include "platform/types/uadatetime.h"
#include "platform/types/uastatuscode.h"

#include <QtCore/QIODevice>
#include <QtCore/QLocale>

#include <queue>

// What is read as the same number again.
static QByteArray number(const TrendPoint& point)
{
    if (std::isnan(point.value))
        return OpcUa_IsBad(point.status) ? QByteArray() : QByteArray("NaN");
    if (std::isinf(point.value))
        return point.value > 0 ? "INF" : "-INF";
    return QByteArray::number(point.value, 'g', QLocale::FloatingPointShortest);
}

bool writeTrendCsv(const std::vector<TrendCsvSeries>& series, qint64 from, qint64 to,
                   QIODevice* device, QString* error)
{
    struct Place
    {
        TrendSeries::Position at, end;
        qint64 time = 0;
        std::size_t series = 0;
    };
    const auto isLater = [](const Place& a, const Place& b) {
        return a.time != b.time ? a.time > b.time : a.series > b.series;
    };
    std::priority_queue<Place, std::vector<Place>, decltype(isLater)> places(isLater);
    std::vector<QByteArray> names;
    const auto go = [&](Place place) {
        if (place.at == place.end)
            return;
        place.time = series[place.series].points.at(place.at).time;
        places.push(place);
    };
    for (std::size_t i = 0; i < series.size(); ++i) {
        names.push_back(',' + csvField(series[i].name.toUtf8()) + ',' +
                        csvField(series[i].unit.toUtf8()) + ',');
        go({series[i].points.lowerBound(from), series[i].points.upperBound(to), 0, i});
    }
    QByteArray lines("Time,Series,Unit,Value,Status\r\n");
    const auto flush = [&] {
        const bool ok = device->write(lines) == lines.size();
        if (!ok && error)
            *error = device->errorString();
        lines.clear();
        return ok;
    };
    constexpr qsizetype atATime = 1 << 16;
    while (!places.empty()) {
        Place place = places.top();
        places.pop();
        const TrendPoint point = series[place.series].points.at(place.at);
        lines += UaDateTime(point.time).toString().bytes() + names[place.series] + number(point) +
                 ',' + UaStatusCode(point.status).toString().bytes() + "\r\n";
        if (lines.size() > atATime && !flush())
            return false;
        place.at = series[place.series].points.next(place.at);
        go(place);
    }
    return flush();
}
