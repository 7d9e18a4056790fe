#include "sessionpage.h"

#include "host.h"
#include "language.h"
#include "logindialog.h"
#include "plainline.h"
#include "project.h"

#include <Kestrel/OpcUaStatusCodes>
#include <Kestrel/QvelAddressSpaceModel>
#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelCallWidget>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelNodeLink>
#include <Kestrel/QvelReferencesWidget>
#include <Kestrel/QvelSessionWidget>
#include <Kestrel/QvelTrendWidget>
#include <Kestrel/QvelTrustDialog>
#include <Kestrel/UaPkiCertificate>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QJsonArray>
#include <QtGui/QAction>
#include <QtGui/QCloseEvent>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace {

constexpr int maxTitle = 40;
constexpr OpcUa_UInt32 objectsFolder = 85; // OPC 10000-5, 8.2
constexpr OpcUa_UInt32 variableClass = 2;  // OPC 10000-3, 5.2
constexpr OpcUa_UInt32 methodClass = 4;
constexpr int maxText = 1000;

const QString dataViewKey = QStringLiteral("dataView");
const QString trendKey = QStringLiteral("trend");
const QString windowKey = QStringLiteral("window");
const QString layoutKey = QStringLiteral("Session/Layout");
const QString nonePolicy = QStringLiteral("http://opcfoundation.org/UA/SecurityPolicy#None");

// Failures behind which the wrong user may be.
bool concernsUser(UaStatusCode status)
{
    constexpr OpcUa_StatusCode codes[] = {
        OpcUa_BadIdentityTokenInvalid, OpcUa_BadIdentityTokenRejected, OpcUa_BadUserAccessDenied};
    return std::find(std::begin(codes), std::end(codes), status.code()) != std::end(codes);
}

// Those behind which it may be that the server does not know harrier.
bool concernsTrust(UaStatusCode status)
{
    constexpr OpcUa_StatusCode codes[] = {
        OpcUa_BadSecurityChecksFailed, OpcUa_BadCertificateUntrusted, OpcUa_BadConnectionClosed,
        OpcUa_BadCertificateUriInvalid, OpcUa_BadCertificateInvalid};
    return std::find(std::begin(codes), std::end(codes), status.code()) != std::end(codes);
}

// Those behind which a host name may be that only the server knows.
bool concernsHost(UaStatusCode status)
{
    constexpr OpcUa_StatusCode codes[] = {OpcUa_BadCommunicationError, OpcUa_BadConnectionRejected,
                                          OpcUa_BadTimeout};
    return std::find(std::begin(codes), std::end(codes), status.code()) != std::end(codes);
}

QString failureText(const QvelSessionError& error)
{
    QString text = SessionPage::tr("%1 failed: %2.")
                       .arg(plainLine(error.step, maxText), error.status.toString().toQString());
    if (!error.reason.isEmpty())
        text += QLatin1Char(' ') + SessionPage::tr("The server says: %1")
                                       .arg(plainLine(error.reason.toQString(), maxText));
    if (!error.advice.isEmpty())
        text += QLatin1Char('\n') + plainLine(error.advice, maxText);
    return text;
}

} // namespace

/// Above the views while there is something to tell about the connection.
class ConnectionBar : public QFrame
{
public:
    ConnectionBar()
        : text(new QLabel), progress(new QProgressBar), cancel(add("cancel")), retry(add("retry")),
          login(add("login")), certificates(add("certificates")), other(add("other"))
    {
        setFrameShape(QFrame::StyledPanel);
        setAutoFillBackground(true);
        text->setObjectName(QStringLiteral("connectionText"));
        text->setTextFormat(Qt::PlainText);
        text->setWordWrap(true);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        progress->setRange(0, QvelSessionWidget::stepCount());
        progress->setMaximumWidth(24 * fontMetrics().averageCharWidth());
        progress->setTextVisible(false);
        auto* layout = new QHBoxLayout(this);
        layout->addWidget(text, 1);
        layout->addWidget(progress);
        for (QPushButton* button : buttons)
            layout->addWidget(button);
    }
    void showOnly(const QList<QWidget*>& wanted)
    {
        progress->setVisible(wanted.contains(progress));
        for (QPushButton* button : buttons)
            button->setVisible(wanted.contains(button));
    }

private:
    QPushButton* add(const char* name)
    {
        auto* button = new QPushButton;
        button->setObjectName(QLatin1String(name));
        buttons.append(button);
        return button;
    }
    QList<QPushButton*> buttons;

public:
    QLabel* text;
    QProgressBar* progress;
    QPushButton* cancel;
    QPushButton* retry;
    QPushButton* login;
    QPushButton* certificates;
    QPushButton* other;
};

