#pragma once

#include "base/words_p.h"
#include "live/trendcsv_p.h"
#include "live/trendpicture_p.h"
#include "live/trendvariables_p.h"
#include "live/trendwidget.h"

#include <QtCore/QElapsedTimer>

#include <functional>
#include <tuple>

/// \file
/// The inside of a trend, for its parts: values (trendwidget.cpp), mouse, keys and menu
/// (trendinput.cpp), files (trendexport.cpp).

class QvelTrendWidget::Private
{
public:
    explicit Private(QvelTrendWidget* widget) : q(widget), variables(widget) {}

    struct Variable
    {
        UaExpandedNodeId node;
        UaStatusCode status;
        bool isMonitored = false; // or will be again once the connection is back
        bool hasHistory = false;
        bool isNamed = false; // by the link, not by the server
        bool isReading = false;
        Words history; // how the last reading of it went
    };
    /// How the history of a series was read.
    struct Reading
    {
        QString label;
        UaStatusCode status;
        qsizetype values = 0;
        Words told;
    };
    enum class Drag { None, Pan, Band, Scale, Legend };
    /// What the mouse holds, and how things were when it was pressed.
    struct Press
    {
        Drag drag = Drag::None;
        bool isMoved = false;
        QPointF place;
        qint64 from = 0;
        qint64 to = 0;
        double following = 0;
        QHash<QString, TrendRange> fixedScales;
        QList<std::tuple<QString, double, double>> scales; // that move along
        int series = 0;
    };

    TrendCurve* find(int id) const;
    TrendCurve* make(const QString& name, const QString& unit);
    void insert(TrendCurve& curve, std::vector<TrendPoint> points);
    void receive(TrendCurve& curve, const QList<UaDataValue>& values);
    void keepToLimit();
    void describe(int id, const TrendVariables::Description& description);
    void showConnection();
    void retranslate();
    void changed();
    void tick();

    qint64 edge() const;
    void follow();
    /// These tell the host, which may delete the widget: false where that is gone.
    bool stand(qint64 from, qint64 to);
    bool setCursor(std::optional<qint64> time);
    void add(const QList<QvelNodeLink>& links);
    void zoomTime(double factor, qint64 around);
    void pan(double part);
    void fixScale(const QString& key, double low, double high);
    void zoomScales(double factor, double shift);
    void drawBand(const QPointF& from, const QPointF& to);
    void drag(const QPointF& to);
    void cancelDrag();
    void moveCursor(bool forward);

    TrendLook look() const;
    TrendPicture picture();
    void finishView();
    TrendView still() const;
    void paintOn(QPaintDevice* device) const;
    QSize exportSize() const;
    std::vector<TrendCsvSeries> snapshot() const;
    void askFile(const QString& title, const QString& filter, const QString& suffix,
                 const std::function<void(const QString&)>& use);
    void tellExported(const QString& file, const QString& error);
    void exportCsvLater(const QString& file);
    QString toolTip(const TrendCurve& curve) const;
    QString textOf(const QMap<int, Reading>& readings) const;
    QString spoken() const;

    QvelTrendWidget* const q;
    TrendVariables variables;
    QMap<int, Variable> nodes;
    TrendCurves curves;
    TrendView view;
    int lastId = 0;
    qsizetype total = 0;
    qsizetype maximum = 10'000'000;
    qsizetype dropped = 0;
    double following = 60;
    double lastFollowing = 60;
    Words message;              // what happened last
    QMap<int, Reading> reading; // by the last call for it
    std::optional<qint64> fixedCursor;
    std::optional<double> hover; // the mouse, whose time moves with the axis
    QTimer painting;
    bool isChanged = false; // and not painted yet
    QElapsedTimer clock;
    qint64 lastSpoken = -1000;

    Press press;
    double plotWidth = 1; // of the last picture
};
