#include "certificates/certificatemanager.h"
#include "certificates/certificatemodel_p.h"
#include "certificates/newcertificatedialog.h"
#include "support/modaluser.h"
#include "support/store.h"
#include "support/warnings.h"

#include <memory>
#include <unistd.h>

struct CertificateModelAccess
{
    static void setClock(QvelCertificateModel& model, UaDateTime (*now)()) { model.d->now = now; }
};

namespace {

OpcUa_DateTime storeTime = 0;

QByteArray fixture(const char* name)
{
    QFile file(QString(FIXTURES "/%1").arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Root could write everywhere.
void beRoot(bool root)
{
    if (getuid() == 0 && seteuid(root ? 0 : 65534) != 0)
        qFatal("cannot change the user");
}

QLineEdit* input(QWidget* dialog, const char* name)
{
    return dialog->findChild<QLineEdit*>(name);
}

void press(QDialog* dialog, QDialogButtonBox::StandardButton button)
{
    QTest::mouseClick(dialog->findChild<QDialogButtonBox*>()->button(button), Qt::LeftButton);
}

} // namespace

class tst_CertificateStore : public QObject
{
    Q_OBJECT
public Q_SLOTS:
    void open(const QUrl& url) { m_opened.append(url.toLocalFile()); } // as the desktop would
    static void initMain()
    {
        qputenv("TZ", "UTC+1"); // which is an hour behind
        qputenv("QT_SCALE_FACTOR", "2");
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }
private Q_SLOTS:
    void initTestCase()
    {
        QDesktopServices::setUrlHandler("file", this, "open");
        qApp->installEventFilter(this);
    }
    void init();
    void cleanup();
    void cleanupTestCase() { QDesktopServices::unsetUrlHandler("file"); }
    void lists();
    void states();
    void foreignIndexes();
    void actions();
    void reloads();
    void opens();
    void copies();
    void creates();
    void deletedMeanwhile();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void clearStore() const
    {
        for (const char* name : {"trusted", "rejected"})
            QDir(path(name)).removeRecursively();
    }
    QString path(const QString& name) const { return m_store->path(name); }
    std::unique_ptr<QvelCertificateModel> makeModel(const char* trusted = "trusted/") const
    {
        QPixmap blue(64, 64);
        blue.fill(Qt::blue);
        return std::make_unique<QvelCertificateModel>(
            path(trusted), "second", "third", path("rejected/"), "elsewhere/own.der", blue, true);
    }
    void makeManager();
    QTreeView* view() const { return m_manager->findChild<QTreeView*>("treeView"); }
    int rowCount() const { return view()->model()->rowCount(); }
    QString current() const { return view()->currentIndex().siblingAtColumn(12).data().toString(); }
    QString act(const QString& file, const QString& action, int deletedIn = 0);

    std::unique_ptr<Store> m_store;
    std::unique_ptr<QvelCertificateManager> m_manager;
    QStringList m_opened;
    QString m_action;
    QStringList m_entries; // of the menu; those that are disabled in parentheses
    int m_deletedIn = 0;
};

void tst_CertificateStore::init()
{
    failOnWarnings();
    cleanup();
    beRoot(false);
    m_store = std::make_unique<Store>();
    for (const char* name : {"trusted/t.der", "trusted/own.der"})
        m_store->put(name, fixture("full.der"));
    m_store->put("rejected/r.der", fixture("issued.der"));
    m_store->put("own/own.pem", "old key");
}

void tst_CertificateStore::cleanup()
{
    m_manager.reset();
    beRoot(true);
    m_store.reset();
}

void tst_CertificateStore::lists()
{
    const QByteArray der = fixture("full.der");
    const QString strange = "a b%41%1 größe 水\n.CER";
    for (const QString directory : {"trusted/", "rejected/"}) {
        m_store->put(directory + strange, fixture("strange.der"));
        m_store->put(directory + "pem.crt", fixture("key.pem") + fixture("chain.pem"));
        m_store->put(directory + "short.der", der.chopped(1));
        for (const char* name : {"own.der", ".hidden.der", "a.pem", "large.der"})
            m_store->put(directory + name, der);
        QFile::resize(path(directory + "large.der"), 1 << 30); // sparse
        QDir(path(directory)).mkdir("directory.der");
        QFile::link("/dev/zero", path(directory + "zero.der"));
        QFile::link("nowhere", path(directory + "nowhere.der"));
        QFile::link(path("trusted/t.der"), path(directory + "link.der"));
    }
    const auto model = makeModel();
    const QAbstractItemModelTester tester(model.get());
    for (int reloads = 0; reloads < 2; ++reloads) {
        QStringList names;
        for (int row = 0; row < model->rowCount(); ++row)
            names.append(model->index(row, 0).data(Qt::UserRole).toString() + ' ' +
                         model->index(row, 12).data().toString());
        QCOMPARE(names.join('|'), "1 " + strange + "|1 link.der|2 own.der|1 pem.crt|1 t.der|0 " +
                                      strange + "|0 link.der|0 own.der|0 r.der");
        model->reload();
    }
    const QString full = "2024-02-29T23:00:00.000|2030-02-28T23:00:00.000|Kestrel Works|Tools|Town|"
                         "Shire|GB|";
    const std::pair<int, QString> rows[] = {
        {4,
         "Trusted|Plant Client|" + full + "urn:plant:kestrel:demo|plant.example|192.0.2.7|t.der|"},
        {5, "Untrusted||2019-12-31T23:00:00.000|9999-12-31T22:59:59.000|Größe 水|One, Two|||||||" +
                strange + '|'},
        // The issuer's identity, whoever the subject is.
        {8, "Untrusted|Issued|" + full + "|||r.der|"}};
    for (const auto& [row, expected] : rows) {
        QString cells;
        for (int column = 0; column < model->columnCount(); ++column)
            cells += model->index(row, column).data().toString() + '|';
        QCOMPARE(cells, expected);
    }
    QCOMPARE(model->index(2, 0).data(), "Own Certificate");
    QCOMPARE(model->index(4, 12).data(Qt::UserRole), path("trusted/t.der"));
    QVERIFY(!model->index(4, 1).data(Qt::UserRole).isValid());
    clearStore();
    model->reload();
    QCOMPARE(model->rowCount(), 0);
}

void tst_CertificateStore::states()
{
    const auto model = makeModel(); // own.der comes first, its icon is plain blue
    CertificateModelAccess::setClock(*model, [] { return UaDateTime(storeTime); });
    const char* const times[][3] = {
        {"2024-02-29", "The certificate is not yet valid", "error"},
        {"2024-03-01", "", ""},
        {"2030-02-14", "", ""},
        {"2030-02-14T00:00:01Z", "The certificate will expire soon", "warning"},
        {"2030-03-01", "The certificate will expire soon", "warning"},
        {"2030-03-01T00:00:01Z", "The certificate has expired", "error"}};
    for (const auto& [time, toolTip, overlay] : times) {
        storeTime = UaDateTime::fromString(time).ticks();
        QCOMPARE(model->index(0, 5).data(Qt::ToolTipRole).toString(), toolTip);
        const QIcon icon = model->index(0, 0).data(Qt::DecorationRole).value<QIcon>();
        QImage image = icon.pixmap(64, 64).toImage();
        image.setDevicePixelRatio(1);
        QImage expected(image.size(), QImage::Format_ARGB32_Premultiplied);
        expected.fill(Qt::blue);
        if (*overlay) { // by the picture for 200 %
            const QIcon picture(QString(":/kestrel/images/overlay_%1.png").arg(overlay));
            QCOMPARE(picture.pixmap(16, 16).width(), 32);
            QPainter painter(&expected);
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(expected.rect(), picture.pixmap(16, 16).toImage());
        }
        QCOMPARE(image.convertToFormat(expected.format()), expected);
    }
    QvelCertificateEntry entry; // the clock of the computer, and a null certificate
    QCOMPARE(entry.validState(), QvelCertificateEntry::Expired);
}

void tst_CertificateStore::foreignIndexes()
{
    const auto model = makeModel("trusted"); // without a separator
    const QModelIndex stale = model->index(0, 0);
    QFile::remove(path("trusted/t.der"));
    model->reload();
    QVERIFY(!model->sltTrust({}) && !model->sltReject({}) && !model->sltDelete({}));
    if (stale.internalPointer() != model->index(0, 0).internalPointer())
        QVERIFY(!stale.data().isValid() && !model->sltDelete(stale));
    QVERIFY(!model->index(2, 0).isValid() && model->index(1, 0).isValid());
    QVERIFY(model->sltTrust(model->index(1, 0))); // the name is appended as it is
    QCOMPARE(m_store->files().join(' '), "own/own.pem trusted/own.der trustedr.der");
}

void tst_CertificateStore::makeManager()
{
    m_manager = std::make_unique<QvelCertificateManager>(
        "Client", "kestrel", path("trusted/"), "", "", path("rejected/"), path("trusted/own.der"),
        path("own/own.pem"), QIcon(), true);
    m_manager->show();
    QVERIFY(QTest::qWaitForWindowActive(m_manager.get()));
}

/// Once a dialog or menu runs: deletes the manager if it is the one for that, or chooses from the
/// menu.
bool tst_CertificateStore::eventFilter(QObject* watched, QEvent* event)
{
    auto* menu = qobject_cast<QMenu*>(watched);
    if (event->type() != QEvent::Show || (!menu && !qobject_cast<QDialog*>(watched)))
        return false;
    QTimer::singleShot(0, watched, [this, menu] {
        if (--m_deletedIn == 0)
            return m_manager.reset();
        QAction* chosen = nullptr;
        const auto actions = menu ? menu->actions() : QList<QAction*>();
        for (QAction* each : actions) {
            m_entries.append(each->isEnabled() ? each->text() : '(' + each->text() + ')');
            if (each->text() == m_action)
                chosen = each;
        }
        if (chosen)
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(chosen).center());
        else if (menu)
            QTest::keyClick(menu, Qt::Key_Escape);
    });
    return false;
}

/// Clicks the row of a file, and then presses a button or a key, double-clicks the row or opens its
/// menu and chooses an entry. Returns the menu's entries. The manager is deleted as soon as the
/// dialog or menu of the number `deletedIn` runs, counted from 1.
QString tst_CertificateStore::act(const QString& file, const QString& action, int deletedIn)
{
    m_action = action;
    m_entries.clear();
    m_deletedIn = deletedIn;
    QWidget* viewport = view()->viewport();
    QPoint pos = viewport->rect().bottomRight();
    for (int row = 0; row < rowCount(); ++row) {
        const QModelIndex index = view()->model()->index(row, 12);
        if (index.data() == file) {
            pos = view()->visualRect(index.siblingAtColumn(1)).center();
            QTest::mouseClick(viewport, Qt::LeftButton, {}, pos);
        }
    }
    if (action.contains("Button"))
        QTest::mouseClick(m_manager->findChild<QAbstractButton*>(action), Qt::LeftButton);
    else if (action == "Del" || action == "F5")
        QTest::keyClick(view(), action == "F5" ? Qt::Key_F5 : Qt::Key_Delete);
    else if (action == "double")
        QTest::mouseDClick(viewport, Qt::LeftButton, {}, pos);
    else
        QTest::mouseClick(m_manager->windowHandle(), Qt::RightButton, {},
                          viewport->mapTo(m_manager.get(), pos));
    return m_entries.join(' ');
}

// The file, what is done, what stands in its way, the files afterwards, the warning.
void tst_CertificateStore::actions()
{
    const QMap<QString, QString> menus = {{"r.der", "Trust (Reject) Delete Open..."},
                                          {"t.der", "(Trust) Reject Delete Open..."},
                                          {"own.der", "Open... Create New..."}};
    for (const QString row :
         {"r.der|Trust||T/own T/r T/t|", "t.der|Reject||R/r R/t T/own|", "r.der|Delete||T/own T/t|",
          "t.der|Delete||R/r T/own|", "t.der|Del||R/r T/own|", "t.der|Delete|Cancel|R/r T/own T/t|",
          "own.der|Del||R/r T/own T/t|", "|Del||R/r T/own T/t|", "own.der|||R/r T/own T/t|",
          "|||R/r T/own T/t|",
          "r.der|Trust|taken|R/r T/own T/r T/t|W|CertificateManager|Could not move certificate "
          "r.der to the trusted directory|OK",
          "t.der|Reject|read-only|R/r T/own T/t|W|CertificateManager|Could not move certificate "
          "t.der to the rejected directory|OK",
          "t.der|Delete|read-only|R/r T/own T/t|W|CertificateManager|Could not delete certificate "
          "t.der|OK"}) {
        const QStringList parts = row.split('|');
        const QString file = parts[0], action = parts[1], obstacle = parts[2];
        const bool gone = parts[3].count('/') == 2;
        init();
        makeManager();
        ModalUser user;
        if (obstacle == "Cancel")
            user.button = QMessageBox::Cancel;
        else if (obstacle == "taken")
            m_store->put("trusted/" + file, "not a certificate");
        else if (obstacle == "read-only")
            for (const char* name : {"trusted", "rejected"})
                chmod(qPrintable(path(name)), 0555);
        QCOMPARE(act(file, action), action == "Del" ? QString() : menus.value(file));
        const bool asked = action == "Delete" || gone;
        if (asked)
            QCOMPARE(user.seen.value(0), "?|Delete Trusted Certificate|Do you really want to "
                                         "delete the selected certificate?|OK,Cancel");
        QString files = m_store->files().mid(1).join(' ').remove(".der");
        files.replace("rejected", "R").replace("trusted", "T");
        QCOMPARE((parts.mid(0, 3) << files << user.seen.mid(asked ? 1 : 0).join(' ')).join('|'),
                 row);
        QCOMPARE(rowCount(), gone ? 2 : 3);
        if (!file.isEmpty())
            QCOMPARE(current(), gone ? QString() : file); // the same file, wherever it is now
        QCOMPARE(view()->selectionModel()->hasSelection(), !gone && !file.isEmpty());
    }
}

// The current file stays current. The columns are wide enough, also if the store was empty at
// first.
void tst_CertificateStore::reloads()
{
    makeManager();
    m_store->put("trusted/a.cer", fixture("strange.der"));
    act("own.der", "F5");
    QCOMPARE(rowCount(), 4);
    QCOMPARE(current(), "own.der");
    QFile::remove(path("trusted/own.der"));
    act({}, "toolButton_Refresh");
    QCOMPARE(current(), QString());
    for (const bool emptyFirst : {false, true}) {
        if (emptyFirst)
            clearStore();
        makeManager();
        QDir().mkpath(path("trusted"));
        m_store->put("trusted/t.der", fixture("full.der"));
        act({}, "F5");
        const QHeaderView* header = view()->header();
        for (int column = 0; column < 13; ++column) {
            const int width = view()->sizeHintForIndex(view()->model()->index(0, column)).width();
            QVERIFY2(header->sectionSize(column) >= qMax(width, header->sectionSizeHint(column)),
                     QByteArray::number(column));
        }
    }
}

void tst_CertificateStore::opens()
{
    const QString name = "a b%41 größe.der";
    m_store->put("trusted/" + name, fixture("full.der"));
    makeManager();
    view()->setCurrentIndex({});
    m_manager->sltOpenCertificate(); // nothing
    act("r.der", "Open...");
    act(name, "double");
    act({}, "pushButton_OpenCertLocation");
    QCOMPARE(m_opened,
             QStringList({path("rejected/r.der"), path("trusted/" + name), path("trusted")}));
}

void tst_CertificateStore::copies()
{
    const QString own = path("trusted/own.der");
    const QString chooser = "QFileDialog|Save As"; // Qt's title, for an empty one
    const QString taken = "I|Could Not Copy Certificate|The application certificate could not be "
                          "copied to '" +
                          path("rejected/r.der") + "'.|OK";
    const QString gone =
        "I|Certificate Not Found|The application certificate '" + own + "' does not exist.|OK";
    makeManager();
    QString target;
    QStringList offered;
    ModalUser user([&](QDialog* dialog) {
        auto* files = static_cast<QFileDialog*>(dialog);
        offered += files->nameFilters() + files->selectedFiles();
        if (target.isEmpty())
            return files->reject();
        files->setDirectory(path(target.section('/', 0, 0)));
        input(files, "fileNameEdit")->setText(target.section('/', 1));
        // Not at once: so a question after it would be seen, too.
        QTimer::singleShot(
            0, files, [files] { QTest::keyClick(input(files, "fileNameEdit"), Qt::Key_Return); });
    });
    for (const char* name : {"", "own/a b%1", "own/x.cer", "rejected/r"}) {
        target = name;
        act({}, "pushButton_CopyCertificateTo");
    }
    QFile::remove(own);
    act({}, "pushButton_CopyCertificateTo");
    QCOMPARE(user.seen.join('\n'),
             QStringList({chooser, chooser, chooser, chooser, taken, gone}).join('\n'));
    offered.removeDuplicates();
    QCOMPARE(offered, QStringList({"Certificates (*.der)", own}));
    for (const char* copy : {"own/a b%1.der", "own/x.cer"})
        QCOMPARE(m_store->content(copy), fixture("full.der"));
    QCOMPARE(m_store->content("rejected/r.der"), fixture("issued.der"));
}

// From the old certificate's data, by way of some that will not do. The file that cannot be
// written, if any, and why, or how it ends; whether there is no old certificate.
void tst_CertificateStore::creates()
{
    const auto contents = [this] {
        return m_store->files().join(' ').toUtf8() + m_store->content("trusted/own.der") +
               m_store->content("own/own.pem");
    };
    for (const QString row :
         {"trusted/own.der|Permission denied|", "own/own.pem|Permission denied|",
          "own/own.pem|Operation not permitted|", "own/own.pem|Operation not permitted|first",
          "|cancelled|", "|done|"}) {
        const QString file = row.section('|', 0, 0), reason = row.section('|', 1, 1);
        const bool foreign = reason == "Operation not permitted"; // to replace somebody else's file
        const bool isFirst = row.endsWith("first");
        if (foreign && getuid() != 0)
            continue;
        init();
        if (isFirst)
            QFile::remove(path("trusted/own.der"));
        makeManager();
        m_manager->setRSAKeyStrengths({1024, 2048, 3072});
        m_manager->setClockTolerance(300);
        beRoot(true);
        if (foreign)
            for (const char* name : {"own", "own/own.pem"})
                QCOMPARE(chown(qPrintable(path(name)), 0, 0), 0);
        if (!file.isEmpty())
            chmod(qPrintable(path(file.section('/', 0, 0))), foreign ? 01777 : 0555);
        beRoot(false);
        const QByteArray before = contents();
        QStringList texts;
        ModalUser user([&](QDialog* dialog) {
            for (const char* name :
                 {"txtCommonName", "txtURI", "txtOrganization", "txtOrganizationUnit",
                  "txtLocality", "txtState", "txtCountry", "txtIP", "txtDNS"}) {
                texts.append(input(dialog, name)->text());
                if (texts.size() > 2)
                    input(dialog, name)->setText("AT");
            }
            texts.append(dialog->findChild<QComboBox*>("cmbRSAKeyStrength")->currentText());
            static_cast<QvelNewCertificateDlg*>(dialog)->setURI("urn:My App");
            dialog->findChild<QCheckBox*>("chkPassword")->setChecked(true);
            for (const char* name : {"txtPassword", "txtPasswordRepeat"})
                input(dialog, name)->setText("sécret");
            if (reason == "cancelled")
                return press(dialog, QDialogButtonBox::Cancel);
            QTimer::singleShot(0, dialog, [&texts, dialog] { // it is back
                texts.append(dialog->focusWidget() == input(dialog, "txtIP") ? "focused" : "");
                texts.append(input(dialog, "txtOrganization")->text());
                input(dialog, "txtIP")->setText("::1");
                press(dialog, QDialogButtonBox::Ok);
                dialog->hide(); // in any case
            });
            press(dialog, QDialogButtonBox::Ok);
        });
        act("own.der", isFirst ? "pushButton_CreateNewCertificate" : "Create New...");
        QString seen = "QvelNewCertificateDlg|New Application Instance Certificate";
        if (!file.isEmpty())
            seen += "\nW|CertificateManager|Could not write " + path(file) + ": " + reason + "|OK";
        QCOMPARE(user.seen.join('\n'), seen);
        QVERIFY(m_manager->findChildren<QvelNewCertificateDlg*>().isEmpty());
        QVERIFY(isFirst || current() == "own.der");
        QVERIFY((contents() == before) == (reason != "done"));
        if (reason != "done")
            continue;
        QCOMPARE(texts.join('|'),
                 "Plant Client|urn:plant:kestrel:demo|Kestrel Works|Tools|Town|Shire|"
                 "GB|192.0.2.7|plant.example|2048 bits|focused|AT");
        const auto own =
            UaPkiCertificate::fromDER(UaByteString(m_store->content("trusted/own.der")));
        QCOMPARE(own.issuer().organization.bytes() + own.info().applicationUri.bytes(),
                 "ATurn:My%20App");
        QCOMPARE(own.info().validitySeconds, 365 * 86400 + 300);
        QProcess openssl; // reads the key by its password
        openssl.start("openssl", {"pkey", "-pubout", "-outform", "DER", "-in", path("own/own.pem"),
                                  "-passin", "pass:sécret"});
        QVERIFY(openssl.waitForFinished() && openssl.exitCode() == 0);
        QVERIFY(own.toDER().bytes().contains(openssl.readAllStandardOutput()));
        QVERIFY(m_store->content("own/own.pem").contains("ENCRYPTED"));
    }
}

// The file, where the user starts, and which dialog or menu it is in which the manager goes.
void tst_CertificateStore::deletedMeanwhile()
{
    for (const QString row :
         {"t.der|menu|1", "t.der|Delete|2", "t.der|Reject|2", "t.der|Del|1",
          "|pushButton_CopyCertificateTo|1", "gone|pushButton_CopyCertificateTo|1",
          "|pushButton_CreateNewCertificate|1"}) {
        init();
        m_store->put("rejected/t.der", "taken"); // so that it cannot be rejected
        if (row.startsWith("gone"))
            QFile::remove(path("trusted/own.der"));
        makeManager();
        act(row.section('|', 0, 0), row.section('|', 1, 1), row.section('|', 2).toInt());
        QVERIFY2(!m_manager && QFile::exists(path("trusted/t.der")), qPrintable(row));
    }
}

QTEST_MAIN(tst_CertificateStore)
#include "tst_certificatestore.moc"
