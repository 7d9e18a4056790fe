#include "trendpicture_p.h"

#include "base/contrast_p.h"
#include "base/showntext_p.h"
#include "nodes/statustext_p.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QPainter>

#include <algorithm>
#include <climits>
#include <cmath>
#include <iterator>

namespace {

constexpr int colorCount = 8;
// Apart in hue and in lightness, for light grounds and for dark ones.
constexpr QRgb lightColors[colorCount] = {0xff1d5fbf, 0xffc2410c, 0xff15803d, 0xff8b2fc9,
                                          0xff0a91a8, 0xffd6246e, 0xff7a5c00, 0xff3f4a5a};
constexpr QRgb darkColors[colorCount] = {0xff6aa8ff, 0xffff944d, 0xff4ade80, 0xffc79bff,
                                         0xff22d3ee, 0xffff7ab8, 0xfff5d04e, 0xffd5dce6};
constexpr double lineWidth = 1.5;
// Values beyond are drawn at the edge, so that sums of them stay numbers.
constexpr double mostValue = 1e300;

double bounded(double value)
{
    return std::clamp(value, -mostValue, mostValue);
}

/// A line from place to place, of which only what is near the plot is kept.
class ClippedLine
{
public:
    explicit ClippedLine(const QRectF& box) : m_box(box) {}

    bool isBroken() const { return !m_hasLast; }
    const QPointF& last() const { return m_last; }
    void breakOff() { m_hasLast = false; }
    void to(const QPointF& place)
    {
        QPointF from = m_hasLast ? m_last : place, to = place;
        const bool isContinued = m_hasLast && !lines.empty() && lines.back().last() == from;
        m_hasLast = true;
        m_last = place;
        if (!clip(from, to))
            return;
        if (!isContinued || lines.back().last() != from)
            lines.emplace_back().append(from);
        lines.back().append(to);
    }
    std::vector<QPolygonF> lines; // those of one place stand for a single point

private:
    // Liang and Barsky's.
    bool clip(QPointF& from, QPointF& to) const
    {
        const QPointF delta = to - from;
        double enter = 0, leave = 1;
        const auto cut = [&](double direction, double distance) {
            if (direction == 0)
                return distance >= 0;
            (direction < 0 ? enter : leave) = direction < 0 ? std::max(enter, distance / direction)
                                                            : std::min(leave, distance / direction);
            return enter <= leave;
        };
        if (!cut(-delta.x(), from.x() - m_box.left()) ||
            !cut(delta.x(), m_box.right() - from.x()) || !cut(-delta.y(), from.y() - m_box.top()) ||
            !cut(delta.y(), m_box.bottom() - from.y()))
            return false;
        const QPointF start = from;
        if (enter > 0)
            from = start + enter * delta;
        if (leave < 1)
            to = start + leave * delta;
        return true;
    }

    QRectF m_box;
    QPointF m_last;
    bool m_hasLast = false;
};

} // namespace

// Texts come from servers and may be huge: they are shortened once, not at each painting.
void TrendCurve::setName(const QString& text)
{
    name = text;
    label = shownText(text);
}

void TrendCurve::setUnit(const QString& text)
{
    unit = text;
    unitLabel = shownText(text);
    setNames(names);
}

void TrendCurve::setNames(QMap<int, QString> texts)
{
    for (QString& text : texts)
        text = shownText(text);
    names = std::move(texts);
    scaleKey =
        names.isEmpty() ? unit : u'\n' + QStringList(names.cbegin(), names.cend()).join(u'\n');
    isStepped = isStepped || !names.isEmpty();
}

void TrendCurve::setCurrent(const UaDataValue& value)
{
    current = value;
    hasCurrent = true;
    currentText =
        trendNumber(value.value()) ? QString() : shownText(value.value().toString().toQString());
}

QColor TrendCurve::colorOn(const QPalette& palette) const
{
    return color.isValid() ? color : trendColor(colorIndex, palette.color(QPalette::Base));
}

QColor trendColor(int index, const QColor& base)
{
    const bool isDark = contrast(Qt::white, base) > contrast(Qt::black, base);
    const auto* const colors = isDark ? darkColors : lightColors;
    return readable(QColor(colors[index % colorCount]), base, leastGraphicsContrast);
}

