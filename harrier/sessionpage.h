#pragma once

#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/QvelSession>

#include <QtCore/QJsonObject>
#include <QtCore/QPointer>
#include <QtWidgets/QMainWindow>

class ConnectionBar;
class Host;
class QDialog;
class QMenu;
class QMenuBar;
class QvelAddressSpaceWidget;
class QvelAttributesWidget;
class QvelCallWidget;
class QvelDataViewWidget;
struct QvelNodeLink;
class QvelReferencesWidget;
class QvelTrendWidget;

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
    /// A full, half or empty circle, in green, amber or red of the palette.
    static QIcon icon(QvelSession::State state);
    QList<QDockWidget*> docks() const { return m_docks; }
    void resetLayout();
    /// While it is a window of its own.
    void setMenus(const QList<QMenu*>& menus);

    /// Asks for a password where one is needed.
    void connectToServer();
    /// Without any question: by the best policy that needs none, or else without security.
    void connectQuietly();
    /// Connects anew, as the user that is asked for.
    void askLogin();
    void disconnectFromServer();

    /// What a project keeps of it.
    QJsonObject toJson() const;
    void restore(const QJsonObject& json);

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

Q_SIGNALS:
    /// Another title, state, failure or palette.
    void changed();
    void certificatesWanted();
    /// The user has closed the window that was its own.
    void windowClosed();

private:
    QString nameOfServer() const;
    QString stateText() const;
    QDockWidget* addDock(const char* name, QWidget* widget, Qt::DockWidgetArea area);
    void createViews();
    void createActions();
    void arrange();
    void showObjects();
    void showNode(const UaExpandedNodeId& node);
    void followNode(const UaExpandedNodeId& node);
    void activateNode();
    QList<QvelNodeLink> selectedVariables() const;
    void watchNodes();
    void trendNodes();
    void callNode();
    void raise(QWidget* view);
    void start(const QvelDiscoverySetting& setting);
    void startWithoutSecurity();
    void askCertificate(const QvelCertificateQuestion& question);
    void askKeyPassword(const QvelPasswordQuestion& question);
    void ask(QDialog* dialog);
    void tellFailure(const QvelSessionError& error);
    void tellState(QvelSession::State state);
    void showState();
    void retranslate();
    void useOtherUrl();

    Host& m_host;
    QvelDiscoverySetting m_setting;
    QStringList m_otherUrls;
    QvelSession* m_session;
    QMenuBar* m_menus;
    ConnectionBar* m_bar;
    QvelAddressSpaceWidget* m_space;
    QvelAttributesWidget* m_attributes;
    QvelReferencesWidget* m_references;
    QvelDataViewWidget* m_dataView;
    QvelTrendWidget* m_trend;
    QvelCallWidget* m_call;
    QAction* m_watchAction = nullptr;
    QAction* m_trendAction = nullptr;
    QAction* m_callAction = nullptr;
    QList<QDockWidget*> m_docks;
    QPointer<QDialog> m_question; // that the session waits for
    QByteArray m_firstLayout;
    QJsonObject m_project;   // as it was read, with what this version does not know
    bool m_isWanted = false; // the user has not disconnected it
    bool m_isQuiet = false;
    bool m_hasDataView = true; // false: that of the project was not read, and is kept
    bool m_hasTrend = true;
    bool m_hasLasted = false; // was connected since the user last asked for it
};
