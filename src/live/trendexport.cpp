// What a trend writes: pictures, values, and itself for a project file.

#include "live/trendwidget.h"
#include "live/trendwidget_p.h"
#include "nodes/nodelink.h"
#include "session/whendone_p.h"

#include <QtCore/QBuffer>
#include <QtCore/QJsonArray>
#include <QtCore/QPointer>
#include <QtCore/QPromise>
#include <QtCore/QSaveFile>
#include <QtCore/QThreadPool>
#include <QtGui/QPainter>
#include <QtSvg/QSvgGenerator>
#include <QtWidgets/QFileDialog>

#include <cmath>

namespace {

constexpr int jsonVersion = 1;

bool writeFile(const QString& name, QString* error,
               const std::function<bool(QIODevice*, QString*)>& write)
{
    QSaveFile file(name);
    if (file.open(QIODevice::WriteOnly)) {
        if (!write(&file, error))
            return false;
        if (file.commit())
            return true;
    }
    if (error)
        *error = file.errorString();
    return false;
}

bool writeAll(QIODevice* device, const QByteArray& bytes, QString* error)
{
    if (device->write(bytes) == bytes.size())
        return true;
    if (error)
        *error = device->errorString();
    return false;
}

} // namespace

TrendView QvelTrendWidget::Private::still() const
{
    TrendView picture = view;
    picture.cursor.reset();
    picture.band = {};
    picture.hasFocus = false;
    picture.state.clear();
    picture.note.clear();
    return picture;
}

// That of the widget, also while nobody has seen it.
QSize QvelTrendWidget::Private::exportSize() const
{
    return q->size().expandedTo(q->minimumSizeHint());
}

void QvelTrendWidget::Private::paintOn(QPaintDevice* device) const
{
    QPainter painter(device);
    const TrendView shown = still();
    TrendPicture(curves, shown, look(), exportSize()).paint(painter);
}

std::vector<TrendCsvSeries> QvelTrendWidget::Private::snapshot() const
{
    std::vector<TrendCsvSeries> series;
    for (const auto& curve : curves)
        if (curve->isVisible)
            series.push_back({curve->name, curve->unit, curve->points});
    return series;
}

