#include "certificates/certificatemanager.h"
#include "certificates/newcertificatedialog.h"
#include "platform/pki/uapkicertificate.h"
#include "store.h"
#include "support/warnings.h"

#include <QtGui/QDesktopServices>
#include <QtWidgets/QtWidgets>

#include <functional>
#include <memory>

/// What the user is to be shown, one after the other: a message box as "icon|title|text|buttons",
/// another dialog as its class. Each is answered: a message box by the button "=answer" at the end
/// of its line, another dialog by the function.
class User : public QObject
{
public:
    explicit User(std::function<void(QDialog*)> answer = {}) : m_answer(std::move(answer))
    {
        connect(&m_timer, &QTimer::timeout, this, &User::look);
        m_timer.start(5);
    }
    QStringList seen;
    QMessageBox::StandardButton button = QMessageBox::Ok;

private:
    void look()
    {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog || dialog == m_last)
            return;
        m_last = dialog;
        if (auto* box = qobject_cast<QMessageBox*>(dialog)) {
            QStringList buttons;
            const auto all = box->buttons();
            for (const QAbstractButton* each : all)
                buttons.append(QString(each->text()).remove('&'));
            const char icons[] = "NIWC?";
            seen.append(QString("%1|%2|%3|%4")
                            .arg(QChar(icons[box->icon()]), box->windowTitle(), box->text(),
                                 buttons.join(',')));
            QTest::mouseClick(box->button(button), Qt::LeftButton);
        } else {
            seen.append(dialog->metaObject()->className());
            m_answer(dialog);
        }
    }
    QTimer m_timer;
    QPointer<QDialog> m_last;
    std::function<void(QDialog*)> m_answer;
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

class tst_CertificateManager : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void form();
    void menus_data();
    void menus();
    void actions_data();
    void actions();
    void fileDeletedUnderMenu();
    void keys();
    void opens();
    void copies_data();
    void copies();
    void createsCertificate();
    void createsNothing_data();
    void createsNothing();
    void prefills();

private:
    QTreeView* view() const { return m_manager->findChild<QTreeView*>("treeView"); }
    QStringList shownFiles() const;
    QPoint select(const QString& file);
    void click(const char* button);
    QStringList runMenu(const QString& file, const QString& entry,
                        const std::function<void()>& meanwhile = {});

    std::unique_ptr<Store> m_store;
    std::unique_ptr<QvelCertificateManager> m_manager;
};

void tst_CertificateManager::init()
{
    failOnWarnings();
    setTime("2025-01-01");
    m_store = std::make_unique<Store>();
    m_store->put(m_store->trusted() + "t.der", fixture("full.der"));
    m_store->put(m_store->rejected() + "r.der", fixture("issued.der"));
    m_store->put(m_store->ownCertificate(), fixture("full.der"));
    m_store->put(m_store->ownKey(), "old key");
    m_manager = std::make_unique<QvelCertificateManager>(
        "Client", "kestrel", m_store->trusted(), "", "", m_store->rejected(),
        m_store->ownCertificate(), m_store->ownKey(), QIcon(), true);
    m_manager->show();
    QVERIFY(QTest::qWaitForWindowActive(m_manager.get()));
}

void tst_CertificateManager::cleanup()
{
    m_manager.reset();
    m_store.reset();
}

QStringList tst_CertificateManager::shownFiles() const
{
    QStringList files;
    for (int row = 0; row < view()->model()->rowCount(); ++row)
        files.append(view()->model()->index(row, 12).data().toString());
    files.sort();
    return files;
}

/// Clicks the row of a file; where it is in the view.
QPoint tst_CertificateManager::select(const QString& file)
{
    const QAbstractItemModel* model = view()->model();
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->index(row, 12).data() == file) {
            const QPoint pos = view()->visualRect(model->index(row, 1)).center();
            QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, pos);
            return pos;
        }
    }
    qFatal("%s is not listed", qPrintable(file));
}

void tst_CertificateManager::click(const char* button)
{
    QTest::mouseClick(m_manager->findChild<QAbstractButton*>(button), Qt::LeftButton);
}