SessionPage::SessionPage(Host& host, const QvelDiscoverySetting& setting,
                         const QStringList& otherUrls, QWidget* parent)
    : QMainWindow(parent), m_host(host), m_setting(setting), m_otherUrls(otherUrls),
      m_session(new QvelSession({}, this)), m_menus(new QMenuBar), m_bar(new ConnectionBar),
      m_space(new QvelAddressSpaceWidget), m_attributes(new QvelAttributesWidget),
      m_references(new QvelReferencesWidget), m_dataView(new QvelDataViewWidget),
      m_trend(new QvelTrendWidget), m_call(new QvelCallWidget)
{
    setWindowFlags(Qt::Widget); // it lives in a tab
    setObjectName(QStringLiteral("session"));
    setDockNestingEnabled(true);
    auto* top = new QWidget;
    auto* layout = new QVBoxLayout(top);
    layout->setContentsMargins({});
    layout->addWidget(m_menus);
    layout->addWidget(m_bar);
    setMenuWidget(top);
    setMenus({});
    if (m_setting.sessionName().isEmpty())
        m_setting.setSessionName(QCoreApplication::applicationName());
    const auto users = m_setting.supportedUserTokenTypes();
    if (!users.isEmpty() && !users.contains(m_setting.userTokenType()))
        m_setting.setUserTokenType(users.first());

    connect(m_session, &QvelSession::stateChanged, this, &SessionPage::tellState);
    connect(m_session, &QvelSession::failed, this, &SessionPage::tellFailure);
    connect(m_session, &QvelSession::certificateQuestion, this, &SessionPage::askCertificate);
    connect(m_session, &QvelSession::passwordQuestion, this, &SessionPage::askKeyPassword);
    connect(m_session, &QvelSession::logMessage, this, [this](const QString& text) {
        const QString line = title() + QStringLiteral(": ") + text;
        if (text == m_session->lastError().toString())
            m_host.log().appendFailure(line);
        else
            m_host.log().append(line);
    });
    connect(m_bar->cancel, &QPushButton::clicked, this, &SessionPage::disconnectFromServer);
    connect(m_bar->retry, &QPushButton::clicked, this, &SessionPage::connectToServer);
    connect(m_bar->login, &QPushButton::clicked, this, &SessionPage::askLogin);
    connect(m_bar->certificates, &QPushButton::clicked, this, &SessionPage::certificatesWanted);
    connect(m_bar->other, &QPushButton::clicked, this, &SessionPage::useOtherUrl);
    createViews();
    createActions();
    Language::follow(this, [this] { retranslate(); });
    arrange();
    m_firstLayout = saveState();
    restoreState(m_host.store().value(layoutKey).toByteArray());
}

SessionPage::~SessionPage()
{
    m_host.store().setValue(layoutKey, saveState());
    m_session->disconnect(this);
    qDeleteAll(m_docks); // what they still tell, this can take
}

QString SessionPage::title() const
{
    const QString name = m_setting.serverName();
    return plainLine(name.isEmpty() ? m_setting.endpointUrl() : name, maxTitle);
}

// Where only its URL was given.
QString SessionPage::nameOfServer() const
{
    const UaPkiCertificate certificate = UaPkiCertificate::fromDER(m_session->serverCertificate());
    const QString name = certificate.commonName().toQString();
    return name.isEmpty() ? m_session->serverArray().value(0) : name;
}

QString SessionPage::status() const
{
    return tr("%1: %2").arg(title(), stateText());
}