std::optional<double> trendNumber(const UaVariant& value)
{
    using Number = double (*)(const UaVariant&);
    static constexpr Number numbers[] = {
        nullptr,
        [](const UaVariant& v) { return double(v.toBool()); },
        [](const UaVariant& v) { return double(v.toSByte()); },
        [](const UaVariant& v) { return double(v.toByte()); },
        [](const UaVariant& v) { return double(v.toInt16()); },
        [](const UaVariant& v) { return double(v.toUInt16()); },
        [](const UaVariant& v) { return double(v.toInt32()); },
        [](const UaVariant& v) { return double(v.toUInt32()); },
        [](const UaVariant& v) { return double(v.toInt64()); },
        [](const UaVariant& v) { return double(v.toUInt64()); },
        [](const UaVariant& v) { return double(v.toFloat()); },
        [](const UaVariant& v) { return v.toDouble(); },
    };
    const auto type = std::size_t(value.type());
    if (type == 0 || type >= std::size(numbers) ||
        value.arrayType() != OpcUa_VariantArrayType_Scalar)
        return {};
    return numbers[type](value);
}

QString trendValueText(const TrendCurve& curve, const TrendPoint& point, const QLocale& locale)
{
    if (point.isGap())
        return OpcUa_IsBad(point.status) ? UaStatusCode(point.status).toString().toQString()
                                         : locale.toString(point.value);
    constexpr double mostExact = 1e15;
    const bool isWhole =
        point.value == std::floor(point.value) && std::abs(point.value) < mostExact;
    QString text =
        isWhole ? locale.toString(point.value, 'f', 0) : locale.toString(point.value, 'g', 7);
    if (isWhole && std::abs(point.value) < INT_MAX && curve.names.contains(int(point.value)))
        text = curve.names.value(int(point.value));
    if (!curve.unitLabel.isEmpty())
        text += QChar(QChar::Nbsp) + curve.unitLabel;
    if (point.isUncertain())
        text += QStringLiteral(" (%1)").arg(UaStatusCode(point.status).toString().toQString());
    return text;
}

QString trendCurrentText(const TrendCurve& curve, const QLocale& locale)
{
    if (!curve.trouble.isEmpty() && !curve.hasCurrent)
        return curve.trouble;
    if (!curve.hasCurrent)
        return QChar(0x2013);
    const UaVariant& value = curve.current.value();
    const std::optional<double> number = trendNumber(value);
    const TrendPoint point{0, number.value_or(0), curve.current.status().code()};
    if (number || OpcUa_IsBad(point.status))
        return trendValueText(curve, point, locale);
    if (value.isEmpty())
        return QCoreApplication::translate("QvelTrendWidget", "no value");
    return QCoreApplication::translate("QvelTrendWidget", "%1 (not drawn)").arg(curve.currentText);
}

TrendPicture::TrendPicture(const TrendCurves& curves, const TrendView& view, TrendLook look,
                           const QSizeF& size)
    : m_curves(curves), m_view(view), m_look(std::move(look)), m_size(size), m_metrics(m_look.font),
      m_em(m_metrics.height())
{
    placeLegend();
    makeScales();
    // On whole pixels, so that what is straight is sharp.
    const double top = std::round(m_legendBottom + 1.4 * m_em);
    const double bottom = std::round(m_size.height() - 3.6 * m_em);
    const double height = std::max(bottom - top, 2.);
    const int marks = std::clamp(int(height / (2.2 * m_em)), 1, 20);
    // The first scale stands beside the plot, the others further left as long as there is room.
    double width = std::round(0.5 * m_em);
    std::vector<double> widths;
    for (Scale& scale : m_scales)
        fitScale(scale, marks);
    for (const Scale& scale : m_scales) {
        double widest = std::min(m_metrics.horizontalAdvance(scale.title), 6 * m_em);
        for (const TrendValueMark& mark : scale.marks)
            widest = std::max(widest, std::min(m_metrics.horizontalAdvance(mark.label), 8 * m_em));
        widest = std::round(widest + 0.9 * m_em);
        if (width + widest > 0.45 * m_size.width())
            break;
        width += widest;
        widths.push_back(widest);
    }
    m_plot = QRectF(width, top, std::max(std::floor(m_size.width() - width - m_em), 2.), height);
    double right = width;
    for (std::size_t i = 0; i < widths.size(); ++i) {
        m_scales[i].gutter = QRectF(right - widths[i], top, widths[i], height);
        right -= widths[i];
    }
}

