#include "trustdialog.h"

#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "certificates/certificateview.h"
#include "session/session.h"

#include <QtCore/QPointer>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QStyle>
#include <QtWidgets/QVBoxLayout>

#include <utility>

class QvelTrustDialog::Private
{
public:
    QPointer<QvelSession> session;
    QString address; // of the session's server, when there was one
    QLabel* heading = nullptr;
    QvelCertificateAnswer answer = QvelCertificateAnswer::Reject;
    bool isOver = false; // answered, or nobody waits
};

static QLabel* plainLabel()
{
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setFocusPolicy(Qt::NoFocus); // Tab leads to what can be answered
    return label;
}

static QString headingText(const QString& address)
{
    return address.isNull()
               ? QvelTrustDialog::tr("The server's certificate is not trusted.")
               : QvelTrustDialog::tr("The certificate of the server at %1 is not trusted.")
                     .arg(address);
}

QvelTrustDialog::QvelTrustDialog(const QvelCertificateQuestion& question, QWidget* parent)
    : QDialog(parent), d(new Private)
{
    setObjectName(QStringLiteral("QvelTrustDialog"));

    auto* icon = new QLabel;
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
    d->heading = plainLabel();
    d->heading->setObjectName(QStringLiteral("heading"));
    auto* top = new QHBoxLayout;
    top->addWidget(icon, 0, Qt::AlignTop);
    top->addWidget(d->heading, 1);

    auto* findingsLabel = plainLabel();
    findingsLabel->setObjectName(QStringLiteral("findings"));
    auto* found = new QGroupBox;
    (new QVBoxLayout(found))->addWidget(findingsLabel);

    auto* view = new QvelCertificateView;
    view->setCertificate(question.certificate);
    auto* certificate = new QGroupBox;
    (new QVBoxLayout(certificate))->addWidget(view);

    auto* content = new QWidget;
    auto* contentLayout = new QVBoxLayout(content);
    contentLayout->setContentsMargins({});
    contentLayout->addLayout(top);
    contentLayout->addWidget(found);
    contentLayout->addWidget(certificate);
    auto* hint = plainLabel();
    contentLayout->addWidget(hint);
    contentLayout->addStretch();
    auto* scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);

    auto* buttons = new QDialogButtonBox;
    const auto add = [&](const char* name, QvelCertificateAnswer answer) {
        QPushButton* button = buttons->addButton(QString(), QDialogButtonBox::ActionRole);
        button->setObjectName(QLatin1String(name));
        connect(button, &QAbstractButton::clicked, this, [this, answer] {
            d->answer = answer;
            done(answer == QvelCertificateAnswer::Reject ? Rejected : Accepted);
        });
        return button;
    };
    QPushButton* copy = buttons->addButton(QString(), QDialogButtonBox::HelpRole);
    copy->setObjectName(QStringLiteral("copy"));
    connect(copy, &QAbstractButton::clicked, this, [view, findingsLabel] {
        QGuiApplication::clipboard()->setText(view->text() + findingsLabel->text());
    });
    const bool isCertificate = !question.certificate.isNull();
    QPushButton* always = add("always", QvelCertificateAnswer::AcceptAndTrust);
    always->setEnabled(isCertificate);
    QPushButton* once = add("once", QvelCertificateAnswer::AcceptOnce);
    once->setEnabled(isCertificate);
    QPushButton* reject = add("reject", QvelCertificateAnswer::Reject);
    reject->setDefault(true);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scroll);
    layout->addWidget(buttons);
    buttons->setFocusProxy(
        nullptr); // Tab would pass over the first button, which stands for the box
    QWidget* last = view;
    for (int i = 0; i < buttons->layout()->count(); ++i) // in the order of the style
        if (QWidget* next = buttons->layout()->itemAt(i)->widget())
            setTabOrder(std::exchange(last, next), next);
    reject->setFocus();

    retranslated(this, [=, findings = question.findings] {
        setOwnText(this, "windowTitle", tr("Trust the Server?"));
        d->heading->setText(headingText(d->address));
        QStringList lines;
        for (const UaPkiFinding& finding : findings)
            lines.append(QStringLiteral("\u2022 ") + shownText(finding.text()));
        findingsLabel->setText(lines.join(QLatin1Char('\n')));
        found->setTitle(tr("What was found"));
        certificate->setTitle(tr("The certificate"));
        hint->setText(tr("Compare the thumbprint with the one that the server itself shows. "
                         "\"Always Trust\" files the certificate among the trusted ones."));
        copy->setText(tr("&Copy Details"));
        always->setText(tr("&Always Trust"));
        once->setText(tr("Trust &Once"));
        reject->setText(tr("&Reject"));
    });
    // All of it at once where the screen has room, with the longest thumbprint in full.
    const QString digits(125, QLatin1Char('0'));
    const QSize whole = sizeHint().expandedTo(
        {fontMetrics().horizontalAdvance(digits),
         content->sizeHint().height() + buttons->sizeHint().height() + 4 * fontMetrics().height()});
    resize(whole.boundedTo(screen()->availableSize() * 0.9));
}

QvelTrustDialog::~QvelTrustDialog() = default;

void QvelTrustDialog::setSession(QvelSession* session)
{
    if (d->session)
        d->session->disconnect(this);
    d->session = session;
    if (!session)
        return;
    d->address = shownText(session->setting().endpointUrl());
    d->heading->setText(headingText(d->address));
    // Nothing goes on in a session that asks: whatever it does next, it does not wait any more.
    const auto close = [this] {
        if (std::exchange(d->isOver, true))
            return;
        d->answer = QvelCertificateAnswer::Reject;
        QDialog::done(Rejected);
    };
    connect(session, &QvelSession::stateChanged, this, close);
    connect(session, &QvelSession::failed, this, close);
    connect(session, &QObject::destroyed, this, close);
}

QvelSession* QvelTrustDialog::session() const
{
    return d->session;
}

QvelCertificateAnswer QvelTrustDialog::answer() const
{
    return d->answer;
}

void QvelTrustDialog::done(int result)
{
    if (!std::exchange(d->isOver, true)) {
        const QPointer<QvelTrustDialog> self(this);
        if (d->session)
            d->session->answerCertificate(d->answer);
        Q_EMIT answered(d->answer);
        if (!self)
            return;
    }
    QDialog::done(result);
}
