// The trend: its points, its axes, what is drawn, mouse, keys, files, and a server.

#include "base/contrast_p.h"
#include "live/trendaxis_p.h"
#include "live/trendpicture_p.h"
#include "session/sessionuser.h"
#include "support/modaluser.h"
#include "support/relay.h"
#include "support/warnings.h"

#include <Kestrel/QvelNodeLink>
#include <Kestrel/QvelTrendWidget>

#include <QtSvg/QSvgRenderer>
#include <QtWidgets/QtWidgets>

constexpr qint64 second = 10'000'000;
constexpr double missing = std::numeric_limits<double>::quiet_NaN();

static UaDateTime at(double seconds)
{
    static const qint64 start = UaDateTime::fromString("2024-02-29T12:00:00Z").ticks();
    return UaDateTime(start + qint64(seconds * second));
}

/// A trend of a known size over the seconds 0 to 100 and the values 0 to 100, with a series.
struct Trend : QvelTrendWidget
{
    Trend()
    {
        resize(700, 420);
        setTimeRange(at(0), at(100));
        setScale("u", 0, 100);
        id = addSeries("One", "u");
        show();
    }
    double x(double seconds) const
    {
        const QRect plot = plotArea();
        return plot.left() + seconds / 100 * plot.width();
    }
    double y(double value) const
    {
        const QRect plot = plotArea();
        return plot.top() + (100 - value) / 100 * plot.height();
    }
    /// The lowest and the highest value with the color of the series at a time.
    std::pair<double, double> painted(double seconds)
    {
        const QImage image = grab().toImage();
        const QRect plot = plotArea();
        const QColor color = seriesColor(id);
        int top = -1, bottom = -1;
        for (int row = plot.top(); row <= plot.bottom(); ++row) {
            int distance = INT_MAX;
            for (int dx = -1; dx <= 1; ++dx) {
                const QColor found = image.pixelColor(int(x(seconds)) + dx, row);
                distance = std::min(distance, qAbs(found.red() - color.red()) +
                                                  qAbs(found.green() - color.green()) +
                                                  qAbs(found.blue() - color.blue()));
            }
            if (distance > 120)
                continue;
            top = top < 0 ? row : top;
            bottom = row;
        }
        if (top < 0)
            return {missing, missing};
        const auto value = [&](int row) { return 100 - 100. * (row - plot.top()) / plot.height(); };
        return {value(bottom), value(top)};
    }
    double span() const
    {
        const auto [from, to] = timeRange();
        return double(to.ticks() - from.ticks()) / second;
    }
    double start() const { return double(timeRange().first.ticks() - at(0).ticks()) / second; }
    void wheel(QPointF place, int steps, Qt::KeyboardModifiers modifiers = {})
    {
        QWheelEvent event(place, mapToGlobal(place), {}, {0, 120 * steps}, {}, modifiers,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(this, &event);
    }
    void drag(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {}, bool ends = true)
    {
        QTest::mousePress(this, Qt::LeftButton, modifiers, from);
        for (const QPoint place : {(from + to) / 2, to}) {
            QMouseEvent move(QEvent::MouseMove, place, mapToGlobal(place), Qt::NoButton,
                             Qt::LeftButton, modifiers);
            QCoreApplication::sendEvent(this, &move);
        }
        if (ends)
            QTest::mouseRelease(this, Qt::LeftButton, modifiers, to);
    }

    void paintEvent(QPaintEvent* event) override
    {
        ++paints;
        QvelTrendWidget::paintEvent(event);
    }

    int id = 0, paints = 0;
};

class tst_Trend : public QObject
{
    Q_OBJECT

public:
    static void initMain() { qputenv("TZ", "UTC"); }

public Q_SLOTS:
    void deleteTrend() { delete m_trend; }

private Q_SLOTS:
    void init() { failOnWarnings(); }
    // Random operations on the points, and on a plain list.
    void store()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        TrendSeries series;
        std::vector<TrendPoint> plain;
        const auto earlier = [](const TrendPoint& a, const TrendPoint& b) {
            return a.time < b.time;
        };
        const auto insert = [&](const TrendPoint& point) {
            const auto place = std::upper_bound(plain.begin(), plain.end(), point, earlier);
            for (auto it = place; it != plain.begin() && place - it < 8;)
                if (*--it == point)
                    return;
            plain.insert(place, point);
        };
        qint64 now = 0;
        const auto make = [&] {
            static const double values[] = {missing, INFINITY, -INFINITY, 1e308, 0};
            static const OpcUa_StatusCode statuses[] = {0x80000000, 0x40900000, 0x480};
            TrendPoint point;
            point.time = random.bounded(4)   ? ++now
                         : random.bounded(4) ? now
                                             : random.bounded(now + 1);
            point.value = random.bounded(20) ? random.bounded(100) : values[random.bounded(5)];
            point.status = random.bounded(20) ? 0 : statuses[random.bounded(3)];
            return point;
        };
        for (int round = 0; round < 300; ++round) {
            const TrendSeries copy = series;
            const qsizetype copied = series.size();
            const TrendSummary before = series.summary(series.begin(), series.end());
            const int count = random.bounded(round % 30 ? 300 : 9000);
            std::vector<TrendPoint> batch;
            switch (random.bounded(4)) {
            case 0:
                for (int i = 0; i < count; ++i) {
                    const TrendPoint point = make();
                    series.insert(point);
                    insert(point);
                }
                break;
            case 1:
                for (int i = 0; i < std::min<int>(count * 3, int(plain.size())); ++i)
                    series.dropOldest();
                plain.erase(plain.begin(),
                            plain.begin() + std::min<int>(count * 3, int(plain.size())));
                break;
            default:
                for (int i = 0; i < count; ++i)
                    batch.push_back(make());
                series.insert(batch);
                std::stable_sort(batch.begin(), batch.end(), earlier);
                std::for_each(batch.begin(), batch.end(), insert);
            }
            QCOMPARE(series.size(), qsizetype(plain.size()));
            auto position = series.begin();
            for (const TrendPoint& point : plain) {
                QVERIFY(series.at(position) == point);
                position = series.next(position);
            }
            QVERIFY(position == series.end());
            for (int i = 0; i < 20; ++i) {
                TrendPoint low, high;
                low.time = random.bounded(now + 2) - 1;
                high.time = low.time + random.bounded(now + 2);
                const auto from = series.lowerBound(low.time), to = series.upperBound(high.time);
                const auto first = std::lower_bound(plain.begin(), plain.end(), low, earlier);
                const auto last = std::upper_bound(plain.begin(), plain.end(), high, earlier);
                QCOMPARE(series.count(series.begin(), from), first - plain.begin());
                QCOMPARE(series.count(from, to), last - first);
                QVERIFY(series.lowerBound(high.time + 1, from) == to);
                TrendSummary sum;
                for (auto it = first; it != last; ++it)
                    sum.add(*it);
                const TrendSummary fast = series.summary(from, to);
                QCOMPARE(fast.low, sum.low);
                QCOMPARE(fast.high, sum.high);
                QCOMPARE(fast.hasUncertain, sum.hasUncertain);
            }
            QCOMPARE(copy.size(), copied); // as it was
            QCOMPARE(copy.summary(copy.begin(), copy.end()).high, before.high);
        }
    }
    // Marks are in order, can be told apart, and their labels do not overlap.
    void axes()
    {
        QRandomGenerator random(1);
        const auto width = [](const QString& text) { return 7. * double(text.size()); };
        for (const char* name : {"C", "de_DE", "en_US", "fi_FI", "ar_EG"}) {
            const QLocale locale{QString(name)};
            for (int i = 0; i < 2000; ++i) {
                const double span = std::pow(10., random.bounded(18.3));
                const qint64 room = lastTrendTime - qint64(std::max(span, 100.));
                const qint64 from = i ? random.bounded(room) : 0;
                const qint64 to = from + qint64(std::max(span, 100.));
                const double pixels = 100 + random.bounded(3000);
                const auto marks = trendTimeMarks(from, to, pixels, width, locale);
                QVERIFY2(marks.size() >= (pixels > 600 ? 2 : 0), QByteArray::number(to - from));
                for (qsizetype k = 0; k < marks.size(); ++k) {
                    QVERIFY(marks[k].time >= from && marks[k].time <= to);
                    if (k == 0)
                        continue;
                    const double apart =
                        double(marks[k].time - marks[k - 1].time) / double(to - from) * pixels;
                    QVERIFY2(apart > width(marks[k].label), qPrintable(marks[k].label));
                    QVERIFY(marks[k].label + marks[k].date != marks[k - 1].label);
                }
                const double size = std::pow(10., random.bounded(600.) - 300);
                const double low = (random.generateDouble() - 0.5) * size;
                const double high = low + size * std::pow(10., -random.bounded(12.));
                const auto values = trendValueMarks(low, high, 8, locale);
                QVERIFY(values.size() <= 9);
                for (qsizetype k = 1; k < values.size(); ++k) {
                    QVERIFY(values[k].value > values[k - 1].value);
                    QVERIFY(values[k].label != values[k - 1].label);
                }
            }
        }
        // Midnight has a mark, also behind a day of 23 hours.
        qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        const qint64 march = UaDateTime::fromString("2024-03-29T22:00:00Z").ticks();
        const auto hours =
            trendTimeMarks(march, march + 4 * 86400 * second, 1000, width, QLocale::c());
        qputenv("TZ", "UTC");
        QCOMPARE(std::count_if(hours.begin(), hours.end(),
                               [](const TrendTimeMark& mark) { return mark.label == "00:00"; }),
                 5);
        const QLocale german(QLocale::German, QLocale::Germany);
        QCOMPARE(trendValueMarks(0, 2000, 4, german).value(3).label, QString("1.500"));
        for (const auto& [locale, text] : {std::pair(german, "29.02.24 12:00:00,05"),
                                           {QLocale::c(), "29 Feb 2024 12:00:00.05"},
                                           {QLocale("en_US"), "2/29/24 12:00:00.05 PM"}})
            QCOMPARE(trendTimeText(at(0.05).ticks(), second / 100, locale), QString(text));
        QCOMPARE(trendValueMarks(0, 1, 5, german).value(1).label, QString("0,2"));
        QCOMPARE(trendValueMarks(-2, 2, 4, german).value(2).label, QString("0"));
    }
    void colors()
    {
        for (const char* name : {"white", "black", "#353535", "#808080", "#f0e0c0", "#002b36"}) {
            const QColor base{QString(name)};
            for (int i = 0; i < 8; ++i) {
                const QColor color = trendColor(i, base);
                QVERIFY2(contrast(color, base) >= 3, qPrintable(name + color.name()));
                for (int k = 0; k < i; ++k) {
                    const QColor other = trendColor(k, base);
                    const int distance = qAbs(color.red() - other.red()) +
                                         qAbs(color.green() - other.green()) +
                                         qAbs(color.blue() - other.blue());
                    QVERIFY2(distance > 40, qPrintable(color.name() + other.name() + name));
                }
            }
        }
    }
    void drawn()
    {
        const auto value = [](double seconds, double number, OpcUa_StatusCode status = 0) {
            return UaDataValue(UaVariant(number), status, at(seconds));
        };
        const UaDataValue text(UaVariant("none"), 0, at(50));
        const struct
        {
            const char* name;
            QList<UaDataValue> values;
            bool isStepped;
            double seconds, value; // that is drawn there; NaN for none
        } rows[] = {
            {"line", {value(0, 20), value(100, 80)}, false, 50., 50.},
            {"steps", {value(0, 20), value(100, 80)}, true, 50., 20.},
            {"late", {value(100, 20), value(0, 20), value(50, 90)}, false, 50., 90.},
            {"from and to far outside", {value(-1e9, 40), value(1e9, 60)}, false, 50., 50.},
            {"across the plot", {value(45, -1e12), value(55, 1e12)}, false, 50., 50.},
            {"bad", {value(0, 50), value(50, 50, 0x80000000), value(100, 50)}, false, 25., missing},
            {"bad ends a step",
             {value(0, 50), value(50, 50, 0x80000000), value(100, 50)},
             true,
             75.,
             missing},
            {"a step holds until bad", {value(0, 50), value(50, 50, 0x80000000)}, true, 25., 50.},
            {"not a number",
             {value(0, 50), value(50, missing), value(100, 50)},
             false,
             75.,
             missing},
            {"infinite", {value(0, 50), value(50, INFINITY), value(100, 50)}, false, 25., missing},
            {"text", {value(0, 50), text, value(100, 50)}, false, 25., missing},
            {"alone", {value(50, 30)}, false, 50., 30.},
            {"no source time",
             {value(0, 50), UaDataValue(UaVariant(80.), 0, {}, at(50)), value(100, 50)},
             false,
             50.,
             80.},
            {"nothing after the last", {value(0, 50), value(40, 50)}, false, 60., missing}};
        for (const auto& row : rows) {
            const Case each(row.name);
            Trend trend;
            trend.setSeriesStepped(trend.id, row.isStepped);
            trend.append(trend.id, row.values);
            const auto [low, high] = trend.painted(row.seconds);
            const double middle = (low + high) / 2;
            QVERIFY2(std::isnan(row.value) ? std::isnan(low) : qAbs(middle - row.value) < 2,
                     QByteArray::number(middle));
        }
    }
    // More points than pixels: all that lies between lowest and highest, gaps, steps, Uncertain
    // ones.
    void columns()
    {
        Trend trend;
        for (int i = 0; i < 200'000; ++i) {
            const double seconds = i / 2000.;
            const bool isGap = seconds > 40 && seconds < 60;
            const double value = i % 2 ? 20 : 30;
            trend.append(trend.id, at(seconds), isGap ? missing : i == 50'003 ? 90 : value);
        }
        trend.append(trend.id, {UaDataValue(UaVariant(70.), 0x40000000, at(75))});
        const auto ordinary = trend.painted(10), peak = trend.painted(25), gap = trend.painted(50);
        QVERIFY(qAbs(ordinary.first - 20) < 2 && qAbs(ordinary.second - 30) < 2);
        QVERIFY(qAbs(peak.first - 20) < 2 && qAbs(peak.second - 90) < 2);
        QVERIFY(std::isnan(gap.first));
        // The square of an Uncertain one has the ground inside.
        const QImage image = trend.grab().toImage();
        bool isOpen = false;
        for (int dx = -2; dx <= 2; ++dx)
            for (int dy = -2; dy <= 2; ++dy)
                isOpen = isOpen || image.pixelColor(int(trend.x(75)) + dx, int(trend.y(45)) + dy) ==
                                       trend.palette().color(QPalette::Base);
        QVERIFY(isOpen);
        // As many points within a tenth of the time; nothing on to the next ones but a line.
        trend.clear();
        for (int i = 0; i < 20'000; ++i)
            trend.append(trend.id, at(i / 2000.), 20);
        trend.append(trend.id, at(100), 80);
        const auto line = trend.painted(55);
        QVERIFY2(qAbs((line.first + line.second) / 2 - 50) < 2, QByteArray::number(line.first));
        trend.setSeriesStepped(trend.id, true);
        const auto step = trend.painted(55);
        QVERIFY2(qAbs((step.first + step.second) / 2 - 20) < 2, QByteArray::number(step.first));
    }
    // The longest series gives its oldest.
    void limit()
    {
        Trend trend;
        const int few = trend.addSeries("Few", "u");
        trend.append(few, at(-1000), 1);
        trend.setMaximumPoints(1000);
        for (int i = 0; i < 5000; ++i)
            trend.append(trend.id, at(i), i);
        QCOMPARE(trend.pointCount(few), 1);
        QCOMPARE(trend.pointCount(trend.id), 999);
        QCOMPARE(trend.droppedPoints(), 4001);
        trend.showAll();
        QVERIFY(qAbs(trend.start() + 1000) < 200);
        trend.removeSeries(few);
        trend.append(trend.id, at(5000), 0);
        QCOMPARE(trend.pointCount(trend.id), 1000);
        // Of many, all of a length, and many at a time.
        trend.setMaximumPoints(2'000'000);
        QList<int> ids;
        for (int i = 0; i < 255; ++i) {
            ids.append(trend.addSeries("Full"));
            for (int k = 0; k < 4096 + (i < 2); ++k)
                trend.append(ids.last(), at(k), k);
        }
        trend.setMaximumPoints(256 * 8 + 5);
        QCOMPARE(trend.droppedPoints(), 4001 + 1000 + 255 * 4096 + 2 - 256 * 8 - 5);
        for (int i = 0; i < 255; ++i)
            QCOMPARE(trend.pointCount(ids[i]), 8 + (i >= 250));
    }
    // The axis runs with this computer's clock, or with that of the values.
    void following()
    {
        const auto offset = [](const QvelTrendWidget& trend) {
            return double(trend.timeRange().second.ticks() - UaDateTime::now().ticks()) / second;
        };
        Trend trend;
        QSignalSpy changes(&trend, &QvelTrendWidget::followingChanged);
        trend.setFollowing(20);
        QVERIFY(qAbs(trend.span() - 20) < 1e-6 && qAbs(offset(trend)) < 10);
        const auto append = [&](int series, double ahead) {
            for (int i = 0; i < 2; ++i)
                trend.append(series, UaDateTime(UaDateTime::now().ticks() + qint64(ahead * second)),
                             i);
        };
        append(trend.id, 3600);
        QVERIFY(qAbs(offset(trend) - 3600) < 60);
        append(trend.id, -3600); // the clock went back
        QVERIFY(qAbs(offset(trend) + 3600) < 60);
        append(trend.addSeries("Two"), 0);
        QVERIFY(qAbs(offset(trend)) < 10);
        trend.setTimeRange(at(10), at(0)); // swapped
        QCOMPARE(trend.following(), 0.);
        QCOMPARE(trend.timeRange().second, at(10));
        trend.setTimeRange(UaDateTime(INT64_MIN), UaDateTime(INT64_MAX));
        QVERIFY(trend.span() > 8000. * 365 * 86400);
        trend.grab();
        trend.setTimeRange(at(5), at(5));
        QVERIFY(trend.span() > 0);
        trend.grab();
        QCOMPARE(changes.size(), 2);
        // What comes is shown, also where the axis moves by a pixel in minutes only.
        trend.setFollowing(1e6);
        for (int i = 0; i < 3; ++i) {
            const int before = trend.paints;
            append(trend.id, 0);
            QTRY_VERIFY(trend.paints > before);
        }
    }
    void mouse()
    {
        Trend trend;
        trend.append(trend.id, at(20), 10);
        trend.append(trend.id, at(80), 90);
        const QRect plot = trend.plotArea();
        const auto point = [&](double seconds, double value) {
            return QPoint(int(trend.x(seconds)), int(trend.y(value)));
        };
        trend.wheel({trend.x(25), trend.y(50)}, 2);
        QVERIFY(qAbs(trend.span() - 100 / 1.25 / 1.25) < 0.1);
        QVERIFY(qAbs((25 - trend.start()) / trend.span() - 0.25) < 0.005); // still there
        trend.wheel({trend.x(50), trend.y(50)}, 1, Qt::ShiftModifier);
        QVERIFY(trend.start() < 25 - 0.25 * trend.span());
        trend.setTimeRange(at(0), at(100));
        trend.drag(point(50, 50), point(30, 50));
        QVERIFY(qAbs(trend.start() - 20) < 0.5 && qAbs(trend.span() - 100) < 0.1);
        trend.drag(point(50, 50), point(90, 50), {}, false); // and not, by Escape
        QTest::keyClick(&trend, Qt::Key_Escape);
        QTest::mouseRelease(&trend, Qt::LeftButton, {}, point(90, 50));
        QVERIFY(qAbs(trend.start() - 20) < 0.5);
        trend.setTimeRange(at(0), at(100));
        trend.drag(point(20, 80), point(60, 40), Qt::ShiftModifier);
        QVERIFY(qAbs(trend.start() - 20) < 0.5 && qAbs(trend.span() - 40) < 0.5);
        trend.setTimeRange(at(0), at(100)); // the scale is 40 to 80 now
        const auto [low, high] = trend.painted(50);
        QVERIFY2(qAbs((low + high) / 2 - 25) < 3, QByteArray::number(low));
        // Over the scale: by wheel around the pointer, and back.
        const auto scale = [&] { return QPoint(trend.plotArea().left() - 5, plot.center().y()); };
        trend.wheel(scale(), -5);
        QVERIFY(qAbs((trend.painted(50).first + trend.painted(50).second) / 2 - 42) < 5);
        QTest::mouseDClick(&trend, Qt::LeftButton, {}, scale());
        QVERIFY(qAbs(trend.painted(79).second - 98) < 2); // 10 to 90 by the values
        QSignalSpy cursors(&trend, &QvelTrendWidget::cursorTimeChanged);
        QMouseEvent move(QEvent::MouseMove, point(50, 50), trend.mapToGlobal(point(50, 50)),
                         Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&trend, &move);
        QVERIFY(qAbs(double(trend.cursorTime().ticks() - at(50).ticks())) < second);
        QCOMPARE(cursors.size(), 1);
        const QPoint legend(40, trend.fontMetrics().height());
        QTest::mouseClick(&trend, Qt::LeftButton, {}, legend);
        QVERIFY(!trend.isSeriesVisible(trend.id));
        QTest::mouseClick(&trend, Qt::LeftButton, {}, legend);
        QVERIFY(trend.isSeriesVisible(trend.id));
        QTest::mouseDClick(&trend, Qt::LeftButton, {}, plot.center());
        QVERIFY(trend.following() > 0);
    }
    void keys()
    {
        Trend trend;
        trend.append(trend.id, at(20), 10);
        trend.append(trend.id, at(80), 90);
        const auto press = [&](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
            QTest::keyClick(&trend, key, modifiers);
        };
        press(Qt::Key_Right);
        QVERIFY(qAbs(trend.start() - 10) < 1e-6);
        press(Qt::Key_PageUp);
        QVERIFY(qAbs(trend.start() + 90) < 1e-6);
        press(Qt::Key_Home);
        QVERIFY(qAbs(trend.start() - 20) < 1e-6);
        trend.setTimeRange(at(0), at(100));
        press(Qt::Key_Plus);
        press(Qt::Key_Minus);
        QVERIFY(qAbs(trend.span() - 100) < 1e-3 && qAbs(trend.start()) < 1e-3);
        press(Qt::Key_Up);
        QVERIFY(qAbs((trend.painted(50).first + trend.painted(50).second) / 2 - 40) < 2);
        press(Qt::Key_Down);
        press(Qt::Key_Plus, Qt::ControlModifier); // 10 to 90
        QVERIFY(qAbs((trend.painted(40).first + trend.painted(40).second) / 2 - 33) < 3);
        press(Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(trend.cursorTime(), at(20));
        QVERIFY2(trend.accessibleDescription().contains("One: 10"),
                 qPrintable(trend.accessibleDescription()));
        press(Qt::Key_Right, Qt::ShiftModifier);
        press(Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(trend.cursorTime(), at(80));
        press(Qt::Key_Left, Qt::ShiftModifier);
        QCOMPARE(trend.cursorTime(), at(20));
        press(Qt::Key_Escape);
        QVERIFY(trend.cursorTime().isNull());
        press(Qt::Key_End);
        const double before = trend.following();
        QVERIFY(before > 0);
        press(Qt::Key_Plus); // goes on
        QVERIFY(trend.following() < before);
        press(Qt::Key_0);
        QVERIFY(trend.following() == 0 && trend.start() < 20 && trend.span() < 65);
    }
    void menu()
    {
        Trend trend;
        trend.append(trend.id, at(20), 10);
        trend.show();
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QCoreApplication::sendEvent(&trend, &event);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QVERIFY(!menu->findChild<QAction*>("loadHistory")->isEnabled());
        menu->findChild<QAction*>("follow")->trigger();
        QVERIFY(trend.following() > 0);
        menu->findChild<QAction*>("visible")->trigger();
        QVERIFY(!trend.isSeriesVisible(trend.id));
        menu->findChild<QAction*>("showAll")->trigger();
        menu->findChild<QAction*>("visible")->trigger();
        trend.setTimeRange(at(0), at(100));
        QTemporaryDir folder;
        const QString file = folder.filePath("values.csv");
        menu->findChild<QAction*>("exportCsv")->trigger();
        auto* dialog = trend.findChild<QFileDialog*>();
        QVERIFY(dialog);
        dialog->selectFile(file);
        dialog->findChild<QLineEdit*>("fileNameEdit")->setText(file);
        QTest::keyClick(dialog, Qt::Key_Return);
        QTRY_VERIFY(QFile::exists(file));
        trend.createMenu(&trend)->findChild<QAction*>("remove")->trigger();
        QVERIFY(trend.series().isEmpty());
    }
    void files()
    {
        Trend trend;
        const int other = trend.addSeries("a \"b\",\nc", QString::fromUtf8("\u00b0C"));
        const double numbers[] = {0.1, 1 / 3., 1e300, -5e-324, 123456789012345678.};
        for (int i = 0; i < 5; ++i)
            trend.append(trend.id, at(i), numbers[i]);
        trend.append(other, {UaDataValue(UaVariant(7.), 0x40900000, at(2)),
                             UaDataValue(UaVariant(), 0x80310000, at(3)),
                             UaDataValue(UaVariant(1.), 0, at(1000))});
        QBuffer csv;
        csv.open(QIODevice::ReadWrite);
        QVERIFY(trend.exportCsv(&csv));
        QList<QByteArray> lines;
        for (QByteArray rest = csv.data(); !rest.isEmpty();) {
            const qsizetype end = rest.indexOf("\r\n");
            QVERIFY(end >= 0);
            lines.append(rest.left(end));
            rest.remove(0, end + 2);
        }
        QCOMPARE(lines.size(), 8); // the one that is out of range is not there
        QCOMPARE(lines[0], QByteArray("Time,Series,Unit,Value,Status"));
        QCOMPARE(lines[1], QByteArray("2024-02-29T12:00:00Z,One,u,0.1,Good"));
        const QByteArray name("\"a \"\"b\"\",\nc\",\u00b0C,");
        QCOMPARE(lines[4], "2024-02-29T12:00:02Z," + name + "7,UncertainLastUsableValue");
        QCOMPARE(lines[6], "2024-02-29T12:00:03Z," + name + ",BadNoCommunication");
        for (const auto& [line, number] : {std::pair(2, 1), {3, 2}, {5, 3}, {7, 4}})
            QCOMPARE(lines[line].split(',').value(3).toDouble(), numbers[number]);

        QTemporaryDir folder;
        QString error;
        trend.setCursorTime(at(50));
        QVERIFY2(trend.exportPng(folder.filePath("t.png"), &error), qPrintable(error));
        const QImage image(folder.filePath("t.png"));
        QCOMPARE(image.size(), trend.size() * trend.devicePixelRatioF());
        QBuffer svg;
        svg.open(QIODevice::ReadWrite);
        QVERIFY(trend.exportSvg(&svg));
        QSvgRenderer renderer(svg.data());
        QVERIFY(renderer.isValid());
        QCOMPARE(renderer.viewBox().size(), trend.size());
        QFile full("/dev/full");
        QVERIFY(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QVERIFY(!trend.exportCsv(&full, &error) && !error.isEmpty());
        QVERIFY(!trend.exportPng(&full, &error) && !trend.exportSvg(&full, &error));
        QVERIFY(!trend.exportCsv(folder.filePath("none/t.csv"), &error) && !error.isEmpty());
    }
    void project()
    {
        Trend trend;
        const QvelNodeLink node{*qvelParseNodeId("nsu=urn:plant;s=Level"), "Level"};
        const int id = trend.addVariable(node);
        QCOMPARE(trend.addVariable(node), id); // there already
        trend.setSeriesColor(id, Qt::red);
        trend.setSeriesVisible(id, false);
        trend.setSamplingInterval(40);
        const QJsonObject saved = trend.toJson();
        QCOMPARE(saved["variables"].toArray().size(), 1); // not the host's own
        QvelTrendWidget other;
        QString error;
        QVERIFY(other.fromJson(saved, &error) && error.isEmpty());
        QCOMPARE(other.toJson(), saved);
        QCOMPARE(other.seriesNode(other.series().value(0)), node.nodeId);
        QJsonObject damaged = saved;
        damaged["variables"] =
            QJsonArray{5, QJsonObject{{"nodeId", "no node"}}, saved["variables"].toArray()[0]};
        damaged["maximumPoints"] = -7;
        damaged["samplingInterval"] = "x";
        damaged["scales"] = "x";
        QVERIFY(other.fromJson(damaged, &error));
        QVERIFY(error.contains("no node"));
        QCOMPARE(other.series().size(), 1);
        QCOMPARE(other.maximumPoints(), saved["maximumPoints"].toInteger());
        damaged["version"] = 2;
        QVERIFY(!other.fromJson(damaged, &error) && error.contains("later"));
        QVERIFY(!other.fromJson({}, &error));
        QCOMPARE(other.series().size(), 1);
        for (int i = 0; i < 300; ++i)
            other.addSeries(QString(100'000, u'<'));
        QCOMPARE(other.series().size(), 256);
        other.grab();
    }
    // By the host, in a signal, whatever sets that off.
    void deleted()
    {
        const QPoint left(300, 200), right(500, 250);
        const auto send = [](QEvent::Type type, const QPoint& place) {
            QMouseEvent event(type, place, m_trend->mapToGlobal(place), Qt::LeftButton,
                              Qt::LeftButton, {});
            QCoreApplication::sendEvent(m_trend, &event);
        };
        const auto press = [left](Qt::KeyboardModifiers keys) {
            QTest::mousePress(m_trend, Qt::LeftButton, keys, left);
        };
        const auto drag = [&] { send(QEvent::MouseMove, right); };
        const std::function<void()> none;
        const struct
        {
            const char* signal;
            std::function<void()> before, act;
        } cases[] = {
            {SIGNAL(timeRangeChanged()), none, [] { m_trend->setTimeRange(at(0), at(10)); }},
            {SIGNAL(timeRangeChanged()), none,
             [] { QTest::keyClick(m_trend, Qt::Key_Right, Qt::ShiftModifier); }},
            {SIGNAL(timeRangeChanged()), [&] { press({}); }, drag},
            {SIGNAL(timeRangeChanged()),
             [&] {
                 press(Qt::ShiftModifier);
                 drag();
             },
             [&] { send(QEvent::MouseButtonRelease, right); }},
            {SIGNAL(followingChanged(double)),
             [&] {
                 press({});
                 drag();
             },
             [] { QTest::keyClick(m_trend, Qt::Key_Escape); }},
            {SIGNAL(cursorTimeChanged(UaDateTime)), none, [] { m_trend->setCursorTime(at(5)); }},
            {SIGNAL(cursorTimeChanged(UaDateTime)), drag,
             [] {
                 QEvent leave(QEvent::Leave);
                 QCoreApplication::sendEvent(m_trend, &leave);
             }},
            {SIGNAL(seriesChanged()), none,
             [] {
                 QApplication::clipboard()->setText("i=2258\ni=2259");
                 QTest::keyClick(m_trend, Qt::Key_V, Qt::ControlModifier);
             }},
            {SIGNAL(seriesChanged()), none,
             [] {
                 m_trend->fromJson(
                     {{"version", 1}, {"variables", QJsonArray{QJsonObject{{"nodeId", "i=1"}}}}});
             }},
        };
        for (const auto& each : cases) {
            m_trend = new Trend;
            m_trend->setFollowing(50);
            m_trend->append(m_trend->id, UaDateTime(UaDateTime::now().ticks() + 1000 * second), 1);
            if (each.before)
                each.before();
            connect(m_trend, each.signal, this, SLOT(deleteTrend()));
            each.act();
            QVERIFY(!m_trend);
        }
    }
    void server()
    {
        SessionUser user;
        PeerProcess server;
        const QString url = server.start(NODE, {PEERS "/sessionserver.mjs", "--children", "10",
                                                "--items", "10", "--pki", user.folder.path()});
        auto session = std::make_unique<QvelSession>(user.options);
        Trend trend;
        trend.removeSeries(trend.id);
        trend.setSession(session.get());
        const auto link = [](const char* name) {
            return QvelNodeLink{UaExpandedNodeId(UaNodeId(UaString(name), 1), {}, 0), {}};
        };
        const int moving = trend.addVariable(link("Item0"));
        const QvelSessionError failure = connectSession(*session, settingOf(url));
        QVERIFY2(session->state() == QvelSession::Connected, failure.toString().toUtf8());
        QTRY_VERIFY_WITH_TIMEOUT(trend.pointCount(moving) > 5, 10000);
        QCOMPARE(trend.seriesName(moving), QString("Item0")); // as the server has it
        // Dropped.
        const std::unique_ptr<QMimeData> mime(qvelNodeMimeData(
            {link("Historic"), link("Temperature"), link("Mode"), link("Running")}));
        QDragEnterEvent enter({100, 100}, Qt::CopyAction, mime.get(), Qt::LeftButton, {});
        QCoreApplication::sendEvent(&trend, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop({100, 100}, Qt::CopyAction, mime.get(), Qt::LeftButton, {});
        QCoreApplication::sendEvent(&trend, &drop);
        QCOMPARE(trend.series().size(), 5);
        const int historic = trend.series().value(1), temperature = trend.series().value(2);
        const int mode = trend.series().value(3), running = trend.series().value(4);
        QTRY_COMPARE(trend.seriesUnit(temperature), QString::fromUtf8("\u00b0C"));
        QTRY_VERIFY(trend.pointCount(mode) > 0 && trend.pointCount(running) > 0);
        QTRY_VERIFY_WITH_TIMEOUT(trend.accessibleDescription().contains("Mode: Manual") &&
                                     trend.accessibleDescription().contains("Running: true"),
                                 10000);
        QTRY_VERIFY(trend.canLoadHistory());
        const auto start = UaDateTime::fromString("2024-01-01T00:00:00Z");
        trend.setTimeRange(start, UaDateTime(start.ticks() + 99 * second));
        const qsizetype known = trend.pointCount(historic);
        trend.loadHistory();
        QTRY_VERIFY(trend.pointCount(historic) >= known + 99);
        // All are told of: Running has none, whatever it says.
        QTRY_VERIFY(trend.accessibleDescription().contains("2 series: 100 values came from"));
        QVERIFY(trend.accessibleDescription().contains("Running: The history could not be read: "));
        const qsizetype loaded = trend.pointCount(historic);
        trend.loadHistory(); // the same again is not kept
        QTest::qWait(500);
        QCOMPARE(trend.pointCount(historic), loaded);
        // Without a server what was recorded stays, and a new session goes on.
        // Nor is what an earlier session answers.
        trend.clear();
        trend.loadHistory();
        trend.setSession(nullptr);
        QvelHistoryDetails details;
        details.from = start;
        details.to = UaDateTime(start.ticks() + 99 * second);
        resultOf(session->historyRead({{UaNodeId("Historic", 1), {}}}, details));
        QVERIFY(trend.pointCount(historic) < 99);
        trend.setSession(session.get());
        QTRY_VERIFY_WITH_TIMEOUT(trend.canLoadHistory(), 10000);
        const qsizetype kept = trend.pointCount(moving);
        trend.loadHistory();
        session.reset();
        QTRY_VERIFY(!trend.accessibleDescription().contains("Reading"));
        QVERIFY(trend.pointCount(moving) >= kept);
        Relay relay(quint16(QUrl(url).port()));
        QvelSession again(user.options);
        trend.setSession(&again);
        connectSession(again, settingOf(relay.url()));
        const qsizetype before = trend.pointCount(moving);
        QTRY_VERIFY_WITH_TIMEOUT(trend.pointCount(moving) > before + 3, 10000);
        // What stands still holds until now, also after a break that the subscription outlives.
        trend.id = historic;
        trend.setFollowing(20);
        QTRY_VERIFY(!std::isnan(trend.painted(50).first));
        relay.cut();
        QTRY_VERIFY(again.state() != QvelSession::Connected);
        QTRY_VERIFY(std::isnan(trend.painted(50).first));
        QTRY_COMPARE_WITH_TIMEOUT(again.state(), QvelSession::Connected, 30000);
        QTRY_VERIFY(!std::isnan(trend.painted(50).first));
        // Back from a power cut: what was missed is a gap.
        server.kill();
        PeerProcess restarted;
        restarted.start(NODE, {PEERS "/sessionserver.mjs", "--children", "10", "--items", "10",
                               "--pki", user.folder.path(), "--port", url.section(':', -1)});
        trend.setFollowing(3600);
        const auto recorded = [&trend] {
            QBuffer csv;
            csv.open(QIODevice::ReadWrite);
            trend.exportCsv(&csv);
            return csv.data();
        };
        QTRY_VERIFY_WITH_TIMEOUT(recorded().contains("Item0,,,BadDataLost\r\n"), 60000);
        // The host may take the session away when it hears of a name.
        connect(&trend, &QvelTrendWidget::seriesChanged, &trend, [&trend] {
            if (trend.seriesName(trend.series().last()) == "Item1")
                trend.setSession(nullptr);
        });
        trend.addVariable(link("Item1"));
        QTRY_VERIFY(!trend.session());
    }

private:
    static inline QPointer<Trend> m_trend;
};

QTEST_MAIN(tst_Trend)
#include "tst_trend.moc"
