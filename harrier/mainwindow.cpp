#include "mainwindow.h"

#include "discoveryhint.h"
#include "gallery.h"
#include "host.h"
#include "language.h"
#include "logview.h"
#include "pages.h"
#include "plainline.h"
#include "project.h"
#include "projectcontrol.h"
#include "sessionpage.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNodeDiscovery>
#include <Kestrel/QvelToolBox>

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtGui/QAction>
#include <QtGui/QActionGroup>
#include <QtGui/QCloseEvent>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTabBar>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace {

// Keys of the window's own settings.
const QString geometryKey = QStringLiteral("Window/Geometry");
const QString stateKey = QStringLiteral("Window/State");
const QString splitterKey = QStringLiteral("Window/Splitter");
const QString pageKey = QStringLiteral("Window/Page");
const QString treesKey = QStringLiteral("Window/OpenTrees");

const QString serversKey = QStringLiteral("servers");

constexpr int longestFarewell = 2000; // ms
constexpr int certificatesPage = 2;

QToolButton* toolButton(QAction* action)
{
    auto* button = new QToolButton;
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setAutoRaise(true);
    return button;
}

QString escaped(QString text)
{
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

MainWindow::MainWindow(Host& host, QWidget* parent)
    : QMainWindow(parent), m_host(host), m_tabs(new QTabWidget), m_find(new QSplitter),
      m_discovery(new QvelToolBox), m_hint(new DiscoveryHint), m_pages(new QTabWidget),
      m_status(new QLabel), m_use(new QAction(this)), m_connect(new QAction(this)),
      m_languages(new QActionGroup(this))
{
    setWindowIcon(QIcon(QStringLiteral(":/images/harrier.png")));
    createDiscovery();
    createPages();
    createLog();
    m_tabs->setDocumentMode(true);
    m_tabs->setTabsClosable(true);
    m_tabs->setElideMode(Qt::ElideRight);
    m_tabs->addTab(m_find, QIcon(QStringLiteral(":/images/globe.png")), QString());
    for (const auto side : {QTabBar::LeftSide, QTabBar::RightSide})
        m_tabs->tabBar()->setTabButton(0, side, nullptr); // it stays
    setCentralWidget(m_tabs);
    connect(m_tabs, &QTabWidget::tabCloseRequested, this,
            [this](int index) { closeSession(qobject_cast<SessionPage*>(m_tabs->widget(index))); });
    connect(m_tabs, &QTabWidget::currentChanged, this, &MainWindow::followTab);
    m_tabs->tabBar()->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_tabs->tabBar(), &QWidget::customContextMenuRequested, this, &MainWindow::showTabMenu);
    m_project =
        new ProjectControl(host, {this, [this] { return projectContent(); },
                                  [this](const QJsonObject& content) { openProject(content); }});
    createMenus();
    m_status->setTextFormat(Qt::PlainText);
    statusBar()->addPermanentWidget(m_status);
    Language::follow(this, [this] { retranslate(); });
    connect(m_project, &ProjectControl::titleChanged, this, &MainWindow::followTab);
    connect(&host, &Host::started, this, &MainWindow::start);
    followCurrent();
    followTab();

    const QSize em(fontMetrics().averageCharWidth(), fontMetrics().height());
    resize(210 * em.width(), 54 * em.height());
    m_find->setSizes({63 * em.width(), 147 * em.width()});
    resizeDocks({m_log}, {8 * em.height()}, Qt::Vertical);
    const SettingsStore& store = m_host.store();
    restoreGeometry(store.value(geometryKey).toByteArray());
    restoreState(store.value(stateKey).toByteArray());
    m_find->restoreState(store.value(splitterKey).toByteArray());
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
    store.setValue(splitterKey, m_find->saveState());
    store.setValue(pageKey, m_pages->currentIndex());
    int trees = 0;
    for (int i = 0; i < m_discovery->count(); ++i)
        trees |= int(discoveryToggle(i)->isChecked()) << i;
    store.setValue(treesKey, trees);
    // The trees write their entries through the callbacks, so they go first.
    qApp->disconnect(this);
    m_tabs->disconnect(this);
    m_discovery->disconnect(this);
    m_hint->setTree(nullptr);
    while (m_discovery->count() > 0) {
        const std::unique_ptr<QWidget> view(m_discovery->widget(0));
        m_discovery->removePage(0);
    }
    for (SessionPage* page : std::as_const(m_sessions)) { // their layout goes to the store
        page->disconnect(this);
        delete page;
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

Gallery& MainWindow::gallery()
{
    if (!m_gallery)
        m_gallery = std::make_unique<Gallery>(m_host);
    return *m_gallery;
}

SessionPage* MainWindow::currentSession() const
{
    for (QWidget* at = QApplication::activeWindow(); at; at = at->parentWidget())
        if (auto* page = qobject_cast<SessionPage*>(at); page && page->isWindow())
            return page;
    return qobject_cast<SessionPage*>(m_tabs->currentWidget());
}

void MainWindow::createDiscovery()
{
    addView(QvelDiscoveryWidget::OpcUa, QStringLiteral("Discovery.OpcUa"));
    addView(QvelDiscoveryWidget::ComDa, QStringLiteral("Discovery.ComDa"));
    addView(QvelDiscoveryWidget::ComAe, QStringLiteral("Discovery.ComAe"));
    auto* column = qobject_cast<QVBoxLayout*>(m_discovery->layout());
    for (int i = 0; column && i < m_discovery->count(); ++i) { // closed trees leave their room
        QWidget* place = m_discovery->widget(i)->parentWidget();
        const auto follow = [this, column, place, i](bool open) {
            column->setStretchFactor(place, open);
            if (open)
                beginView(i);
        };
        connect(discoveryToggle(i), &QAbstractButton::toggled, this, follow);
        follow(discoveryToggle(i)->isChecked());
    }
    m_discovery->setCurrentIndex(0);
    m_discovery->setMinimumWidth(24 * fontMetrics().averageCharWidth());
    connect(m_discovery, &QvelToolBox::currentIndexChanged, this, &MainWindow::followCurrent);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        followFocus(now);
        followTab();
    });
    m_find->addWidget(m_discovery);
}

