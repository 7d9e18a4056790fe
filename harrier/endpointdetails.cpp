#include "endpointdetails.h"

#include "outputfield.h"
#include "plainline.h"

#include <Kestrel/QvelCertificateView>
#include <Kestrel/QvelDiscoverySetting>
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

OutputField* addField(QFormLayout* form, const QString& label, const char* name)
{
    auto* field = new OutputField(label);
    field->setObjectName(QLatin1String(name));
    form->addRow(label + QLatin1Char(':'), field);
    return field;
}

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
    auto* endpoint = new QGroupBox(tr("Endpoint"));
    auto* form = new QFormLayout(endpoint);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    m_server = addField(form, tr("Server"), "server");
    m_server->setPlaceholderText(tr("Select an endpoint in the discovery tree"));
    m_applicationUri = addField(form, tr("Application URI"), "applicationUri");
    m_url = addField(form, tr("Endpoint URL"), "endpointUrl");
    m_policy = addField(form, tr("Security policy"), "securityPolicy");
    m_mode = addField(form, tr("Security mode"), "securityMode");
    m_level = addField(form, tr("Security level"), "securityLevel");
    m_transport = addField(form, tr("Transport profile"), "transportProfile");
    m_tokens = new QPlainTextEdit;
    m_tokens->setReadOnly(true);
    m_tokens->setTabChangesFocus(true);
    m_tokens->setObjectName(QStringLiteral("tokens"));
    m_tokens->setAccessibleName(tr("User identity tokens"));
    m_tokens->setFixedHeight(5 * fontMetrics().height());
    form->addRow(tr("User identity tokens") + QLatin1Char(':'), m_tokens);

    auto* certificate = new QGroupBox(tr("Server certificate"));
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

    m_use = new QPushButton(tr("&Use This Endpoint"));
    m_use->setObjectName(QStringLiteral("use"));
    m_use->setToolTip(tr("Files the endpoint under \"Recently Used\""));
    connect(m_use, &QPushButton::clicked, this, &EndpointDetails::useRequested);

    layout->setContentsMargins({});
    layout = new QVBoxLayout(this);
    layout->addWidget(scroll);
    m_connect = new QPushButton(tr("C&onnect"));
    m_connect->setObjectName(QStringLiteral("connect"));
    m_connect->setToolTip(tr("Opens a session with this endpoint"));
    connect(m_connect, &QPushButton::clicked, this, &EndpointDetails::connectRequested);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_use);
    buttons->addWidget(m_connect);
    layout->addLayout(buttons);
    setEndpoint(QvelDiscoverySetting());
}

void EndpointDetails::setEndpoint(const QvelDiscoverySetting& endpoint)
{
    const bool empty = endpoint == QvelDiscoverySetting();
    const OpcUa_EndpointDescription& description = *endpoint.endpointDescription();
    m_server->showText(endpoint.serverName());
    m_applicationUri->showText(text(description.Server.ApplicationUri));
    m_url->showText(endpoint.endpointUrl());
    m_policy->showText(endpoint.securityPolicy());
    m_mode->showText(empty ? QString() : modeName(endpoint.messageSecurityMode()));
    m_level->showText(empty ? QString() : QString::number(description.SecurityLevel));
    m_transport->showText(text(description.TransportProfileUri));
    m_tokens->setPlainText(tokenLines(description));
    // A server may send its whole chain; its own certificate comes first.
    const UaByteString der(&description.ServerCertificate);
    m_certificate->setCertificate(UaPkiCertificate::fromDER(der));
    m_noCertificate->setText(tr("Not a certificate (bytes: %1)").arg(der.length()));
    m_noCertificate->setVisible(der.length() > 0 && m_certificate->certificate().isNull());
    m_use->setEnabled(!empty);
    m_connect->setEnabled(!empty);
}