bool QvelTrendWidget::exportPng(QIODevice* device, QString* error) const
{
    d->follow();
    const qreal ratio = devicePixelRatioF();
    QImage image(d->exportSize() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    d->paintOn(&image);
    QBuffer buffer;
    if (!image.save(&buffer, "PNG")) {
        if (error)
            *error = tr("There is no memory for the picture.");
        return false;
    }
    return writeAll(device, buffer.data(), error);
}

bool QvelTrendWidget::exportPng(const QString& fileName, QString* error) const
{
    return writeFile(fileName, error,
                     [this](QIODevice* file, QString* why) { return exportPng(file, why); });
}

bool QvelTrendWidget::exportSvg(QIODevice* device, QString* error) const
{
    d->follow();
    QBuffer buffer; // the generator does not tell when a device is full
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(d->exportSize());
    generator.setViewBox(QRect(QPoint(), d->exportSize()));
    generator.setResolution(logicalDpiX());
    generator.setTitle(tr("Trend"));
    d->paintOn(&generator);
    return writeAll(device, buffer.data(), error);
}

bool QvelTrendWidget::exportSvg(const QString& fileName, QString* error) const
{
    return writeFile(fileName, error,
                     [this](QIODevice* file, QString* why) { return exportSvg(file, why); });
}

bool QvelTrendWidget::exportCsv(QIODevice* device, QString* error) const
{
    d->follow();
    return writeTrendCsv(d->snapshot(), d->view.from, d->view.to, device, error);
}

bool QvelTrendWidget::exportCsv(const QString& fileName, QString* error) const
{
    return writeFile(fileName, error,
                     [this](QIODevice* file, QString* why) { return exportCsv(file, why); });
}

void QvelTrendWidget::Private::tellExported(const QString& file, const QString& error)
{
    message = [file, error] {
        return error.isEmpty() ? tr("Exported to %1").arg(file)
                               : tr("Not exported to %1: %2").arg(file, error);
    };
    changed();
}

// Millions of lines take their time: on another thread.
void QvelTrendWidget::Private::exportCsvLater(const QString& file)
{
    follow();
    message = [file] { return tr("Exporting to %1 ...").arg(file); };
    changed();
    auto promise = std::make_shared<QPromise<QString>>();
    promise->start();
    whenDone(promise->future(), q,
             [this, file](const QString& error) { tellExported(file, error); });
    QThreadPool::globalInstance()->start(
        [promise, file, series = snapshot(), from = view.from, to = view.to] {
            QString error;
            writeFile(file, &error, [&](QIODevice* device, QString* why) {
                return writeTrendCsv(series, from, to, device, why);
            });
            promise->addResult(error);
            promise->finish();
        });
}

void QvelTrendWidget::Private::askFile(const QString& title, const QString& filter,
                                       const QString& suffix,
                                       const std::function<void(const QString&)>& use)
{
    auto* dialog = new QFileDialog(q, title, {}, filter);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(suffix);
    QObject::connect(dialog, &QFileDialog::fileSelected, q, use);
    dialog->open();
}

QJsonObject QvelTrendWidget::toJson() const
{
    QJsonArray variables, scales;
    for (const auto& curve : d->curves) {
        const auto variable = d->nodes.constFind(curve->id);
        if (variable == d->nodes.cend())
            continue;
        QJsonObject entry{{"nodeId", qvelNodeIdText(variable->node)}};
        if (variable->isNamed)
            entry["name"] = curve->name;
        if (curve->color.isValid())
            entry["color"] = curve->color.name();
        if (!curve->isVisible)
            entry["visible"] = false;
        variables.append(entry);
    }
    QStringList units = d->view.fixedScales.keys();
    units.sort();
    for (const QString& unit : std::as_const(units)) {
        const TrendRange range = d->view.fixedScales.value(unit);
        if (!unit.startsWith(u'\n')) // those of names come by themselves
            scales.append(
                QJsonObject{{"unit", unit}, {"low", range.first}, {"high", range.second}});
    }
    QJsonObject object{{"version", jsonVersion},
                       {"following", d->following},
                       {"samplingInterval", samplingInterval()},
                       {"publishingInterval", publishingInterval()},
                       {"queueSize", qint64(queueSize())},
                       {"maximumPoints", qint64(maximumPoints())},
                       {"variables", variables},
                       {"scales", scales}};
    if (d->following <= 0) {
        object["from"] = UaDateTime(d->view.from).toString().toQString();
        object["to"] = UaDateTime(d->view.to).toString().toQString();
    }
    return object;
}

bool QvelTrendWidget::fromJson(const QJsonObject& object, QString* error)
{
    QStringList damaged;
    const int version = object["version"].toInt();
    if (version < 1 || version > jsonVersion || !object["variables"].isArray()) {
        if (error)
            *error = version > jsonVersion ? tr("This trend was saved by a later version.")
                                           : tr("This is no saved trend.");
        return false;
    }
    const QPointer<QvelTrendWidget> alive(this);
    const auto shown = d->nodes.keys();
    for (const int id : shown)
        if (alive)
            removeSeries(id);
    const auto variables = object["variables"].toArray();
    for (const QJsonValue value : variables) {
        const QJsonObject entry = value.toObject();
        const auto node = qvelParseNodeId(entry["nodeId"].toString());
        const int id = node && alive ? addVariable({*node, entry["name"].toString()}) : 0;
        if (!alive)
            return false;
        if (!id) {
            damaged.append(entry["nodeId"].toString());
            continue;
        }
        setSeriesColor(id, QColor(entry["color"].toString()));
        setSeriesVisible(id, entry["visible"].toBool(true));
    }
    resetScales();
    const auto scales = object["scales"].toArray();
    for (const QJsonValue value : scales) {
        const QJsonObject entry = value.toObject();
        setScale(entry["unit"].toString(), entry["low"].toDouble(), entry["high"].toDouble());
    }
    constexpr double longest = 1e9;
    const auto number = [&](const char* name, double least, double otherwise) {
        return std::clamp(object[QLatin1String(name)].toDouble(otherwise), least, longest);
    };
    d->variables.setSampling(number("samplingInterval", -1, samplingInterval()),
                             quint32(number("queueSize", 0, queueSize())));
    setPublishingInterval(number("publishingInterval", 0, publishingInterval()));
    // A damaged limit must not cost points that were recorded.
    if (const qint64 most = object["maximumPoints"].toInteger(); most > 0)
        setMaximumPoints(qsizetype(most));
    bool hasFrom = false, hasTo = false;
    const auto time = [&object](const char* name, bool* ok) {
        return UaDateTime::fromString(UaString(object[QLatin1String(name)].toString()), ok);
    };
    const UaDateTime from = time("from", &hasFrom), to = time("to", &hasTo);
    if (hasFrom && hasTo)
        setTimeRange(from, to);
    else if (const double seconds = object["following"].toDouble(); seconds > 0)
        setFollowing(seconds);
    if (error)
        *error = damaged.isEmpty() ? QString()
                                   : tr("Not restored: %1").arg(damaged.join(QLatin1String(", ")));
    return true;
}