void MainWindow::addView(QvelDiscoveryWidget::OpcType type, const QString& group)
{
    LogBuffer& log = m_host.log();
    m_callbacks.push_back(std::make_unique<DiscoveryCallback>(
        m_host.store(), group, [&log](const QString& text) { log.append(text); }));
    auto* view = new QvelDiscoveryWidget;
    view->setOpcType(type);
    view->setTimeout(m_host.timeout());
    view->setSessionName(QCoreApplication::applicationName());
    connect(view, &QvelDiscoveryWidget::endpointActivated, this, &MainWindow::connectTo);
    connect(view, &QvelDiscoveryWidget::comServerActivated, this, &MainWindow::useEndpoint);
    m_discovery->addPage(view);
}

// A tree looks around in the network when it begins: each does when it is first wanted.
void MainWindow::beginView(int page)
{
    auto* view = static_cast<QvelDiscoveryWidget*>(m_discovery->widget(page));
    if (view->model())
        return;
    view->start(m_callbacks[std::size_t(page)].get());
    qobject_cast<QvelDiscoveryModel*>(view->model())->setFailuresInToolTips(true);
    // endpointSelected() tells only of endpoints; the pages also want to know when there is none.
    connect(view->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &MainWindow::followCurrent);
}

void MainWindow::followCurrent()
{
    beginView(m_discovery->getCurrentIndex());
    m_host.setEndpoint(currentView()->currentConfiguration());
    m_use->setEnabled(m_host.hasEndpoint());
    m_connect->setEnabled(m_host.hasEndpoint() &&
                          currentView()->opcType() == QvelDiscoveryWidget::OpcUa);
    m_hint->setTree(currentView());
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

void MainWindow::connectTo(const QvelDiscoverySetting& endpoint)
{
    // Using it may change the entry that it is part of.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const QvelDiscoverySetting setting(endpoint);
    const QStringList others = otherUrls(*currentView(), setting.endpointUrl());
    useEndpoint(setting);
    addSession(setting, others)->connectToServer();
}

SessionPage* MainWindow::addSession(const QvelDiscoverySetting& setting,
                                    const QStringList& otherUrls)
{
    auto* page = new SessionPage(m_host, setting, otherUrls);
    m_sessions.append(page);
    connect(page, &SessionPage::changed, this, [this, page] { followSession(page); });
    connect(page, &SessionPage::certificatesWanted, this, [this] { showPage(certificatesPage); });
    connect(page, &SessionPage::windowClosed, this, [this, page] { setInWindow(page, false); });
    setInWindow(page, false);
    return page;
}

void MainWindow::setInWindow(SessionPage* page, bool own)
{
    if (own) {
        m_tabs->removeTab(m_tabs->indexOf(page));
        page->setParent(nullptr, Qt::Window);
        page->setMenus({m_server, m_view});
        placeBeside(page);
        page->show();
    } else {
        page->setMenus({});
        const auto isTab = [this](SessionPage* each) { return m_tabs->indexOf(each) >= 0; };
        const auto end = std::find(m_sessions.cbegin(), m_sessions.cend(), page);
        const auto before = std::count_if(m_sessions.cbegin(), end, isTab);
        m_tabs->insertTab(1 + int(before), page, QString());
        m_tabs->setCurrentWidget(page);
        const auto isOwn = [](const SessionPage* each) { return each->isWindow(); };
        if (m_wasMaximized && std::none_of(m_sessions.cbegin(), m_sessions.cend(), isOwn)) {
            m_wasMaximized = false;
            showMaximized();
        }
    }
    followSession(page);
}

// On another screen, or in the half of this one that is not this window's, or is not any more.
void MainWindow::placeBeside(QWidget* window)
{
    const auto screens = QGuiApplication::screens();
    const auto other = std::find_if(screens.begin(), screens.end(),
                                    [this](const QScreen* each) { return each != screen(); });
    const QSize known = frameGeometry().size() - size(); // not before it is shown
    const QSize frame = known.expandedTo({0, style()->pixelMetric(QStyle::PM_TitleBarHeight)});
    const auto place = [frame](QWidget* each, const QRect& room) {
        each->move(room.topLeft());
        each->resize(room.size() - frame);
    };
    if (other != screens.end())
        return place(window, (*other)->availableGeometry());
    const QRect room = screen()->availableGeometry();
    QRect mine = room, its = room;
    mine.setRight(room.center().x());
    its.setLeft(mine.right() + 1);
    if (std::max(minimumSizeHint().width(), window->minimumSizeHint().width()) > mine.width())
        return place(window, room); // there is room for one only
    if (frameGeometry().center().x() > room.center().x())
        std::swap(mine, its);
    if (frameGeometry().width() > mine.width()) {
        if (isMaximized()) {
            m_wasMaximized = true;
            showNormal();
        }
        place(this, mine);
    }
    place(window, its);
}

void MainWindow::closeSession(SessionPage* page)
{
    if (!page)
        return;
    m_sessions.removeOne(page);
    page->disconnect(this);
    page->disconnectFromServer();
    m_tabs->removeTab(m_tabs->indexOf(page));
    page->hide();
    page->deleteLater();
    followTab();
}

void MainWindow::showTabMenu(const QPoint& position)
{
    const int at = m_tabs->tabBar()->tabAt(position); // none where the keys ask for it
    if (at >= 0)
        m_tabs->setCurrentIndex(at);
    if (!currentSession())
        return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(m_ownWindow);
    menu->addActions(m_sessionActions);
    menu->popup(m_tabs->tabBar()->mapToGlobal(position));
}

void MainWindow::followSession(SessionPage* page)
{
    const int index = m_tabs->indexOf(page);
    m_tabs->setTabText(index, escaped(page->title()));
    m_tabs->setTabIcon(index, SessionPage::icon(page->session()->state()));
    m_tabs->setTabToolTip(index, page->status().toHtmlEscaped());
    page->setWindowTitle(tr("%1 - harrier").arg(page->status()));
    page->setWindowIcon(SessionPage::icon(page->session()->state()));
    followTab();
}

void MainWindow::followTab()
{
    const SessionPage* page = currentSession();
    const bool isConnected = page && page->session()->state() == QvelSession::Connected;
    const bool isOff = page && page->session()->state() == QvelSession::Disconnected;
    const bool enabled[] = {page && !isOff, page && !isConnected, page != nullptr, page != nullptr};
    for (int i = 0; i < int(std::size(enabled)); ++i)
        m_sessionActions[i]->setEnabled(enabled[i]);
    m_ownWindow->setEnabled(page);
    m_ownWindow->setText(page && page->isWindow() ? tr("Show as a &Tab Again")
                                                  : tr("Open in a &Window of Its Own"));
    const auto* tab = qobject_cast<SessionPage*>(m_tabs->currentWidget());
    m_status->setText(tab ? tab->status() : tr("Open servers: %1").arg(m_sessions.size()));
    const QString project = m_project->title();
    setWindowTitle(project.isEmpty() ? tr("harrier") : tr("%1 - harrier").arg(project));
}

void MainWindow::createPages()
{
    addPages(m_host, pages(), m_pages);
    connect(&m_host, &Host::message, this,
            [this](const QString& text) { statusBar()->showMessage(text); });
    connect(&m_host, &Host::useEndpointRequested, this,
            [this] { useEndpoint(QvelDiscoverySetting(m_host.endpoint())); });
    connect(&m_host, &Host::useConnectionRequested, this, &MainWindow::useEndpoint);
    connect(&m_host, &Host::connectRequested, this,
            [this] { connectTo(QvelDiscoverySetting(m_host.endpoint())); });
    connect(&m_host, &Host::connectionRequested, this, &MainWindow::connectTo);
    auto* right = new QWidget;
    auto* layout = new QVBoxLayout(right);
    layout->setContentsMargins({});
    layout->addWidget(m_hint);
    layout->addWidget(m_pages, 1);
    m_find->addWidget(right);
    m_find->setStretchFactor(1, 1);
    m_find->setChildrenCollapsible(false);
}

void MainWindow::createLog()
{
    auto* view = new LogView(m_host.log());
    auto* copy = new QAction(this);
    copy->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_C);
    connect(copy, &QAction::triggered, view, &LogView::copyLines);
    auto* clear = new QAction(this);
    clear->setShortcut(Qt::CTRL | Qt::Key_L);
    connect(clear, &QAction::triggered, view, &LogView::clear);
    m_logActions = {copy, clear};
    m_texts.append({{copy, QT_TR_NOOP("&Copy Log")}, {clear, QT_TR_NOOP("C&lear Log")}});

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

    m_log = new QDockWidget;
    m_log->setObjectName(QStringLiteral("log"));
    m_log->setWidget(content);
    addDockWidget(Qt::BottomDockWidgetArea, m_log);
}