void TrendPicture::makeScales()
{
    for (const auto& curve : m_curves) {
        if (!curve->isVisible || curve->points.isEmpty())
            continue;
        const QString& key = curve->scaleKey;
        auto scale = std::find_if(m_scales.begin(), m_scales.end(),
                                  [&key](const Scale& each) { return each.key == key; });
        if (scale == m_scales.end()) {
            m_scales.push_back({key, curve->unitLabel, curve->names, {}, 0, 1, false, {}, {}});
            scale = m_scales.end() - 1;
        }
        scale->curves.push_back(curve.get());
    }
}

void TrendPicture::fitScale(Scale& scale, int marks) const
{
    const auto fixed = m_view.fixedScales.constFind(scale.key);
    scale.isFixed = fixed != m_view.fixedScales.constEnd();
    TrendSummary sum;
    if (scale.isFixed) {
        sum.low = fixed->first;
        sum.high = fixed->second;
    } else if (!scale.names.isEmpty()) {
        sum.low = scale.names.firstKey();
        sum.high = scale.names.lastKey();
    }
    for (std::size_t i = 0; !scale.isFixed && i < scale.curves.size(); ++i) {
        const TrendCurve& curve = *scale.curves[i];
        const TrendSeries& points = curve.points;
        const auto from = points.lowerBound(m_view.from), to = points.upperBound(m_view.to);
        sum.add(points.summary(from, to));
        // What is drawn from outside into the picture.
        if (from != points.begin() && (curve.isStepped || curve.isLive || from == to))
            sum.add(points.at(points.previous(from)));
        if (curve.range) {
            sum.low = std::min(sum.low, curve.range->first);
            sum.high = std::max(sum.high, curve.range->second);
        }
    }
    if (sum.isEmpty())
        sum.add(TrendPoint{0, 0, OpcUa_Good});
    scale.low = bounded(sum.low);
    scale.high = bounded(sum.high);
    if (!scale.isFixed) {
        const double least = std::max(std::abs(scale.high) * 1e-12, 1e-290);
        if (scale.high - scale.low < least) {
            const double half = scale.high == 0 ? 1 : std::abs(scale.high) * 0.1;
            scale.low -= half;
            scale.high += half;
        }
        // To full steps, which also keeps the scale still while the values move.
        const double step = trendStep(scale.high - scale.low, marks);
        if (scale.names.isEmpty()) {
            scale.low = std::floor(scale.low / step + 1e-9) * step;
            scale.high = std::ceil(scale.high / step - 1e-9) * step;
        } else {
            scale.low -= 0.15;
            scale.high += 0.15;
        }
    }
    if (scale.names.isEmpty()) {
        scale.marks = trendValueMarks(scale.low, scale.high, marks, m_look.locale);
        return;
    }
    double last = -std::numeric_limits<double>::infinity();
    const double apart = (scale.high - scale.low) / (2. * marks);
    for (auto name = scale.names.cbegin(); name != scale.names.cend(); ++name) {
        if (name.key() < scale.low || name.key() > scale.high || name.key() - last < apart)
            continue;
        last = name.key();
        scale.marks.append({last, name.value()});
    }
}

