#include "certificates/certificatemanager.h"
#include "certificates/certificatemodel_p.h"
#include "certificates/newcertificatedialog.h"
#include "store.h"
#include "support/modaluser.h"
#include "support/warnings.h"

#include <QtGui/QDesktopServices>
#include <QtTest/QAbstractItemModelTester>
#include <QtWidgets/QtWidgets>

#include <functional>
#include <memory>

struct CertificateModelAccess
{
    static void setClock(QvelCertificateModel& model, UaDateTime (*now)()) { model.d->now = now; }
};

namespace {

OpcUa_DateTime storeTime = 0;

/// Calls a function with each dialog and menu that is shown, as soon as it runs.
class OnShow : public QObject
{
public:
    explicit OnShow(std::function<void(QWidget*)> act) : m_act(std::move(act))
    {
        qApp->installEventFilter(this);
    }

private:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const QPointer<QWidget> shown = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::Show &&
            (qobject_cast<QDialog*>(shown) || qobject_cast<QMenu*>(shown)))
            QTimer::singleShot(0, this, [this, shown] {
                if (shown)
                    m_act(shown);
            });
        return false;
    }
    std::function<void(QWidget*)> m_act;
};

/// Takes what the desktop would be asked to open.
class Desktop : public QObject
{
    Q_OBJECT
public:
    Desktop() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler("file"); }
    QStringList opened;
public Q_SLOTS:
    void open(const QUrl& url) { opened.append(url.toLocalFile()); }
};

QByteArray toPem(const QByteArray& der)
{
    return "-----BEGIN CERTIFICATE-----\n" + der.toBase64() + "\n-----END CERTIFICATE-----\n";
}

/// The rows as "kind name".
QStringList rows(const QAbstractItemModel& model)
{
    QStringList rows;
    for (int row = 0; row < model.rowCount(); ++row)
        rows.append(QString::number(model.index(row, 0).data(Qt::UserRole).toInt()) + ' ' +
                    model.index(row, 12).data().toString());
    return rows;
}

void addRows(const QStringList& rows)
{
    QTest::addColumn<QStringList>("row");
    for (const QString& row : rows)
        QTest::newRow(qPrintable(row)) << row.split('|');
}

void press(QDialog* dialog, QDialogButtonBox::StandardButton button)
{
    QTest::mouseClick(dialog->findChild<QDialogButtonBox*>()->button(button), Qt::LeftButton);
}

QLineEdit* input(QWidget* dialog, const char* name)
{
    return dialog->findChild<QLineEdit*>(name);
}

} // namespace

class tst_CertificateStore : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { m_manager.reset(); }
    void lists();
    void states();
    void foreignIndexes();
    void actions_data();
    void actions();
    void keys();
    void opens();
    void copies();
    void creates();
    void createFails_data();
    void createFails();
    void deletedMeanwhile_data();
    void deletedMeanwhile();
    void widths();

private:
    std::unique_ptr<QvelCertificateModel> makeModel() const
    {
        QPixmap blue(64, 64);
        blue.fill(Qt::blue);
        return std::make_unique<QvelCertificateModel>(m_store->path("trusted/"), "second", "third",
                                                      m_store->path("rejected/"),
                                                      "elsewhere/own.der", blue, true);
    }
    void makeManager();
    QTreeView* view() const { return m_manager->findChild<QTreeView*>("treeView"); }
    QStringList shown() const { return rows(*view()->model()); }
    QString current() const { return view()->currentIndex().siblingAtColumn(12).data().toString(); }
    QPoint select(const QString& file);
    void click(const char* button)
    {
        QTest::mouseClick(m_manager->findChild<QAbstractButton*>(button), Qt::LeftButton);
    }
    QStringList runMenu(const QString& file, const QString& entry);

    std::unique_ptr<Store> m_store;
    std::unique_ptr<QvelCertificateManager> m_manager;
};

void tst_CertificateStore::init()
{
    failOnWarnings();
    m_store = std::make_unique<Store>();
    m_store->put("trusted/t.der", fixture("full.der"));
    m_store->put("trusted/own.der", fixture("full.der"));
    m_store->put("rejected/r.der", fixture("issued.der"));
    m_store->put("own/own.pem", "old key");
}