QMenu* MainWindow::addMenu(const char* text)
{
    auto* menu = new QMenu(this);
    m_texts.append({menu->menuAction(), text});
    menuBar()->addMenu(menu);
    return menu;
}

QAction* MainWindow::addAction(QMenu* menu, const char* text, const QKeySequence& keys,
                               const std::function<void()>& function)
{
    QAction* action = menu->addAction(QString(), this, function);
    action->setShortcut(keys);
    m_texts.append({action, text});
    return action;
}

void MainWindow::createMenus()
{
    QMenu* menu = addMenu(QT_TR_NOOP("&File"));
    m_project->fill(menu);
    menu->addSeparator();
    addAction(menu, QT_TR_NOOP("&Quit"), Qt::CTRL | Qt::Key_Q, [this] { close(); });

    menu = m_server = addMenu(QT_TR_NOOP("&Server"));
    m_connect->setShortcut(Qt::CTRL | Qt::Key_Return);
    connect(m_connect, &QAction::triggered, &m_host, &Host::connectRequested);
    m_use->setShortcut(Qt::CTRL | Qt::Key_U);
    connect(m_use, &QAction::triggered, &m_host, &Host::useEndpointRequested);
    m_texts.append(
        {{m_connect, QT_TR_NOOP("&Connect")}, {m_use, QT_TR_NOOP("&Use This Endpoint")}});
    menu->addActions({m_connect, m_use});
    menu->addSeparator();
    m_sessionActions = {
        addAction(menu, QT_TR_NOOP("&Disconnect"), Qt::CTRL | Qt::Key_D,
                  [this] { currentSession()->disconnectFromServer(); }),
        addAction(menu, QT_TR_NOOP("&Reconnect"), Qt::CTRL | Qt::Key_R,
                  [this] { currentSession()->connectToServer(); }),
        addAction(menu, QT_TR_NOOP("&Log In..."), {}, [this] { currentSession()->askLogin(); }),
        addAction(menu, QT_TR_NOOP("Cl&ose Server"), Qt::CTRL | Qt::Key_W,
                  [this] { closeSession(currentSession()); }),
    };
    menu->addSeparator();
    m_ownWindow = menu->addAction(QString(), this, [this] {
        SessionPage* page = currentSession();
        setInWindow(page, !page->isWindow());
    });
    m_ownWindow->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_N);

    m_view = addMenu(QT_TR_NOOP("&View"));
    connect(m_view, &QMenu::aboutToShow, this, &MainWindow::fillView);
    for (int i = 0; i < m_pages->count(); ++i) {
        auto* action = new QAction(this);
        action->setShortcut(QKeySequence(Qt::ALT | Qt::Key(Qt::Key_1 + i)));
        connect(action, &QAction::triggered, this, [this, i] { showPage(i); });
        QMainWindow::addAction(action);
        m_view->addAction(action);
        m_pageActions.append(action);
    }
    m_view->addSeparator();
    m_view->addAction(m_log->toggleViewAction());
    addAction(m_view, QT_TR_NOOP("&Gallery"), {}, [this] {
        gallery().show();
        gallery().activateWindow();
    });
    m_view->addSeparator();

    addMenu(QT_TR_NOOP("&Log"))->addActions(m_logActions);
    createLanguages();
    menu = addMenu(QT_TR_NOOP("&Help"));
    addAction(menu, QT_TR_NOOP("&About harrier"), {}, [this] { about(); });
    statusBar();
}

