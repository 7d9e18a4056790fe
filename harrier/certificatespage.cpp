#include "certificatespage.h"

#include "host.h"

#include <Kestrel/QvelCertificateManager>

#include <QtCore/QDir>
#include <QtGui/QIcon>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

CertificatesPage::CertificatesPage(Host& host)
{
    const QString store = host.dataFolder() + QStringLiteral("/certificates/");
    const QString trusted = store + QStringLiteral("trusted/");
    const QString rejected = store + QStringLiteral("rejected/");
    const QString keys = store + QStringLiteral("private/");
    const bool isNew = !QDir(store).exists();
    for (const QString& path : {trusted, rejected, keys})
        if (!QDir().mkpath(path))
            host.log().appendFailure(tr("The folder %1 cannot be created").arg(path));
    QFile::setPermissions(keys, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    // An own certificate is one of the trusted ones.
    m_manager = new QvelCertificateManager(
        QStringLiteral("harrier"), QStringLiteral("kestrel"), trusted, {}, {}, rejected,
        trusted + QStringLiteral("harrier.der"), keys + QStringLiteral("harrier.pem"),
        QIcon(QStringLiteral(":/images/harrier.png")), false);
    m_manager->setRSAKeyStrengths({2048, 3072, 4096}); // servers of today refuse less
    m_manager->setClockTolerance(5 * 60);
    auto* scroll = new QScrollArea; // a narrow window does not have to show all buttons
    scroll->setWidget(m_manager);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(scroll);
    if (isNew)
        connect(&host, &Host::started, this, &CertificatesPage::offerCertificate);
}

void CertificatesPage::offerCertificate()
{
    const QMessageBox::StandardButton answer = QMessageBox::question(
        window(), tr("harrier"),
        tr("harrier has no certificate of its own yet, which servers ask for on secure "
           "connections. Create one now?\n\nIt can also be created later, on the page "
           "\"Certificates\"."));
    if (answer == QMessageBox::Yes)
        m_manager->sltCreateNewCertificate();
}
