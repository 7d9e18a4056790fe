#include "certificatemanager.h"

#include "base/editorhelpers_p.h"
#include "base/ownmodal_p.h"
#include "base/retranslate_p.h"
#include "certificates/certificatecolumns_p.h"
#include "certificates/certificateentry.h"
#include "certificates/certificatemodel.h"
#include "certificates/newcertificatedialog.h"
#include "images/images_p.h"
#include "platform/pki/pairfiles_p.h"
#include "ui_certificatemanager.h"

#include <QtCore/QDir>
#include <QtCore/QPointer>
#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMenu>

#include <functional>

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
        const QVariant kind = current(CertificateColumn::Status, Qt::UserRole);
        return kind.isValid() ? kind.toInt() : noKind;
    }
    QString currentFileName() const
    {
        return current(CertificateColumn::FileName, Qt::DisplayRole).toString();
    }
    void fitColumns();
    /// There is something to do once there is a store.
    void enableButtons() const
    {
        for (QAbstractButton* button : std::initializer_list<QAbstractButton*>{
                 ui.pushButton_OpenCertLocation, ui.pushButton_CopyCertificateTo,
                 ui.pushButton_CreateNewCertificate, ui.toolButton_Refresh})
            button->setEnabled(model != nullptr);
    }
    void readStore(const std::function<QString(const QString&)>& read);
    bool changeStore(bool (QvelCertificateModel::*change)(QModelIndex),
                     const QString& directory = {});

    QString applicationName;
    QString applicationUriPart;
    QString trustedPath;
    QString rejectedPath;
    QString ownCertificateFile;
    QString ownPrivateKeyFile;
    bool passwordOption = false;
    Ui::CertificateManager ui = {};
    std::unique_ptr<QvelCertificateModel> model = nullptr;
    QSortFilterProxyModel* proxy = nullptr;
    QList<int> keyStrengths = {};
    int clockTolerance = 0;
    bool menuRuns = false;
    void (QvelCertificateManager::*chosen)() = nullptr; // in the menu
};

/// Makes the columns wide enough for what they show, long lists of names and URIs within reason.
void QvelCertificateManager::Private::fitColumns()
{
    using namespace CertificateColumn;
    QTreeView* view = ui.treeView;
    const int widest = 60 * view->fontMetrics().averageCharWidth();
    for (int column = 0; column < Count; ++column) {
        const bool whole = column <= ValidTo || column == FileName;
        const int before = view->columnWidth(column);
        view->resizeColumnToContents(column);
        if (!whole)
            view->setColumnWidth(column, qMax(before, qMin(view->columnWidth(column), widest)));
    }
}

/// Reads the store again by `read`, which is given the path of the current file and returns the one
/// that it has now. The same file stays current, and what is selected.
void QvelCertificateManager::Private::readStore(const std::function<QString(const QString&)>& read)
{
    const QModelIndex before = ui.treeView->currentIndex();
    QItemSelectionModel* selection = ui.treeView->selectionModel();
    const bool selected = selection->isSelected(before);
    const bool empty = model->rowCount() == 0;
    const int column = before.column();
    const QString path = read(current(CertificateColumn::FileName, Qt::UserRole).toString());
    const QModelIndexList found = proxy->match(proxy->index(0, CertificateColumn::FileName),
                                               Qt::UserRole, path, 1, Qt::MatchExactly);
    if (!found.isEmpty())
        selection->setCurrentIndex(found.first().siblingAtColumn(column),
                                   selected ? QItemSelectionModel::ClearAndSelect |
                                                  QItemSelectionModel::Rows
                                            : QItemSelectionModel::NoUpdate);
    if (empty && model->rowCount() > 0)
        fitColumns();
}

/// Does something to the current certificate, which may move its file to `directory`.
bool QvelCertificateManager::Private::changeStore(bool (QvelCertificateModel::*change)(QModelIndex),
                                                  const QString& directory)
{
    bool done = false;
    readStore([&](const QString& path) {
        const QString moved = directory + currentFileName();
        done = (model.get()->*change)(proxy->mapToSource(ui.treeView->currentIndex()));
        return done ? QFileInfo(moved).absoluteFilePath() : path;
    });
    return done;
}

static void warn(QWidget* parent, const QString& text)
{
    runMessageBox(parent, QMessageBox::Warning, QvelCertificateManager::tr("CertificateManager"),
                  text);
}

