#pragma once

#include "../platform/types/uaexpandednodeid.h"

#include <QtWidgets/QWidget>

class QTreeView;
class QvelAttributesModel;
class QvelSession;
class ValueList;

/// Shows the attributes of one node and edits them in place: see QvelAttributesModel. Value is kept
/// up to date while the widget is visible.
///
/// A double click anywhere in a row, F2, or typing edits its value; an array opens in a dialog,
/// also where it may only be looked at. F5 reads all again. User-interface thread only.
class KESTREL_EXPORT QvelAttributesWidget : public QWidget
{
    Q_OBJECT
    /// The node as a text, see qvelParseNodeId(); a text that is no NodeId is the null NodeId.
    Q_PROPERTY(QString nodeId READ nodeId WRITE setNodeId)
public:
    explicit QvelAttributesWidget(QWidget* parent = nullptr);
    ~QvelAttributesWidget() override;

    /// Not owned; may be null, and may be deleted at any time.
    void setSession(QvelSession* session);
    QvelSession* session() const;
    UaExpandedNodeId node() const;
    QvelAttributesModel* model() const { return m_model; }
    /// For the state of its header.
    QTreeView* view() const;
    QString nodeId() const;
    void setNodeId(const QString& text);

public Q_SLOTS:
    /// A null NodeId for none.
    void setNode(const UaExpandedNodeId& node);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void copy();

    QvelAttributesModel* const m_model;
    ValueList* const m_view;
};
