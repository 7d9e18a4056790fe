// harrier as its users walk through it: the windows, by mouse and keys, and the command.

#include "discovery/endpoints.h"
#include "endpointjson.h"
#include "language.h"
#include "platform/stack/checkmemory_p.h"
#include "projectcontrol.h"
#include "run.h"
#include "support/modaluser.h"
#include "support/peerprocess.h"
#include "support/showntexts.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNode>
#include <Kestrel/QvelToolBox>
#include <Kestrel/UaString>

#include <QtWidgets/QtWidgets>

class tst_Harrier : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_dir = std::make_unique<QTemporaryDir>();
        m_file = m_dir->filePath("harrier.ini");
    }
    void connects();
    void firstStart();
    void projects_data();
    void projects();
    void editsValues();
    void speaksGerman();
    void hostileServer();
    void spoiltSettings();
    void failsToConnect();
    void endsBySignal();
    void command_data();
    void command();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_file;
};

// Discover, select, look at it, set the connection up, use it; and find it again the next time.
void tst_Harrier::connects()
{
    PeerProcess server;
    const QString url =
        server.start(NODE, {PLANT, "--port", "0", "--until-eof"}).section(' ', 0, 0);
    const QString name = "Boiler house - Basic256Sha256 - Sign";
    {
        Run run(m_file);
        ModalUser user([&](QDialog* dialog) {
            type(dialog->findChild<QLineEdit*>(), url);
            QTest::keyClick(dialog, Qt::Key_Return);
        });
        run.open("Custom Discovery");
        run.open("< Double", {}, true);
        run.open(url);
        QTRY_VERIFY(run.log().contains("Bottling line"));
        const QModelIndex boiler = run.open("Boiler house");
        QTRY_COMPARE(run.window.currentView()->model()->rowCount(boiler), 7);
        QTRY_VERIFY(named<QLabel>(run.window, "hint")->text().startsWith("Choose one of the end"));
        QWidget& details = run.page("endpoint");
        QVERIFY(!named<QPushButton>(details, "use")->isEnabled());
        run.open("Basic256Sha256 - Sign", boiler);
        QString shown;
        for (const char* field : {"server", "securityMode", "securityLevel", "subject"})
            shown += named<QLineEdit>(details, field)->text() + ' ';
        QVERIFY2(shown.startsWith("Boiler house Sign 106 CN=Boiler house"), qPrintable(shown));

        QWidget& form = run.page("connection");
        const QPoint mark(8, 8);
        QTest::mouseClick(named<QWidget>(form, "radioButton_Username"), Qt::LeftButton, {}, mark);
        type(named<QLineEdit>(form, "lineEdit_UserName"), "ann");
        run.host.setEndpoint({}); // the user looks at another node, and comes back to the form
        auto* keep = named<QWidget>(form, "checkBox_StorePassword");
        QTest::mouseClick(keep, Qt::LeftButton, {}, mark);
        type(named<QLineEdit>(form, "lineEdit_Password"), "secret");
        auto* use = named<QPushButton>(form, "useConnection");
        QTest::mouseClick(use, Qt::LeftButton);
        QCOMPARE(run.host.endpoint().displayName() + run.host.endpoint().password(),
                 name + "secret");
        QTest::mouseClick(keep, Qt::LeftButton, {}, mark);
        QTest::mouseClick(use, Qt::LeftButton); // in place
        QCOMPARE(run.host.endpoint().password(), "");
        run.open("Aes256", boiler, true); // files it, too, and connects
        QCOMPARE(run.window.currentView()->noOfRecentNodes(), 2);
        QCOMPARE(run.window.sessions().size(), 1);
        QTRY_VERIFY(!QApplication::activeModalWidget()); // it may have asked who is there
        QTest::keyClick(&run.window, Qt::Key_W, Qt::ControlModifier);
        QCOMPARE(run.window.serverTabs()->count(), 1);
        run.open(name);
        run.window.resize(1000, 700);
        QTest::mouseClick(run.window.discoveryToggle(2), Qt::LeftButton);
        for (int i : {2, 0}) { // the tree with the focus is the current one
            run.window.discoveryBox()->widget(i)->setFocus();
            QCOMPARE(run.window.discoveryBox()->getCurrentIndex(), i);
            QCOMPARE(run.host.hasEndpoint(), i == 0);
        }
    }
    QVERIFY(server.stop());

    Run run(m_file);
    QCOMPARE(run.window.size(), QSize(1000, 700));
    QVERIFY(run.window.discoveryToggle(2)->isChecked());
    QVERIFY(!run.window.discoveryToggle(1)->isChecked());
    const QWidget& form = *run.window.pageTabs()->currentWidget();
    QCOMPARE(named<QLineEdit>(form, "lineEdit_UserName")->text(), "ann");
    const QvelDiscoverySetting kept = run.host.endpoint();
    QCOMPARE(kept.displayName() + kept.password(), name);
    QCOMPARE(kept.userTokenType(), OpcUa_UserTokenType_UserName);
    QCOMPARE(kept.messageSecurityMode(), OpcUa_MessageSecurityMode_Sign);
}

