#pragma once

#include "callbacks.h"

#include <Kestrel/QvelDiscoveryWidget>

#include <QtWidgets/QMainWindow>

#include <memory>
#include <vector>

class Host;
class QAction;
class QDockWidget;
class QTabWidget;

/// The window: discovery on the left, pages in the middle, the log below.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    /// `host` must outlive the window.
    explicit MainWindow(Host& host, QWidget* parent = nullptr);
    /// Saves the window's geometry; the discovery trees save their entries.
    ~MainWindow() override;

    /// The discovery tree of the current tab.
    QvelDiscoveryWidget* currentView() const;
    QTabWidget* discoveryTabs() const { return m_discovery; }
    QTabWidget* pageTabs() const { return m_pages; }

private:
    void createDiscovery();
    void createPages();
    void createLog();
    void createMenus();
    void addView(QvelDiscoveryWidget::OpcType type, const QString& group, const QString& title);
    void followCurrent();
    void useEndpoint(const QvelDiscoverySetting& endpoint);
    void about();

    Host& m_host;
    std::vector<std::unique_ptr<DiscoveryCallback>> m_callbacks;
    QTabWidget* m_discovery;
    QTabWidget* m_pages;
    QAction* m_use;
    QList<QDockWidget*> m_docks;
    QList<QAction*> m_logActions;
};