void tst_CertificateStore::lists()
{
    const QByteArray der = fixture("full.der");
    for (const QString path : {"trusted/", "rejected/"}) {
        m_store->put(path + "a b%41%1 größe 水\n.CER", fixture("strange.der"));
        m_store->put(path + "pem.crt", fixture("key.pem") + toPem(der));
        m_store->put(path + "rest.der", der + "rest");
        m_store->put(path + "own.der", der);
        m_store->put(path + "short.der", der.chopped(1));
        m_store->put(path + "a.pem", toPem(der));
        m_store->put(path + ".hidden.der", der);
        m_store->put(path + "large.der", der);
        QVERIFY(QFile::resize(m_store->path(path + "large.der"), 1 << 30)); // sparse
        QDir(m_store->path(path)).mkdir("directory.der");
        QFile::link("/dev/zero", m_store->path(path + "zero.der"));
        QFile::link("zero.der", m_store->path(path + "nowhere.der"));
        QFile::link(m_store->path("trusted/t.der"), m_store->path(path + "link.der"));
    }
    const auto model = makeModel();
    const QAbstractItemModelTester tester(model.get());
    const QString strange = "a b%41%1 größe 水\n.CER";
    const QStringList expected = {"1 " + strange, "1 link.der", "2 own.der",    "1 pem.crt",
                                  "1 rest.der",   "1 t.der",    "0 " + strange, "0 link.der",
                                  "0 own.der",    "0 r.der",    "0 rest.der"};
    QCOMPARE(rows(*model), expected);
    model->reload();
    QCOMPARE(rows(*model), expected);

    QStringList headers;
    QStringList cells[3];
    for (int column = 0; column < model->columnCount(); ++column) {
        headers.append(model->headerData(column, Qt::Horizontal).toString());
        int place = 0;
        for (const int row : {5, 6, 9}) {
            const QVariant data = model->index(row, column).data();
            cells[place++].append(data.userType() == QMetaType::QDateTime
                                      ? data.toDateTime().toUTC().toString("yyyy-MM-dd hh:mm:ss")
                                      : data.toString());
        }
    }
    QCOMPARE(headers.join('|'), "Status|Name|Valid From|Valid To|Organization|OrganizationUnit|"
                                "Locality|State|Country|AppURI|DomainName|IP|Filename");
    const QString span = "2024-03-01 00:00:00|2030-03-01 00:00:00|";
    QCOMPARE(cells[0].join('|'), "Trusted|Plant Client|" + span +
                                     "Kestrel Works|Tools|Town|Shire|GB|urn:plant:kestrel:demo|"
                                     "plant.example|192.0.2.7|t.der");
    QCOMPARE(cells[1].join('|'), "Untrusted||2020-01-01 00:00:00|9999-12-31 23:59:59|Größe 水|"
                                 "One, Two|||||||" +
                                     strange);
    // The issuer's identity, whoever the subject is.
    QCOMPARE(cells[2].join('|'),
             "Untrusted|Issued|" + span + "Kestrel Works|Tools|Town|Shire|GB||||r.der");
    QCOMPARE(model->index(2, 0).data(), "Own Certificate");
    QCOMPARE(model->index(5, 0).data(Qt::UserRole), QVariant(1));
    QCOMPARE(model->index(5, 12).data(Qt::UserRole), m_store->path("trusted/t.der"));
    QVERIFY(!model->index(5, 1).data(Qt::UserRole).isValid());
    QCOMPARE(model->flags(model->index(0, 0)), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
    QVERIFY(!model->index(0, 0, model->index(0, 0)).isValid() && !model->flags({}));
    m_store->dir.remove();
    model->reload();
    QCOMPARE(model->rowCount(), 0);
}

void tst_CertificateStore::states()
{
    const auto model = makeModel(); // own.der comes first, its icon is plain blue
    CertificateModelAccess::setClock(*model, [] { return UaDateTime(storeTime); });
    const QString error = ":/kestrel/images/overlay_error.png";
    const QString warning = ":/kestrel/images/overlay_warning.png";
    const std::tuple<const char*, const char*, QString> times[] = {
        {"2024-02-29", "The certificate is not yet valid", error},
        {"2024-03-01", "", ""},
        {"2030-02-14", "", ""},
        {"2030-02-14T00:00:01Z", "The certificate will expire soon", warning},
        {"2030-03-01", "The certificate will expire soon", warning},
        {"2030-03-01T00:00:01Z", "The certificate has expired", error}};
    for (const auto& [time, toolTip, overlay] : times) {
        storeTime = UaDateTime::fromString(time).ticks();
        QCOMPARE(model->index(0, 5).data(Qt::ToolTipRole).toString(), toolTip);
        const QImage image =
            model->index(0, 0).data(Qt::DecorationRole).value<QIcon>().pixmap(64, 64).toImage();
        QImage expected(image.size(), QImage::Format_ARGB32_Premultiplied);
        expected.fill(Qt::blue);
        if (!overlay.isEmpty()) { // at 200 % by the picture for it
            QPainter painter(&expected);
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(expected.rect(), QIcon(overlay).pixmap(16, 16).toImage());
            QCOMPARE(QIcon(overlay).pixmap(16, 16).width(), 16 * qApp->devicePixelRatio());
        }
        expected.setDevicePixelRatio(image.devicePixelRatio());
        QCOMPARE(image.convertToFormat(expected.format()), expected);
    }
    QvelCertificateEntry entry; // the clock of the computer, and a null certificate
    QCOMPARE(entry.validState(), QvelCertificateEntry::Expired);
}

void tst_CertificateStore::foreignIndexes()
{
    QvelCertificateModel model(m_store->path("trusted"), {}, {}, m_store->path("rejected/"), {}, {},
                               true); // without a separator
    const QModelIndex stale = model.index(0, 0);
    QFile::remove(m_store->path("trusted/t.der"));
    model.reload();
    QVERIFY(!model.sltTrust({}) && !model.sltReject({}) && !model.sltDelete({}));
    if (stale.internalPointer() != model.index(0, 0).internalPointer())
        QVERIFY(!stale.data().isValid() && !model.sltDelete(stale));
    QVERIFY(!model.index(2, 0).isValid() && model.index(1, 0).isValid());
    QVERIFY(model.sltTrust(model.index(1, 0))); // the name is appended as it is
    QCOMPARE(m_store->files(), QStringList({"own/own.pem", "trusted/own.der", "trustedr.der"}));
}

void tst_CertificateStore::makeManager()
{
    m_manager = std::make_unique<QvelCertificateManager>(
        "Client", "kestrel", m_store->path("trusted/"), "", "", m_store->path("rejected/"),
        m_store->path("trusted/own.der"), m_store->path("own/own.pem"), QIcon(), true);
    m_manager->show();
    QVERIFY(QTest::qWaitForWindowActive(m_manager.get()));
}

/// Clicks the row of a file; where it is in the view.
QPoint tst_CertificateStore::select(const QString& file)
{
    for (int row = 0; row < view()->model()->rowCount(); ++row) {
        const QModelIndex index = view()->model()->index(row, 12);
        if (index.data() == file) {
            const QPoint pos = view()->visualRect(index.siblingAtColumn(1)).center();
            QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, pos);
            return pos;
        }
    }
    qFatal("%s is not listed", qPrintable(file));
}

