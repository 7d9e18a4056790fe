#include "certificatemanager.h"

#include "base/editorhelpers_p.h"
#include "certificateentry.h"
#include "certificatemodel.h"
#include "images/images_p.h"
#include "newcertificatedialog.h"
#include "ui_certificatemanager.h"

#include <QtCore/QDir>
#include <QtCore/QPointer>
#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMessageBox>

constexpr int columnOfKind = 0;
constexpr int columnOfFile = 12;
constexpr int noKind = -1;

class QvelCertificateManager::Private
{
public:
    /// A cell of the current certificate's row; nothing if there is none.
    QVariant current(int column, int role) const
    {
        return ui.treeView->currentIndex().siblingAtColumn(column).data(role);
    }
    int currentKind() const
    {
        const QVariant kind = current(columnOfKind, Qt::UserRole);
        return kind.isValid() ? kind.toInt() : noKind;
    }
    QString currentFileName() const { return current(columnOfFile, Qt::DisplayRole).toString(); }
    QModelIndex currentSource() const { return proxy->mapToSource(ui.treeView->currentIndex()); }

    QString applicationName;
    QString applicationUriPart;
    QString trustedPath;
    QString ownCertificateFile;
    QString ownPrivateKeyFile;
    bool passwordOption;
    Ui::CertificateManager ui = {};
    std::unique_ptr<QvelCertificateModel> model = nullptr;
    QSortFilterProxyModel* proxy = nullptr;
    QList<int> keyStrengths = {};
};

static void prefill(QvelNewCertificateDlg& dialog, const UaPkiCertificate& certificate)
{
    const auto text = [](const UaString& value) { return textFromUtf8(value.bytes()); };
    const UaPkiIdentity& issuer = certificate.issuer();
    const UaPkiCertificateInfo& info = certificate.info();
    dialog.setCommonName(text(certificate.commonName()));
    dialog.setOrganization(text(issuer.organization));
    dialog.setOrganizationUnit(text(issuer.organizationUnit));
    dialog.setLocality(text(issuer.locality));
    dialog.setState(text(issuer.state));
    dialog.setCountry(text(issuer.country));
    // The user cannot type a URI, and needs one: if this certificate has none, the default stays.
    if (!info.applicationUri.isEmpty())
        dialog.setURI(text(info.applicationUri));
    dialog.setIP(text(info.ipAddress));
    dialog.setDNS(text(info.dnsName));
    dialog.setRSAKeyStrength(certificate.publicKey().keySize());
}

QvelCertificateManager::QvelCertificateManager(
    const QString& applicationName, const QString& applicationUriPart, const QString& trustedPath,
    const QString& secondPath, const QString& thirdPath, const QString& rejectedPath,
    const QString& ownCertificateFile, const QString& ownPrivateKeyFile,
    const QIcon& ownCertificateIcon, bool passwordOption, QWidget* parent)
    : QWidget(parent), d(new Private{applicationName, applicationUriPart, trustedPath,
                                     ownCertificateFile, ownPrivateKeyFile, passwordOption})
{
    initKestrelImages();
    d->ui.setupUi(this);
    setObjectName("QvelCertificateManager");

    d->model =
        std::make_unique<QvelCertificateModel>(trustedPath, secondPath, thirdPath, rejectedPath,
                                               ownCertificateFile, ownCertificateIcon, true);
    d->proxy = new QSortFilterProxyModel(this);
    d->proxy->setSourceModel(d->model.get());
    QTreeView* view = d->ui.treeView;
    view->setModel(d->proxy);

    view->setContextMenuPolicy(Qt::CustomContextMenu);
    for (int column : {0, 1, 2, 3, columnOfFile})
        view->resizeColumnToContents(column);
    view->installEventFilter(this);

    using Self = QvelCertificateManager;
    connect(view, &QWidget::customContextMenuRequested, this, &Self::sltViewContextMenu);
    connect(view, &QAbstractItemView::doubleClicked, this, &Self::sltOpenCertificate);
    connect(d->ui.pushButton_OpenCertLocation, &QAbstractButton::clicked, this,
            &Self::sltOpenCertLocation);
    connect(d->ui.pushButton_CopyCertificateTo, &QAbstractButton::clicked, this,
            &Self::sltCopyCertificateTo);
    connect(d->ui.pushButton_CreateNewCertificate, &QAbstractButton::clicked, this,
            &Self::sltCreateNewCertificate);
    connect(d->ui.toolButton_Refresh, &QAbstractButton::clicked, this, &Self::sltReload);
    connect(d->ui.actionTrust, &QAction::triggered, this, &Self::sltTrustCertificate);
    connect(d->ui.actionReject, &QAction::triggered, this, &Self::sltRejectCertificate);
    connect(d->ui.actionDelete, &QAction::triggered, this, &Self::sltDeleteCertificate);
    connect(d->ui.actionOpen, &QAction::triggered, this, &Self::sltOpenCertificate);
    connect(d->ui.actionCreateNew, &QAction::triggered, this, &Self::sltCreateNewCertificate);
}

QvelCertificateManager::~QvelCertificateManager() = default;

void QvelCertificateManager::setRSAKeyStrengths(const QList<int>& bits)
{
    d->keyStrengths = bits;
}

QList<int> QvelCertificateManager::rsaKeyStrengths() const
{
    return d->keyStrengths;
}

void QvelCertificateManager::sltOpenCertLocation()
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(QDir(d->trustedPath).absolutePath()));
}

