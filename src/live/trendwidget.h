#pragma once

#include "../kestrelexport.h"
#include "../platform/types/uadatavalue.h"
#include "../platform/types/uaexpandednodeid.h"

#include <QtCore/QJsonObject>
#include <QtGui/QColor>
#include <QtWidgets/QWidget>

#include <memory>
#include <utility>

class QIODevice;
class QMenu;
class QvelSession;
struct QvelNodeLink;

/// Curves of values over time: of variables of a session, and of series that the host fills.
///
/// Series are known by a number above 0 that is not used again. Their points are kept in the order
/// of their source time stamps (else server time stamps, else the time of arrival), whatever the
/// order in which they come; a point that is there already is not kept twice. Numbers and Booleans
/// are drawn; of anything else the legend tells the last value. Bad values, NaN and infinities are
/// gaps, Uncertain ones have open squares. Series with the same unit share a scale.
///
/// All series together keep at most maximumPoints() (24 bytes each); the longest one then loses its
/// oldest, which is told below the plot and by droppedPoints().
///
/// Mouse: the wheel zooms around the pointer, over a scale that scale, and pans with Shift;
/// dragging pans; dragging with Shift zooms into the band; a double click follows again with all
/// scales automatic, over a scale it resets that one; a click in the legend hides and shows a
/// series. Keys: Left, Right, Page Up and Page Down pan; Shift and Left or Right move the cursor
/// from point to point, Escape removes it; Up and Down pan the scales; + and - zoom, with Ctrl the
/// scales; Home goes to the oldest point, End follows, 0 shows everything. Nodes may be dropped and
/// pasted.
///
/// User-interface thread only.
class KESTREL_EXPORT QvelTrendWidget : public QWidget
{
    Q_OBJECT
    /// How many seconds the axis shows while it runs along; 0 while it stands.
    Q_PROPERTY(double following READ following WRITE setFollowing NOTIFY followingChanged)
    Q_PROPERTY(double samplingInterval READ samplingInterval WRITE setSamplingInterval)
    Q_PROPERTY(double publishingInterval READ publishingInterval WRITE setPublishingInterval)
    Q_PROPERTY(uint queueSize READ queueSize WRITE setQueueSize)
    Q_PROPERTY(qlonglong maximumPoints READ maximumPoints WRITE setMaximumPoints)
public:
    explicit QvelTrendWidget(QWidget* parent = nullptr);
    ~QvelTrendWidget() override;

    /// Where the variables are. Not owned; null for none. What was recorded stays, and variables
    /// are monitored again wherever the next session knows them.
    void setSession(QvelSession* session);
    QvelSession* session() const;

    /// Monitors the value of a variable, now or once there is a connection. Its number; that of the
    /// series there is where the variable is in the trend already; 0 when there are 256 series.
    int addVariable(const QvelNodeLink& node);
    /// A series that append() fills. Its number, or 0 when there are 256 series.
    int addSeries(const QString& name, const QString& unit = {});
    void removeSeries(int series);
    /// In the order in which they were added.
    QList<int> series() const;
    QString seriesName(int series) const;
    QString seriesUnit(int series) const;
    /// The null NodeId for a series of the host's own.
    UaExpandedNodeId seriesNode(int series) const;
    /// The color; by default one of eight that suit the palette.
    QColor seriesColor(int series) const;
    /// An invalid one for the default.
    void setSeriesColor(int series, const QColor& color);
    bool isSeriesVisible(int series) const;
    void setSeriesVisible(int series, bool visible);
    /// Whether a value holds until the next one. Booleans and enumerations always do.
    void setSeriesStepped(int series, bool stepped);
    /// What came last.
    UaDataValue currentValue(int series) const;
    /// Points that are kept.
    qsizetype pointCount(int series) const;

    void append(int series, const QList<UaDataValue>& values);
    void append(int series, const UaDateTime& time, double value);
    /// Drops the points of all series.
    void clear();

    /// At most as many points in all series together; 10,000,000 by default.
    qsizetype maximumPoints() const;
    void setMaximumPoints(qsizetype count);
    /// How many had to go for that.
    qsizetype droppedPoints() const;

    /// What the server is asked for, in milliseconds: 250 by default.
    double samplingInterval() const;
    void setSamplingInterval(double interval);
    double publishingInterval() const;
    void setPublishingInterval(double interval);
    /// How many values of each variable the server keeps for us between two answers: 10.
    quint32 queueSize() const;
    void setQueueSize(quint32 size);

    /// What the axis shows, from the first to the second.
    std::pair<UaDateTime, UaDateTime> timeRange() const;
    /// Stops following. Bounds are swapped where they need it, kept between the years 1601 and
    /// 9999, and at least 10 microseconds apart.
    void setTimeRange(const UaDateTime& from, const UaDateTime& to);
    double following() const;
    /// Shows the last `seconds`, and goes along with the time of the values: this computer's, or
    /// that of the sources where all their clocks are set otherwise. 0 stops.
    void setFollowing(double seconds);
    /// Everything that was recorded, with automatic scales.
    void showAll();
    /// Fixes the scale of a unit; ignored unless `low` < `high`, both finite.
    void setScale(const QString& unit, double low, double high);
    /// All scales fit the values in view and the engineering range again.
    void resetScales();

    /// Where the values of all series are told; null for no cursor.
    UaDateTime cursorTime() const;
    void setCursorTime(const UaDateTime& time);
    /// Where the curves are.
    QRect plotArea() const;

    /// Whether some variable has a history that may be read.
    bool canLoadHistory() const;
    /// Reads what the servers keep of the range that is shown.
    void loadHistory();

    /// The picture as it stands, but for cursor and focus. False with a reason, in words for the
    /// user, in `error`, which may be null; files are replaced only where all went well.
    bool exportPng(QIODevice* device, QString* error = nullptr) const;
    bool exportPng(const QString& fileName, QString* error = nullptr) const;
    bool exportSvg(QIODevice* device, QString* error = nullptr) const;
    bool exportSvg(const QString& fileName, QString* error = nullptr) const;
    /// All points of visible series in the range shown, by time: RFC 4180 in UTF-8, with the
    /// columns Time (ISO 8601 in UTC), Series, Unit, Value (as many digits as it takes to read the
    /// same number again) and Status (by name).
    bool exportCsv(QIODevice* device, QString* error = nullptr) const;
    bool exportCsv(const QString& fileName, QString* error = nullptr) const;

    /// Variables, by the URI of their namespaces, scales, range and rates, for a project file; no
    /// points, and no series of the host's own.
    QJsonObject toJson() const;
    /// Takes the place of all variables. False, with nothing changed, where `object` is none of
    /// toJson(), or of a later version; entries that are damaged are left out and named in `error`.
    bool fromJson(const QJsonObject& object, QString* error = nullptr);

    /// The context menu; the caller deletes it. Its actions have object names.
    QMenu* createMenu(QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void seriesChanged(); ///< one came, went, or got another name or unit
    void followingChanged(double seconds);
    /// By the user or by setTimeRange(); not while following.
    void timeRangeChanged();
    void cursorTimeChanged(const UaDateTime& time);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