// The first start asks nothing, and says what to do next. Certificates are made and imported.
void tst_Harrier::firstStart()
{
    const ModalUser user;
    const QString key = m_file + ".data/certificates/private/harrier.pem";
    Run run(m_file);
    QVERIFY(named<QLabel>(run.window, "hint")->text().startsWith("Choose a server on the left"));
    Q_EMIT run.host.started();
    QVERIFY(run.window.currentView()->isExpanded(run.window.currentView()->model()->index(0, 0)));
    run.open("Local");
    QTRY_VERIFY(named<QLabel>(run.window, "hint")->text().contains("No server listens at"));
    QWidget& page = run.page("certificates");
    const QAbstractItemModel& list = *page.findChild<QTreeView*>()->model();
    QVERIFY(user.seen.isEmpty() && list.rowCount() == 0 && !QFile::exists(key));
    QTest::mouseClick(named<QPushButton>(page, "make"), Qt::LeftButton);
    QVERIFY(list.rowCount() == 1 && QFile::exists(key));
    QTRY_VERIFY(run.log().contains("Made the certificate"));

    const QString foreign = m_dir->filePath("foreign.der"); // as of a server
    QVERIFY(QFile::copy(run.host.certificates().certificate, foreign));
    QFile::remove(run.host.certificates().certificate);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(foreign), QUrl::fromLocalFile(m_file)});
    QDropEvent drop({}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QSignalSpy messages(&run.host, &Host::message);
    static_cast<QObject&>(page).event(&drop);
    QCOMPARE(list.rowCount(), 1);
    QVERIFY(messages[0][0].toString().startsWith("Certificates that are trusted now: 1;"));
    auto* tree = page.findChild<QTreeView*>();
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {},
                      tree->visualRect(list.index(0, 0)).center());
    QVERIFY(named<QLineEdit>(page, "subject")->text().startsWith("CN=harrier"));
}

void tst_Harrier::projects_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error"); // none: it is opened
    const auto json = [](const char* version, const char* rest) {
        return QByteArray("{\"format\": \"harrier project\",\n \"version\": ") + version + rest +
               "}";
    };
    QTest::newRow("good") << json("1",
                                  R"(, "later": {"x": [1]}, "servers": [{"url": "opc.tcp://h:1",
        "connected": false, "views": 7, "user": {"type": "UserName", "name": "ann"}}, {"name": "x"}])")
                          << "";
    QTest::newRow("damaged") << json("1", ", \"servers\": [") << "damaged at line 2";
    QTest::newRow("later") << json("2", "") << "made by a later harrier, which writes version 2";
    QTest::newRow("no list") << json("1", ", \"servers\": {}") << "no list";
    QTest::newRow("other JSON") << QByteArray("{}") << "is no project";
    QTest::newRow("not JSON") << QByteArray("\xff\0", 2) << "damaged at line 1";
}