/// Opens the menu of a file by a right click and chooses an entry, or none. The entries; those that
/// are disabled in parentheses.
QStringList tst_CertificateStore::runMenu(const QString& file, const QString& entry)
{
    QStringList entries;
    const QPoint pos = file.isEmpty() ? view()->viewport()->rect().bottomRight() : select(file);
    const OnShow user([&](QWidget* shown) {
        auto* menu = qobject_cast<QMenu*>(shown);
        QAction* chosen = nullptr;
        const auto actions = menu ? menu->actions() : QList<QAction*>();
        for (QAction* action : actions) {
            entries.append(action->isEnabled() ? action->text() : '(' + action->text() + ')');
            if (action->text() == entry)
                chosen = action;
        }
        if (chosen)
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(chosen).center());
        else if (menu)
            QTest::keyClick(menu, Qt::Key_Escape);
    });
    QTest::mouseClick(m_manager->windowHandle(), Qt::RightButton, {},
                      view()->viewport()->mapTo(m_manager.get(), pos));
    return entries;
}

// The file, what is chosen, what stands in its way, the files afterwards, what failed.
void tst_CertificateStore::actions_data()
{
    addRows({"r.der|Trust||trusted/own.der trusted/r.der trusted/t.der|",
             "t.der|Reject||rejected/r.der rejected/t.der trusted/own.der|",
             "r.der|Delete||trusted/own.der trusted/t.der|",
             "t.der|Delete||rejected/r.der trusted/own.der|",
             "t.der|Delete|Cancel|rejected/r.der trusted/own.der trusted/t.der|",
             "r.der|Trust|trusted/r.der|rejected/r.der trusted/own.der trusted/r.der trusted/t.der|"
             "move certificate r.der to the trusted directory",
             "t.der|Reject|read-only|rejected/r.der trusted/own.der trusted/t.der|"
             "move certificate t.der to the rejected directory",
             "t.der|Delete|read-only|rejected/r.der trusted/own.der trusted/t.der|"
             "delete certificate t.der",
             "own.der|||rejected/r.der trusted/own.der trusted/t.der|",
             "|||rejected/r.der trusted/own.der trusted/t.der|"});
}

