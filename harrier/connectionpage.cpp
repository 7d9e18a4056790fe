#include "connectionpage.h"

#include "host.h"
#include "language.h"

#include <Kestrel/QvelEndpointSettingsWidget>

#include <QtWidgets/QComboBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

namespace {

const QString certificatePathKey = QStringLiteral("Connection/CertificatePath");
const QString privateKeyPathKey = QStringLiteral("Connection/PrivateKeyPath");

constexpr int MaxUri = 200; // characters of an unknown policy that is still offered

struct Policy
{
    const char* name;
    bool withdrawn;
};

// OPC 10000-7, 6.6; the modern ones first.
constexpr Policy policies[] = {
    {"None", false},
    {"Aes256_Sha256_RsaPss", false},
    {"Aes128_Sha256_RsaOaep", false},
    {"Basic256Sha256", false},
    {"ECC_nistP256", false},
    {"ECC_nistP384", false},
    {"ECC_brainpoolP256r1", false},
    {"ECC_brainpoolP384r1", false},
    {"ECC_curve25519", false},
    {"ECC_curve448", false},
    {"Basic256", true},
    {"Basic128Rsa15", true},
};

QString uriOf(const Policy& policy)
{
    return QStringLiteral("http://opcfoundation.org/UA/SecurityPolicy#") +
           QLatin1String(policy.name);
}

QStringList urisWith(const QString& policyOfServer)
{
    QStringList uris;
    for (const Policy& policy : policies)
        uris.append(uriOf(policy));
    if (!policyOfServer.isEmpty() && policyOfServer.size() <= MaxUri)
        uris.append(policyOfServer); // left out again if it is one of the above
    return uris;
}

QString nameWith(const QString& server, const QvelDiscoverySetting& setting)
{
    return QStringLiteral("%1 - %2").arg(server, setting.shortName());
}

/// False for the name that a record gets from its endpoint description.
bool hasNameOfItsOwn(const QvelDiscoverySetting& setting)
{
    return !setting.displayName().isEmpty() &&
           setting.displayName() != nameWith(setting.serverName(), setting);
}

} // namespace

ConnectionPage::ConnectionPage(Host& host, QWidget* parent)
    : QWidget(parent), m_host(host), m_form(new QvelEndpointSettingsWidget), m_use(new QPushButton),
      m_connect(new QPushButton)
{
    m_form->setCertificateFilePath(host.store().value(certificatePathKey).toString());
    m_form->setPrivateKeyFilePath(host.store().value(privateKeyPathKey).toString());
    // Below its preferred width the form would cut its labels; the page scrolls instead.
    m_form->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred);
    m_form->setSecurityPolicies(urisWith(QString()));

    auto* content = new QWidget; // gives the form the margins of a page
    (new QVBoxLayout(content))->addWidget(m_form);
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(content);
    scroll->viewport()->setAutoFillBackground(false);
    content->setAutoFillBackground(false);

    m_use->setObjectName(QStringLiteral("useConnection"));
    m_use->setEnabled(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(scroll);
    m_connect->setObjectName(QStringLiteral("connect"));
    m_connect->setEnabled(false);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_use);
    buttons->addWidget(m_connect);
    layout->addLayout(buttons);

    connect(m_form, &QvelEndpointSettingsWidget::endpointUrlChanged, m_use,
            [this](const QString& url) {
                m_use->setEnabled(!url.trimmed().isEmpty());
                m_connect->setEnabled(m_use->isEnabled());
            });
    connect(m_connect, &QPushButton::clicked, this,
            [this] { Q_EMIT m_host.connectionRequested(connection()); });
    connect(m_use, &QPushButton::clicked, this,
            [this] { Q_EMIT m_host.useConnectionRequested(connection()); });
    connect(&host, &Host::endpointChanged, this, &ConnectionPage::setEndpoint);
    setEndpoint(host.endpoint());
    Language::follow(this, [this] {
        m_use->setText(tr("Use &Connection"));
        m_use->setToolTip(tr("Files the connection under \"Recently Used\" with these settings"));
        m_connect->setText(tr("C&onnect"));
        m_connect->setToolTip(tr("Opens a session with these settings"));
        describePolicies();
    });
}

ConnectionPage::~ConnectionPage()
{
    m_host.store().setValue(certificatePathKey, m_form->certificateFilePath());
    m_host.store().setValue(privateKeyPathKey, m_form->privateKeyFilePath());
}

void ConnectionPage::describePolicies()
{
    auto* combo = m_form->findChild<QComboBox*>(QStringLiteral("comboBox_SecurityPolicy"));
    const int known = int(std::size(policies));
    for (int i = 0; i < combo->count(); ++i) {
        QString text = tr("Security policy %1").arg(combo->itemText(i));
        if (i >= known)
            text = tr("Security policy of this server; unknown to the standard");
        else if (policies[i].withdrawn)
            text = tr("Security policy %1: withdrawn, no longer secure; for old servers only")
                       .arg(combo->itemText(i));
        combo->setItemData(i, text, Qt::ToolTipRole);
    }
}

void ConnectionPage::setEndpoint(const QvelDiscoverySetting& endpoint)
{
    if (endpoint == m_current)
        return; // it was announced again; what the user typed stays
    m_current = endpoint;
    if (endpoint == QvelDiscoverySetting())
        return;
    m_base = endpoint;
    m_form->setEndpointUrl(endpoint.endpointUrl());
    m_form->setSecurityPolicies(urisWith(endpoint.securityPolicy()));
    describePolicies();
    m_form->setSecurityPolicy(m_form->securityPolicies().constFirst());
    m_form->setSecurityPolicy(endpoint.securityPolicy());
    if (m_form->securityPolicy() == endpoint.securityPolicy())
        m_form->setSecurityMode(endpoint.messageSecurityMode());
    else if (!endpoint.securityPolicy().isEmpty())
        Q_EMIT m_host.message(tr("The security policy of this endpoint is not known"));
    m_form->setSupportedUserTokenTypes(endpoint.supportedUserTokenTypes());
    if (endpoint.supportedUserTokenTypes().contains(endpoint.userTokenType()))
        m_form->setUserTokenType(endpoint.userTokenType());
    m_form->setUserName(endpoint.userName());
    m_form->setPassword(endpoint.password());
    m_form->setStorePassword(endpoint.isStorePassword());
    m_form->setCertificateFile(endpoint.certificateFile());
    m_form->setPrivateKeyFile(endpoint.privateKeyFile());
    m_form->setSessionName(endpoint.sessionName());
}

QvelDiscoverySetting ConnectionPage::connection() const
{
    QvelDiscoverySetting setting(m_base);
    const bool named = hasNameOfItsOwn(setting);
    setting.setEndpointUrl(m_form->endpointUrl().trimmed());
    setting.setSecurityPolicy(m_form->securityPolicy());
    setting.setMessageSecurityMode(m_form->securityMode());
    setting.setUserTokenType(m_form->userTokenType());
    setting.setUserName(m_form->userName());
    setting.setStorePassword(m_form->isStorePassword());
    setting.setPassword(m_form->isStorePassword() ? m_form->password() : QString());
    setting.setCertificateFile(m_form->certificateFile());
    setting.setPrivateKeyFile(m_form->privateKeyFile());
    setting.setSessionName(m_form->sessionName());
    if (!named)
        setting.setDisplayName(
            nameWith(setting.serverName().isEmpty() ? setting.endpointUrl() : setting.serverName(),
                     setting));
    return setting;
}
