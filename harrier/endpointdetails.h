#pragma once

#include <Kestrel/QvelDiscoverySetting>

#include <QtWidgets/QWidget>

class OutputField;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QvelCertificateView;

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
    /// What is said in the language of the window.
    void showWords();

    QvelDiscoverySetting m_endpoint;
    OutputField* m_server;
    OutputField* m_applicationUri;
    OutputField* m_url;
    OutputField* m_policy;
    OutputField* m_mode;
    OutputField* m_level;
    OutputField* m_transport;
    QPlainTextEdit* m_tokens;
    QLabel* m_noCertificate;
    QvelCertificateView* m_certificate;
    QPushButton* m_use;
    QPushButton* m_connect;
};