void tst_CertificateStore::actions()
{
    QFETCH(QStringList, row);
    const QString file = row.at(0), entry = row.at(1), obstacle = row.at(2), failure = row.at(4);
    makeManager();
    ModalUser user;
    std::unique_ptr<Unprivileged> unprivileged;
    if (obstacle == "Cancel") {
        user.button = QMessageBox::Cancel;
    } else if (obstacle == "read-only") {
        Store::setOpen(m_store->path("trusted"), false);
        unprivileged = std::make_unique<Unprivileged>();
    } else if (!obstacle.isEmpty()) {
        m_store->put(obstacle, "not a certificate");
    }
    const QStringList entries = runMenu(file, entry);
    const QMap<QString, QString> expected = {{"r.der", "Trust (Reject) Delete Open..."},
                                             {"t.der", "(Trust) Reject Delete Open..."},
                                             {"own.der", "Open... Create New..."}};
    QCOMPARE(entries.join(' '), expected.value(file));
    QStringList boxes;
    if (entry == "Delete")
        boxes.append("?|Delete Trusted Certificate|Do you really want to delete the selected "
                     "certificate?|OK,Cancel");
    if (!failure.isEmpty())
        boxes.append("W|CertificateManager|Could not " + failure + "|OK");
    QCOMPARE(user.seen, boxes);
    QCOMPARE(m_store->files().mid(1).join(' '), row.at(3));
    const bool gone = entry == "Delete" && obstacle.isEmpty();
    QCOMPARE(shown().size(), gone ? 2 : 3);
    if (!file.isEmpty())
        QCOMPARE(current(), gone ? QString() : file); // the same file, wherever it is now
    QCOMPARE(view()->selectionModel()->hasSelection(), !gone && !file.isEmpty());
}

void tst_CertificateStore::keys()
{
    makeManager();
    ModalUser user;
    QTest::keyClick(view(), Qt::Key_Delete); // nothing is selected
    select("own.der");
    QTest::keyClick(view(), Qt::Key_Delete);
    QCOMPARE(user.seen, QStringList());
    m_store->put("trusted/a.cer", fixture("strange.der"));
    QTest::keyClick(view(), Qt::Key_F5);
    QCOMPARE(shown().size(), 4);
    QCOMPARE(current(), "own.der");
    QFile::remove(m_store->path("trusted/own.der"));
    click("toolButton_Refresh");
    QCOMPARE(current(), QString());
    QTest::keyClick(view(), Qt::Key_F5);
    QCOMPARE(shown().size(), 3);
    select("t.der");
    QTest::keyClick(view(), Qt::Key_Delete);
    QCOMPARE(user.seen.size(), 1);
    QCOMPARE(shown().size(), 2);
}

void tst_CertificateStore::opens()
{
    makeManager();
    Desktop desktop;
    m_store->put("trusted/a b%41 größe.der", fixture("full.der"));
    click("toolButton_Refresh");
    view()->setCurrentIndex({});
    m_manager->sltOpenCertificate(); // nothing
    runMenu("r.der", "Open...");
    QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, select("a b%41 größe.der"));
    click("pushButton_OpenCertLocation");
    QCOMPARE(desktop.opened,
             (QStringList{m_store->path("rejected/r.der"),
                          m_store->path("trusted/a b%41 größe.der"), m_store->path("trusted")}));
}