// What cannot be opened is told and left alone; what is not known stays in the file.
void tst_Harrier::projects()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    const QString name = m_dir->filePath("plant.harrier");
    QFile file(name);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    ModalUser user;
    user.button = QMessageBox::Save;
    {
        Run run(m_file);
        if (!error.isEmpty())
            user.button = QMessageBox::Ok;
        QCOMPARE(run.window.project().open(name), error.isEmpty());
        if (!error.isEmpty()) {
            QTRY_COMPARE(user.seen.size(), 1);
            QVERIFY2(user.seen[0].contains(error), qPrintable(user.seen[0]));
            QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == content);
            return;
        }
        QCOMPARE(run.window.sessions().size(), 1);
        QCOMPARE(run.window.windowTitle(), "plant - harrier");
        QvelDiscoverySetting setting;
        setting.setEndpointUrl("opc.tcp://h:2");
        run.window.addSession(setting);
        // Beside the other one, by keys; and back, by the same.
        QPointer<SessionPage> page = run.window.sessions().value(0);
        run.window.serverTabs()->setCurrentWidget(page);
        QWidget* active = &run.window;
        for (const bool isOwn : {true, false, true}) {
            QTest::keyClick(active, Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
            active = isOwn ? page.data() : static_cast<QWidget*>(&run.window);
            active->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(active));
            QVERIFY(page->isVisible() && page->isWindow() == isOwn);
            QCOMPARE(run.window.serverTabs()->indexOf(page), isOwn ? -1 : 1);
            QCOMPARE(run.window.currentSession(), page);
        }
        run.window.project().saveForRecovery(); // as at the end of the desktop's session
    }
    Run run(m_file);
    QVERIFY(run.window.project().recover());
    QCOMPARE(run.window.sessions().size(), 2);
    SessionPage* own = run.window.sessions().value(0);
    QVERIFY(own->isWindow() && own->isVisible());
    QVERIFY(run.window.close() && user.seen.size() == 1 && !own->isVisible());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonDocument saved = QJsonDocument::fromJson(file.readAll());
    QCOMPARE(saved["later"]["x"][0].toInt(), 1);
    QCOMPARE(saved["servers"][0]["name"].toString(), "x");
    QCOMPARE(saved["servers"][1]["views"].toInt(), 7);
    QCOMPARE(saved["servers"][1]["user"]["name"].toString(), "ann");
    QCOMPARE(saved["servers"][2]["url"].toString(), "opc.tcp://h:2");
    QCOMPARE(saved["servers"][1]["window"].toBool(), true);
    run.window.show();
    QVERIFY(run.window.close() && user.seen.size() == 1); // saved
    own->show();
    QVERIFY(own->close());
    QTRY_COMPARE(run.window.serverTabs()->indexOf(own), 1);
}

// By the menu, with all that is open; and again at the next start.
void tst_Harrier::speaksGerman()
{
    Run first(m_file);
    for (const Page& page : pages())
        first.page(page.name);
    for (const int number : {1, 2, 3})
        first.galleryPage(number);
    QvelDiscoverySetting setting;
    setting.setEndpointUrl("opc.tcp://127.0.0.1:1");
    SessionPage* page = first.window.addSession(setting);
    type(page->findChild<QLineEdit*>("nodeId"), "i=22");
    const auto choose = [&](Qt::Key menu, Qt::Key language) {
        first.window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&first.window));
        QTest::keyClick(&first.window, menu, Qt::AltModifier);
        QTRY_VERIFY(QApplication::activePopupWidget());
        QTest::keyClick(QApplication::activePopupWidget(), language);
        QCoreApplication::processEvents();
    };
    const auto texts = [&] {
        return shownTexts(&first.window) + shownTexts(&first.window.gallery());
    };
    const auto difference = [&texts](const QStringList& expected) {
        QStringList others = texts();
        for (const QString& text : expected)
            if (!others.removeOne(text))
                others.append("missing: " + text);
        return others.join('\n').toUtf8();
    };
    choose(Qt::Key_G, Qt::Key_E);
    const QStringList english = texts();
    choose(Qt::Key_G, Qt::Key_D);
    const QStringList german = texts();
    QCOMPARE(page->docks()[0]->windowTitle() + first.window.serverTabs()->tabText(0),
             "AdressraumServer suchen");
    const QTabBar* tabs = first.window.serverTabs()->tabBar();
    QCOMPARE(tabs->tabButton(1, QTabBar::RightSide)->toolTip(),
             QCoreApplication::translate("CloseButton", "Close Tab"));
    QCOMPARE(tabs->findChild<QToolButton*>("ScrollLeftButton")->accessibleName(),
             QTabBar::tr("Scroll Left"));
    QCOMPARE(page->findChild<QLineEdit*>("nodeId")->text(), "i=22");
    QCOMPARE(QLocale().language(), QLocale::German);
    qsizetype objects = 0; // once all are there that a menu makes when it is first opened
    for (int i = 0; i < 100; ++i) {
        choose(Qt::Key_C, Qt::Key_E);
        QCOMPARE(difference(english), "");
        choose(Qt::Key_G, Qt::Key_D);
        QCOMPARE(difference(german), "");
        if (i == 10)
            objects = first.window.findChildren<QObject*>().size();
    }
    QCOMPARE(first.window.findChildren<QObject*>().size(), objects);

    QString error;
    QVERIFY(first.store.save(&error));
    Run second(m_file);
    QCOMPARE(second.window.serverTabs()->tabText(0), "Server suchen");
    Language::install({});
}