void MainWindow::createLanguages()
{
    const std::pair<const char*, const char*> languages[] = {
        {"", QT_TR_NOOP("&System Default")}, {"en", "&English"}, {"de", "&Deutsch"}};
    QMenu* menu = addMenu(QT_TR_NOOP("Lan&guage"));
    for (const auto& [code, text] : languages) {
        const QString name = QLatin1String(code);
        QAction* action = addAction(menu, text, {}, [this, name] {
            m_host.store().setValue(Language::key, name);
            Language::install(name);
        });
        action->setCheckable(true);
        action->setChecked(name == Language::current());
        m_languages->addAction(action);
    }
    if (!m_languages->checkedAction())
        m_languages->actions().constFirst()->setChecked(true);
}

void MainWindow::retranslate()
{
    m_tabs->setTabText(0, tr("Find Servers"));
    const QStringList trees = {tr("OPC UA"), tr("Data Access"), tr("Alarms & Events")};
    m_discovery->setItemTexts(
        QStringList{tr("&OPC UA"), tr("Data &Access"), tr("Ala&rms && Events")}.join(
            QLatin1Char('|')));
    for (int i = 0; i < m_discovery->count(); ++i)
        m_discovery->widget(i)->setAccessibleName(tr("%1 servers").arg(trees.at(i)));
    m_log->setWindowTitle(tr("Log"));
    m_log->toggleViewAction()->setText(tr("&Log"));
    for (const auto& [action, text] : std::as_const(m_texts))
        action->setText(tr(text));
    for (int i = 0; i < m_pageActions.size(); ++i)
        m_pageActions[i]->setText(tr("&%1 %2").arg(i + 1).arg(pages().at(i).shownTitle()));
    for (SessionPage* page : std::as_const(m_sessions))
        followSession(page);
    followTab();
    statusBar()->clearMessage(); // said in the language before
}

