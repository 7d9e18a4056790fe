#include "mainwindow.h"

#include "host.h"
#include "logview.h"
#include "pages.h"

#include <Kestrel/QvelToolBox>

#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

namespace {

// Keys of the window's own settings.
const QString geometryKey = QStringLiteral("Window/Geometry");
const QString stateKey = QStringLiteral("Window/State");
const QString pageKey = QStringLiteral("Window/Page");
const QString treesKey = QStringLiteral("Window/OpenTrees");

QToolButton* toolButton(QAction* action)
{
    auto* button = new QToolButton;
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setAutoRaise(true);
    return button;
}

} // namespace

MainWindow::MainWindow(Host& host, QWidget* parent)
    : QMainWindow(parent), m_host(host), m_discovery(new QvelToolBox), m_pages(new QTabWidget),
      m_use(new QAction(tr("&Use This Endpoint"), this))
{
    setWindowTitle(tr("harrier"));
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    setWindowIcon(QIcon(QStringLiteral(":/images/harrier.png")));
    createDiscovery();
    createPages();
    createLog();
    createMenus();
    followCurrent();

    const QSize em(fontMetrics().averageCharWidth(), fontMetrics().height());
    resize(175 * em.width(), 50 * em.height());
    resizeDocks({m_docks.at(0)}, {63 * em.width()}, Qt::Horizontal);
    resizeDocks({m_docks.at(1)}, {10 * em.height()}, Qt::Vertical);
    const SettingsStore& store = m_host.store();
    restoreGeometry(store.value(geometryKey).toByteArray());
    restoreState(store.value(stateKey).toByteArray());
    m_pages->setCurrentIndex(store.value(pageKey).toInt());
    const QVariant trees = store.value(treesKey); // a bit each
    for (int i = 0; i < m_discovery->count(); ++i)
        discoveryToggle(i)->setChecked((trees.isNull() ? 1 : trees.toInt()) & (1 << i));
}

MainWindow::~MainWindow()
{
    SettingsStore& store = m_host.store();
    store.setValue(geometryKey, saveGeometry());
    store.setValue(stateKey, saveState());
    store.setValue(pageKey, m_pages->currentIndex());
    int trees = 0;
    for (int i = 0; i < m_discovery->count(); ++i)
        trees |= int(discoveryToggle(i)->isChecked()) << i;
    store.setValue(treesKey, trees);
    // The trees write their entries through the callbacks, so they go first.
    qApp->disconnect(this);
    m_discovery->disconnect(this);
    while (m_discovery->count() > 0) {
        const std::unique_ptr<QWidget> view(m_discovery->widget(0));
        m_discovery->removePage(0);
    }
}

QvelDiscoveryWidget* MainWindow::currentView() const
{
    return static_cast<QvelDiscoveryWidget*>(m_discovery->widget(m_discovery->getCurrentIndex()));
}

QToolButton* MainWindow::discoveryToggle(int page) const
{
    return m_discovery->widget(page)->parentWidget()->findChild<QToolButton*>(
        QStringLiteral("toggleButton"), Qt::FindDirectChildrenOnly);
}

void MainWindow::createDiscovery()
{
    m_discovery->setItemTexts(
        QStringList{tr("&OPC UA"), tr("Data &Access"), tr("Ala&rms && Events")}.join(
            QLatin1Char('|')));
    addView(QvelDiscoveryWidget::OpcUa, QStringLiteral("Discovery.OpcUa"), tr("OPC UA"));
    addView(QvelDiscoveryWidget::ComDa, QStringLiteral("Discovery.ComDa"), tr("Data Access"));
    addView(QvelDiscoveryWidget::ComAe, QStringLiteral("Discovery.ComAe"), tr("Alarms & Events"));
    m_discovery->setCurrentIndex(0);
    connect(m_discovery, &QvelToolBox::currentIndexChanged, this, &MainWindow::followCurrent);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* now) { followFocus(now); });

    auto* dock = new QDockWidget(tr("Discovery"));
    dock->setObjectName(QStringLiteral("discovery"));
    dock->setWidget(m_discovery);
    // The box packs its headers by what can be seen, which is nothing before the first show.
    connect(dock, &QDockWidget::visibilityChanged, m_discovery,
            &QvelToolBox::pageVisibilityChanged);
    addDockWidget(Qt::LeftDockWidgetArea, dock);
    m_docks.append(dock);
}