QString SessionPage::stateText() const
{
    return m_question ? tr("waiting for your answer")
                      : QvelSessionWidget::stateText(m_session->state());
}

// In a window of its own, which can go, but not the page.
void SessionPage::closeEvent(QCloseEvent* event)
{
    event->accept();
    QMetaObject::invokeMethod(this, &SessionPage::windowClosed, Qt::QueuedConnection);
}

void SessionPage::changeEvent(QEvent* event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        Q_EMIT changed();
}

QIcon SessionPage::icon(QvelSession::State state)
{
    const QPalette palette = QGuiApplication::palette();
    const bool isDark = palette.color(QPalette::Window).lightness() < 128;
    const bool isOn = state == QvelSession::Connected, isOff = state == QvelSession::Disconnected;
    const QColor color(isOn    ? (isDark ? 0x5cc87c : 0x1f7a3a)
                       : isOff ? (isDark ? 0xff8a80 : 0xb3261e)
                               : (isDark ? 0xf0b84a : 0x8a5a00));
    constexpr int size = 32; // of which less is shown
    QPixmap dot(size, size);
    dot.fill(Qt::transparent);
    QPainter painter(&dot);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 4));
    const QRect circle = QRect(0, 0, size, size).adjusted(7, 7, -7, -7);
    painter.setBrush(isOn ? QBrush(color) : QBrush(Qt::NoBrush));
    painter.drawEllipse(circle);
    if (!isOn && !isOff) {
        painter.setBrush(color);
        painter.drawChord(circle, 90 * 16, 180 * 16);
    }
    return QIcon(dot);
}

QDockWidget* SessionPage::addDock(const char* name, QWidget* widget, Qt::DockWidgetArea area)
{
    auto* dock = new QDockWidget;
    dock->setObjectName(QLatin1String(name));
    dock->setWidget(widget);
    addDockWidget(area, dock);
    m_docks.append(dock);
    return dock;
}

void SessionPage::createViews()
{
    auto* status = new QvelSessionWidget;
    connect(status, &QvelSessionWidget::connectRequested, this, &SessionPage::connectToServer);
    connect(m_space, &QvelAddressSpaceWidget::currentNodeChanged, this, &SessionPage::followNode);
    connect(m_space, &QvelAddressSpaceWidget::nodeActivated, this, &SessionPage::activateNode);
    connect(m_references, &QvelReferencesWidget::nodeActivated, m_space,
            &QvelAddressSpaceWidget::goTo);
    connect(m_dataView, &QvelDataViewWidget::variableActivated, this, &SessionPage::showNode);
    m_space->setSession(m_session);
    m_attributes->setSession(m_session);
    m_references->setSession(m_session);
    m_dataView->setSession(m_session);
    m_trend->setSession(m_session);
    m_call->setSession(m_session);
    status->setSession(m_session);

    // What a glance is for; the other columns are a click on the header away.
    QJsonObject columns = m_dataView->toJson();
    columns[QStringLiteral("hiddenColumns")] = QJsonArray{
        "NodeId", "ServerTimestamp",           "PublishingInterval", "QueueSize",
        "Gaps",   "RevisedPublishingInterval", "RevisedQueueSize",   "RevisedSamplingInterval"};
    m_dataView->fromJson(columns);

    const auto area = Qt::LeftDockWidgetArea;
    addDock("addressspace", m_space, area);
    addDock("dataview", m_dataView, area);
    addDock("attributes", m_attributes, area);
    addDock("references", m_references, area);
    addDock("call", m_call, area);
    addDock("status", status, area);
    addDock("trend", m_trend, area);
}

void SessionPage::retranslate()
{
    const QString titles[] = {tr("Address Space"), tr("Data View"), tr("Attributes"),
                              tr("References"),    tr("Call"),      tr("Session"),
                              tr("Trend")};
    for (int i = 0; i < m_docks.size(); ++i)
        m_docks[i]->setWindowTitle(titles[i]);
    m_watchAction->setText(tr("Add to &Data View"));
    m_trendAction->setText(tr("Show in &Trend"));
    m_callAction->setText(tr("&Call..."));
    m_bar->progress->setAccessibleName(tr("Steps of the connection"));
    m_bar->cancel->setText(tr("&Cancel"));
    m_bar->login->setText(tr("&Log In..."));
    m_bar->certificates->setText(tr("C&ertificates"));
    showState();
}

