#include "certificatespage.h"

#include "certificatestore.h"
#include "host.h"

#include <Kestrel/QvelCertificateManager>

#include <QtCore/QDir>
#include <QtGui/QIcon>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

CertificatesPage::CertificatesPage(Host& host)
{
    const CertificateStore store(host.dataFolder() + QStringLiteral("/certificates"));
    const bool isNew = !QDir(store.folder).exists();
    store.makeFolders([&host](const QString& failure) { host.log().appendFailure(failure); });

    m_manager = new QvelCertificateManager(
        QStringLiteral("harrier"), QStringLiteral("kestrel"), store.trusted, {}, {}, store.rejected,
        store.certificate, store.key, QIcon(QStringLiteral(":/images/harrier.png")), false);
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