void TrendPicture::placeLegend()
{
    const double margin = 0.5 * m_em, row = 1.4 * m_em;
    m_legendBottom = margin;
    if (m_curves.empty())
        return;
    double name = 4 * m_em;
    for (const auto& curve : m_curves)
        name = std::max(name, m_metrics.horizontalAdvance(curve->label.left(100)));
    const double room = m_size.width() - 2 * margin;
    // A column each, so that nothing moves when values do.
    const double width = std::min(std::min(name, 14 * m_em) + 10 * m_em, room);
    const int columns = std::max(1, int(room / std::max(width, 1.)));
    const int rows = std::max(1, int(m_size.height() / 3 / row));
    const int all = int(m_curves.size());
    const int listed = all <= columns * rows ? all : columns * rows - 1;
    m_unlisted = all - listed;
    for (int i = 0; i < listed; ++i) {
        const int line = i / columns;
        const double x = margin + i % columns * (room / columns);
        QRectF area(x, margin + line * row, room / columns - 2 * m_em, row);
        if (m_look.direction == Qt::RightToLeft)
            area.moveRight(m_size.width() - x);
        m_legend.push_back({m_curves[std::size_t(i)].get(), area});
    }
    const int lines = (listed + (m_unlisted > 0) + columns - 1) / columns;
    m_legendBottom += lines * row;
}

const TrendPicture::Scale* TrendPicture::scaleAt(const QPointF& place) const
{
    for (const Scale& scale : m_scales)
        if (scale.gutter.contains(place))
            return &scale;
    return nullptr;
}

const TrendCurve* TrendPicture::legendAt(const QPointF& place) const
{
    for (const Entry& entry : m_legend)
        if (entry.area.contains(place))
            return entry.curve;
    return nullptr;
}

qint64 TrendPicture::timeAt(double x) const
{
    const double part = (x - m_plot.left()) / m_plot.width();
    const double offset = part * double(m_view.to - m_view.from);
    constexpr double most = 4e18;
    return m_view.from + qint64(std::clamp(offset, -most, most));
}

double TrendPicture::xOf(qint64 time) const
{
    qint64 offset = 0;
    if (qSubOverflow(time, m_view.from, &offset))
        offset = time < 0 ? std::numeric_limits<qint64>::min() : std::numeric_limits<qint64>::max();
    return m_plot.left() + double(offset) / double(m_view.to - m_view.from) * m_plot.width();
}

double TrendPicture::yOf(double value, const Scale& scale) const
{
    constexpr double most = 1e9; // pixels
    const double part = (bounded(value) - scale.low) / (scale.high - scale.low);
    return std::clamp(m_plot.bottom() - part * m_plot.height(), -most, most);
}

QColor TrendPicture::colorOf(const TrendCurve& curve) const
{
    return curve.colorOn(m_look.palette);
}

QColor TrendPicture::faded(double part) const
{
    return mixed(m_look.palette.color(QPalette::Base), m_look.palette.color(QPalette::Text), part);
}

