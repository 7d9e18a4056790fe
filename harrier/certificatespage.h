#pragma once

#include <QtWidgets/QWidget>

class Host;
class QvelCertificateManager;

/// The certificates that harrier trusts and rejects, and its own one, in the host's data folder.
class CertificatesPage : public QWidget
{
    Q_OBJECT
public:
    /// Creates the directories of the store if they are not there.
    explicit CertificatesPage(Host& host);

private:
    void offerCertificate();

    QvelCertificateManager* m_manager;
};
