#pragma once

#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/QvelSession>

#include <QtCore/QJsonObject>
#include <QtWidgets/QMainWindow>

class ConnectionBar;
class Host;

/// One server: its session, and the views on it in docks, which can be moved, closed and floated.
/// Their places are remembered for all servers together.
class SessionPage : public QMainWindow
{
    Q_OBJECT
public:
    /// `otherUrls` are offered where the server cannot be reached under its own. `host` must
    /// outlive the page.
    SessionPage(Host& host, const QvelDiscoverySetting& setting, const QStringList& otherUrls = {},
                QWidget* parent = nullptr);
    ~SessionPage() override;

    QvelSession* session() const { return m_session; }
    /// How it connects, without a password.
    QvelDiscoverySetting setting() const { return m_setting; }
    /// The server's name, or else its URL; one line of bounded length.
    QString title() const;
    /// What the session is doing, on one line.
    QString status() const;
    /// Green, amber or red.
    QIcon icon() const;
    QList<QDockWidget*> docks() const { return m_docks; }
    void resetLayout();

    /// Asks for a password where one is needed.
    void connectToServer();
    /// Without any question: by the best policy that needs none, or else without security.
    void connectQuietly();
    void disconnectFromServer();

    /// What a project keeps of it.
    QJsonObject toJson() const;
    void restore(const QJsonObject& json);

Q_SIGNALS:
    /// Another title, state or failure.
    void changed();
    /// The session came about with this setting.
    void connected(const QvelDiscoverySetting& setting);
    void certificatesWanted();

private:
    QDockWidget* addDock(const char* name, const QString& title, QWidget* widget,
                         Qt::DockWidgetArea area);
    void createViews();
    void arrange();
    void start(const QvelDiscoverySetting& setting);
    void startWithoutSecurity();
    void askLogin();
    void askCertificate(const QvelCertificateQuestion& question);
    void askKeyPassword(const QvelPasswordQuestion& question);
    void tellFailure(const QvelSessionError& error);
    void tellState(QvelSession::State state);
    void useOtherUrl();

    Host& m_host;
    QvelDiscoverySetting m_setting;
    QStringList m_otherUrls;
    QvelSession* m_session;
    ConnectionBar* m_bar;
    QList<QDockWidget*> m_docks;
    QByteArray m_firstLayout;
    QJsonObject m_project;   // as it was read, with what this version does not know
    bool m_isWanted = false; // the user has not disconnected it
    bool m_isQuiet = false;
    bool m_hasLasted = false; // was connected since the user last asked for it
};