void tst_Harrier::editsValues()
{
    Run run(m_file);
    // What is typed is shown, and reaches the read-only copy only where it is valid.
    QWidget& page = run.galleryPage(1);
    const auto shown = [&](const char* title) {
        return named<QLineEdit>(page, title + QString(": value"))->text();
    };
    const auto lineOf = [](const QWidget& editor) {
        const auto lines = editor.findChildren<QLineEdit*>();
        return *std::find_if(lines.begin(), lines.end(), [](const QLineEdit* line) {
            return !qobject_cast<QSpinBox*>(line->parent());
        });
    };
    auto* editor = named<QWidget>(page, "Inline");
    type(lineOf(*editor), "Valve");
    QCOMPARE(shown("Inline") + shown("Read-only copy"), "ns=2;s=Valvens=2;s=Valve");
    QTest::keyClick(editor->findChild<QComboBox*>(), Qt::Key_Home);
    type(lineOf(*editor), "-1");
    QCOMPARE(shown("Inline") + '|' + shown("Read-only copy"), "|ns=2;i=0");
    // The dialog keeps what was accepted last.
    auto* dialog = page.findChild<QDialog*>();
    for (const auto& [text, key] : {std::pair("85", Qt::Key_Return), {"86", Qt::Key_Escape}}) {
        QTest::mouseClick(named<QPushButton>(page, "Dialog"), Qt::LeftButton);
        QVERIFY(QTest::qWaitForWindowActive(dialog));
        type(lineOf(*dialog), text);
        QTest::keyClick(dialog, key);
        QVERIFY(dialog->isHidden());
        QCOMPARE(shown("Dialog"), "i=85");
    }

    QWidget& values = run.galleryPage(2);
    const QString guid = "{12345678-1234-1234-1234-123456789abc}";
    type(lineOf(*named<QWidget>(values, "WidgetGuid, normal")), guid);
    QTRY_COMPARE(named<QLineEdit>(values, "WidgetGuid, no frame: value")->text(), guid);
    QVERIFY(named<QLineEdit>(values, "WidgetGuid, normal: last signals")
                ->text()
                .startsWith("valueChanged, guidChanged"));
    // A field notes a file's name before it is known whether it could be written.
    QSignalSpy messages(&run.host, &Host::message);
    run.host.editorCallback().writeSetting(&run.store, "QvelEditWidgetString.LastSaveFilename",
                                           m_dir->path());
    QCOMPARE(messages.value(0).value(0).toString(), m_dir->path() + " could not be written");

    QWidget& write = run.galleryPage(3);
    auto* examples = named<QListWidget>(write, "Examples");
    const QStringList parts = {"Water treatment", "{0, 1, 2", "{Pump, ",  "{{0, 1.5", "{0, 1, 2",
                               "{0, 1, 2",        " more}",   "{7, {0, ", "{7, "};
    QTest::keyClick(examples, Qt::Key_Home);
    for (const QString& part : parts) {
        const QString text = named<QPlainTextEdit>(write, "Full text")->toPlainText();
        QVERIFY2(text.contains(part), qPrintable(text));
        QTest::keyClick(examples, Qt::Key_Down);
    }
    QTest::keyClick(examples, Qt::Key_Home);
    type(named<QLineEdit>(write, "Value"), "Valve");
    QCOMPARE(named<QPlainTextEdit>(write, "Full text")->toPlainText(), "Valve");
}