/// Opens the menu of a file by a right click and chooses an entry, or none. The entries; those that
/// are disabled in parentheses.
QStringList tst_CertificateManager::runMenu(const QString& file, const QString& entry,
                                            const std::function<void()>& meanwhile)
{
    QStringList entries;
    const QPoint pos = file.isEmpty() ? view()->viewport()->rect().bottomRight() : select(file);
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        timer.stop();
        QAction* chosen = nullptr;
        const auto actions = menu->actions();
        for (QAction* action : actions) {
            entries.append(action->isEnabled() ? action->text() : '(' + action->text() + ')');
            if (action->text() == entry)
                chosen = action;
        }
        if (meanwhile)
            meanwhile();
        if (chosen)
            QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(chosen).center());
        else
            QTest::keyClick(menu, Qt::Key_Escape);
    });
    timer.start(5);
    QTest::mouseClick(m_manager->windowHandle(), Qt::RightButton, {},
                      view()->viewport()->mapTo(m_manager.get(), pos));
    return entries;
}

void tst_CertificateManager::form()
{
    QCOMPARE(m_manager->objectName(), QString("QvelCertificateManager"));
    QCOMPARE(m_manager->windowTitle(), QString("Manage Certificates"));
    const QvelCertificateManager fresh({}, {}, {}, {}, {}, {}, {}, {}, {}, false);
    QCOMPARE(fresh.size(), QSize(642, 346));
    QTextDocument help;
    help.setHtml(m_manager->whatsThis());
    QCOMPARE(help.toPlainText(),
             QString("Manage Certificates\nDisplays information about all certificates in the "
                     "Applications certificate store. Trust, reject, view and delete certificates "
                     "by using the context menu."));

    const QTreeView* list = view();
    QCOMPARE(list->editTriggers(), QAbstractItemView::NoEditTriggers);
    QVERIFY(!list->property("showDropIndicator").toBool() && list->alternatingRowColors());
    QVERIFY(!list->rootIsDecorated() && !list->itemsExpandable() && list->isSortingEnabled());
    QVERIFY(list->allColumnsShowFocus() && !list->expandsOnDoubleClick());
    QVERIFY(!list->header()->stretchLastSection() && list->whatsThis().isEmpty());
    QCOMPARE(list->contextMenuPolicy(), Qt::CustomContextMenu);
    for (int column : {0, 1, 2, 3, 12})
        QVERIFY(list->columnWidth(column) >=
                list->sizeHintForIndex(list->model()->index(0, column)).width());

    // In the order of the table: name, class, text, tool tip.
    const QList<QStringList> objects = {
        {"toolButton_Refresh", "QToolButton", "...", "Refresh"},
        {"pushButton_OpenCertLocation", "QPushButton", "Open Certificate Location", ""},
        {"pushButton_CopyCertificateTo", "QPushButton", "Copy Application Certificate To...", ""},
        {"pushButton_CreateNewCertificate", "QPushButton", "Create new Application Certificate...",
         ""},
        {"actionTrust", "QAction", "Trust", "Set the state of this certificate to Trusted"},
        {"actionReject", "QAction", "Reject", "Set the state of this certificate to Rejected"},
        {"actionOpen", "QAction", "Open...", "Open Certificate in External Viewer"},
        {"actionCreateNew", "QAction", "Create New...", "Create New"}, // Qt's default: the text
        {"actionDelete", "QAction", "Delete", "Delete the certificate"}};
    for (const QStringList& expected : objects) {
        const QObject* object = m_manager->findChild<QObject*>(expected.at(0));
        QVERIFY2(object, qPrintable(expected.at(0)));
        QCOMPARE((QStringList{object->objectName(), object->metaObject()->className(),
                              object->property("text").toString(),
                              object->property("toolTip").toString()}),
                 expected);
    }
    const QBoxLayout* row = m_manager->findChild<QHBoxLayout*>("horizontalLayout_2");
    QCOMPARE(m_manager->layout()->objectName(), QString("verticalLayout"));
    QCOMPARE(row->itemAt(1)->spacerItem()->sizeHint(), QSize(40, 20));
    QCOMPARE(row->itemAt(4)->widget()->objectName(), objects.at(3).at(0));
    QVERIFY(!m_manager->findChild<QToolButton*>("toolButton_Refresh")->icon().isNull());
}

