#include "certificatespage.h"

#include "host.h"
#include "language.h"

#include <Kestrel/QvelCertificateManager>
#include <Kestrel/QvelCertificateView>
#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiTrustStore>

#include <QtCore/QFile>
#include <QtCore/QMimeData>
#include <QtGui/QDropEvent>
#include <QtGui/QIcon>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QVBoxLayout>

namespace {

UaPkiCertificate readCertificate(const QString& file)
{
    const QByteArray name = QFile::encodeName(file);
    const UaPkiCertificate der = UaPkiCertificate::fromDERFile(name.constData());
    return der.isNull() ? UaPkiCertificate::fromPEMFile(name.constData()) : der;
}

QStringList localFiles(const QMimeData* data)
{
    QStringList files;
    const QList<QUrl> urls = data->urls();
    for (const QUrl& url : urls)
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    return files;
}

} // namespace

CertificatesPage::CertificatesPage(Host& host)
    : m_host(host), m_nextStep(new QLabel), m_make(new QPushButton), m_copy(new QPushButton),
      m_details(new QvelCertificateView)
{
    const CertificateStore& store = host.certificates();
    store.makeFolders([&host](const QString& failure) { host.log().appendFailure(failure); });
    setAcceptDrops(true);

    m_nextStep->setTextFormat(Qt::PlainText);
    m_nextStep->setWordWrap(true);
    m_nextStep->setObjectName(QStringLiteral("nextStep"));
    m_make->setObjectName(QStringLiteral("make"));
    m_copy->setObjectName(QStringLiteral("copy"));
    auto* import = new QPushButton;
    import->setObjectName(QStringLiteral("import"));
    auto* buttons = new QHBoxLayout;
    for (QPushButton* button : {m_make, m_copy, import})
        buttons->addWidget(button);
    buttons->addStretch();

    m_manager = new QvelCertificateManager(
        QStringLiteral("harrier"), QStringLiteral("kestrel"), store.trusted, {}, {}, store.rejected,
        store.certificate, store.key, QIcon(QStringLiteral(":/images/harrier.png")), false);
    m_manager->setRSAKeyStrengths({2048, 3072, 4096}); // servers of today refuse less
    m_manager->setClockTolerance(5 * 60);
    m_list = m_manager->findChild<QTreeView*>();
    auto* scroll = new QScrollArea; // a narrow window does not have to show all buttons
    scroll->setWidget(m_manager);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);

    auto* details = new QScrollArea; // the list keeps half of a low page
    details->setWidget(m_details);
    details->setWidgetResizable(true);
    details->setFrameShape(QFrame::NoFrame);
    details->setFocusPolicy(Qt::NoFocus);
    m_group = new QGroupBox;
    (new QVBoxLayout(m_group))->addWidget(details);
    auto* halves = new QSplitter(Qt::Vertical);
    halves->addWidget(scroll);
    halves->addWidget(m_group);
    halves->setSizes({1, 1}); // of whatever is there
    halves->setChildrenCollapsible(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_nextStep);
    layout->addLayout(buttons);
    layout->addWidget(halves, 1);

    connect(m_make, &QPushButton::clicked, &host, &Host::needCertificate);
    connect(m_copy, &QPushButton::clicked, m_manager,
            &QvelCertificateManager::sltCopyCertificateTo);
    connect(import, &QPushButton::clicked, this, &CertificatesPage::askForFiles);
    connect(&host, &Host::certificatesChanged, this, &CertificatesPage::reload);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &CertificatesPage::showCurrent);
    const QAbstractItemModel* rows = m_list->model();
    for (const auto change : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(rows, change, this, &CertificatesPage::showNextStep, Qt::QueuedConnection);
    Language::follow(this, [this, import] {
        m_make->setText(tr("&Make One Now"));
        m_copy->setText(tr("Co&py harrier's Certificate..."));
        import->setText(tr("&Import a Server's Certificate..."));
        import->setToolTip(
            tr("Trusts the certificate of a server; files may be dropped here, too"));
        m_group->setTitle(tr("Selected certificate"));
        showNextStep();
    });
    showCurrent();
}

// The list loses its current row when it goes, after what would show that.
CertificatesPage::~CertificatesPage()
{
    m_list->selectionModel()->disconnect(this);
    m_list->model()->disconnect(this);
}

void CertificatesPage::reload()
{
    m_manager->sltReload();
    showNextStep();
}

void CertificatesPage::showNextStep()
{
    const bool has = QFile::exists(m_host.certificates().certificate);
    m_nextStep->setText(
        has ? tr("Next: have servers trust harrier. Copy harrier's certificate, and put it among "
                 "the trusted ones of each server; many list it under the rejected ones after the "
                 "first attempt to connect. A server whose certificate harrier does not know is "
                 "asked about when you connect; or import its certificate here.")
            : tr("harrier makes itself a certificate when a secure connection first needs it. You "
                 "may also have it made now, so as to give it to servers before."));
    m_make->setVisible(!has);
    m_copy->setVisible(has);
}

void CertificatesPage::showCurrent()
{
    constexpr int fileColumn = 12;
    const QString file =
        m_list->currentIndex().siblingAtColumn(fileColumn).data(Qt::UserRole).toString();
    m_details->setCertificate(file.isEmpty() ? UaPkiCertificate() : readCertificate(file));
    m_group->setVisible(!file.isEmpty());
}

void CertificatesPage::askForFiles()
{
    auto* dialog = new QFileDialog(this, tr("Import Certificates of Servers"), QString(),
                                   tr("Certificates (*.der *.cer *.crt *.pem);;All files (*)"));
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::filesSelected, this, &CertificatesPage::import);
    dialog->open();
}

void CertificatesPage::import(const QStringList& files)
{
    UaPkiTrustStore::Folders folders;
    folders.trusted = m_host.certificates().trusted;
    folders.rejected = m_host.certificates().rejected;
    const UaPkiTrustStore store(folders);
    int imported = 0;
    for (const QString& file : files) {
        const UaPkiCertificate certificate = readCertificate(file);
        QString reason = tr("it holds no certificate");
        if (!certificate.isNull() && store.trust(certificate, &reason))
            ++imported;
        else
            m_host.log().appendFailure(tr("%1 was not imported: %2").arg(file, reason));
    }
    reload();
    Q_EMIT m_host.message(
        imported == files.size()
            ? tr("Certificates that are trusted now: %1").arg(imported)
            : tr("Certificates that are trusted now: %1; that could not be imported: %2, see the "
                 "log")
                  .arg(imported)
                  .arg(files.size() - imported));
}

void CertificatesPage::dragEnterEvent(QDragEnterEvent* event)
{
    if (!localFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void CertificatesPage::dropEvent(QDropEvent* event)
{
    import(localFiles(event->mimeData()));
    event->acceptProposedAction();
}
