#pragma once

#include "../kestrelexport.h"
#include "../nodes/nodelink.h"

#include <QtCore/QJsonObject>
#include <QtWidgets/QWidget>

#include <memory>

class QvelDataViewModel;
class QvelSession;
class QvelSettingsCBInterface;

/// Lists of variables and their present values, each list a tab of its own with a
/// QvelDataViewModel. User-interface thread only.
///
/// Variables are dropped, pasted (nodes or NodeIds, a line each) or added by their id. Value,
/// intervals and queue size are edited in place, these for all selected rows; rows are moved by
/// drag or Alt and the arrow keys, and removed with Del. Lists are added, renamed (a double click
/// on the tab, or F2), moved and closed; those closed last can be had back. A list can be paused,
/// and recorded to a CSV file. Headers are QTableViews' own: their state is the host's.
class KESTREL_EXPORT QvelDataViewWidget : public QWidget
{
    Q_OBJECT
    /// What variables that are added get, in milliseconds: see QvelDataViewModel.
    Q_PROPERTY(double samplingInterval READ samplingInterval WRITE setSamplingInterval)
    Q_PROPERTY(double publishingInterval READ publishingInterval WRITE setPublishingInterval)
    /// As samplingInterval, a number of values.
    Q_PROPERTY(uint queueSize READ queueSize WRITE setQueueSize)
public:
    /// With one empty list.
    explicit QvelDataViewWidget(QWidget* parent = nullptr);
    ~QvelDataViewWidget() override;

    /// The session of all lists, which is not owned; null for none.
    void setSession(QvelSession* session);
    QvelSession* session() const;

    /// The list in front; there always is one.
    QvelDataViewModel* model() const;
    /// All lists, in the order of their tabs. They belong to the widget.
    QList<QvelDataViewModel*> models() const;
    /// The most lists.
    static constexpr int mostLists = 100;
    /// A new list in front; null where there are mostLists.
    QvelDataViewModel* addList(const QString& name = {});
    /// Ends its recording, too.
    void closeList(int index);
    void renameList(int index, const QString& name);

    /// Of all lists.
    double samplingInterval() const;
    void setSamplingInterval(double interval);
    double publishingInterval() const;
    void setPublishingInterval(double interval);
    quint32 queueSize() const;
    void setQueueSize(quint32 size);

    /// To the list in front.
    void addNodes(const QList<QvelNodeLink>& nodes);

    /// Lists, rows and hidden columns, ids by namespace URI. What fromJson() cannot read, it keeps
    /// for the next toJson(): lists that are none, or beyond mostLists, and what the lists
    /// themselves keep. False, with nothing changed, for an object that holds no lists or is of a
    /// later version.
    QJsonObject toJson() const;
    bool fromJson(const QJsonObject& json);

    /// toJson() as a text under the key `group` + "/DataView". What stands there and
    /// cannot be read, such as what a later version has written, changes nothing; the next
    /// saveState() first puts it aside, under "/DataViewUnread" with a number from 1 to 9, and
    /// writes nothing where all of these are taken. Both are false for a failure, and true for a
    /// store that holds nothing yet.
    bool saveState(QvelSettingsCBInterface* settings, const QString& group);
    bool restoreState(QvelSettingsCBInterface* settings, const QString& group);

Q_SIGNALS:
    /// The row that the user has gone to, or has activated by Enter or a double click. Sent once
    /// the table is done with that.
    void variableActivated(const UaExpandedNodeId& nodeId);

private:
    class Private;
    const std::unique_ptr<Private> d;
};