void tst_CertificateManager::menus_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("entries");
    QTest::newRow("untrusted") << "r.der" << QStringList{"Trust", "(Reject)", "Delete", "Open..."};
    QTest::newRow("trusted") << "t.der" << QStringList{"(Trust)", "Reject", "Delete", "Open..."};
    QTest::newRow("own") << "own.der" << QStringList{"Open...", "Create New..."};
    QTest::newRow("empty space") << "" << QStringList{};
}

void tst_CertificateManager::menus()
{
    QFETCH(QString, file);
    QFETCH(QStringList, entries);
    QCOMPARE(runMenu(file, {}), entries);
    QCOMPARE(m_manager->findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly).size(),
             entries.isEmpty() ? 0 : 1); // the menu stays
}

void tst_CertificateManager::actions_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<bool>("fails");
    QTest::addColumn<bool>("cancelled");
    QTest::addColumn<QStringList>("boxes");
    QTest::addColumn<QStringList>("files");
    const QStringList none;
    const QString question = "?|Delete Trusted Certificate|Do you really want to delete the "
                             "selected certificate?|OK,Cancel";
    const QString failed = "W|CertificateManager|Could not %1|OK";
    const QStringList unchanged = {"own/own.pem", "rejected/r.der", "trusted/own.der",
                                   "trusted/t.der"};
    QTest::newRow("trust") << "r.der"
                           << "Trust" << false << false << none
                           << QStringList{"own/own.pem", "trusted/own.der", "trusted/r.der",
                                          "trusted/t.der"};
    QTest::newRow("reject") << "t.der"
                            << "Reject" << false << false << none
                            << QStringList{"own/own.pem", "rejected/r.der", "rejected/t.der",
                                           "trusted/own.der"};
    QTest::newRow("delete rejected")
        << "r.der"
        << "Delete" << false << false << QStringList{question}
        << QStringList{"own/own.pem", "trusted/own.der", "trusted/t.der"};
    QTest::newRow("delete trusted")
        << "t.der"
        << "Delete" << false << false << QStringList{question}
        << QStringList{"own/own.pem", "rejected/r.der", "trusted/own.der"};
    QTest::newRow("delete cancelled")
        << "t.der"
        << "Delete" << false << true << QStringList{question} << unchanged;
    // No row is current any more after a failure, so there is no name to tell.
    QTest::newRow("trust fails") << "r.der"
                                 << "Trust" << true << false
                                 << QStringList{failed.arg(
                                        "move certificate  to the trusted directory")}
                                 << unchanged;
    QTest::newRow("reject fails") << "t.der"
                                  << "Reject" << true << false
                                  << QStringList{failed.arg(
                                         "move certificate  to the rejected directory")}
                                  << unchanged;
    QTest::newRow("delete fails") << "t.der"
                                  << "Delete" << true << false
                                  << QStringList{question, failed.arg("delete certificate t.der")}
                                  << unchanged;
}

void tst_CertificateManager::actions()
{
    QFETCH(QString, file);
    QFETCH(QString, entry);
    QFETCH(bool, fails);
    QFETCH(bool, cancelled);
    QFETCH(QStringList, boxes);
    QFETCH(QStringList, files);
    User user;
    if (cancelled)
        user.button = QMessageBox::Cancel;
    if (fails) {
        m_store->setOpen(m_store->trusted(), true);
        m_store->setOpen(m_store->rejected(), true);
        const Unprivileged unprivileged;
        runMenu(file, entry);
    } else {
        runMenu(file, entry);
    }
    QCOMPARE(user.seen, boxes);
    QCOMPARE(m_store->files(), files);
    QCOMPARE(shownFiles().size(), files.size() - 1); // all but the key
}

void tst_CertificateManager::fileDeletedUnderMenu()
{
    User user;
    const auto deleteFile = [this] { QFile::remove(m_store->rejected() + "r.der"); };
    runMenu("r.der", "Trust", deleteFile);
    QCOMPARE(user.seen.size(), 1);
    QCOMPARE(shownFiles(), (QStringList{"own.der", "t.der"}));
}