static void prefill(QvelNewCertificateDlg& dialog, const UaPkiCertificate& certificate)
{
    const auto text = [](const UaString& value) { return value.toQString(); };
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
    const QString& /*secondPath*/, const QString& /*thirdPath*/, const QString& rejectedPath,
    const QString& ownCertificateFile, const QString& ownPrivateKeyFile,
    const QIcon& ownCertificateIcon, bool passwordOption, QWidget* parent)
    : QvelCertificateManager(parent)
{
    d->applicationName = applicationName;
    d->applicationUriPart = applicationUriPart;
    d->passwordOption = passwordOption;
    setStore(trustedPath, rejectedPath, ownCertificateFile, ownPrivateKeyFile, ownCertificateIcon);
}

QvelCertificateManager::QvelCertificateManager(QWidget* parent) : QWidget(parent), d(new Private)
{
    initKestrelImages();
    d->ui.setupUi(this);
    d->ui.toolButton_Refresh->setIcon(paletteIcon(QStringLiteral(":/kestrel/images/refresh.png")));
    setObjectName("QvelCertificateManager");

    d->proxy = new QSortFilterProxyModel(this);
    QTreeView* view = d->ui.treeView;
    view->setModel(d->proxy);
    d->enableButtons();

    retranslatedForm(this, [this] { d->ui.retranslateUi(this); });
    connect(d->proxy, &QAbstractItemModel::headerDataChanged, view, [view] {
        for (int column = 0; column < CertificateColumn::Count; ++column)
            view->setColumnWidth(
                column, qMax(view->columnWidth(column), view->header()->sectionSizeHint(column)));
    });

    view->setContextMenuPolicy(Qt::CustomContextMenu);
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
    const std::pair<QAction*, void (Self::*)()> actions[] = {
        {d->ui.actionTrust, &Self::sltTrustCertificate},
        {d->ui.actionReject, &Self::sltRejectCertificate},
        {d->ui.actionDelete, &Self::sltDeleteCertificate},
        {d->ui.actionOpen, &Self::sltOpenCertificate},
        {d->ui.actionCreateNew, &Self::sltCreateNewCertificate},
    };
    for (const auto& [action, slot] : actions)
        connect(action, &QAction::triggered, this, [this, slot = slot] {
            // Not from within the menu: it would not survive this widget's deletion meanwhile.
            if (d->menuRuns)
                d->chosen = slot;
            else
                (this->*slot)();
        });
}

QvelCertificateManager::~QvelCertificateManager() = default;

void QvelCertificateManager::setStore(const QString& trustedPath, const QString& rejectedPath,
                                      const QString& ownCertificateFile,
                                      const QString& ownPrivateKeyFile,
                                      const QIcon& ownCertificateIcon)
{
    d->trustedPath = trustedPath;
    d->rejectedPath = rejectedPath;
    d->ownCertificateFile = ownCertificateFile;
    d->ownPrivateKeyFile = ownPrivateKeyFile;
    auto model =
        std::make_unique<QvelCertificateModel>(trustedPath, QString(), QString(), rejectedPath,
                                               ownCertificateFile, ownCertificateIcon, true);
    d->proxy->setSourceModel(model.get());
    d->model = std::move(model);
    d->fitColumns();
    d->enableButtons();
}

QString QvelCertificateManager::applicationName() const
{
    return d->applicationName;
}

void QvelCertificateManager::setApplicationName(const QString& name)
{
    d->applicationName = name;
}

QString QvelCertificateManager::applicationUriPart() const
{
    return d->applicationUriPart;
}

void QvelCertificateManager::setApplicationUriPart(const QString& part)
{
    d->applicationUriPart = part;
}

bool QvelCertificateManager::passwordOption() const
{
    return d->passwordOption;
}

void QvelCertificateManager::setPasswordOption(bool on)
{
    d->passwordOption = on;
}

void QvelCertificateManager::setRSAKeyStrengths(const QList<int>& bits)
{
    d->keyStrengths = bits;
}

QList<int> QvelCertificateManager::rsaKeyStrengths() const
{
    return d->keyStrengths;
}

void QvelCertificateManager::setClockTolerance(int seconds)
{
    d->clockTolerance = qMax(0, seconds);
}

int QvelCertificateManager::clockTolerance() const
{
    return d->clockTolerance;
}

void QvelCertificateManager::sltOpenCertLocation()
{
    if (!d->model)
        return;
    QDesktopServices::openUrl(QUrl::fromLocalFile(QDir(d->trustedPath).absolutePath()));
}

