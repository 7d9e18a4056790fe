// What the mouse, the keys, drops and the menu do to a trend.

#include "base/showntext_p.h"
#include "live/trendwidget.h"
#include "live/trendwidget_p.h"
#include "nodes/nodelink.h"

#include <QtGui/QAccessible>
#include <QtGui/QClipboard>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QToolTip>

#include <cmath>

namespace {

constexpr double zoomStep = 1.25;
constexpr double panStep = 0.1;
constexpr double wheelStep = 120; // QWheelEvent's

// For a menu, where "&" marks a key.
QString menuText(const QString& name)
{
    constexpr int longest = 60;
    QString text = name;
    if (text.size() > longest)
        text = text.left(longest) + QChar(0x2026);
    return text.replace(u'&', QLatin1String("&&"));
}

qint64 scaled(qint64 offset, double factor)
{
    constexpr double most = 3e18; // which can be added to any time
    return qint64(std::clamp(double(offset) * factor, -most, most));
}

} // namespace

void QvelTrendWidget::Private::zoomTime(double factor, qint64 around)
{
    stand(around + scaled(view.from - around, factor), around + scaled(view.to - around, factor));
}

void QvelTrendWidget::Private::pan(double part)
{
    follow();
    const qint64 offset = scaled(view.to - view.from, part);
    stand(view.from + offset, view.to + offset);
}

void QvelTrendWidget::Private::fixScale(const QString& key, double low, double high)
{
    // Not closer than doubles can tell apart.
    const double least = std::max(std::abs(low), std::abs(high)) * 1e-12;
    if (std::isfinite(high - low) && high - low > least)
        view.fixedScales.insert(key, {low, high});
    changed();
}

void QvelTrendWidget::Private::zoomScales(double factor, double shift)
{
    const TrendPicture now = picture();
    for (const TrendPicture::Scale& scale : now.scales()) {
        const double half = (scale.high - scale.low) / 2;
        const double middle = scale.low + half + 2 * shift * half;
        fixScale(scale.key, middle - factor * half, middle + factor * half);
    }
}

// To the next point of any series.
void QvelTrendWidget::Private::moveCursor(bool forward)
{
    follow();
    const qint64 from = view.cursor.value_or(forward ? view.from : view.to);
    std::optional<qint64> found;
    for (const auto& curve : curves) {
        const TrendSeries& points = curve->points;
        if (!curve->isVisible || points.isEmpty())
            continue;
        const auto at = forward ? points.upperBound(from) : points.lowerBound(from);
        if (forward ? at == points.end() : at == points.begin())
            continue;
        const qint64 time = points.at(forward ? at : points.previous(at)).time;
        if (!found || (forward ? time < *found : time > *found))
            found = time;
    }
    if (!found)
        return;
    if (*found < view.from || *found > view.to) {
        const qint64 half = (view.to - view.from) / 2;
        if (!stand(*found - half, *found + half))
            return;
    }
    if (!setCursor(found))
        return;
    finishView();
    q->setAccessibleDescription(spoken());
    if (QAccessible::isActive()) {
        QAccessibleEvent said(q, QAccessible::DescriptionChanged);
        QAccessible::updateAccessibility(&said);
    }
}

void QvelTrendWidget::Private::drag(const QPointF& to)
{
    const TrendPicture now = picture();
    const QPointF delta = to - press.place;
    if (press.drag == Drag::Band) {
        view.band = QRectF(press.place, to).normalized() & now.plot();
        changed();
        return;
    }
    for (const auto& [key, low, high] : std::as_const(press.scales)) {
        const double offset = delta.y() / now.plot().height() * (high - low);
        fixScale(key, low + offset, high + offset);
    }
    if (press.drag == Drag::Pan) {
        const double part = -delta.x() / now.plot().width();
        const qint64 offset = scaled(press.to - press.from, part);
        stand(press.from + offset, press.to + offset);
    }
}