void TrendPicture::paint(QPainter& painter) const
{
    painter.setFont(m_look.font);
    // Time goes from left to right everywhere; what is mirrored is so by hand.
    painter.setLayoutDirection(Qt::LeftToRight);
    painter.fillRect(QRectF(QPointF(), m_size), m_look.palette.color(QPalette::Base));
    paintLegend(painter);
    paintAxes(painter);
    painter.save();
    painter.setClipRect(m_plot.adjusted(-1, -1, 1, 1));
    for (const Scale& scale : m_scales)
        for (const TrendCurve* curve : scale.curves)
            paintCurve(painter, *curve, scale);
    painter.restore();
    painter.setPen(m_look.palette.color(QPalette::Text));
    if (m_curves.empty() && !m_view.hint.isEmpty())
        painter.drawText(m_plot.adjusted(m_em, 0, -m_em, 0), Qt::AlignCenter | Qt::TextWordWrap,
                         m_view.hint);
    if (!m_view.band.isNull()) {
        QColor fill = m_look.palette.color(QPalette::Highlight);
        painter.setPen(fill);
        fill.setAlphaF(0.2F);
        painter.fillRect(m_view.band & m_plot, fill);
        painter.drawRect(m_view.band & m_plot);
    }
    if (m_view.cursor)
        paintCursor(painter);
    if (m_view.hasFocus) {
        painter.setPen(QPen(m_look.palette.color(QPalette::Highlight), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(QPointF(), m_size).adjusted(0.5, 0.5, -0.5, -0.5));
    }
}

void TrendPicture::paintLegend(QPainter& painter) const
{
    const bool isMirrored = m_look.direction == Qt::RightToLeft;
    const int lead = isMirrored ? Qt::AlignRight : Qt::AlignLeft;
    const int trail = isMirrored ? Qt::AlignLeft : Qt::AlignRight;
    for (const Entry& entry : m_legend) {
        const TrendCurve& curve = *entry.curve;
        const QRectF& area = entry.area;
        const double swatch = 1.2 * m_em;
        QRectF mark(area.left(), area.center().y() - 0.15 * m_em, swatch, 0.3 * m_em);
        QRectF text = area.adjusted(swatch + 0.4 * m_em, 0, 0, 0);
        if (isMirrored) {
            mark.moveRight(area.right());
            text.translate(-swatch - 0.4 * m_em, 0);
        }
        if (curve.isVisible) {
            painter.fillRect(mark, colorOf(curve));
        } else {
            painter.setPen(colorOf(curve));
            painter.drawRect(mark);
        }
        const QColor ink = m_look.palette.color(QPalette::Text);
        painter.setPen(curve.isStale ? staleColor(m_look.palette) : ink);
        const QString value = m_metrics.elidedText(trendCurrentText(curve, m_look.locale),
                                                   Qt::ElideRight, 0.62 * text.width());
        painter.drawText(text, trail | Qt::AlignVCenter | Qt::TextSingleLine, value);
        const double left = text.width() - m_metrics.horizontalAdvance(value) - 0.6 * m_em;
        painter.drawText(text, lead | Qt::AlignVCenter | Qt::TextSingleLine,
                         m_metrics.elidedText(curve.label, Qt::ElideRight, left));
    }
    if (m_unlisted > 0) {
        painter.setPen(m_look.palette.color(QPalette::Text));
        painter.drawText(
            QRectF(0.5 * m_em, m_legendBottom - 1.4 * m_em, m_size.width() - m_em, 1.4 * m_em),
            trail | Qt::AlignVCenter,
            QCoreApplication::translate("QvelTrendWidget", "%1 more")
                .arg(m_look.locale.toString(m_unlisted)));
    }
}

void TrendPicture::paintAxes(QPainter& painter) const
{
    const QColor textColor = m_look.palette.color(QPalette::Text), grid = faded(0.14);
    const double right = m_plot.right(), bottom = m_plot.bottom();
    const auto textWidth = [this](const QString& text) {
        return m_metrics.horizontalAdvance(text);
    };
    for (std::size_t i = 0; i < m_scales.size(); ++i) {
        const Scale& scale = m_scales[i];
        if (scale.gutter.isNull())
            break;
        const QRectF& gutter = scale.gutter;
        const double axis = gutter.right();
        for (const TrendValueMark& mark : scale.marks) {
            const double y = yOf(mark.value, scale);
            if (y < m_plot.top() - 1 || y > bottom + 1)
                continue;
            painter.setPen(grid);
            if (i == 0)
                painter.drawLine(QLineF(m_plot.left(), y, right, y));
            painter.setPen(textColor);
            painter.drawLine(QLineF(axis - 0.25 * m_em, y, axis, y));
            const QRectF place(gutter.left(), y - m_em, gutter.width() - 0.4 * m_em, 2 * m_em);
            painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                             m_metrics.elidedText(mark.label, Qt::ElideRight, place.width()));
        }
        painter.setPen(textColor);
        const QRectF title(gutter.left(), gutter.top() - 1.4 * m_em, gutter.width(), 1.1 * m_em);
        painter.drawText(title, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                         m_metrics.elidedText(scale.title, Qt::ElideRight, title.width()));
        painter.drawLine(QLineF(axis, gutter.top(), axis, bottom));
        // Whose scale it is.
        const double share = gutter.height() / double(scale.curves.size());
        if (m_scales.size() > 1)
            for (std::size_t k = 0; k < scale.curves.size(); ++k)
                painter.fillRect(QRectF(axis - 0.18 * m_em, gutter.top() + double(k) * share,
                                        0.18 * m_em, share),
                                 colorOf(*scale.curves[k]));
    }
    double labelsEnd = -1e9, datesEnd = -1e9;
    const auto marks =
        trendTimeMarks(m_view.from, m_view.to, m_plot.width(), textWidth, m_look.locale);
    const auto label = [&](const QString& text, double x, double y, double& end) {
        const double width = textWidth(text);
        const double start = std::clamp(x - width / 2, 0., std::max(0., m_size.width() - width));
        if (start < end + 0.4 * m_em)
            return;
        end = start + width;
        painter.drawText(QRectF(start, y, width + 1, 1.1 * m_em),
                         Qt::AlignLeft | Qt::TextSingleLine, text);
    };
    for (const TrendTimeMark& mark : marks) {
        const double x = xOf(mark.time);
        painter.setPen(grid);
        painter.drawLine(QLineF(x, m_plot.top(), x, bottom));
        painter.setPen(textColor);
        painter.drawLine(QLineF(x, bottom, x, bottom + 0.25 * m_em));
        label(mark.label, x, bottom + 0.3 * m_em, labelsEnd);
        if (!mark.date.isEmpty())
            label(mark.date, x, bottom + 1.35 * m_em, datesEnd);
    }
    painter.drawLine(QLineF(m_plot.left(), bottom, right, bottom));
    if (m_scales.empty())
        painter.drawLine(QLineF(m_plot.left(), m_plot.top(), m_plot.left(), bottom));
    const QRectF foot(0.5 * m_em, m_size.height() - 1.2 * m_em, m_size.width() - m_em, 1.1 * m_em);
    const bool isMirrored = m_look.direction == Qt::RightToLeft;
    const QString state = m_metrics.elidedText(m_view.state, Qt::ElideRight, foot.width());
    painter.drawText(foot, (isMirrored ? Qt::AlignLeft : Qt::AlignRight) | Qt::TextSingleLine,
                     state);
    const double left = foot.width() - textWidth(state) - m_em;
    painter.drawText(foot, (isMirrored ? Qt::AlignRight : Qt::AlignLeft) | Qt::TextSingleLine,
                     m_metrics.elidedText(shownText(m_view.note), Qt::ElideRight, left));
}