void QvelCertificateManager::sltCopyCertificateTo()
{
    if (!d->model)
        return;
    if (!QFile::exists(d->ownCertificateFile)) {
        runMessageBox(
            this, QMessageBox::Information, tr("Certificate Not Found"),
            tr("The application certificate '%1' does not exist.").arg(d->ownCertificateFile));
        return;
    }
    const QFileInfo start(QDir::home().absoluteFilePath(d->ownCertificateFile));
    auto* dialog =
        new QFileDialog(this, QString(), start.absolutePath(), tr("Certificates (*.der)"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    dialog->setOption(QFileDialog::DontConfirmOverwrite); // a file that is there is never replaced
    dialog->setDefaultSuffix(QStringLiteral("der"));
    dialog->selectFile(start.fileName());
    const QPointer<QvelCertificateManager> self(this);
    const QString target = runFileDialog(dialog);
    if (self && !target.isEmpty() && !QFile::copy(d->ownCertificateFile, target))
        runMessageBox(this, QMessageBox::Information, tr("Could Not Copy Certificate"),
                      tr("The application certificate could not be copied to '%1'.").arg(target));
}

void QvelCertificateManager::sltCreateNewCertificate()
{
    if (!d->model)
        return;
    const QPointer<QvelNewCertificateDlg> dialog = new QvelNewCertificateDlg(
        d->applicationName, d->applicationUriPart, false, d->passwordOption, this);
    dialog->setClockTolerance(d->clockTolerance);
    if (!d->keyStrengths.isEmpty())
        dialog->setRSAKeyStrengths(d->keyStrengths);
    if (QFile::exists(d->ownCertificateFile)) {
        const UaPkiCertificate own =
            UaPkiCertificate::fromDERFile(QFile::encodeName(d->ownCertificateFile).constData());
        if (!own.isNull())
            prefill(*dialog, own);
    }
    int result = dialog->exec();
    // What cannot become a certificate comes back until it is right or given up.
    while (dialog && result == QDialog::Accepted && dialog->certificate()->isNull()) {
        dialog->move(dialog->pos()); // where the user has put it
        result = dialog->exec();
    }
    if (!dialog) // this widget was deleted meanwhile, and the dialog with it
        return;
    std::optional<FileFailure> failure;
    if (result == QDialog::Accepted) {
        QByteArray password = dialog->password().toLocal8Bit();
        failure = replacePair(*dialog->certificate(), d->ownCertificateFile, *dialog->keyPair(),
                              d->ownPrivateKeyFile, password.constData());
        password.fill('\0');
        sltReload();
    }
    delete dialog;
    if (failure)
        warn(this, tr("Could not write %1: %2").arg(failure->file, failure->reason));
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
    const QPointer<QvelCertificateManager> self(this);
    d->menuRuns = true;
    menu->exec(QCursor::pos());
    if (!self)
        return;
    d->menuRuns = false;
    if (const auto chosen = std::exchange(d->chosen, nullptr))
        (this->*chosen)();
}

void QvelCertificateManager::sltTrustCertificate()
{
    if (!d->model)
        return;
    const QString fileName = d->currentFileName();
    if (!d->changeStore(&QvelCertificateModel::sltTrust, d->trustedPath))
        warn(this, tr("Could not move certificate %1 to the trusted directory").arg(fileName));
}

void QvelCertificateManager::sltRejectCertificate()
{
    if (!d->model)
        return;
    const QString fileName = d->currentFileName();
    if (!d->changeStore(&QvelCertificateModel::sltReject, d->rejectedPath))
        warn(this, tr("Could not move certificate %1 to the rejected directory").arg(fileName));
}

void QvelCertificateManager::sltDeleteCertificate()
{
    if (!d->model)
        return;
    const QPointer<QvelCertificateManager> self(this);
    const QMessageBox::StandardButton answer =
        runMessageBox(this, QMessageBox::Question, tr("Delete Trusted Certificate"),
                      tr("Do you really want to delete the selected certificate?"),
                      QMessageBox::Ok | QMessageBox::Cancel);
    if (!self || answer != QMessageBox::Ok)
        return;
    const QString fileName = d->currentFileName();
    if (!d->changeStore(&QvelCertificateModel::sltDelete))
        warn(this, tr("Could not delete certificate %1").arg(fileName));
}

void QvelCertificateManager::sltOpenCertificate()
{
    const QVariant path = d->current(CertificateColumn::FileName, Qt::UserRole);
    if (path.metaType() == QMetaType::fromType<QString>())
        QDesktopServices::openUrl(QUrl::fromLocalFile(path.toString()));
}

void QvelCertificateManager::sltReload()
{
    if (!d->model)
        return;
    d->readStore([this](const QString& path) {
        d->model->reload();
        return path;
    });
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