void SessionPage::createActions()
{
    const auto add = [this](const QKeySequence& keys, auto slot) {
        auto* action = new QAction(m_space);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        connect(action, &QAction::triggered, this, slot);
        m_space->addAction(action);
        return action;
    };
    m_watchAction = add(Qt::CTRL | Qt::SHIFT | Qt::Key_D, &SessionPage::watchNodes);
    m_trendAction = add(Qt::CTRL | Qt::SHIFT | Qt::Key_T, &SessionPage::trendNodes);
    m_callAction = add(Qt::CTRL | Qt::SHIFT | Qt::Key_M, &SessionPage::callNode);
    followNode({});
}

// How the docks stand at first: the tree, what is watched above the trend, what is said about a
// node.
void SessionPage::arrange()
{
    enum { Space, Data, Attributes, References, Call, Status, Trend };
    splitDockWidget(m_docks[Space], m_docks[Data], Qt::Horizontal);
    splitDockWidget(m_docks[Data], m_docks[Attributes], Qt::Horizontal);
    splitDockWidget(m_docks[Data], m_docks[Trend], Qt::Vertical);
    for (const int tab : {References, Call, Status})
        tabifyDockWidget(m_docks[Attributes], m_docks[tab]);
    m_docks[Attributes]->raise();
    const int em = fontMetrics().averageCharWidth();
    resizeDocks({m_docks[Space], m_docks[Data], m_docks[Attributes]}, {48 * em, 80 * em, 60 * em},
                Qt::Horizontal);
    resizeDocks({m_docks[Data], m_docks[Trend]}, {24 * em, 30 * em}, Qt::Vertical);
}

// Where everybody looks first. What is gone to instead, or later, is not opened.
void SessionPage::showObjects()
{
    const UaExpandedNodeId objects(UaNodeId(objectsFolder), UaString(), 0);
    const auto* model = m_space->model();
    auto* once = new QObject(this);
    connect(model, &QvelAddressSpaceModel::located, once, [=](const QModelIndex& index) {
        if (model->nodeId(index) == objects)
            m_space->view()->expand(index);
        once->deleteLater();
    });
    connect(model, &QvelAddressSpaceModel::locateFailed, once, &QObject::deleteLater);
    m_space->goTo(objects);
}

void SessionPage::showNode(const UaExpandedNodeId& node)
{
    m_attributes->setNode(node);
    m_references->setNode(node);
}

void SessionPage::followNode(const UaExpandedNodeId& node)
{
    const QModelIndex current = m_space->view()->currentIndex();
    const OpcUa_UInt32 nodeClass = m_space->model()->nodeClass(current);
    showNode(node);
    m_watchAction->setEnabled(nodeClass == variableClass);
    m_trendAction->setEnabled(nodeClass == variableClass);
    m_callAction->setEnabled(nodeClass == methodClass);
    if (nodeClass == methodClass)
        m_call->setMethod(m_space->model()->nodeId(current.parent()), node);
}

void SessionPage::activateNode()
{
    if (m_watchAction->isEnabled())
        watchNodes();
    else if (m_callAction->isEnabled())
        callNode();
}

QList<QvelNodeLink> SessionPage::selectedVariables() const
{
    QModelIndexList rows = m_space->view()->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    QList<QvelNodeLink> links;
    for (const QModelIndex& row : std::as_const(rows))
        if (m_space->model()->nodeClass(row) == variableClass)
            links.append(m_space->model()->nodeLink(row));
    return links;
}

void SessionPage::watchNodes()
{
    m_dataView->addNodes(selectedVariables());
    raise(m_dataView);
}

void SessionPage::trendNodes()
{
    const auto links = selectedVariables();
    for (const QvelNodeLink& link : links)
        m_trend->addVariable(link);
    raise(m_trend);
}