void tst_CertificateStore::copies()
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    makeManager();
    QString target;
    ModalUser user([&](QDialog* dialog) {
        auto* files = qobject_cast<QFileDialog*>(dialog);
        QCOMPARE(files->nameFilters(), QStringList("Certificates (*.der)"));
        QCOMPARE(files->selectedFiles(), QStringList(m_store->path("trusted/own.der")));
        if (target.isEmpty())
            return files->reject();
        files->setDirectory(m_store->path(target.section('/', 0, 0)));
        input(files, "fileNameEdit")->selectAll();
        QTest::keyClicks(input(files, "fileNameEdit"), target.section('/', 1));
        QTest::keyClick(input(files, "fileNameEdit"), Qt::Key_Return);
    });
    const QString chooser = "QFileDialog|Save As"; // Qt's title, for an empty one
    const QString failed = "I|Could Not Copy Certificate|The application certificate could not be "
                           "copied to '%1'.|OK";
    const QString taken = failed.arg(m_store->path("rejected/r.der"));
    for (const char* name : {"", "own/a b%1", "own/x.cer", "rejected/r"}) {
        target = name;
        click("pushButton_CopyCertificateTo");
    }
    QCOMPARE(user.seen.join('\n'),
             QStringList({chooser, chooser, chooser, chooser, taken}).join('\n'));
    QCOMPARE(contentOf(m_store->path("own/a b%1.der")), fixture("full.der"));
    QCOMPARE(contentOf(m_store->path("own/x.cer")), fixture("full.der"));
    QCOMPARE(contentOf(m_store->path("rejected/r.der")), fixture("issued.der"));
    QFile::remove(m_store->path("trusted/own.der"));
    click("pushButton_CopyCertificateTo");
    QCOMPARE(user.seen.last(), QString("I|Certificate Not Found|The application certificate '%1' "
                                       "does not exist.|OK")
                                   .arg(m_store->path("trusted/own.der")));
}

// From the old certificate's data, by way of some that will not do.
void tst_CertificateStore::creates()
{
    makeManager();
    m_manager->setRSAKeyStrengths({1024, 2048, 3072});
    m_manager->setClockTolerance(300);
    QStringList texts;
    ModalUser user([&](QDialog* dialog) {
        for (const char* name :
             {"txtCommonName", "txtOrganization", "txtOrganizationUnit", "txtLocality", "txtState",
              "txtCountry", "txtURI", "txtIP", "txtDNS"})
            texts.append(input(dialog, name)->text());
        texts.append(dialog->findChild<QComboBox*>("cmbRSAKeyStrength")->currentText());
        static_cast<QvelNewCertificateDlg*>(dialog)->setURI("urn:My App");
        input(dialog, "txtOrganization")->setText("New");
        input(dialog, "txtIP")->setText("somewhere");
        QTest::mouseClick(dialog->findChild<QAbstractButton*>("chkPassword"), Qt::LeftButton, {},
                          QPoint(8, 8));
        for (const char* name : {"txtPassword", "txtPasswordRepeat"})
            input(dialog, name)->setText("sécret");
        QTimer::singleShot(0, dialog, [dialog] {                        // it is back
            const auto end = qScopeGuard([dialog] { dialog->hide(); }); // also after a failure
            QCOMPARE(dialog->focusWidget(), input(dialog, "txtIP"));
            QCOMPARE(input(dialog, "txtOrganization")->text(), "New");
            input(dialog, "txtIP")->setText("::1");
            press(dialog, QDialogButtonBox::Ok);
        });
        press(dialog, QDialogButtonBox::Ok);
    });
    runMenu("own.der", "Create New...");
    QCOMPARE(user.seen, QStringList("QvelNewCertificateDlg|New Application Instance Certificate"));
    QCOMPARE(texts.join('|'), "Plant Client|Kestrel Works|Tools|Town|Shire|GB|urn:plant:kestrel:"
                              "demo|192.0.2.7|plant.example|2048 bits");
    const auto own =
        UaPkiCertificate::fromDER(UaByteString(contentOf(m_store->path("trusted/own.der"))));
    QCOMPARE(own.issuer().organization.toUtf8(), "New");
    QCOMPARE(own.info().applicationUri.toUtf8(), "urn:My%20App");
    QCOMPARE(own.info().validitySeconds, 365 * 86400 + 300);
    QCOMPARE(current(), "own.der");
    QProcess openssl; // reads the key by its password
    openssl.start("openssl", {"pkey", "-pubout", "-outform", "DER", "-in",
                              m_store->path("own/own.pem"), "-passin", "pass:sécret"});
    QVERIFY2(openssl.waitForFinished() && openssl.exitCode() == 0, openssl.readAllStandardError());
    QVERIFY(own.toDER().bytes().contains(openssl.readAllStandardOutput()));
    QVERIFY(contentOf(m_store->path("own/own.pem")).contains("ENCRYPTED"));
    QVERIFY(m_manager->findChildren<QvelNewCertificateDlg*>().isEmpty());
}

void tst_CertificateStore::createFails_data()
{
    addRows({"trusted/own.der|Permission denied", "own/own.pem|Permission denied",
             "own/own.pem|Operation not permitted", "own/own.pem|Operation not permitted|first",
             "own/own.pem|Is a directory", "|"});
}