// What a server sends is shown as plain text of bounded length.
void tst_Harrier::hostileServer()
{
    Run run(m_file);
    const QByteArray text = "<h1>A</h1>\n\x1b[2J\xff\xe2\x80\xae" + QByteArray(1000000, 'x');
    const QString start = QStringLiteral("<h1>A</h1> \ufffd[2J\ufffd\ufffdxx");
    QvelDiscoverySetting setting = fullSetting(0, QList<OpcUa_UserTokenType>(5000));
    auto& endpoint = const_cast<OpcUa_EndpointDescription&>(*setting.endpointDescription());
    for (OpcUa_String* field : {&endpoint.Server.ApplicationName.Text, &endpoint.EndpointUrl,
                                &endpoint.SecurityPolicyUri})
        checkMemory(UaString(text).copyTo(field));
    endpoint.SecurityMode = OpcUa_MessageSecurityMode(4711);
    checkMemory(OpcUa_ByteString_Assign(&endpoint.ServerCertificate, "\x30\x82\xff\xff", 4));
    run.host.setEndpoint(setting);
    const QWidget& page = run.page("endpoint");
    const auto field = [&](const char* name) { return named<QLineEdit>(page, name)->text(); };
    QVERIFY(field("server").startsWith(start) && field("server").size() <= 1000);
    QCOMPARE(field("securityMode") + field("subject"), "Unknown mode 4711");
    const auto* none = named<QLabel>(page, "noCertificate");
    QVERIFY(none->isVisible() && none->text() == "Not a certificate (bytes: 4)");
    const QString tokens = named<QPlainTextEdit>(page, "tokens")->toPlainText();
    QCOMPARE(tokens.section('\n', 99),
             QString("Anonymous \u2013 %1PolicyId \u2013 %1SecurityPolicyUri \u2013 "
                     "%1IssuedTokenType \u2013 %1IssuerEndpointUrl\nMore: 4900")
                 .arg("UserIdentityToken99."));

    const QJsonObject json = endpointToJson(endpoint); // all that is there
    const QJsonValue token = json["userIdentityTokens"][4999];
    QCOMPARE(token["issuedTokenType"].toString() + token["issuerEndpointUrl"].toString(),
             "UserIdentityToken4999.IssuedTokenTypeUserIdentityToken4999.IssuerEndpointUrl");

    // A flood of lines is told; failures have a mark, which no server can put on or keep off.
    for (int i = 0; i < 100000; ++i)
        run.host.log().append(QString::number(i));
    QTRY_VERIFY(run.log().endsWith("  99999"));
    QCOMPARE(run.log().count('\n'), 5000);
    QVERIFY(run.log().contains(QStringLiteral("\u26a0 Lines not shown: 95000")));
    QTest::keyClick(&run.window, Qt::Key_L, Qt::ControlModifier);
    for (const QByteArray& line :
         {QByteArray("Adding Server failed"), QByteArray("Discarding https://failed"),
          QByteArray("GetEndpoints failed"), text})
        run.host.log().append(QString::fromUtf8(line));
    QTRY_COMPARE(run.log().count('\n'), 3);
    QTest::keyClick(&run.window, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    const QString copied =
        QGuiApplication::clipboard()->text().remove(QRegularExpression("[0-9:.]{12}  "));
    QCOMPARE(copied.section("xx", 0, 0) + "xx",
             "Adding Server failed\nDiscarding https://failed\n" +
                 QStringLiteral("\u26a0 GetEndpoints failed\n") + start);
    QVERIFY(copied.size() < 1100);
}

// A file that is none is told of and left alone; a spoilt geometry does no harm.
void tst_Harrier::spoiltSettings()
{
    const QByteArray content = "this is not\na settings file\n";
    QFile file(m_file);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content));
    file.close();
    {
        Run run(m_file);
        QTRY_VERIFY(run.log().contains("is not a settings file"));
        run.store.setValue("Window/Page", 4711);
        run.store.setValue("Window/Geometry", QByteArray("\x01\xd9\xd0\xcbgarbage"));
        const MainWindow second(run.host);
        QVERIFY(second.pageTabs()->currentIndex() >= 0 && second.width() > 200);
    }
    QVERIFY(file.open(QIODevice::ReadOnly)); // also when it was replaced by another of its name
    QCOMPARE(file.readAll(), content);
}

// A failure stands above the views with its reason and what to do; the server is offered under the
// name that answered.
void tst_Harrier::failsToConnect()
{
    Run run(m_file);
    QvelDiscoverySetting setting;
    setting.setEndpointUrl("opc.tcp://127.0.0.1:1");
    SessionPage& page = *run.window.addSession(setting, {"opc.tcp://localhost:1"});
    page.connectToServer();
    const auto* text = named<QLabel>(page, "connectionText");
    auto* other = named<QPushButton>(page, "other");
    QTRY_VERIFY2(text->text() == "Connecting failed: BadConnectionRejected.\nCheck that the server "
                                 "runs, and its port.",
                 qPrintable(text->text()));
    QTRY_VERIFY(text->isVisible() && other->isVisible());
    QTest::mouseClick(other, Qt::LeftButton);
    QCOMPARE(page.setting().endpointUrl(), "opc.tcp://localhost:1");
    QTRY_VERIFY(text->text().startsWith("Connecting failed") && !other->isVisible());
}