void SessionPage::callNode()
{
    raise(m_call);
    m_call->setFocus();
}

// Brings the dock of a view to the front, and back where it was closed.
void SessionPage::raise(QWidget* view)
{
    for (QDockWidget* dock : std::as_const(m_docks)) {
        if (dock->widget() == view) {
            dock->show();
            dock->raise();
        }
    }
}

void SessionPage::resetLayout()
{
    restoreState(m_firstLayout);
}

void SessionPage::setMenus(const QList<QMenu*>& menus)
{
    m_menus->clear();
    for (QMenu* menu : menus)
        m_menus->addMenu(menu);
    m_menus->setHidden(menus.isEmpty());
}

void SessionPage::connectToServer()
{
    m_isQuiet = false;
    m_isWanted = true;
    if (m_session->state() == QvelSession::WaitingToReconnect)
        return m_session->reconnectNow();
    if (m_setting.userTokenType() == OpcUa_UserTokenType_UserName && m_setting.password().isEmpty())
        return askLogin();
    start(m_setting);
}

void SessionPage::connectQuietly()
{
    m_isQuiet = true;
    start(m_setting);
}

void SessionPage::start(const QvelDiscoverySetting& setting)
{
    m_isWanted = true;
    m_hasLasted = false;
    if (setting.securityPolicy() != nonePolicy)
        m_host.needCertificate();
    QvelSessionOptions options = m_host.certificates().sessionOptions();
    options.locales = QLocale().uiLanguages();
    m_session->setOptions(options);
    m_session->connectToServer(setting);
}

void SessionPage::startWithoutSecurity()
{
    m_setting.setSecurityPolicy(nonePolicy);
    m_setting.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
    start(m_setting);
}

void SessionPage::disconnectFromServer()
{
    m_isWanted = false;
    m_session->disconnectFromServer();
}

void SessionPage::useOtherUrl()
{
    m_setting.setEndpointUrl(m_otherUrls.takeFirst());
    connectToServer();
}

void SessionPage::askLogin()
{
    const auto what = [this] { return tr("User of %1").arg(title()); };
    auto* dialog = new LoginDialog(LoginDialog::NameAndPassword, what, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setUserName(m_setting.userName());
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        m_isQuiet = false;
        m_setting.setUserTokenType(OpcUa_UserTokenType_UserName);
        m_setting.setUserName(dialog->userName());
        QvelDiscoverySetting once(m_setting);
        once.setPassword(dialog->password());
        start(once);
    });
    dialog->open();
}