void tst_CertificateManager::keys()
{
    User user;
    user.button = QMessageBox::Cancel;
    QTest::keyClick(view(), Qt::Key_Delete); // nothing is selected
    select("own.der");
    QTest::keyClick(view(), Qt::Key_Delete);
    QCOMPARE(user.seen, QStringList());
    select("t.der");
    QTest::keyClick(view(), Qt::Key_Delete);
    QCOMPARE(user.seen.size(), 1);
    QCOMPARE(shownFiles().size(), 3);
    user.button = QMessageBox::Ok;
    m_manager->activateWindow(); // which no window manager does here
    QVERIFY(QTest::qWaitForWindowActive(m_manager.get()));
    QTest::keyClick(view(), Qt::Key_Delete);
    QCOMPARE(shownFiles(), (QStringList{"own.der", "r.der"}));

    m_store->put(m_store->trusted() + "new.cer", fixture("strange.der"));
    view()->setCurrentIndex({});
    QTest::keyClick(view(), Qt::Key_F5);
    QCOMPARE(shownFiles().size(), 3);
    QFile::remove(m_store->trusted() + "new.cer");
    click("toolButton_Refresh");
    QCOMPARE(shownFiles().size(), 2);
}

void tst_CertificateManager::opens()
{
    Desktop desktop;
    m_store->put(m_store->trusted() + "a b%41 größe.der", fixture("full.der"));
    click("toolButton_Refresh");
    m_manager->sltOpenCertificate(); // nothing is current
    runMenu("r.der", "Open...");
    QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, select("a b%41 größe.der"));
    click("pushButton_OpenCertLocation");
    QCOMPARE(desktop.opened,
             (QStringList{m_store->rejected() + "r.der", m_store->trusted() + "a b%41 größe.der",
                          m_store->trusted().chopped(1)}));
}

void tst_CertificateManager::copies_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("box");
    QTest::newRow("cancelled") << ""
                               << "";
    QTest::newRow("copied") << "elsewhere/a b%1 größe.der"
                            << "";
    QTest::newRow("name taken") << "rejected/r.der"
                                << "I|Could Not Copy Certificate|The application certificate could "
                                   "not be copied to '%1'.|OK";
    QTest::newRow("missing")
        << "missing"
        << "I|Certificate Not Found|The application certificate '%1' does not exist.|OK";
}

void tst_CertificateManager::copies()
{
    QFETCH(QString, target);
    QFETCH(QString, box);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const QString path = m_store->root() + target;
    User user([&](QDialog* dialog) {
        auto* files = qobject_cast<QFileDialog*>(dialog);
        QCOMPARE(files->windowTitle(), QString("Save As")); // Qt's, for an empty caption
        QCOMPARE(files->nameFilters(), QStringList("Certificates (*.der)"));
        QCOMPARE(files->selectedFiles(), QStringList(m_store->ownCertificate()));
        if (target.isEmpty())
            return files->reject();
        files->findChild<QLineEdit*>("fileNameEdit")->setText(path);
        files->setOption(QFileDialog::DontConfirmOverwrite);
        QTest::keyClick(files->findChild<QLineEdit*>("fileNameEdit"), Qt::Key_Return);
    });
    QStringList expected = {"QFileDialog"};
    if (target == "missing") {
        QFile::remove(m_store->ownCertificate());
        expected = QStringList{box.arg(m_store->ownCertificate())};
    } else if (!box.isEmpty()) {
        expected.append(box.arg(path));
    }
    const QStringList before = m_store->files();
    click("pushButton_CopyCertificateTo");
    QCOMPARE(user.seen, expected);
    if (target.startsWith("elsewhere"))
        QCOMPARE(contentOf(path), fixture("full.der"));
    else
        QCOMPARE(m_store->files(), before);
    QCOMPARE(contentOf(m_store->rejected() + "r.der"), fixture("issued.der"));
}

static QLineEdit* input(QDialog* dialog, const char* name)
{
    auto* edit = dialog->findChild<QLineEdit*>(name);
    if (!edit)
        qFatal("there is no %s", name);
    return edit;
}