void QvelTrendWidget::Private::drawBand(const QPointF& from, const QPointF& to)
{
    constexpr double least = 4; // pixels; less was no band
    const TrendPicture now = picture();
    const QRectF band = QRectF(from, to).normalized() & now.plot();
    view.band = {};
    changed();
    if (band.width() < least)
        return;
    if (band.height() >= least)
        for (const TrendPicture::Scale& scale : now.scales()) {
            const double perPixel = (scale.high - scale.low) / now.plot().height();
            fixScale(scale.key, scale.high - (band.bottom() - now.plot().top()) * perPixel,
                     scale.high - (band.top() - now.plot().top()) * perPixel);
        }
    stand(now.timeAt(band.left()), now.timeAt(band.right()));
}

void QvelTrendWidget::Private::cancelDrag()
{
    const Press was = std::exchange(press, {});
    view.band = {};
    if (was.drag == Drag::None || !was.isMoved)
        return;
    view.fixedScales = was.fixedScales;
    changed();
    if (was.following > 0)
        q->setFollowing(was.following);
    else if (was.drag == Drag::Pan)
        stand(was.from, was.to);
}

void QvelTrendWidget::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    const TrendPicture now = d->picture();
    Private::Press press;
    press.place = event->position();
    press.from = d->view.from;
    press.to = d->view.to;
    press.following = d->following;
    press.fixedScales = d->view.fixedScales;
    const TrendPicture::Scale* held = now.scaleAt(press.place);
    for (const TrendPicture::Scale& scale : now.scales())
        if (held ? &scale == held : scale.isFixed)
            press.scales.append({scale.key, scale.low, scale.high});
    if (const TrendCurve* curve = now.legendAt(press.place)) {
        press.drag = Private::Drag::Legend;
        press.series = curve->id;
    } else if (held) {
        press.drag = Private::Drag::Scale;
    } else if (now.plot().contains(press.place)) {
        press.drag =
            event->modifiers() & Qt::ShiftModifier ? Private::Drag::Band : Private::Drag::Pan;
    }
    d->press = press;
}

void QvelTrendWidget::mouseMoveEvent(QMouseEvent* event)
{
    Private::Press& press = d->press;
    if (press.drag != Private::Drag::None && press.drag != Private::Drag::Legend) {
        const QPointF delta = event->position() - press.place;
        press.isMoved =
            press.isMoved || delta.manhattanLength() >= QApplication::startDragDistance();
        if (press.isMoved)
            return d->drag(event->position());
    }
    const TrendPicture now = d->picture();
    const bool isInside = now.plot().contains(event->position());
    if (!isInside && !d->hover)
        return;
    // A cursor of the keys stays until the mouse comes.
    d->fixedCursor.reset();
    d->hover = isInside ? std::optional(event->position().x()) : std::nullopt;
    d->changed();
    const UaDateTime time(isInside ? now.timeAt(event->position().x()) : 0);
    d->view.cursor = isInside ? std::optional(qint64(time.ticks())) : std::nullopt;
    Q_EMIT cursorTimeChanged(time);
}

void QvelTrendWidget::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mouseReleaseEvent(event);
    const Private::Press was = std::exchange(d->press, {});
    if (was.drag == Private::Drag::Band)
        d->drawBand(was.place, event->position());
    else if (was.drag == Private::Drag::Legend)
        setSeriesVisible(was.series, !isSeriesVisible(was.series));
}

void QvelTrendWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mouseDoubleClickEvent(event);
    const TrendPicture now = d->picture();
    if (now.legendAt(event->position()))
        return mousePressEvent(event); // two clicks
    if (const TrendPicture::Scale* scale = now.scaleAt(event->position())) {
        d->view.fixedScales.remove(scale->key);
        d->changed();
    } else if (now.plot().contains(event->position())) {
        resetScales();
        setFollowing(d->lastFollowing);
    }
}

