#pragma once

#include "../kestrelexport.h"
#include "../platform/types/uaexpandednodeid.h"

#include <QtWidgets/QWidget>

#include <memory>

class QTreeView;
class QvelAddressSpaceModel;
class QvelSession;

/// The address space of a server as a tree, with a line to find and to go to nodes, back and
/// forward (Alt+Left, Alt+Right), refresh (F5) and copy (Ctrl+C).
///
/// The line (Ctrl+F) takes a NodeId, a browse path, or a piece of a name, which is looked for
/// through all the tree; F3 goes on to the next hit. The columns are chosen in the context menu of
/// the header, or under "Columns" in that of the tree. Nodes can be dragged, see
/// qvelNodeMimeData(). Actions that the host adds with addAction() stand at the end of the tree's
/// context menu.
///
/// The session is not owned and may be deleted at any time; see QvelAddressSpaceModel.
/// User-interface thread only.
class KESTREL_EXPORT QvelAddressSpaceWidget : public QWidget
{
    Q_OBJECT
    /// The model's root node as a text, see qvelParseNodeId(); a text that is no NodeId is the null
    /// NodeId.
    Q_PROPERTY(QString rootNodeId READ rootNodeId WRITE setRootNodeId)
public:
    explicit QvelAddressSpaceWidget(QWidget* parent = nullptr);
    ~QvelAddressSpaceWidget() override;

    /// Null for none. Begins anew.
    void setSession(QvelSession* session);
    QvelSession* session() const;
    QvelAddressSpaceModel* model() const;
    QTreeView* view() const;
    /// Null where there is none, and on a row that tells a failure.
    UaExpandedNodeId currentNode() const;
    QString rootNodeId() const;
    void setRootNodeId(const QString& text);

public Q_SLOTS:
    /// Shows a node and makes it the current one; where that is not possible, it is said below the
    /// tree.
    void goTo(const UaExpandedNodeId& id);
    /// A NodeId, an `nsu=` form or a browse path.
    void goToText(const QString& text);
    /// Looks for nodes whose display or browse name holds the text, and goes to the first.
    void find(const QString& text);
    void goBack();
    void goForward();

Q_SIGNALS:
    void currentNodeChanged(const UaExpandedNodeId& id);
    /// By a double click or the Enter key; sent once the tree is done with that.
    void nodeActivated(const UaExpandedNodeId& id);

protected:
    void changeEvent(QEvent* event) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