void TrendPicture::paintCurve(QPainter& painter, const TrendCurve& curve, const Scale& scale) const
{
    const TrendSeries& points = curve.points;
    auto from = points.lowerBound(m_view.from), to = points.upperBound(m_view.to);
    const qsizetype count = points.count(from, to);
    // Lines come in from outside, and go on there.
    if (from != points.begin())
        from = points.previous(from);
    if (to != points.end())
        to = points.next(to);
    const QColor color = colorOf(curve);
    const bool isBeyond = curve.colorIndex >= colorCount; // colours come again
    painter.setPen(QPen(color, lineWidth, isBeyond ? Qt::DashLine : Qt::SolidLine));
    painter.setBrush(color);
    if (count <= 3 * qsizetype(m_plot.width()))
        paintPoints(painter, curve, scale, from, to);
    else
        paintColumns(painter, curve, scale, from);
    if (!curve.isLive || to != points.end() || points.last().isGap())
        return;
    const double begin = std::max(xOf(points.last().time), m_plot.left());
    const double end = std::min(xOf(m_view.now), m_plot.right());
    const double y = yOf(points.last().value, scale);
    painter.setPen(QPen(color, lineWidth, Qt::DotLine));
    if (begin < end && y >= m_plot.top() - 1 && y <= m_plot.bottom() + 1)
        painter.drawLine(QLineF(begin, y, end, y));
}

