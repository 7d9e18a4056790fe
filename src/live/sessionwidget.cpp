#include "sessionwidget.h"

#include "base/linehints_p.h"
#include "base/outputrow_p.h"
#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "session/session.h"

#include <QtCore/QDateTime>
#include <QtCore/QLocale>
#include <QtCore/QMetaMethod>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

#include <array>

namespace {

constexpr int lookInterval = 1000; // ms

struct StateLine
{
    QvelSession::State state;
    int step; // how many are done
    const char* text;
};

constexpr StateLine stateLines[] = {
    {QvelSession::Disconnected, 0, QT_TRANSLATE_NOOP("QvelSessionWidget", "Disconnected")},
    {QvelSession::LookingUp, 0, QT_TRANSLATE_NOOP("QvelSessionWidget", "Looking up the host")},
    {QvelSession::Connecting, 1, QT_TRANSLATE_NOOP("QvelSessionWidget", "Connecting")},
    {QvelSession::OpeningChannel, 2,
     QT_TRANSLATE_NOOP("QvelSessionWidget", "Opening the secure channel")},
    {QvelSession::Creating, 3, QT_TRANSLATE_NOOP("QvelSessionWidget", "Creating the session")},
    {QvelSession::Activating, 4, QT_TRANSLATE_NOOP("QvelSessionWidget", "Activating the session")},
    {QvelSession::Connected, 5, QT_TRANSLATE_NOOP("QvelSessionWidget", "Connected")},
    {QvelSession::WaitingToReconnect, 0,
     QT_TRANSLATE_NOOP("QvelSessionWidget", "Waiting to reconnect")},
};
constexpr int steps = 5;

const StateLine* lineOf(int state)
{
    for (const StateLine& line : stateLines)
        if (line.state == state)
            return &line;
    return nullptr;
}

QString serverText(const QvelSession& session)
{
    return session.setting().serverName();
}

QString urlText(const QvelSession& session)
{
    const QString used = session.usedUrl();
    const QString announced = session.announcedUrl();
    if (session.state() != QvelSession::Connected || used.isEmpty())
        return session.setting().endpointUrl();
    return announced.isEmpty() || announced == used
               ? used
               : QvelSessionWidget::tr("%1 (announced as %2)").arg(used, announced);
}

QString securityText(const QvelSession& session)
{
    const QvelDiscoverySetting setting = session.setting();
    return setting.securityPolicy().isEmpty() ? QvelSessionWidget::tr("The best that is offered")
                                              : setting.shortName();
}

QString userText(const QvelSession& session)
{
    const QvelDiscoverySetting setting = session.setting();
    switch (setting.userTokenType()) {
    case OpcUa_UserTokenType_UserName:
        return setting.userName();
    case OpcUa_UserTokenType_Certificate:
        return QvelSessionWidget::tr("Certificate %1").arg(setting.certificateFile());
    default:
        return QvelSessionWidget::tr("Anonymous");
    }
}

QString sessionNameText(const QvelSession& session)
{
    return session.setting().sessionName();
}

QString lastAnswerText(const QvelSession& session)
{
    const UaDateTime last = session.statistics().lastAnswer;
    if (last.isNull())
        return QvelSessionWidget::tr("None yet");
    const qint64 seconds =
        qMax<qint64>(0, last.toQDateTime().secsTo(QDateTime::currentDateTimeUtc()));
    return QvelSessionWidget::tr("%1 s ago").arg(QLocale().toString(seconds));
}

QString requestsText(const QvelSession& session)
{
    return QLocale().toString(session.statistics().requests);
}

QString bytesText(const QvelSession& session)
{
    const QvelSessionStatistics figures = session.statistics();
    const QLocale locale;
    return QvelSessionWidget::tr("%1 sent, %2 received")
        .arg(locale.formattedDataSize(qint64(figures.bytesSent)),
             locale.formattedDataSize(qint64(figures.bytesReceived)));
}

QString renewalsText(const QvelSession& session)
{
    return QLocale().toString(session.statistics().tokenRenewals);
}

QString reconnectsText(const QvelSession& session)
{
    return QLocale().toString(session.statistics().reconnects);
}

struct Row
{
    const char* objectName;
    const char* label;
    QString (*text)(const QvelSession&);
};

constexpr Row rows[] = {
    {"server", QT_TRANSLATE_NOOP("QvelSessionWidget", "Server"), serverText},
    {"url", QT_TRANSLATE_NOOP("QvelSessionWidget", "URL"), urlText},
    {"security", QT_TRANSLATE_NOOP("QvelSessionWidget", "Security"), securityText},
    {"user", QT_TRANSLATE_NOOP("QvelSessionWidget", "User"), userText},
    {"sessionName", QT_TRANSLATE_NOOP("QvelSessionWidget", "Session name"), sessionNameText},
    {"lastAnswer", QT_TRANSLATE_NOOP("QvelSessionWidget", "Last answer"), lastAnswerText},
    {"requests", QT_TRANSLATE_NOOP("QvelSessionWidget", "Requests"), requestsText},
    {"bytes", QT_TRANSLATE_NOOP("QvelSessionWidget", "Bytes"), bytesText},
    {"renewals", QT_TRANSLATE_NOOP("QvelSessionWidget", "Renewals of the channel"), renewalsText},
    {"reconnects", QT_TRANSLATE_NOOP("QvelSessionWidget", "Reconnects"), reconnectsText},
};

QString errorText(const QvelSessionError& error)
{
    if (error.isNull())
        return {};
    QString text = QvelSessionWidget::tr("%1 failed: %2")
                       .arg(shownText(error.step), error.status.toString().toQString());
    if (!error.reason.isEmpty())
        text +=
            QLatin1Char('\n') +
            QvelSessionWidget::tr("The server says: %1").arg(shownText(error.reason.toQString()));
    if (!error.advice.isEmpty())
        text += QLatin1Char('\n') + shownText(error.advice);
    return text;
}

} // namespace

