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
class QToolButton;
class QvelToolBox;

/// The window: discovery on the left, pages in the middle, the log below.
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

private:
    void createDiscovery();
    void createPages();
    void createLog();
    void createMenus();
    void addView(QvelDiscoveryWidget::OpcType type, const QString& group, const QString& title);
    void followCurrent();
    void followFocus(const QWidget* widget);
    void useEndpoint(const QvelDiscoverySetting& endpoint);
    void about();

    Host& m_host;
    std::vector<std::unique_ptr<DiscoveryCallback>> m_callbacks;
    QvelToolBox* m_discovery;
    QTabWidget* m_pages;
    QAction* m_use;
    QList<QDockWidget*> m_docks;
    QList<QAction*> m_logActions;
};