void SessionPage::askCertificate(const QvelCertificateQuestion& question)
{
    if (m_isQuiet)
        return startWithoutSecurity();
    auto* dialog = new QvelTrustDialog(question, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setSession(m_session);
    connect(dialog, &QvelTrustDialog::answered, &m_host, &Host::certificatesChanged,
            Qt::QueuedConnection);
    ask(dialog);
}

void SessionPage::askKeyPassword(const QvelPasswordQuestion& question)
{
    const auto what = [question] {
        return (question.isRepeated ? tr("This password does not open the key %1. Try again.")
                                    : tr("The key %1 is locked by a password."))
            .arg(question.file);
    };
    auto* dialog = new LoginDialog(LoginDialog::PasswordOnly, what, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, m_session,
            [this, dialog] { m_session->answerPassword(dialog->password()); });
    connect(dialog, &QDialog::rejected, m_session, &QvelSession::cancelPassword);
    connect(m_session, &QvelSession::failed, dialog, &QObject::deleteLater); // it waits no more
    ask(dialog);
}

// While the session waits for it, the bar says so.
void SessionPage::ask(QDialog* dialog)
{
    m_question = dialog;
    connect(dialog, &QDialog::finished, this, [this] {
        m_question = nullptr;
        showState();
    });
    dialog->open();
    showState();
}

void SessionPage::tellFailure(const QvelSessionError& error)
{
    const bool hadSecurity = m_session->setting().securityPolicy() != nonePolicy;
    if (m_isQuiet && !m_hasLasted && hadSecurity && !concernsHost(error.status))
        return startWithoutSecurity();
    if (concernsUser(error.status))
        m_setting.setPassword(QString());
    tellState(m_session->state());
}

void SessionPage::tellState(QvelSession::State state)
{
    if (state == QvelSession::Connected) {
        if (m_setting.serverName().isEmpty())
            m_setting.setServerName(nameOfServer());
        m_host.log().append(tr("%1: connected to %2, %3")
                                .arg(title(), m_session->usedUrl(),
                                     m_session->setting().securityPolicy().isEmpty()
                                         ? tr("with the best security")
                                         : m_session->setting().shortName()));
        if (!std::exchange(m_hasLasted, true) && m_space->currentNode() == UaExpandedNodeId())
            showObjects();
    }
    showState();
}

// In the language of the window.
void SessionPage::showState()
{
    const QvelSession::State state = m_session->state();
    const QvelSessionError error = m_session->lastError();
    if (state == QvelSession::Connected) {
        m_bar->hide();
    } else if (state == QvelSession::Disconnected) {
        if (!error.isNull())
            m_bar->text->setText(failureText(error));
        else
            m_bar->text->setText(m_isWanted ? tr("Not connected to %1 yet.").arg(title())
                                            : tr("Not connected to %1. What is shown is as it was "
                                                 "last known.")
                                                  .arg(title()));
        QList<QWidget*> wanted = {m_bar->retry};
        if (concernsUser(error.status))
            wanted.append(m_bar->login);
        if (concernsTrust(error.status))
            wanted.append(m_bar->certificates);
        if (concernsHost(error.status) && !m_otherUrls.isEmpty())
            wanted.append(m_bar->other);
        m_bar->other->setText(tr("Connect to %1").arg(plainLine(m_otherUrls.value(0), maxTitle)));
        m_bar->retry->setText(error.isNull() ? tr("&Connect") : tr("Try &Again"));
        m_bar->showOnly(wanted);
        m_bar->show();
    } else {
        const bool waits = state == QvelSession::WaitingToReconnect;
        if (waits || m_hasLasted)
            m_bar->text->setText(tr("The connection is lost, and will be restored: %1\n"
                                    "What is shown is as it was last known.")
                                     .arg(failureText(error).section(QLatin1Char('\n'), 0, 0)));
        else
            m_bar->text->setText(
                tr("Connecting to %1: %2")
                    .arg(plainLine(m_session->setting().endpointUrl(), maxText), stateText()));
        m_bar->progress->setValue(QvelSessionWidget::step(state));
        m_bar->retry->setText(tr("Try &Now"));
        m_bar->showOnly(waits ? QList<QWidget*>{m_bar->retry, m_bar->cancel}
                              : QList<QWidget*>{m_bar->progress, m_bar->cancel});
        m_bar->show();
    }
    Q_EMIT changed();
}

QJsonObject SessionPage::toJson() const
{
    QJsonObject json = m_project;
    Project::put(json, m_setting);
    json[QStringLiteral("connected")] = m_isWanted;
    json.remove(windowKey);
    if (isWindow())
        json[windowKey] = true;
    if (m_hasDataView)
        json[dataViewKey] = m_dataView->toJson();
    if (m_hasTrend)
        json[trendKey] = m_trend->toJson();
    return json;
}

void SessionPage::restore(const QJsonObject& json)
{
    m_project = json;
    const auto tell = [this](const QString& text) {
        m_host.log().appendFailure(title() + QStringLiteral(": ") + text);
    };
    if (json.contains(dataViewKey)) {
        m_hasDataView = m_dataView->fromJson(json[dataViewKey].toObject());
        if (!m_hasDataView)
            tell(tr("the data view of the project cannot be read, and is kept in the file"));
    }
    if (json.contains(trendKey)) {
        QString error;
        m_hasTrend = m_trend->fromJson(json[trendKey].toObject(), &error);
        if (!m_hasTrend)
            tell(tr("the trend of the project cannot be read, and is kept in the file"));
        else if (!error.isEmpty())
            tell(error);
    }
}