void TrendPicture::paintPoints(QPainter& painter, const TrendCurve& curve, const Scale& scale,
                               TrendSeries::Position from, TrendSeries::Position to) const
{
    const TrendSeries& points = curve.points;
    ClippedLine line(m_plot.adjusted(-20, -20, 20, 20));
    QList<QPointF> uncertain, places;
    for (auto at = from; at != to; at = points.next(at)) {
        const TrendPoint point = points.at(at);
        if (point.isGap()) {
            // A step holds until it is known to be over.
            if (curve.isStepped && !line.isBroken())
                line.to({xOf(point.time), line.last().y()});
            line.breakOff();
            continue;
        }
        const QPointF place(xOf(point.time), yOf(point.value, scale));
        if (curve.isStepped && !line.isBroken())
            line.to({place.x(), line.last().y()});
        line.to(place);
        places.append(place);
        if (point.isUncertain())
            uncertain.append(place);
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const bool isSpread = double(places.size()) * m_em < m_plot.width();
    if (isSpread) {
        QPen pen = painter.pen();
        painter.setPen(Qt::NoPen);
        for (const QPointF& place : std::as_const(places))
            if (m_plot.adjusted(-5, -5, 5, 5).contains(place))
                painter.drawEllipse(place, 2, 2);
        painter.setPen(pen);
    }
    painter.setBrush(Qt::NoBrush);
    for (const QPolygonF& each : line.lines) {
        if (each.size() > 2 || each.first() != each.last())
            painter.drawPolyline(each);
        else
            painter.fillRect(QRectF(each.first() - QPointF(1, 1), QSizeF(2, 2)),
                             painter.pen().color());
    }
    painter.restore();
    paintUncertain(painter, uncertain);
}

// More points than pixels: from lowest to highest in each column, and on to the next one.
void TrendPicture::paintColumns(QPainter& painter, const TrendCurve& curve, const Scale& scale,
                                TrendSeries::Position from) const
{
    const TrendSeries& points = curve.points;
    const int columns = int(m_plot.width());
    const double ticks = double(m_view.to - m_view.from) / columns;
    QList<QRectF> bars;
    QList<QPointF> uncertain;
    ClippedLine line(m_plot.adjusted(-20, -20, 20, 20)); // over columns without points
    std::optional<QPointF> last;                         // where the line comes from
    if (const TrendPoint before = points.at(from); before.time < m_view.from && !before.isGap())
        last = {xOf(before.time), yOf(before.value, scale)};
    const auto connect = [&](const QPointF& place) {
        line.breakOff();
        line.to(*last);
        if (curve.isStepped)
            line.to({place.x(), last->y()});
        line.to(place);
    };
    auto at = points.lowerBound(m_view.from, from);
    for (int column = 0; column < columns && at != points.end(); ++column) {
        const qint64 end =
            column + 1 == columns ? m_view.to : m_view.from + qint64(ticks * (column + 1));
        const auto next = points.lowerBound(end, at);
        if (next == at)
            continue;
        const TrendSummary sum = points.summary(at, next);
        const TrendPoint first = points.at(at), ended = points.at(points.previous(next));
        at = next;
        const double x = m_plot.left() + column, middle = x + 0.5;
        double top = yOf(sum.high, scale), bottom = yOf(sum.low, scale);
        if (last && !first.isGap() && middle - last->x() > 1.1) {
            connect({middle, yOf(first.value, scale)});
        } else if (last && !first.isGap()) {
            top = std::min(top, last->y());
            bottom = std::max(bottom, last->y());
        } else if (last && curve.isStepped) {
            connect({middle, last->y()});
        }
        last.reset();
        if (!ended.isGap())
            last = {middle, yOf(ended.value, scale)};
        if (sum.isEmpty())
            continue;
        if (sum.hasUncertain)
            uncertain.append({middle, (top + bottom) / 2});
        constexpr double margin = 100; // what is further outside is not worth its area
        top = std::max(top, m_plot.top() - margin);
        bottom = std::min(bottom, m_plot.bottom() + margin);
        if (top <= bottom)
            bars.append(QRectF(x, top - lineWidth / 2, 1, bottom - top + lineWidth));
    }
    if (last && at != points.end() && !points.at(at).isGap())
        connect({xOf(points.at(at).time), yOf(points.at(at).value, scale)});
    for (const QPolygonF& each : line.lines)
        painter.drawPolyline(each);
    const QPen pen = painter.pen();
    painter.setPen(Qt::NoPen);
    painter.drawRects(bars);
    painter.setPen(pen);
    paintUncertain(painter, uncertain);
}

// Open squares, as many as there is room for.
void TrendPicture::paintUncertain(QPainter& painter, const QList<QPointF>& places) const
{
    painter.setPen(QPen(painter.pen().color(), 1));
    painter.setBrush(m_look.palette.color(QPalette::Base));
    double last = -1e9;
    for (const QPointF& place : places) {
        if (place.x() - last < 0.6 * m_em || !m_plot.adjusted(-5, -5, 5, 5).contains(place))
            continue;
        last = place.x();
        const double half = std::round(0.2 * m_em);
        painter.drawRect(QRectF(place - QPointF(half, half), QSizeF(2 * half, 2 * half)));
    }
}

void TrendPicture::paintCursor(QPainter& painter) const
{
    const double x = xOf(*m_view.cursor);
    if (x < m_plot.left() - 1 || x > m_plot.right() + 1)
        return;
    const QColor text = m_look.palette.color(QPalette::Text);
    painter.setPen(QPen(text, 1, Qt::DashLine));
    painter.drawLine(QLineF(x, m_plot.top(), x, m_plot.bottom()));
    struct Row
    {
        QString name, value;
        QColor color;
    };
    std::vector<Row> rows;
    const qint64 resolution =
        (m_view.to - m_view.from) / std::max<qint64>(1, qint64(m_plot.width()));
    rows.push_back({trendTimeText(*m_view.cursor, resolution, m_look.locale), {}, {}});
    double names = 0, values = 0;
    const auto most = std::size_t(std::max(2., m_plot.height() / (1.2 * m_em) - 1));
    for (const auto& curve : m_curves) {
        const auto scale = std::find_if(m_scales.begin(), m_scales.end(), [&](const Scale& each) {
            return each.key == curve->scaleKey;
        });
        const auto at = curve->points.upperBound(*m_view.cursor);
        if (!curve->isVisible || at == curve->points.begin())
            continue;
        const TrendPoint point = curve->points.at(curve->points.previous(at));
        const double y = point.isGap() ? -1 : yOf(point.value, *scale);
        if (y >= m_plot.top() && y <= m_plot.bottom()) {
            painter.setPen(QPen(colorOf(*curve), lineWidth));
            painter.setBrush(m_look.palette.color(QPalette::Base));
            painter.drawEllipse(QPointF(x, y), 0.2 * m_em, 0.2 * m_em);
        }
        if (rows.size() >= most)
            continue;
        Row row{m_metrics.elidedText(curve->label, Qt::ElideRight,
                                     std::min(12 * m_em, 0.2 * m_size.width())),
                m_metrics.elidedText(trendValueText(*curve, point, m_look.locale), Qt::ElideRight,
                                     std::min(18 * m_em, 0.3 * m_size.width())),
                colorOf(*curve)};
        names = std::max(names, m_metrics.horizontalAdvance(row.name));
        values = std::max(values, m_metrics.horizontalAdvance(row.value));
        rows.push_back(row);
    }
    const double line = 1.2 * m_em, pad = 0.4 * m_em, swatch = m_em;
    const double width = std::max(m_metrics.horizontalAdvance(rows.front().name),
                                  rows.size() > 1 ? swatch + names + values + 1.2 * m_em : 0) +
                         2 * pad;
    QRectF box(x + 0.6 * m_em, m_plot.top() + 0.4 * m_em, width, double(rows.size()) * line + pad);
    if (box.right() > m_plot.right() && x - 0.6 * m_em - width >= 0)
        box.moveRight(x - 0.6 * m_em);
    box.moveLeft(std::max(0., std::min(box.left(), m_size.width() - 1 - width)));
    painter.setPen(faded(0.5));
    painter.setBrush(m_look.palette.color(QPalette::Base));
    painter.drawRect(box);
    QRectF place(box.left() + pad, box.top() + pad / 2, width - 2 * pad, line);
    for (const Row& row : rows) {
        QRectF name = place;
        if (row.color.isValid()) {
            painter.fillRect(
                QRectF(place.left(), place.center().y() - 0.15 * m_em, 0.7 * m_em, 0.3 * m_em),
                row.color);
            name.setLeft(place.left() + swatch);
        }
        painter.setPen(text);
        painter.drawText(name, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, row.name);
        painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, row.value);
        place.translate(0, line);
    }
}
