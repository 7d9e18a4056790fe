#include "endpointdetails.h"

#include "language.h"
#include "outputfield.h"
#include "plainline.h"

#include <Kestrel/QvelCertificateView>
#include <Kestrel/UaByteString>
#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaString>

#include <QtWidgets/QFormLayout>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

namespace {

constexpr int MaxText = 1000; // characters of a token's texts
constexpr int MaxTokens = 100;

QString text(const OpcUa_String& value)
{
    return UaString(&value).toQString();
}

struct Row
{
    const char* label;
    QWidget* field;
};

QString tokenTypeName(OpcUa_UserTokenType type)
{
    switch (type) {
    case OpcUa_UserTokenType_Anonymous:
        return EndpointDetails::tr("Anonymous");
    case OpcUa_UserTokenType_UserName:
        return EndpointDetails::tr("User name and password");
    case OpcUa_UserTokenType_Certificate:
        return EndpointDetails::tr("Certificate");
    case OpcUa_UserTokenType_IssuedToken:
        return EndpointDetails::tr("Issued token");
    }
    return EndpointDetails::tr("Unknown token type %1").arg(quint32(type));
}

QString modeName(OpcUa_MessageSecurityMode mode)
{
    switch (mode) {
    case OpcUa_MessageSecurityMode_Invalid:
        return EndpointDetails::tr("Invalid");
    case OpcUa_MessageSecurityMode_None:
        return EndpointDetails::tr("None");
    case OpcUa_MessageSecurityMode_Sign:
        return EndpointDetails::tr("Sign");
    case OpcUa_MessageSecurityMode_SignAndEncrypt:
        return EndpointDetails::tr("Sign and encrypt");
    }
    return EndpointDetails::tr("Unknown mode %1").arg(quint32(mode));
}

QString tokenLines(const OpcUa_EndpointDescription& endpoint)
{
    QStringList lines;
    for (int i = 0; i < endpoint.NoOfUserIdentityTokens && i < MaxTokens; ++i) {
        const OpcUa_UserTokenPolicy& token = endpoint.UserIdentityTokens[i];
        QString line = tokenTypeName(token.TokenType);
        for (const OpcUa_String* part : {&token.PolicyId, &token.SecurityPolicyUri,
                                         &token.IssuedTokenType, &token.IssuerEndpointUrl}) {
            if (!text(*part).isEmpty())
                line += QStringLiteral(" \u2013 ") + plainLine(text(*part), MaxText);
        }
        lines.append(line);
    }
    if (endpoint.NoOfUserIdentityTokens > MaxTokens)
        lines.append(
            EndpointDetails::tr("More: %1").arg(endpoint.NoOfUserIdentityTokens - MaxTokens));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

EndpointDetails::EndpointDetails(QWidget* parent) : QWidget(parent)
{
    auto* endpoint = new QGroupBox;
    auto* form = new QFormLayout(endpoint);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    const auto field = [](const char* name) {
        auto* made = new OutputField;
        made->setObjectName(QLatin1String(name));
        return made;
    };
    m_server = field("server");
    m_applicationUri = field("applicationUri");
    m_url = field("endpointUrl");
    m_policy = field("securityPolicy");
    m_mode = field("securityMode");
    m_level = field("securityLevel");
    m_transport = field("transportProfile");
    m_tokens = new QPlainTextEdit;
    m_tokens->setReadOnly(true);
    m_tokens->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_tokens->setTabChangesFocus(true);
    m_tokens->setObjectName(QStringLiteral("tokens"));
    m_tokens->setFixedHeight(5 * fontMetrics().height());
    const QList<Row> rows = {{QT_TR_NOOP("Server"), m_server},
                             {QT_TR_NOOP("Application URI"), m_applicationUri},
                             {QT_TR_NOOP("Endpoint URL"), m_url},
                             {QT_TR_NOOP("Security policy"), m_policy},
                             {QT_TR_NOOP("Security mode"), m_mode},
                             {QT_TR_NOOP("Security level"), m_level},
                             {QT_TR_NOOP("Transport profile"), m_transport},
                             {QT_TR_NOOP("User identity tokens"), m_tokens}};
    for (const Row& row : rows) {
        auto* label = new QLabel;
        label->setBuddy(row.field);
        form->addRow(label, row.field);
    }

    auto* certificate = new QGroupBox;
    m_noCertificate = new QLabel;
    m_noCertificate->setObjectName(QStringLiteral("noCertificate"));
    m_certificate = new QvelCertificateView;
    auto* layout = new QVBoxLayout(certificate);
    layout->addWidget(m_noCertificate);
    layout->addWidget(m_certificate);

    auto* fields = new QWidget;
    layout = new QVBoxLayout(fields);
    layout->addWidget(endpoint);
    layout->addWidget(certificate);
    layout->addStretch();
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->setWidget(fields);
    scroll->viewport()->setAutoFillBackground(false);
    fields->setAutoFillBackground(false);

    m_use = new QPushButton;
    m_use->setObjectName(QStringLiteral("use"));
    connect(m_use, &QPushButton::clicked, this, &EndpointDetails::useRequested);

    layout->setContentsMargins({});
    layout = new QVBoxLayout(this);
    layout->addWidget(scroll);
    m_connect = new QPushButton;
    m_connect->setObjectName(QStringLiteral("connect"));
    connect(m_connect, &QPushButton::clicked, this, &EndpointDetails::connectRequested);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_use);
    buttons->addWidget(m_connect);
    layout->addLayout(buttons);
    setEndpoint(QvelDiscoverySetting());
    Language::follow(this, [=] {
        endpoint->setTitle(tr("Endpoint"));
        certificate->setTitle(tr("Server certificate"));
        for (const Row& row : rows) {
            const QString label = tr(row.label);
            static_cast<QLabel*>(form->labelForField(row.field))->setText(label + QLatin1Char(':'));
            row.field->setAccessibleName(label);
        }
        m_server->setPlaceholderText(tr("Select an endpoint in the discovery tree"));
        m_use->setText(tr("&Use This Endpoint"));
        m_use->setToolTip(tr("Files the endpoint under \"Recently Used\""));
        m_connect->setText(tr("C&onnect"));
        m_connect->setToolTip(tr("Opens a session with this endpoint"));
        showWords();
    });
}

void EndpointDetails::setEndpoint(const QvelDiscoverySetting& endpoint)
{
    m_endpoint = endpoint;
    const bool empty = endpoint == QvelDiscoverySetting();
    const OpcUa_EndpointDescription& description = *endpoint.endpointDescription();
    m_server->showText(endpoint.serverName());
    m_applicationUri->showText(text(description.Server.ApplicationUri));
    m_url->showText(endpoint.endpointUrl());
    m_policy->showText(endpoint.securityPolicy());
    m_level->showText(empty ? QString() : QString::number(description.SecurityLevel));
    m_transport->showText(text(description.TransportProfileUri));
    // A server may send its whole chain; its own certificate comes first.
    const UaByteString der(&description.ServerCertificate);
    m_certificate->setCertificate(UaPkiCertificate::fromDER(der));
    m_noCertificate->setVisible(der.length() > 0 && m_certificate->certificate().isNull());
    m_use->setEnabled(!empty);
    m_connect->setEnabled(!empty);
    showWords();
}

void EndpointDetails::showWords()
{
    const bool empty = m_endpoint == QvelDiscoverySetting();
    const OpcUa_EndpointDescription& description = *m_endpoint.endpointDescription();
    m_mode->showText(empty ? QString() : modeName(m_endpoint.messageSecurityMode()));
    const QString tokens = tokenLines(description);
    if (tokens != m_tokens->toPlainText())
        m_tokens->setPlainText(tokens);
    m_noCertificate->setText(tr("Not a certificate (bytes: %1)")
                                 .arg(UaByteString(&description.ServerCertificate).length()));
}