// SIGTERM ends the session on the server, too, and the next start has it again.
void tst_Harrier::endsBySignal()
{
    PeerProcess server;
    const QString url =
        server.start(NODE, {PLANT, "--port", "0", "--until-eof"}).section(' ', 1, 1);
    const auto sessions = [&] { // that the server counts, with the one that asks
        QProcess process;
        process.start(HARRIER, {"--connect", url, "--policy", "None", "--read", "i=2277"});
        process.waitForFinished();
        return QJsonDocument::fromJson(process.readAllStandardOutput())["value"]["Body"].toInt();
    };
    for (QStringList arguments : {QStringList{"--open", url}, QStringList()}) {
        QProcess harrier;
        harrier.start(HARRIER, arguments << "--settings" << m_file);
        QTRY_COMPARE_WITH_TIMEOUT(sessions(), 2, 30000);
        harrier.terminate();
        QVERIFY(harrier.waitForFinished() && harrier.exitStatus() == QProcess::NormalExit);
        QCOMPARE(harrier.exitCode(), 0);
        QCOMPARE(sessions(), 1);
    }
}

void tst_Harrier::command_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("error");
    QTest::newRow("--render pages") << 0 << "";
    QTest::newRow("--render FILE") << 1 << "FILE";
    QTest::newRow("--discover opc.tcp://127.0.0.1:1 --settings kept.ini") << 1 << "failed";
    QTest::newRow("--discover") << 2 << "needs a URL";
    QTest::newRow("--discover http://plant") << 2 << "not an opc.tcp URL";
    QTest::newRow("--discover \x1b[2J") << 2 << "\ufffd[2J";
    QTest::newRow("--discovr opc.tcp://x") << 2 << "discovr";
    QTest::newRow("opc.tcp://x") << 2 << "no project file opc.tcp://x";
    QTest::newRow("--discover opc.tcp://x --open x") << 2 << "exclude";
    QTest::newRow("") << 2 << "no display";
    QTest::newRow("--discover opc.tcp://x --render x") << 2 << "exclude";
    for (const char* timeout : {"0", "soon", "99999999999"})
        QTest::addRow("--discover opc.tcp://x --timeout %s", timeout) << 2 << "--timeout";
}

// As users start it, without a display. The user's own settings are left alone, others are kept
// where told.
void tst_Harrier::command()
{
    QFETCH(int, code);
    QFETCH(QString, error);
    const QDir directory(m_dir->path());
    QVERIFY(QFile(directory.filePath("FILE")).open(QIODevice::WriteOnly));
    QProcess process;
    process.setEnvironment({"HOME=" + directory.path()});
    process.setWorkingDirectory(directory.path());
    process.start(HARRIER, QProcess::splitCommand(QString(QTest::currentDataTag())));
    QVERIFY(process.waitForFinished());
    const QString errors = QString::fromUtf8(process.readAllStandardError());
    QVERIFY2(process.exitCode() == code && errors.contains(error), qPrintable(errors));
    const QJsonDocument found = QJsonDocument::fromJson(process.readAllStandardOutput());
    const QString url = error == "failed" ? "opc.tcp://127.0.0.1:1" : "";
    QCOMPARE(found["nodes"][0]["url"].toString(), url);
    const QSettings kept(directory.filePath("kept.ini"), QSettings::IniFormat);
    QCOMPARE(kept.value("Discovery.OpcUa/DiscoveryServer0").toString(), url);
    QCOMPARE(directory.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             url.isEmpty() ? QStringList("FILE") + QStringList("pages").mid(code ? 1 : 0)
                           : QStringList({"FILE", "kept.ini"}));
    for (const char* name : {"endpoint", "writevalue", "discovery-comae", "toolbox"})
        QCOMPARE(QImage(directory.filePath(QString("pages/%1.png").arg(name))).isNull(), code > 0);
}

QTEST_MAIN(tst_Harrier)
#include "tst_harrier.moc"