void QvelCertificateManager::sltCopyCertificateTo()
{
    if (!QFile::exists(d->ownCertificateFile)) {
        QMessageBox::information(
            this, tr("Certificate Not Found"),
            tr("The application certificate '%1' does not exist.").arg(d->ownCertificateFile));
        return;
    }
    const QPointer<QvelCertificateManager> self(this);
    const QString target = QFileDialog::getSaveFileName(
        this, QString(), QDir::home().absoluteFilePath(d->ownCertificateFile),
        tr("Certificates (*.der)"));
    if (self && !target.isEmpty() && !QFile::copy(d->ownCertificateFile, target))
        QMessageBox::information(
            this, tr("Could Not Copy Certificate"),
            tr("The application certificate could not be copied to '%1'.").arg(target));
}

void QvelCertificateManager::sltCreateNewCertificate()
{
    const QPointer<QvelNewCertificateDlg> dialog = new QvelNewCertificateDlg(
        d->applicationName, d->applicationUriPart, false, d->passwordOption, this);
    if (!d->keyStrengths.isEmpty())
        dialog->setRSAKeyStrengths(d->keyStrengths);
    if (QFile::exists(d->ownCertificateFile)) {
        const UaPkiCertificate own =
            UaPkiCertificate::fromDERFile(QFile::encodeName(d->ownCertificateFile).constData());
        if (!own.isNull())
            prefill(*dialog, own);
    }
    const int result = dialog->exec();
    if (!dialog) // this widget was deleted meanwhile, and the dialog with it
        return;
    const std::unique_ptr<QvelNewCertificateDlg> owned(dialog);
    if (result != QDialog::Accepted)
        return;

    const UaPkiCertificate* certificate = dialog->certificate();
    const UaPkiRsaKeyPair* keyPair = dialog->keyPair();
    if (!certificate || certificate->isNull() || !keyPair || keyPair->isNull()) {
        QMessageBox::warning(this, tr("CertificateManager"),
                             tr("Could not create a certificate from these data"));
        return;
    }
    // The results do not matter: what is there afterwards is what the list shows.
    QFile::remove(d->ownCertificateFile);
    certificate->toDERFile(QFile::encodeName(d->ownCertificateFile).constData());
    QFile::remove(d->ownPrivateKeyFile);
    QByteArray password = dialog->password().toLocal8Bit();
    keyPair->toPEMFile(QFile::encodeName(d->ownPrivateKeyFile).constData(),
                       password.isEmpty() ? nullptr : password.constData());
    password.fill('\0');
    d->model->reload();
}

void QvelCertificateManager::sltViewContextMenu(QPoint pos)
{
    const Ui::CertificateManager& ui = d->ui;
    if (!ui.treeView->indexAt(pos).isValid())
        return;
    auto* menu = new QMenu(this);
    const int kind = d->currentKind();
    switch (kind) {
    case QvelCertificateEntry::Untrusted:
    case QvelCertificateEntry::Trusted:
        ui.actionTrust->setEnabled(kind == QvelCertificateEntry::Untrusted);
        ui.actionReject->setEnabled(kind == QvelCertificateEntry::Trusted);
        menu->addActions({ui.actionTrust, ui.actionReject, ui.actionDelete, ui.actionOpen});
        break;
    case QvelCertificateEntry::OwnCertificate:
        menu->addActions({ui.actionOpen, ui.actionCreateNew});
        break;
    default:
        break;
    }
    menu->exec(QCursor::pos());
}

void QvelCertificateManager::sltTrustCertificate()
{
    // The name is that of the current row after the store was read again.
    if (!d->model->sltTrust(d->currentSource()))
        QMessageBox::warning(
            this, tr("CertificateManager"),
            tr("Could not move certificate %1 to the trusted directory").arg(d->currentFileName()));
}

void QvelCertificateManager::sltRejectCertificate()
{
    if (!d->model->sltReject(d->currentSource()))
        QMessageBox::warning(this, tr("CertificateManager"),
                             tr("Could not move certificate %1 to the rejected directory")
                                 .arg(d->currentFileName()));
}

void QvelCertificateManager::sltDeleteCertificate()
{
    const QPointer<QvelCertificateManager> self(this);
    const QMessageBox::StandardButton answer =
        QMessageBox::question(this, tr("Delete Trusted Certificate"),
                              tr("Do you really want to delete the selected certificate?"),
                              QMessageBox::Ok | QMessageBox::Cancel);
    if (!self || answer != QMessageBox::Ok)
        return;
    const QString fileName = d->currentFileName();
    if (!d->model->sltDelete(d->currentSource()))
        QMessageBox::warning(this, tr("CertificateManager"),
                             tr("Could not delete certificate %1").arg(fileName));
}

void QvelCertificateManager::sltOpenCertificate()
{
    const QVariant path = d->current(columnOfFile, Qt::UserRole);
    if (path.metaType() == QMetaType::fromType<QString>())
        QDesktopServices::openUrl(QUrl::fromLocalFile(path.toString()));
}

void QvelCertificateManager::sltReload()
{
    d->model->reload();
}

bool QvelCertificateManager::eventFilter(QObject* watched, QEvent* event)
{
    const QTreeView* view = d->ui.treeView;
    if (watched != view || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    switch (static_cast<QKeyEvent*>(event)->key()) {
    case Qt::Key_Delete:
        if (view->currentIndex().isValid() && view->selectionModel()->hasSelection() &&
            view->isActiveWindow() && d->currentKind() != QvelCertificateEntry::OwnCertificate) {
            sltDeleteCertificate();
            return true;
        }
        return false;
    case Qt::Key_F5:
        sltReload();
        return true;
    default:
        return false;
    }
}