class QvelSessionWidget::Private
{
public:
    void refresh();
    void reconnect(QvelSessionWidget* widget);

    QPointer<QvelSession> session;
    QTimer look;
    QLabel* state = nullptr;
    QProgressBar* progress = nullptr;
    QLabel* error = nullptr;
    QPushButton* disconnect = nullptr;
    QPushButton* reconnectButton = nullptr;
    std::array<QLineEdit*, std::size(rows)> outputs;
};

void QvelSessionWidget::Private::refresh()
{
    const int now = session ? int(session->state()) : int(QvelSession::Disconnected);
    const bool isUnderWay =
        session && now != QvelSession::Disconnected && now != QvelSession::Connected;
    announce(state, session ? stateText(now) : QvelSessionWidget::tr("No session"));
    progress->setVisible(isUnderWay);
    progress->setValue(step(now));
    progress->setFormat(stateText(now));
    for (std::size_t i = 0; i < std::size(rows); ++i)
        showOutput(outputs[i], session ? rows[i].text(*session) : QString());
    announce(error, session ? errorText(session->lastError()) : QString());
    error->setVisible(!error->text().isEmpty());
    disconnect->setEnabled(session && now != QvelSession::Disconnected);
    disconnect->setText(isUnderWay && now != QvelSession::WaitingToReconnect
                            ? QvelSessionWidget::tr("&Cancel")
                            : QvelSessionWidget::tr("&Disconnect"));
    reconnectButton->setEnabled(
        session && (now == QvelSession::Disconnected || now == QvelSession::WaitingToReconnect));
    reconnectButton->setText(now == QvelSession::WaitingToReconnect
                                 ? QvelSessionWidget::tr("&Reconnect Now")
                                 : QvelSessionWidget::tr("&Reconnect"));
}

void QvelSessionWidget::Private::reconnect(QvelSessionWidget* widget)
{
    if (!session)
        return;
    if (session->state() == QvelSession::WaitingToReconnect)
        session->reconnectNow();
    else if (widget->isSignalConnected(
                 QMetaMethod::fromSignal(&QvelSessionWidget::connectRequested)))
        Q_EMIT widget->connectRequested();
    else
        session->connectToServer(session->setting());
}

QvelSessionWidget::QvelSessionWidget(QWidget* parent) : QWidget(parent), d(new Private)
{
    d->state = new QLabel;
    d->state->setObjectName(QStringLiteral("state"));
    QFont bold = d->state->font();
    bold.setBold(true);
    d->state->setFont(bold);
    d->progress = new QProgressBar;
    d->progress->setObjectName(QStringLiteral("progress"));
    d->progress->setRange(0, steps);
    d->error = new QLabel;
    d->error->setObjectName(QStringLiteral("error"));
    d->error->setTextFormat(Qt::PlainText);
    d->error->setWordWrap(true);
    d->error->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

    auto* form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    for (std::size_t i = 0; i < std::size(rows); ++i)
        d->outputs[i] = addOutputRow(form, QString(), rows[i].objectName);

    d->disconnect = new QPushButton;
    d->disconnect->setObjectName(QStringLiteral("disconnect"));
    d->reconnectButton = new QPushButton;
    d->reconnectButton->setObjectName(QStringLiteral("reconnect"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(d->disconnect);
    buttons->addWidget(d->reconnectButton);
    buttons->addStretch();

    auto* content = new QWidget;
    auto* contentLayout = new QVBoxLayout(content);
    contentLayout->addWidget(d->state);
    contentLayout->addWidget(d->progress);
    contentLayout->addWidget(d->error);
    contentLayout->addLayout(buttons);
    contentLayout->addLayout(form);
    contentLayout->addStretch();
    auto* scroll = new QScrollArea; // the widget may be low
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(scroll);

    connect(d->disconnect, &QAbstractButton::clicked, this, [this] {
        if (d->session)
            d->session->disconnectFromServer();
    });
    connect(d->reconnectButton, &QAbstractButton::clicked, this, [this] { d->reconnect(this); });
    d->look.setInterval(lookInterval);
    connect(&d->look, &QTimer::timeout, this, [this] { d->refresh(); });
    retranslated(this, [this, form] {
        setOwnText(this, "accessibleName", tr("Session"));
        d->progress->setAccessibleName(tr("Steps of the connection"));
        d->error->setAccessibleName(tr("Last error"));
        for (std::size_t i = 0; i < std::size(rows); ++i)
            nameOutputRow(form, d->outputs[i], tr(rows[i].label));
        d->refresh();
    });
}

QvelSessionWidget::~QvelSessionWidget() = default;

void QvelSessionWidget::setSession(QvelSession* session)
{
    if (d->session)
        d->session->QObject::disconnect(this);
    d->session = session;
    if (session) {
        const auto refresh = [this] { d->refresh(); };
        connect(session, &QvelSession::stateChanged, this, refresh);
        connect(session, &QvelSession::failed, this, refresh);
        connect(session, &QObject::destroyed, this, refresh);
    }
    d->refresh();
}

QvelSession* QvelSessionWidget::session() const
{
    return d->session;
}

QString QvelSessionWidget::stateText(int state)
{
    const StateLine* line = lineOf(state);
    return line ? tr(line->text) : QString();
}

int QvelSessionWidget::step(int state)
{
    const StateLine* line = lineOf(state);
    return line ? line->step : 0;
}

int QvelSessionWidget::stepCount()
{
    return steps;
}

void QvelSessionWidget::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    d->refresh();
    d->look.start();
}

void QvelSessionWidget::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    d->look.stop();
}
