#pragma once

#include "../kestrelexport.h"
#include "../platform/types/uaexpandednodeid.h"

#include <QtWidgets/QWidget>

#include <memory>

class QTableView;
class QvelReferencesModel;
class QvelSession;

/// The references of one node, in both directions; a double click or Enter tells where to go
/// (nodeActivated()). F5 reads them again, Ctrl+C copies the NodeIds of the selected targets. Nodes
/// can be dragged, see qvelNodeMimeData().
///
/// The session is not owned and may be deleted at any time; see QvelReferencesModel.
/// User-interface thread only.
class KESTREL_EXPORT QvelReferencesWidget : public QWidget
{
    Q_OBJECT
    /// The node as a text, see qvelParseNodeId(); a text that is no NodeId is the null NodeId.
    Q_PROPERTY(QString nodeId READ nodeId WRITE setNodeId)
public:
    explicit QvelReferencesWidget(QWidget* parent = nullptr);
    ~QvelReferencesWidget() override;

    /// Null for none.
    void setSession(QvelSession* session);
    QvelSession* session() const;
    QvelReferencesModel* model() const;
    QTableView* view() const;
    QString nodeId() const;
    void setNodeId(const QString& text);

public Q_SLOTS:
    /// Null for none.
    void setNode(const UaExpandedNodeId& id);

Q_SIGNALS:
    /// Sent once the table is done with the double click or the key.
    void nodeActivated(const UaExpandedNodeId& id);

private:
    class Private;
    const std::unique_ptr<Private> d;
};