void QvelTrendWidget::leaveEvent(QEvent* event)
{
    QWidget::leaveEvent(event);
    if (std::exchange(d->hover, std::nullopt)) {
        d->view.cursor.reset();
        d->changed();
        Q_EMIT cursorTimeChanged({});
    }
}

void QvelTrendWidget::wheelEvent(QWheelEvent* event)
{
    event->accept();
    const TrendPicture now = d->picture();
    const QPointF place = event->position();
    const QPointF steps = QPointF(event->angleDelta()) / wheelStep;
    const double factor = std::pow(zoomStep, -steps.y());
    const TrendPicture::Scale* over = now.scaleAt(place);
    const auto zoom = [&](const TrendPicture::Scale& scale) {
        const double part = (now.plot().bottom() - place.y()) / now.plot().height();
        const double middle = scale.low + part * (scale.high - scale.low);
        d->fixScale(scale.key, middle + (scale.low - middle) * factor,
                    middle + (scale.high - middle) * factor);
    };
    if (over)
        zoom(*over);
    else if (event->modifiers() & Qt::ControlModifier)
        for (const TrendPicture::Scale& scale : now.scales())
            zoom(scale);
    else if (steps.x() != 0 || event->modifiers() & Qt::ShiftModifier)
        d->pan(-panStep * (steps.x() != 0 ? steps.x() : steps.y()));
    else if (steps.y() != 0)
        d->zoomTime(factor, now.timeAt(place.x()));
}

void QvelTrendWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Paste)) {
        d->add(qvelNodeLinks(QGuiApplication::clipboard()->mimeData()));
        return;
    }
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const bool isShifted = modifiers & Qt::ShiftModifier;
    const bool isControl = modifiers & Qt::ControlModifier;
    // Around the cursor where there is one; what runs along goes on.
    const auto zoom = [this, isControl](double factor) {
        d->follow();
        if (isControl)
            d->zoomScales(factor, 0);
        else if (d->following > 0)
            setFollowing(d->following * factor);
        else
            d->zoomTime(factor,
                        d->view.cursor.value_or(d->view.from + (d->view.to - d->view.from) / 2));
    };
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right: {
        const bool isRight = event->key() == Qt::Key_Right;
        if (isShifted)
            d->moveCursor(isRight);
        else
            d->pan(isRight ? panStep : -panStep);
        break;
    }
    case Qt::Key_PageUp:
        d->pan(-1);
        break;
    case Qt::Key_PageDown:
        d->pan(1);
        break;
    case Qt::Key_Up:
        d->zoomScales(1, panStep);
        break;
    case Qt::Key_Down:
        d->zoomScales(1, -panStep);
        break;
    case Qt::Key_Plus:
    case Qt::Key_Equal: // the same key without Shift
        zoom(1 / zoomStep);
        break;
    case Qt::Key_Minus:
        zoom(zoomStep);
        break;
    case Qt::Key_Home: {
        d->follow();
        std::optional<qint64> first;
        for (const auto& curve : d->curves)
            if (curve->isVisible && !curve->points.isEmpty())
                first = std::min(first.value_or(lastTrendTime), curve->points.first().time);
        if (first)
            d->stand(*first, *first + (d->view.to - d->view.from));
        break;
    }
    case Qt::Key_End:
        setFollowing(d->lastFollowing);
        break;
    case Qt::Key_0:
        showAll();
        break;
    case Qt::Key_Escape:
        if (d->press.drag != Private::Drag::None)
            d->cancelDrag();
        else if (d->view.cursor)
            setCursorTime({});
        else
            QWidget::keyPressEvent(event);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

