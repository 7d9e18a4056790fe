#pragma once

#include "callbacks.h"

#include <Kestrel/QvelDiscoveryWidget>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtWidgets/QMainWindow>

#include <functional>
#include <memory>
#include <utility>
#include <vector>

class DiscoveryHint;
class Gallery;
class Host;
class ProjectControl;
class QAction;
class QActionGroup;
class QDockWidget;
class QLabel;
class QMenu;
class QSplitter;
class QTabWidget;
class QToolButton;
class QvelToolBox;
class SessionPage;

/// The window: a tab to find servers, with the discovery trees on the left and pages about what is
/// selected on the right, and a tab for each server that is open. The log below.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    /// `host` must outlive the window.
    explicit MainWindow(Host& host, QWidget* parent = nullptr);
    /// Saves the window's geometry; the discovery trees save their entries.
    ~MainWindow() override;

    /// The discovery tree that was used last.
    QvelDiscoveryWidget* currentView() const;
    QvelToolBox* discoveryBox() const { return m_discovery; }
    /// The button that opens and closes a page of the discovery box.
    QToolButton* discoveryToggle(int page) const;
    QTabWidget* pageTabs() const { return m_pages; }
    Gallery& gallery();

    /// All tabs: the first one finds servers, each other is a SessionPage.
    QTabWidget* serverTabs() const { return m_tabs; }
    /// Of the window that is active, else of the current tab; null where that is none.
    SessionPage* currentSession() const;
    /// In the order in which they were opened, as tabs and in windows of their own.
    QList<SessionPage*> sessions() const { return m_sessions; }
    /// Into a window of its own, or back to its place among the tabs.
    void setInWindow(SessionPage* session, bool own);
    /// Opens a tab; `otherUrls` lead to the same server.
    SessionPage* addSession(const QvelDiscoverySetting& setting, const QStringList& otherUrls = {});
    ProjectControl& project() const { return *m_project; }

    /// What is not saved goes to the recovery file; the program ends after that.
    void end();
    /// Closes the sessions on their servers and waits until those have answered, two seconds at
    /// most.
    void closeSessions();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void createDiscovery();
    void createPages();
    void createLog();
    void createMenus();
    void createLanguages();
    void retranslate();
    void addView(QvelDiscoveryWidget::OpcType type, const QString& group);
    void beginView(int page);
    /// A menu, or an action, that gets its text from retranslate().
    QMenu* addMenu(const char* text);
    QAction* addAction(QMenu* menu, const char* text, const QKeySequence& keys,
                       const std::function<void()>& function);
    void followCurrent();
    void followFocus(const QWidget* widget);
    void useEndpoint(const QvelDiscoverySetting& endpoint);
    void connectTo(const QvelDiscoverySetting& endpoint);
    void closeSession(SessionPage* session);
    void placeBeside(QWidget* window);
    void showTabMenu(const QPoint& position);
    void followTab();
    void followSession(SessionPage* session);
    void fillView();
    void showPage(int index);
    void start();
    QJsonObject projectContent() const;
    void openProject(const QJsonObject& content);
    void about();

    Host& m_host;
    std::vector<std::unique_ptr<DiscoveryCallback>> m_callbacks;
    QTabWidget* m_tabs;
    QList<SessionPage*> m_sessions;
    bool m_wasMaximized = false; // before it made room for a window beside it
    QSplitter* m_find;
    QvelToolBox* m_discovery;
    DiscoveryHint* m_hint;
    QTabWidget* m_pages;
    QDockWidget* m_log = nullptr;
    QLabel* m_status;
    std::unique_ptr<Gallery> m_gallery; // no child: its shortcuts are its own
    ProjectControl* m_project = nullptr;
    QJsonObject m_projectRest; // what this version does not know
    QJsonArray m_unusable;     // servers that cannot be opened, kept for the file
    QMenu* m_server = nullptr;
    QMenu* m_view = nullptr;
    QAction* m_use;
    QAction* m_connect;
    QList<std::pair<QAction*, const char*>> m_texts; // of all actions and menus
    QList<QAction*> m_pageActions;
    QActionGroup* m_languages;
    QList<QAction*> m_sessionActions;
    QAction* m_ownWindow = nullptr;
    QList<QAction*> m_logActions;
};