void tst_CertificateStore::createFails()
{
    QFETCH(QStringList, row);
    if (geteuid() != 0)
        QSKIP("changes the owner of files");
    const QString file = row.at(0), reason = row.at(1);
    const bool isFirst = row.contains("first"); // there was no certificate
    if (isFirst)
        QFile::remove(m_store->path("trusted/own.der"));
    makeManager();
    for (const char* name : {"trusted", "own", "trusted/own.der"})
        chown(qPrintable(m_store->path(name)), 65534, 65534);
    if (reason == "Is a directory") {
        QFile::remove(m_store->path("own/own.pem"));
        QDir(m_store->path("own")).mkdir("own.pem");
    } else if (reason == "Operation not permitted") { // to replace what is somebody else's
        chown(qPrintable(m_store->path("own")), 0, 0);
        chmod(qPrintable(m_store->path("own")), 01777);
    } else {
        Store::setOpen(m_store->path(file.section('/', 0, 0)), false);
    }
    const QStringList files = m_store->files();
    ModalUser user([&](QDialog* dialog) {
        for (const char* name : {"txtOrganization", "txtLocality", "txtState", "txtCountry"})
            input(dialog, name)->setText("AT");
        press(dialog, file.isEmpty() ? QDialogButtonBox::Cancel : QDialogButtonBox::Ok);
    });
    {
        const Unprivileged unprivileged;
        click("pushButton_CreateNewCertificate");
    }
    QCOMPARE(user.seen.mid(1).join(','),
             file.isEmpty() ? QString()
                            : QString("W|CertificateManager|Could not write %1: %2|OK")
                                  .arg(m_store->path(file), reason));
    QCOMPARE(m_store->files(), files);
    if (!isFirst)
        QCOMPARE(contentOf(m_store->path("trusted/own.der")), fixture("full.der"));
    if (reason != "Is a directory")
        QCOMPARE(contentOf(m_store->path("own/own.pem")), QByteArray("old key"));
}

// The file, where the user starts, and which dialog or menu it is in which the manager goes.
void tst_CertificateStore::deletedMeanwhile_data()
{
    addRows({"t.der|menu|1", "t.der|Delete|2", "t.der|Reject|2", "t.der|key|1",
             "|pushButton_CopyCertificateTo|1", "gone|pushButton_CopyCertificateTo|1",
             "|pushButton_CreateNewCertificate|1"});
}

void tst_CertificateStore::deletedMeanwhile()
{
    QFETCH(QStringList, row);
    const QString file = row.at(0), action = row.at(1);
    int window = row.at(2).toInt();
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    m_store->put("rejected/t.der", "taken"); // so that it cannot be rejected
    makeManager();
    if (file == "gone")
        QFile::remove(m_store->path("trusted/own.der"));
    const OnShow user([&](QWidget* shown) {
        auto* menu = qobject_cast<QMenu*>(shown);
        if (--window == 0)
            m_manager.reset();
        else if (menu)
            for (QAction* entry : menu->actions())
                if (entry->text() == action)
                    QTest::mouseClick(menu, Qt::LeftButton, {},
                                      menu->actionGeometry(entry).center());
    });
    if (action.startsWith("push")) {
        click(qPrintable(action));
    } else {
        const QPoint pos = select(file);
        if (action == "key")
            QTest::keyClick(view(), Qt::Key_Delete);
        else
            QTest::mouseClick(m_manager->windowHandle(), Qt::RightButton, {},
                              view()->viewport()->mapTo(m_manager.get(), pos));
    }
    QVERIFY(!m_manager);
    QVERIFY(QFile::exists(m_store->path("trusted/t.der")));
}

// Also when the store was empty at first.
void tst_CertificateStore::widths()
{
    for (const bool emptyFirst : {false, true}) {
        for (const char* name : {"trusted", "rejected"})
            if (emptyFirst)
                QDir(m_store->path(name)).removeRecursively();
        makeManager();
        for (const char* name : {"trusted", "rejected"})
            QDir().mkpath(m_store->path(name));
        m_store->put("trusted/t.der", fixture("full.der"));
        click("toolButton_Refresh");
        const QHeaderView* header = view()->header();
        for (int column = 0; column < 13; ++column) {
            const QModelIndex index = view()->model()->index(0, column);
            QVERIFY2(header->sectionSize(column) >= view()->sizeHintForIndex(index).width() &&
                         header->sectionSize(column) >= header->sectionSizeHint(column),
                     QByteArray::number(column));
        }
    }
}

QTEST_MAIN(tst_CertificateStore)
#include "tst_certificatestore.moc"