// The docks of the current server follow what is there always.
void MainWindow::fillView()
{
    const QList<QAction*> all = m_view->actions();
    const auto last = std::find_if(all.rbegin(), all.rend(),
                                   [](const QAction* action) { return action->isSeparator(); });
    for (auto action = last.base(); action != all.end(); ++action)
        m_view->removeAction(*action);
    SessionPage* page = currentSession();
    if (!page)
        return;
    const auto docks = page->docks();
    for (QDockWidget* dock : docks)
        m_view->addAction(dock->toggleViewAction());
    auto* reset = new QAction(tr("&Reset Layout"), page);
    connect(reset, &QAction::triggered, page, &SessionPage::resetLayout);
    connect(m_view, &QMenu::aboutToHide, reset, &QObject::deleteLater);
    m_view->addAction(reset);
}

void MainWindow::showPage(int index)
{
    m_tabs->setCurrentIndex(0);
    m_pages->setCurrentIndex(index);
    m_pages->setFocus();
    activateWindow();
}

// Asks nothing: what can be found without a word from the user is looked for.
void MainWindow::start()
{
    auto* view = static_cast<QvelDiscoveryWidget*>(m_discovery->widget(0));
    view->expand(view->model()->index(0, 0)); // "Local"
}

QJsonObject MainWindow::projectContent() const
{
    QJsonObject content = m_projectRest;
    QJsonArray servers = m_unusable;
    for (const SessionPage* page : m_sessions)
        servers.append(page->toJson());
    content[serversKey] = servers;
    return content;
}

