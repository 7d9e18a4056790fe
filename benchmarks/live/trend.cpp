#include "benchmarks/live/areas.h"

#include <Kestrel/QvelTrendWidget>

#include <QtGui/QImage>

#include <cmath>

namespace {

constexpr int repaints = 100; // five seconds at 20 a second
constexpr int runs = 5;
constexpr qint64 ticksPerMillisecond = 10'000;

/// A trend that shows all of its points, a noisy wave.
class Trend
{
public:
    explicit Trend(int points)
        : m_from(UaDateTime::now()), m_step(10'000 * ticksPerMillisecond / points * 1000),
          m_points(points)
    {
        m_widget.resize(1000, 600);
        m_widget.setMaximumPoints(2 * points);
        m_series = m_widget.addSeries("wave", "bar");
        while (m_next < points)
            append(m_next++);
    }
    /// Processor time of one repaint, with new points before each.
    double milliseconds()
    {
        QImage image(m_widget.size(), QImage::Format_RGB32);
        return cpuMilliseconds([&] {
                   for (int i = 0; i < repaints; ++i) {
                       for (int k = 0; k < 10; ++k)
                           append(m_next++);
                       m_widget.setTimeRange(m_from, timeOf(m_next));
                       m_widget.render(&image);
                   }
               }) /
               repaints;
    }

private:
    UaDateTime timeOf(int i) const { return UaDateTime(m_from.ticks() + i * m_step); }
    void append(int i)
    {
        const unsigned noise = unsigned(i) * 2654435761u >> 16;
        m_widget.append(m_series, timeOf(i),
                        std::sin(1e-6 * double(i) * 1e7 / m_points) + double(noise % 1000) / 2000);
    }

    QvelTrendWidget m_widget;
    const UaDateTime m_from;
    const qint64 m_step;
    const int m_points;
    int m_series = 0;
    int m_next = 0;
};

} // namespace

void benchTrend(Figures& figures)
{
    Trend few(10'000), many(10'000'000);
    const auto [small, large] = medians(
        runs, [&] { return few.milliseconds(); }, [&] { return many.milliseconds(); });
    figures.report("trend: a repaint of 10,000,000 points, of 10,000", large / small, 2);
    constexpr double frame = 50; // at 20 a second
    figures.report("trend: a repaint of 10,000,000 points", large, frame / 2, " ms");
}
