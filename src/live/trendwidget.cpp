#include "trendwidget.h"

#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "live/trendwidget_p.h"
#include "nodes/nodelink.h"

#include <QtCore/QPointer>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t mostSeries = 256;
constexpr qint64 shortestSpan = 100; // ticks
constexpr int paintInterval = 50;    // ms
constexpr OpcUa_StatusCode badDataLost = 0x809d0000u;

std::pair<qint64, qint64> normalized(qint64 from, qint64 to)
{
    if (to < from)
        std::swap(from, to);
    from = std::clamp(from, -lastTrendTime, 2 * lastTrendTime); // so that they can be subtracted
    to = std::clamp(to, -lastTrendTime, 2 * lastTrendTime);
    const qint64 span = std::clamp(to - from, shortestSpan, lastTrendTime - firstTrendTime);
    from = std::clamp(from, firstTrendTime, lastTrendTime - span);
    return {from, from + span};
}

QString durationText(double seconds, const QLocale& locale)
{
    struct Unit
    {
        double seconds;
        const char* text;
    };
    static constexpr Unit units[] = {
        {86'400, QT_TRANSLATE_NOOP("QvelTrendWidget", "%1 d")},
        {3'600, QT_TRANSLATE_NOOP("QvelTrendWidget", "%1 h")},
        {60, QT_TRANSLATE_NOOP("QvelTrendWidget", "%1 min")},
        {1, QT_TRANSLATE_NOOP("QvelTrendWidget", "%1 s")},
        {0.001, QT_TRANSLATE_NOOP("QvelTrendWidget", "%1 ms")},
    };
    for (const Unit& unit : units)
        if (seconds >= 2 * unit.seconds || unit.seconds < 0.01)
            return QvelTrendWidget::tr(unit.text).arg(
                locale.toString(seconds / unit.seconds, 'g', 4));
    return {};
}

} // namespace

TrendCurve* QvelTrendWidget::Private::find(int id) const
{
    const auto found = std::find_if(curves.begin(), curves.end(),
                                    [id](const auto& curve) { return curve->id == id; });
    return found == curves.end() ? nullptr : found->get();
}

TrendCurve* QvelTrendWidget::Private::make(const QString& name, const QString& unit)
{
    if (curves.size() >= mostSeries) {
        message = [this] {
            return tr("A trend takes %1 series.").arg(q->locale().toString(int(mostSeries)));
        };
        changed();
        return nullptr;
    }
    auto curve = std::make_unique<TrendCurve>();
    curve->id = ++lastId;
    curve->setName(name);
    curve->setUnit(unit);
    // The first color that nobody has.
    const auto isTaken = [this](int index) {
        return std::any_of(curves.begin(), curves.end(),
                           [index](const auto& each) { return each->colorIndex == index; });
    };
    while (isTaken(curve->colorIndex))
        ++curve->colorIndex;
    curves.push_back(std::move(curve));
    changed();
    return curves.back().get();
}

// The longest series give, down to the next longest or by as much as each of them has to.
void QvelTrendWidget::Private::keepToLimit()
{
    while (total > maximum) {
        qsizetype longest = 0, next = 0, count = 0;
        for (const auto& curve : curves) {
            const qsizetype size = curve->points.size();
            if (size > longest) {
                next = std::exchange(longest, size);
                count = 0;
            } else if (size < longest) {
                next = std::max(next, size);
            }
            count += size == longest;
        }
        const qsizetype each =
            std::min(longest - next, std::max<qsizetype>((total - maximum) / count, 1));
        for (const auto& curve : curves) {
            if (curve->points.size() != longest || total == maximum)
                continue;
            curve->points.dropOldest(each);
            total -= each;
            dropped += each;
        }
    }
}

void QvelTrendWidget::Private::insert(TrendCurve& curve, std::vector<TrendPoint> points)
{
    total -= curve.points.size();
    curve.points.insert(std::move(points));
    total += curve.points.size();
    keepToLimit();
    changed();
}

static UaDateTime timeOf(const UaDataValue& value)
{
    const UaDateTime time = value.sourceTimestamp();
    return time.isNull() ? value.serverTimestamp() : time;
}

static TrendPoint pointOf(const UaDataValue& value)
{
    UaDateTime time = timeOf(value);
    if (time.isNull())
        time = UaDateTime::now();
    return {time.ticks(), trendNumber(value.value()).value_or(qQNaN()), value.status().code()};
}

static QMap<int, QString> booleanNames()
{
    return {{0, QvelTrendWidget::tr("false")}, {1, QvelTrendWidget::tr("true")}};
}

void QvelTrendWidget::Private::retranslate()
{
    setOwnText(q, "accessibleName", tr("Trend"));
    for (const auto& curve : curves) {
        if (curve->isNamedHere)
            curve->setNames(booleanNames());
        const auto variable = nodes.constFind(curve->id);
        if (variable != nodes.cend() && variable->status.isGood() && curve->isStale)
            curve->trouble = tr("not connected");
    }
    finishView();
    q->setAccessibleDescription(spoken());
    q->update();
}

void QvelTrendWidget::Private::receive(TrendCurve& curve, const QList<UaDataValue>& values)
{
    if (values.isEmpty())
        return;
    std::vector<TrendPoint> points;
    points.reserve(std::size_t(values.size()) + 1);
    for (const UaDataValue& value : values)
        points.push_back(pointOf(value));
    // No line over what is missing; nothing is where the server only says the last value again.
    if (std::exchange(curve.isGapPending, false) && !curve.points.isEmpty() &&
        curve.points.last().time < points.front().time - 1) {
        TrendPoint gap;
        gap.time = curve.points.last().time + 1;
        gap.status = badDataLost;
        points.insert(points.begin(), gap);
    }
    const UaVariant& last = values.last().value();
    if (last.type() == OpcUaType_Boolean && curve.names.isEmpty()) {
        curve.isNamedHere = true;
        curve.setNames(booleanNames());
    }
    curve.setCurrent(values.last());
    curve.arrivals += int(values.size());
    curve.lastTime = points.back().time;
    curve.lastArrival = clock.elapsed();
    insert(curve, std::move(points));
}

void QvelTrendWidget::Private::describe(int id, const TrendVariables::Description& description)
{
    TrendCurve* curve = find(id);
    if (!curve)
        return;
    Variable& variable = nodes[id];
    if (!variable.isNamed && !description.name.isEmpty())
        curve->setName(description.name);
    curve->setUnit(description.unit);
    curve->range = description.range;
    if (!description.names.isEmpty()) {
        curve->isNamedHere = false;
        curve->setNames(description.names);
    }
    curve->isStepped = curve->isStepped || description.isDiscrete;
    variable.hasHistory = description.hasHistory;
    changed();
    Q_EMIT q->seriesChanged();
}

void QvelTrendWidget::Private::showConnection()
{
    const bool isConnected = variables.isConnected();
    for (auto it = nodes.begin(); it != nodes.end(); ++it) {
        TrendCurve* curve = find(it.key());
        curve->isStale = !isConnected;
        curve->isLive = isConnected && it->isMonitored;
        curve->arrivals = 0;
        it->isReading = it->isReading && variables.session();
        if (it->status.isGood())
            curve->trouble = isConnected ? QString() : tr("not connected");
    }
    changed();
}

void QvelTrendWidget::Private::changed()
{
    // For the axis to move, the timer may wait much longer.
    if (q->isVisible() && !std::exchange(isChanged, true))
        painting.start(paintInterval);
}

void QvelTrendWidget::Private::tick()
{
    isChanged = false;
    q->update();
    constexpr qint64 speechInterval = 1000;
    if (clock.elapsed() - lastSpoken >= speechInterval) {
        lastSpoken = clock.elapsed();
        q->setAccessibleDescription(spoken());
    }
    // On as soon as the axis has moved by a pixel.
    if (following > 0 && q->isVisible() && !curves.empty())
        painting.start(std::clamp(int(1000 * following / plotWidth), paintInterval, 60'000));
}

// The time to which the axis runs: this computer's, if some series that moves agrees with it; else
// that of the latest of those.
qint64 QvelTrendWidget::Private::edge() const
{
    const qint64 now = UaDateTime::now().ticks(), elapsed = clock.elapsed();
    constexpr qint64 agreement = 2 * trendTicksPerSecond, ticksPerMillisecond = 10'000;
    const auto recent = qint64(1000 * std::max(following, lastFollowing)) + 10'000;
    std::optional<qint64> latest;
    for (const auto& curve : curves) {
        const qint64 age = elapsed - curve->lastArrival;
        if (curve->arrivals < 2 || age > recent || curve->lastTime < firstTrendTime ||
            curve->lastTime > lastTrendTime - recent * ticksPerMillisecond)
            continue;
        const qint64 theirs = curve->lastTime + age * ticksPerMillisecond;
        if (std::abs(theirs - now) < agreement)
            return now;
        latest = std::max(latest.value_or(theirs), theirs);
    }
    return latest.value_or(now);
}

void QvelTrendWidget::Private::follow()
{
    view.now = edge();
    if (following <= 0)
        return;
    std::tie(view.from, view.to) =
        normalized(view.now - qint64(following * trendTicksPerSecond), view.now);
}

bool QvelTrendWidget::Private::stand(qint64 from, qint64 to)
{
    const bool followed = std::exchange(following, 0) > 0;
    std::tie(view.from, view.to) = normalized(from, to);
    changed();
    const QPointer<QvelTrendWidget> alive(q);
    Q_EMIT q->timeRangeChanged();
    if (followed && alive)
        Q_EMIT q->followingChanged(0);
    return alive;
}

bool QvelTrendWidget::Private::setCursor(std::optional<qint64> time)
{
    hover.reset();
    fixedCursor = view.cursor = time;
    changed();
    const QPointer<QvelTrendWidget> alive(q);
    Q_EMIT q->cursorTimeChanged(UaDateTime(time.value_or(0)));
    return alive;
}

void QvelTrendWidget::Private::add(const QList<QvelNodeLink>& links)
{
    const QPointer<QvelTrendWidget> alive(q);
    for (const QvelNodeLink& link : links)
        if (alive)
            q->addVariable(link);
}

TrendLook QvelTrendWidget::Private::look() const
{
    return {q->font(), q->palette(), q->locale(), q->layoutDirection()};
}

// What is shown at this moment.
void QvelTrendWidget::Private::finishView()
{
    follow();
    view.cursor = fixedCursor;
    view.hasFocus = q->hasFocus();
    const bool isReading =
        std::any_of(nodes.cbegin(), nodes.cend(), [](const Variable& v) { return v.isReading; });
    view.note = isReading ? tr("Reading the history ...") : said(message);
    if (dropped > 0)
        view.note =
            tr("The oldest values were dropped: %1 are kept.").arg(q->locale().toString(maximum)) +
            (view.note.isEmpty() ? QString() : u' ' + view.note);
    view.state = following > 0 ? tr("Live, %1").arg(durationText(following, q->locale()))
                               : tr("Paused (End: live)");
    view.hint = tr("Drop variables here, or paste them.");
}

TrendPicture QvelTrendWidget::Private::picture()
{
    finishView();
    TrendPicture made(curves, view, look(), q->size());
    if (hover)
        view.cursor = made.timeAt(*hover);
    plotWidth = std::max(made.plot().width(), 1.); // none while a layout is made
    return made;
}

QString QvelTrendWidget::Private::spoken() const
{
    QStringList parts;
    if (view.cursor) {
        parts.append(trendTimeText(*view.cursor, 1, q->locale()));
        for (const auto& curve : curves) {
            const auto at = curve->points.upperBound(*view.cursor);
            if (curve->isVisible && at != curve->points.begin())
                parts.append(QStringLiteral("%1: %2").arg(
                    curve->label,
                    trendValueText(*curve, curve->points.at(curve->points.previous(at)),
                                   q->locale())));
        }
    } else {
        parts.append(view.state);
        if (!view.note.isEmpty())
            parts.append(view.note);
        for (const auto& curve : curves) {
            QString text = trendCurrentText(*curve, q->locale());
            if (curve->hasCurrent && !curve->trouble.isEmpty())
                text += QStringLiteral(" (%1)").arg(curve->trouble);
            parts.append(QStringLiteral("%1: %2").arg(curve->label, text));
        }
    }
    return parts.join(QLatin1String("; "));
}

QString QvelTrendWidget::Private::toolTip(const TrendCurve& curve) const
{
    QStringList lines{curve.label};
    const auto variable = nodes.constFind(curve.id);
    if (variable != nodes.cend())
        lines.append(shownText(qvelNodeIdText(variable->node)));
    if (curve.hasCurrent) {
        lines.append(tr("Value: %1").arg(shownText(curve.current.value().toString().toQString())));
        lines.append(tr("Status: %1").arg(curve.current.status().toString().toQString()));
        if (!curve.current.sourceTimestamp().isNull())
            lines.append(tr("Time: %1")
                             .arg(trendTimeText(curve.current.sourceTimestamp().ticks(), 10'000,
                                                q->locale())));
    }
    lines.append(tr("%1 points").arg(q->locale().toString(curve.points.size())));
    if (!curve.trouble.isEmpty())
        lines.append(curve.trouble);
    if (variable != nodes.cend() && variable->history)
        lines.append(said(variable->history));
    return plainToolTip(lines.join(u'\n'));
}

// What failed one by one, the rest together.
QString QvelTrendWidget::Private::textOf(const QMap<int, Reading>& readings) const
{
    QStringList texts;
    QString last;
    int series = 0;
    qsizetype values = 0;
    for (const Reading& each : readings) {
        const QString text = each.label + QLatin1String(": ") + each.told();
        if (each.status.isBad()) {
            texts.append(text);
            continue;
        }
        last = text;
        values += each.values;
        ++series;
    }
    if (series > 1)
        last = tr("%1 series: %2 values came from the history.")
                   .arg(q->locale().toString(series), q->locale().toString(values));
    if (series > 0)
        texts.append(last);
    return texts.join(QLatin1String("; "));
}

QvelTrendWidget::QvelTrendWidget(QWidget* parent)
    : QWidget(parent), d(std::make_unique<Private>(this))
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    d->clock.start();
    d->painting.setSingleShot(true);
    connect(&d->painting, &QTimer::timeout, this, [this] { d->tick(); });
    connect(&d->variables, &TrendVariables::connectionChanged, this,
            [this] { d->showConnection(); });
    connect(&d->variables, &TrendVariables::gapCame, this, [this] {
        for (const auto& curve : d->curves)
            curve->isGapPending = d->nodes.contains(curve->id);
    });
    connect(&d->variables, &TrendVariables::described, this,
            [this](int id, const auto& description) { d->describe(id, description); });
    connect(&d->variables, &TrendVariables::valuesCame, this,
            [this](int id, const auto& values) { append(id, values); });
    connect(&d->variables, &TrendVariables::monitored, this, [this](int id, UaStatusCode status) {
        TrendCurve* curve = d->find(id);
        if (!curve)
            return;
        Private::Variable& variable = d->nodes[id];
        variable.status = status;
        variable.isMonitored = !status.isBad();
        curve->isLive = variable.isMonitored;
        curve->trouble = status.isBad() ? status.toString().toQString() : QString();
        d->changed();
    });
    connect(
        &d->variables, &TrendVariables::historyCame, this,
        [this](int id, UaStatusCode status, const QList<UaDataValue>& values) {
            std::vector<TrendPoint> points;
            for (const UaDataValue& value : values) {
                if (const auto number = trendNumber(value.value());
                    number || value.status().isBad())
                    points.push_back(
                        {timeOf(value).ticks(), number.value_or(qQNaN()), value.status().code()});
            }
            TrendCurve* curve = d->find(id);
            d->nodes[id].isReading = false;
            const Words told = [this, status, size = values.size()] {
                return status.isBad()
                           ? tr("The history could not be read: %1")
                                 .arg(status.toString().toQString())
                           : tr("%1 values came from the history.").arg(locale().toString(size));
            };
            d->nodes[id].history = told;
            d->reading.insert(id, {curve->label, status, values.size(), told});
            d->message = [this, reading = d->reading] { return d->textOf(reading); };
            d->insert(*curve, std::move(points));
        });
    retranslated(this, [this] { d->retranslate(); });
}

QvelTrendWidget::~QvelTrendWidget() = default;

void QvelTrendWidget::setSession(QvelSession* session)
{
    if (session != d->variables.session())
        for (Private::Variable& variable : d->nodes)
            variable.isMonitored = variable.isReading = false;
    d->variables.setSession(session);
}

QvelSession* QvelTrendWidget::session() const
{
    return d->variables.session();
}

int QvelTrendWidget::addVariable(const QvelNodeLink& node)
{
    for (auto it = d->nodes.cbegin(); it != d->nodes.cend(); ++it)
        if (it->node == node.nodeId)
            return it.key();
    const QString id = qvelNodeIdText(node.nodeId);
    TrendCurve* curve = d->make(node.displayName.isEmpty() ? id : node.displayName, {});
    if (!curve)
        return 0;
    Private::Variable variable;
    variable.node = node.nodeId;
    variable.isNamed = !node.displayName.isEmpty();
    d->nodes.insert(curve->id, variable);
    curve->isStale = !d->variables.isConnected();
    curve->trouble = curve->isStale ? tr("not connected") : QString();
    d->variables.add(curve->id, node.nodeId);
    const int number = curve->id;
    Q_EMIT seriesChanged();
    return number;
}

int QvelTrendWidget::addSeries(const QString& name, const QString& unit)
{
    const TrendCurve* curve = d->make(name, unit);
    const int number = curve ? curve->id : 0;
    if (number)
        Q_EMIT seriesChanged();
    return number;
}

void QvelTrendWidget::removeSeries(int series)
{
    const auto found = std::find_if(d->curves.begin(), d->curves.end(),
                                    [series](const auto& curve) { return curve->id == series; });
    if (found == d->curves.end())
        return;
    d->total -= (*found)->points.size();
    d->curves.erase(found);
    d->nodes.remove(series);
    d->variables.remove(series);
    d->changed();
    Q_EMIT seriesChanged();
}

QList<int> QvelTrendWidget::series() const
{
    QList<int> ids;
    for (const auto& curve : d->curves)
        ids.append(curve->id);
    return ids;
}

QString QvelTrendWidget::seriesName(int series) const
{
    const TrendCurve* curve = d->find(series);
    return curve ? curve->name : QString();
}

QString QvelTrendWidget::seriesUnit(int series) const
{
    const TrendCurve* curve = d->find(series);
    return curve ? curve->unit : QString();
}

UaExpandedNodeId QvelTrendWidget::seriesNode(int series) const
{
    return d->nodes.value(series).node;
}

QColor QvelTrendWidget::seriesColor(int series) const
{
    const TrendCurve* curve = d->find(series);
    return curve ? curve->colorOn(palette()) : QColor();
}

void QvelTrendWidget::setSeriesColor(int series, const QColor& color)
{
    if (TrendCurve* curve = d->find(series))
        curve->color = color;
    d->changed();
}

bool QvelTrendWidget::isSeriesVisible(int series) const
{
    const TrendCurve* curve = d->find(series);
    return curve && curve->isVisible;
}

void QvelTrendWidget::setSeriesVisible(int series, bool visible)
{
    if (TrendCurve* curve = d->find(series))
        curve->isVisible = visible;
    d->changed();
}

void QvelTrendWidget::setSeriesStepped(int series, bool stepped)
{
    if (TrendCurve* curve = d->find(series))
        curve->isStepped = stepped || !curve->names.isEmpty();
    d->changed();
}

UaDataValue QvelTrendWidget::currentValue(int series) const
{
    const TrendCurve* curve = d->find(series);
    return curve ? curve->current : UaDataValue();
}

qsizetype QvelTrendWidget::pointCount(int series) const
{
    const TrendCurve* curve = d->find(series);
    return curve ? curve->points.size() : 0;
}

void QvelTrendWidget::append(int series, const QList<UaDataValue>& values)
{
    if (TrendCurve* curve = d->find(series))
        d->receive(*curve, values);
}

void QvelTrendWidget::append(int series, const UaDateTime& time, double value)
{
    TrendCurve* curve = d->find(series);
    if (!curve)
        return;
    // Without the detour over a list, for those who append millions.
    const qsizetype before = curve->points.size();
    curve->points.insert(TrendPoint{time.ticks(), value, OpcUa_Good});
    d->total += curve->points.size() - before;
    ++curve->arrivals;
    curve->lastTime = time.ticks();
    curve->lastArrival = d->clock.elapsed();
    curve->setCurrent(UaDataValue(UaVariant(OpcUa_Double(value)), OpcUa_Good, time));
    d->keepToLimit();
    d->changed();
}

void QvelTrendWidget::clear()
{
    for (const auto& curve : d->curves)
        curve->points = {};
    d->total = d->dropped = 0;
    d->changed();
}

qsizetype QvelTrendWidget::maximumPoints() const
{
    return d->maximum;
}

void QvelTrendWidget::setMaximumPoints(qsizetype count)
{
    d->maximum = std::max<qsizetype>(count, 1);
    d->keepToLimit();
    d->changed();
}

qsizetype QvelTrendWidget::droppedPoints() const
{
    return d->dropped;
}

double QvelTrendWidget::samplingInterval() const
{
    return d->variables.samplingInterval();
}

void QvelTrendWidget::setSamplingInterval(double interval)
{
    if (interval >= -1 && std::isfinite(interval))
        d->variables.setSampling(interval, queueSize());
}

double QvelTrendWidget::publishingInterval() const
{
    return d->variables.publishingInterval();
}

void QvelTrendWidget::setPublishingInterval(double interval)
{
    if (interval >= 0 && std::isfinite(interval))
        d->variables.setPublishingInterval(interval);
}

quint32 QvelTrendWidget::queueSize() const
{
    return d->variables.queueSize();
}

void QvelTrendWidget::setQueueSize(quint32 size)
{
    d->variables.setSampling(samplingInterval(), size);
}

std::pair<UaDateTime, UaDateTime> QvelTrendWidget::timeRange() const
{
    d->follow();
    return {UaDateTime(d->view.from), UaDateTime(d->view.to)};
}

void QvelTrendWidget::setTimeRange(const UaDateTime& from, const UaDateTime& to)
{
    d->stand(from.ticks(), to.ticks());
}

double QvelTrendWidget::following() const
{
    return d->following;
}

void QvelTrendWidget::setFollowing(double seconds)
{
    constexpr double shortest = 0.01, longest = 1e9;
    const double bounded = seconds > 0 ? std::clamp(seconds, shortest, longest) : 0;
    if (bounded == d->following)
        return;
    d->follow();
    d->following = bounded;
    if (bounded > 0)
        d->lastFollowing = bounded;
    d->changed();
    Q_EMIT followingChanged(bounded);
}

void QvelTrendWidget::showAll()
{
    std::optional<qint64> first, last;
    for (const auto& curve : d->curves) {
        if (!curve->isVisible || curve->points.isEmpty())
            continue;
        first = std::min(first.value_or(lastTrendTime), curve->points.first().time);
        last = std::max(last.value_or(firstTrendTime), curve->points.last().time);
    }
    resetScales();
    if (!first)
        return;
    *first = std::clamp(*first, firstTrendTime, lastTrendTime);
    *last = std::clamp(*last, firstTrendTime, lastTrendTime);
    const qint64 margin = std::max((*last - *first) / 50, shortestSpan);
    d->stand(*first - margin, *last + margin);
}

void QvelTrendWidget::setScale(const QString& unit, double low, double high)
{
    if (std::isfinite(low) && std::isfinite(high) && low < high)
        d->fixScale(unit, low, high);
}

void QvelTrendWidget::resetScales()
{
    d->view.fixedScales.clear();
    d->changed();
}

UaDateTime QvelTrendWidget::cursorTime() const
{
    return UaDateTime(d->view.cursor.value_or(0));
}

void QvelTrendWidget::setCursorTime(const UaDateTime& time)
{
    d->setCursor(time.isNull() ? std::nullopt : std::optional(qint64(time.ticks())));
}

QRect QvelTrendWidget::plotArea() const
{
    return d->picture().plot().toAlignedRect();
}

bool QvelTrendWidget::canLoadHistory() const
{
    return d->variables.isConnected() &&
           std::any_of(d->nodes.cbegin(), d->nodes.cend(),
                       [](const Private::Variable& variable) { return variable.hasHistory; });
}

void QvelTrendWidget::loadHistory()
{
    QList<int> ids;
    for (auto it = d->nodes.cbegin(); it != d->nodes.cend(); ++it)
        if (it->hasHistory)
            ids.append(it.key());
    if (ids.isEmpty() || !d->variables.isConnected())
        return;
    for (const int id : std::as_const(ids))
        d->nodes[id].isReading = true;
    d->reading.clear();
    d->changed();
    const auto [from, to] = timeRange();
    d->variables.loadHistory(ids, from, to, d->maximum);
}

QSize QvelTrendWidget::sizeHint() const
{
    const int em = fontMetrics().height();
    return {40 * em, 22 * em};
}

QSize QvelTrendWidget::minimumSizeHint() const
{
    const int em = fontMetrics().height();
    return {14 * em, 10 * em};
}
