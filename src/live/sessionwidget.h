#pragma once

#include "../kestrelexport.h"

#include <QtWidgets/QWidget>

#include <memory>

class QvelSession;

/// Shows how a session stands: its state and how far it has come, the server, the security, the
/// user, the time since the server's last answer, the figures of the wire, and after a failure what
/// went wrong and what to do. Disconnects and reconnects.
///
/// The session is not owned and may be deleted or replaced at any time. The figures are read once a
/// second while the widget can be seen. User-interface thread only.
class KESTREL_EXPORT QvelSessionWidget : public QWidget
{
    Q_OBJECT
public:
    explicit QvelSessionWidget(QWidget* parent = nullptr);
    ~QvelSessionWidget() override;

    void setSession(QvelSession* session);
    QvelSession* session() const;

    /// What a state is called, such as "Opening the secure channel".
    static QString stateText(int state);
    /// How many steps of a connection are done, 0 to stepCount().
    static int step(int state);
    static int stepCount();

Q_SIGNALS:
    /// The user wants to connect again, and the session is Disconnected. Where nobody is connected
    /// to this signal, the session connects as it did before; a host whose users have passwords
    /// asks for them first, since the session keeps none.
    void connectRequested();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