QMenu* QvelTrendWidget::createMenu(QWidget* parent)
{
    auto* menu = new QMenu(parent);
    const auto add = [this](QMenu* to, const char* name, const QString& text, auto use) {
        QAction* action = to->addAction(text);
        action->setObjectName(QLatin1String(name));
        connect(action, &QAction::triggered, this, use);
        return action;
    };
    const auto press = [this](Qt::Key key) {
        return [this, key] {
            QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
            keyPressEvent(&event);
        };
    };
    QAction* live = add(menu, "follow", tr("&Live\tEnd"),
                        [this](bool on) { setFollowing(on ? d->lastFollowing : 0); });
    live->setCheckable(true);
    live->setChecked(d->following > 0);
    add(menu, "showAll", tr("Show &everything\t0"), [this] { showAll(); });
    add(menu, "zoomIn", tr("Zoom &in\t+"), press(Qt::Key_Plus));
    add(menu, "zoomOut", tr("Zoom &out\t-"), press(Qt::Key_Minus));
    add(menu, "resetScales", tr("&Reset scales"), [this] {
        resetScales();
    })->setEnabled(!d->view.fixedScales.isEmpty());
    menu->addSeparator();
    add(menu, "loadHistory", tr("Load &history of this range"), [this] {
        loadHistory();
    })->setEnabled(canLoadHistory());
    QMenu* series = menu->addMenu(tr("&Series"));
    series->setObjectName(QStringLiteral("series"));
    series->setEnabled(!d->curves.empty());
    for (const auto& curve : d->curves) {
        const int id = curve->id;
        QMenu* each = series->addMenu(menuText(curve->label));
        QPixmap swatch(each->fontMetrics().height(), each->fontMetrics().height());
        swatch.fill(seriesColor(id));
        each->setIcon(swatch);
        QAction* shown =
            add(each, "visible", tr("&Visible"), [this, id](bool on) { setSeriesVisible(id, on); });
        shown->setCheckable(true);
        shown->setChecked(curve->isVisible);
        add(each, "remove", tr("&Remove"), [this, id] { removeSeries(id); });
    }
    menu->addSeparator();
    add(menu, "exportPng", tr("Export as &PNG..."), [this] {
        d->askFile(tr("Export as PNG"), tr("Pictures (*.png)"), QStringLiteral("png"),
                   [this](const QString& file) {
                       QString error;
                       exportPng(file, &error);
                       d->tellExported(file, error);
                   });
    });
    add(menu, "exportSvg", tr("Export as S&VG..."), [this] {
        d->askFile(tr("Export as SVG"), tr("Drawings (*.svg)"), QStringLiteral("svg"),
                   [this](const QString& file) {
                       QString error;
                       exportSvg(file, &error);
                       d->tellExported(file, error);
                   });
    });
    add(menu, "exportCsv", tr("Export values as &CSV..."), [this] {
        d->askFile(tr("Export values as CSV"), tr("Tables (*.csv)"), QStringLiteral("csv"),
                   [this](const QString& file) { d->exportCsvLater(file); });
    });
    return menu;
}

void QvelTrendWidget::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu* menu = createMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const bool isMouse = event->reason() == QContextMenuEvent::Mouse;
    menu->popup(isMouse ? event->globalPos() : mapToGlobal(plotArea().center()));
}

void QvelTrendWidget::dragEnterEvent(QDragEnterEvent* event)
{
    if (qvelHasNodeLinks(event->mimeData()))
        event->acceptProposedAction();
}

void QvelTrendWidget::dropEvent(QDropEvent* event)
{
    const auto nodes = qvelNodeLinks(event->mimeData());
    if (!nodes.isEmpty())
        event->acceptProposedAction();
    d->add(nodes);
}

bool QvelTrendWidget::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const TrendCurve* curve = d->picture().legendAt(help->pos());
        if (curve)
            QToolTip::showText(help->globalPos(), d->toolTip(*curve), this);
        else
            QToolTip::hideText();
        return true;
    }
    return QWidget::event(event);
}

void QvelTrendWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    d->picture().paint(painter);
}

void QvelTrendWidget::changeEvent(QEvent* event)
{
    update();
    QWidget::changeEvent(event);
}

void QvelTrendWidget::showEvent(QShowEvent* event)
{
    d->changed();
    QWidget::showEvent(event);
}
