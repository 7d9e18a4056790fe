#pragma once

#include "../platform/types/uaexpandednodeid.h"

#include <QtWidgets/QDialog>

#include <memory>

class QAbstractItemModel;
class QvelSession;

/// \file
/// Calls of a method: inline, and as a dialog. User-interface thread only.

/// Calls one method of one object: an editor for each of its input arguments, by data type, rank
/// and names; what the server says about each of them; and what came out, typed.
///
/// The last 20 calls of each method are kept as long as the session and can be called up again.
/// While there is no connection all stays as it is, and nothing can be called. A call that was
/// under way when the connection was lost, or that is cancelled, may have been carried out.
class KESTREL_EXPORT QvelCallWidget : public QWidget
{
    Q_OBJECT
    /// The object as a text, see qvelParseNodeId(); a text that is no NodeId is the null NodeId.
    Q_PROPERTY(QString objectId READ objectId WRITE setObjectId)
    /// As objectId, the method.
    Q_PROPERTY(QString methodId READ methodId WRITE setMethodId)
public:
    explicit QvelCallWidget(QWidget* parent = nullptr);
    ~QvelCallWidget() override;

    /// Not owned; may be null, and may be deleted at any time.
    void setSession(QvelSession* session);
    QvelSession* session() const;
    /// The method, and the object, or type of it, that it is called on.
    void setMethod(const UaExpandedNodeId& object, const UaExpandedNodeId& method);
    UaExpandedNodeId object() const;
    UaExpandedNodeId method() const;
    QString objectId() const;
    void setObjectId(const QString& text);
    QString methodId() const;
    void setMethodId(const QString& text);

    bool isCalling() const;
    /// The arguments, a row each: name, data type, value, status. What was typed and is no value of
    /// its argument stays, with the reason as its status.
    QAbstractItemModel* inputModel() const;
    /// What came out: name, data type, value.
    QAbstractItemModel* outputModel() const;

public Q_SLOTS:
    /// Nothing where something typed is no value of its argument, which is marked.
    void call();
    /// Waits no longer.
    void cancel();

Q_SIGNALS:
    /// The method's display name, once the server has told it.
    void methodNameChanged(const QString& name);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

/// A QvelCallWidget in a window of its own. Escape closes it.
class KESTREL_EXPORT QvelCallDialog : public QDialog
{
    Q_OBJECT
public:
    explicit QvelCallDialog(QWidget* parent = nullptr);
    ~QvelCallDialog() override;

    void setSession(QvelSession* session);
    QvelSession* session() const;
    void setMethod(const UaExpandedNodeId& object, const UaExpandedNodeId& method);
    QvelCallWidget* widget() const { return m_widget; }

private:
    QvelCallWidget* const m_widget;
    QString m_methodName;
};
