#pragma once

#include "live/trendaxis_p.h"
#include "live/trendseries_p.h"
#include "platform/types/uadatavalue.h"

#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QRect>
#include <QtGui/QColor>
#include <QtGui/QFont>
#include <QtGui/QFontMetricsF>
#include <QtGui/QPalette>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

class QPaintDevice;
class QPainter;

/// A series of a trend, and how it is drawn.
struct TrendCurve
{
    int id = 0;
    QString name;
    QString label; ///< of the name, what is shown
    QString unit;
    QString unitLabel;
    QMap<int, QString> names; ///< of the values of an enumeration, as they are shown
    /// Scales are shared by the series with one unit, and by those with the same names.
    QString scaleKey;
    QColor color; ///< the host's choice; invalid for the one of `colorIndex`
    int colorIndex = 0;
    bool isVisible = true;
    bool isStepped = false; ///< a value holds until the next one
    bool isLive = false;    ///< the last value holds until now
    bool isStale = false;
    bool isGapPending = false;                      ///< values before the next one are missing
    bool isNamedHere = false;                       ///< its values, in the user's language
    std::optional<std::pair<double, double>> range; ///< that the values should keep to
    TrendSeries points;
    UaDataValue current; ///< as it came last
    bool hasCurrent = false;
    QString currentText;    ///< where it is no number
    QString trouble;        ///< why there is nothing to draw, or not all of it
    int arrivals = 0;       ///< since the connection came
    qint64 lastTime = 0;    ///< of the point that came last,
    qint64 lastArrival = 0; ///< and when it came, in ms of the widget's clock

    void setName(const QString& text);
    void setUnit(const QString& text);
    void setNames(QMap<int, QString> texts);
    void setCurrent(const UaDataValue& value);
    QColor colorOn(const QPalette& palette) const;
};
using TrendCurves = std::vector<std::unique_ptr<TrendCurve>>;
using TrendRange = std::pair<double, double>;

/// A color of its own for each of the first eight, with a contrast of 3:1 or more to `base`; then
/// they come again.
QColor trendColor(int index, const QColor& base);
/// A scalar that is a number or a Boolean.
std::optional<double> trendNumber(const UaVariant& value);
/// The value of a point in the locale, or its status.
QString trendValueText(const TrendCurve& curve, const TrendPoint& point, const QLocale& locale);
/// What came last, also where it cannot be drawn.
QString trendCurrentText(const TrendCurve& curve, const QLocale& locale);

/// What of the curves is looked at.
struct TrendView
{
    qint64 from = 0;
    qint64 to = 0;
    qint64 now = 0;                         ///< until when live values hold
    QHash<QString, TrendRange> fixedScales; ///< by their keys
    std::optional<qint64> cursor;
    QRectF band; ///< that the mouse draws
    QString note;
    QString state;
    QString hint; ///< where there is no series
    bool hasFocus = false;
};

/// How it is to look.
struct TrendLook
{
    QFont font;
    QPalette palette;
    QLocale locale;
    Qt::LayoutDirection direction = Qt::LeftToRight;
};

/// The picture of a trend: lays it out when made, and then paints it on anything. The curves and
/// the view must stay meanwhile.
class TrendPicture
{
public:
    struct Scale
    {
        QString key;
        QString title;
        QMap<int, QString> names;
        std::vector<const TrendCurve*> curves;
        double low = 0;
        double high = 1;
        bool isFixed = false;
        QRectF gutter; ///< left of the plot; null where there is no room
        QList<TrendValueMark> marks;
    };
    struct Entry
    {
        const TrendCurve* curve = nullptr;
        QRectF area;
    };

    TrendPicture(const TrendCurves& curves, const TrendView& view, TrendLook look,
                 const QSizeF& size);
    void paint(QPainter& painter) const;

    const QRectF& plot() const { return m_plot; }
    const std::vector<Scale>& scales() const { return m_scales; }
    const Scale* scaleAt(const QPointF& place) const;
    const TrendCurve* legendAt(const QPointF& place) const;
    qint64 timeAt(double x) const;
    double xOf(qint64 time) const;
    double yOf(double value, const Scale& scale) const;
    QColor colorOf(const TrendCurve& curve) const;

private:
    void makeScales();
    void fitScale(Scale& scale, int marks) const;
    void placeLegend();
    void paintLegend(QPainter& painter) const;
    void paintAxes(QPainter& painter) const;
    void paintCurve(QPainter& painter, const TrendCurve& curve, const Scale& scale) const;
    void paintPoints(QPainter& painter, const TrendCurve& curve, const Scale& scale,
                     TrendSeries::Position from, TrendSeries::Position to) const;
    void paintColumns(QPainter& painter, const TrendCurve& curve, const Scale& scale,
                      TrendSeries::Position from) const;
    void paintUncertain(QPainter& painter, const QList<QPointF>& places) const;
    void paintCursor(QPainter& painter) const;
    QColor faded(double part) const;

    const TrendCurves& m_curves;
    const TrendView& m_view;
    const TrendLook m_look;
    QSizeF m_size;
    QFontMetricsF m_metrics;
    double m_em;
    QRectF m_plot;
    std::vector<Scale> m_scales;
    std::vector<Entry> m_legend;
    double m_legendBottom = 0;
    int m_unlisted = 0; // entries without room
};