void tst_CertificateManager::createsCertificate()
{
    m_manager->setRSAKeyStrengths({2048, 3072});
    User user([](QDialog* dialog) {
        auto* strength = dialog->findChild<QComboBox*>("cmbRSAKeyStrength");
        QCOMPARE(strength->itemText(1), QString("3072 bits"));
        input(dialog, "txtOrganization")->setText("New");
        dialog->findChild<QAbstractButton*>("chkPassword")->click();
        input(dialog, "txtPassword")->setText("sécret");
        input(dialog, "txtPasswordRepeat")->setText("sécret");
        QTest::mouseClick(dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                          Qt::LeftButton);
    });
    runMenu("own.der", "Create New...");
    QCOMPARE(user.seen, QStringList("QvelNewCertificateDlg"));
    const auto certificate =
        UaPkiCertificate::fromDERFile(QFile::encodeName(m_store->ownCertificate()).constData());
    QCOMPARE(certificate.issuer().organization, UaString("New"));
    QCOMPARE(certificate.publicKey().keySize(), 2048);
    QVERIFY(contentOf(m_store->ownKey()).contains("BEGIN ENCRYPTED PRIVATE KEY"));
    QCOMPARE(shownFiles(), (QStringList{"own.der", "r.der", "t.der"}));
    QProcess openssl; // reads the key by its password
    openssl.start("openssl",
                  {"pkey", "-noout", "-in", m_store->ownKey(), "-passin", "pass:sécret"});
    QVERIFY2(openssl.waitForFinished() && openssl.exitCode() == 0, openssl.readAllStandardError());
}

void tst_CertificateManager::createsNothing_data()
{
    QTest::addColumn<QString>("country");
    QTest::addColumn<QStringList>("seen");
    QTest::newRow("cancelled") << "" << QStringList("QvelNewCertificateDlg");
    QTest::newRow("no country") << "1!"
                                << QStringList{"QvelNewCertificateDlg",
                                               "W|CertificateManager|Could not create a "
                                               "certificate from these data|OK"};
}

void tst_CertificateManager::createsNothing()
{
    QFETCH(QString, country);
    QFETCH(QStringList, seen);
    User user([&](QDialog* dialog) {
        if (country.isEmpty())
            return dialog->reject();
        input(dialog, "txtCountry")->setText(country);
        QTest::mouseClick(dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                          Qt::LeftButton);
    });
    click("pushButton_CreateNewCertificate");
    QCOMPARE(user.seen, seen);
    QCOMPARE(contentOf(m_store->ownCertificate()), fixture("full.der"));
    QCOMPARE(contentOf(m_store->ownKey()), QByteArray("old key"));
    QVERIFY(m_manager->findChildren<QvelNewCertificateDlg*>().isEmpty());
}

void tst_CertificateManager::prefills()
{
    QStringList texts;
    User user([&](QDialog* dialog) {
        for (const char* name :
             {"txtCommonName", "txtOrganization", "txtOrganizationUnit", "txtLocality", "txtState",
              "txtCountry", "txtURI", "txtIP", "txtDNS"})
            texts.append(input(dialog, name)->text());
        texts.append(dialog->findChild<QComboBox*>("cmbRSAKeyStrength")->currentText());
        dialog->reject();
    });
    click("pushButton_CreateNewCertificate");
    QCOMPARE(texts,
             (QStringList{"Plant Client", "Kestrel Works", "Tools", "Town", "Shire", "GB",
                          "urn:plant:kestrel:demo", "192.0.2.7", "plant.example", "2048 bits"}));

    m_store->put(m_store->ownCertificate(), toPem(fixture("full.der"))); // not read here
    texts.clear();
    click("pushButton_CreateNewCertificate");
    QCOMPARE(texts.mid(0, 3), (QStringList{"Client", "", ""}));
    QVERIFY(texts.at(6).endsWith(":kestrel:Client"));

    m_store->put(m_store->ownCertificate(), fixture("issued.der")); // has no URI
    texts.clear();
    click("pushButton_CreateNewCertificate");
    QCOMPARE(texts.mid(0, 2), (QStringList{"Issued", "Kestrel Works"}));
    QVERIFY(texts.at(6).endsWith(":kestrel:Client"));
}

QTEST_MAIN(tst_CertificateManager)
#include "tst_certificatemanager.moc"
