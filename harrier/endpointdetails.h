#pragma once

#include <QtWidgets/QWidget>

class OutputField;
class QPlainTextEdit;
class QPushButton;
class QvelDiscoverySetting;
struct OpcUa_ByteString;

/// Shows one endpoint as its server described it.
///
/// Whatever the server sent is shown as plain text of bounded length.
class EndpointDetails : public QWidget
{
    Q_OBJECT
public:
    explicit EndpointDetails(QWidget* parent = nullptr);

public Q_SLOTS:
    /// Shows `endpoint`; a default record empties all fields.
    void setEndpoint(const QvelDiscoverySetting& endpoint);

Q_SIGNALS:
    void useRequested();
    void connectRequested();

private:
    void showCertificate(const OpcUa_ByteString& der);

    OutputField* m_server;
    OutputField* m_applicationUri;
    OutputField* m_url;
    OutputField* m_policy;
    OutputField* m_mode;
    OutputField* m_level;
    OutputField* m_transport;
    QPlainTextEdit* m_tokens;
    OutputField* m_subject;
    OutputField* m_issuer;
    OutputField* m_validity;
    OutputField* m_thumbprint;
    QPushButton* m_use;
    QPushButton* m_connect;
};