void MainWindow::addView(QvelDiscoveryWidget::OpcType type, const QString& group,
                         const QString& title)
{
    LogBuffer& log = m_host.log();
    m_callbacks.push_back(std::make_unique<DiscoveryCallback>(
        m_host.store(), group, [&log](const QString& text) { log.append(text); }));
    auto* view = new QvelDiscoveryWidget(type, m_callbacks.back().get(), m_host.timeout(),
                                         QCoreApplication::applicationName());
    view->setAccessibleName(tr("%1 servers").arg(title));
    connect(view, &QvelDiscoveryWidget::endpointActivated, this, &MainWindow::useEndpoint);
    connect(view, &QvelDiscoveryWidget::comServerActivated, this, &MainWindow::useEndpoint);
    // endpointSelected() tells only of endpoints; the pages also want to know when there is none.
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &MainWindow::followCurrent);
    m_discovery->addPage(view);
}

void MainWindow::followCurrent()
{
    m_host.setEndpoint(currentView()->currentConfiguration());
    m_use->setEnabled(m_host.hasEndpoint());
}

void MainWindow::followFocus(const QWidget* widget)
{
    for (int i = 0; widget && i < m_discovery->count(); ++i) {
        if (m_discovery->widget(i)->isAncestorOf(widget)) // or the tree itself
            m_discovery->setCurrentIndex(i);
    }
}

void MainWindow::useEndpoint(const QvelDiscoverySetting& endpoint)
{
    if (currentView()->updateEndpointConfiguration(endpoint))
        statusBar()->showMessage(tr("Filed under \"Recently Used\" (entries: %1)")
                                     .arg(currentView()->noOfRecentNodes()));
    else
        statusBar()->showMessage(tr("The existing entry was kept"));
    followCurrent(); // the current entry itself may have changed
}

void MainWindow::createPages()
{
    for (const Page& page : pages())
        m_pages->addTab(page.create(m_host), QCoreApplication::translate("Page", page.title));
    connect(&m_host, &Host::message, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(&m_host, &Host::useEndpointRequested, this,
            [this] { useEndpoint(QvelDiscoverySetting(m_host.endpoint())); });
    connect(&m_host, &Host::useConnectionRequested, this, &MainWindow::useEndpoint);
    setCentralWidget(m_pages);
}

void MainWindow::createLog()
{
    auto* view = new LogView(m_host.log());
    auto* copy = new QAction(tr("&Copy Log"), this);
    copy->setShortcut(tr("Ctrl+Shift+C"));
    connect(copy, &QAction::triggered, view, &LogView::copyLines);
    auto* clear = new QAction(tr("C&lear Log"), this);
    clear->setShortcut(tr("Ctrl+L"));
    connect(clear, &QAction::triggered, view, &LogView::clear);
    m_logActions = {copy, clear};

    auto* content = new QWidget;
    auto* buttons = new QHBoxLayout;
    for (QAction* action : std::as_const(m_logActions))
        buttons->addWidget(toolButton(action));
    buttons->addStretch();
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins({});
    layout->setSpacing(0);
    layout->addLayout(buttons);
    layout->addWidget(view);

    auto* dock = new QDockWidget(tr("Log"));
    dock->setObjectName(QStringLiteral("log"));
    dock->setWidget(content);
    addDockWidget(Qt::BottomDockWidgetArea, dock);
    m_docks.append(dock);
}

void MainWindow::createMenus()
{
    QMenu* menu = menuBar()->addMenu(tr("&File"));
    QAction* quit = menu->addAction(tr("&Quit"), this, &QWidget::close);
    quit->setShortcut(tr("Ctrl+Q"));

    menu = menuBar()->addMenu(tr("&Endpoint"));
    m_use->setShortcut(tr("Ctrl+U"));
    connect(m_use, &QAction::triggered, &m_host, &Host::useEndpointRequested);
    menu->addAction(m_use);

    menu = menuBar()->addMenu(tr("&View"));
    const QStringList dockTexts = {tr("&Discovery"), tr("&Log")};
    for (int i = 0; i < m_docks.size(); ++i) {
        QAction* action = m_docks.at(i)->toggleViewAction();
        action->setText(dockTexts.at(i));
        menu->addAction(action);
    }
    menu->addSeparator();
    for (int i = 0; i < m_pages->count(); ++i) {
        QAction* action =
            menu->addAction(tr("&%1 %2").arg(i + 1).arg(m_pages->tabText(i)), this, [this, i] {
                m_pages->setCurrentIndex(i);
                m_pages->setFocus();
            });
        if (i < 9)
            action->setShortcut(QKeySequence(Qt::ALT | Qt::Key(Qt::Key_1 + i)));
    }

    menu = menuBar()->addMenu(tr("&Log"));
    menu->addActions(m_logActions);

    menu = menuBar()->addMenu(tr("&Help"));
    menu->addAction(tr("&About harrier"), this, &MainWindow::about);
    statusBar();
}

void MainWindow::about()
{
    QMessageBox::about(this, tr("About harrier"),
                       tr("harrier %1 is the sample host of the kestrel library: it finds OPC UA "
                          "servers and edits OPC UA values.")
                           .arg(QCoreApplication::applicationVersion()));
}