void MainWindow::openProject(const QJsonObject& content)
{
    while (!m_sessions.isEmpty())
        closeSession(m_sessions.last());
    m_projectRest = content;
    m_unusable = {};
    const QJsonArray servers = content[serversKey].toArray();
    for (const QJsonValue server : servers) {
        QvelDiscoverySetting setting;
        QString error;
        if (!Project::get(server.toObject(), &setting, &error)) {
            m_host.log().appendFailure(error);
            m_unusable.append(server);
            continue;
        }
        SessionPage* page = addSession(setting);
        page->restore(server.toObject());
        if (server[QStringLiteral("window")].toBool())
            setInWindow(page, true);
        if (server[QStringLiteral("connected")].toBool(true))
            page->connectToServer();
    }
    if (m_tabs->count() > 1)
        m_tabs->setCurrentIndex(1);
}

void MainWindow::end()
{
    m_project->saveForRecovery();
    QCoreApplication::exit(0);
}

void MainWindow::closeSessions()
{
    QEventLoop loop;
    const auto pages = sessions();
    const auto look = [&] {
        if (std::all_of(pages.begin(), pages.end(), [](const SessionPage* page) {
                return page->session()->state() == QvelSession::Disconnected;
            }))
            loop.quit();
    };
    for (SessionPage* page : pages) {
        connect(page->session(), &QvelSession::stateChanged, &loop, look, Qt::QueuedConnection);
        page->session()->disconnectFromServer();
    }
    QTimer::singleShot(longestFarewell, &loop, &QEventLoop::quit);
    QTimer::singleShot(0, &loop, look);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!m_project->mayLeave())
        return event->ignore();
    if (m_gallery)
        m_gallery->close();
    for (SessionPage* page : std::as_const(m_sessions))
        if (page->isWindow())
            page->hide();
    event->accept();
}

void MainWindow::about()
{
    QMessageBox::about(this, tr("About harrier"),
                       tr("harrier %1 is the client of the kestrel library: it finds OPC UA "
                          "servers, shows what is in them, and changes it.")
                           .arg(QCoreApplication::applicationVersion()));
}
