// The first hour of somebody who has harrier and a plant: by mouse and keys, on a display.

#include "language.h"
#include "run.h"
#include "support/modaluser.h"
#include "support/peerprocess.h"
#include "support/warnings.h"

#include <Kestrel/QvelAddressSpaceModel>
#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelAttributesModel>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelCallWidget>
#include <Kestrel/QvelDataViewModel>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelTrendWidget>
#include <Kestrel/QvelTrustDialog>

#include <QtNetwork/QTcpServer>
#include <QtTest/QSignalSpy>

namespace {

// What the user sees of a server.
struct Server
{
    explicit Server(SessionPage& page)
        : page(page), space(*page.findChild<QvelAddressSpaceWidget*>()),
          attributes(*page.findChild<QvelAttributesWidget*>()),
          call(*page.findChild<QvelCallWidget*>()), data(*page.findChild<QvelDataViewWidget*>()),
          trend(*page.findChild<QvelTrendWidget*>())
    {
    }
    bool isConnected() const { return page.session()->state() == QvelSession::Connected; }
    // Types a path into the line of the tree, until its node is the current one.
    void goTo(const QString& path) const
    {
        space.view()->setFocus();
        QTest::keyClick(space.view(), Qt::Key_F, Qt::ControlModifier);
        auto* line = qobject_cast<QLineEdit*>(QApplication::focusWidget());
        if (!line)
            qFatal("no line to go to %s", qPrintable(path));
        type(line, path);
        QTest::keyClick(line, Qt::Key_Return);
        const QString name = path.section(':', -1);
        if (!QTest::qWaitFor([&] { return space.view()->currentIndex().data().toString() == name; },
                             20000))
            qFatal("%s is not found", qPrintable(path));
        space.view()->setFocus();
    }
    QString value() const // of the first row of the data view
    {
        return data.model()->index(0, QvelDataViewModel::Value).data().toString();
    }
    // Whether that value goes on to change.
    bool isMoving() const
    {
        const QString before = value();
        return QTest::qWaitFor([&] { return value() != before; }, 20000);
    }
    QModelIndex attribute(const QString& name, int column) const
    {
        const QAbstractItemModel& model = *attributes.model();
        const QModelIndexList found = model.match(model.index(0, 0), Qt::DisplayRole, name);
        return found.isEmpty() ? QModelIndex() : found[0].siblingAtColumn(column);
    }

    SessionPage& page;
    QvelAddressSpaceWidget& space;
    QvelAttributesWidget& attributes;
    QvelCallWidget& call;
    QvelDataViewWidget& data;
    QvelTrendWidget& trend;
};

// A port from which the plant's four are free.
int freePort()
{
    for (int port = 24840; port < 60000; port += 20) {
        bool isFree = true;
        for (int offset : {0, 10, 11, 12})
            isFree = isFree && QTcpServer().listen(QHostAddress::LocalHost, quint16(port + offset));
        if (isFree)
            return port;
    }
    return 0;
}

} // namespace

class tst_FirstHour : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstHour();
};

void tst_FirstHour::firstHour()
{
    failOnWarnings();
    const QTemporaryDir folder;
    const QString settings = folder.filePath("harrier.ini");
    const QString project = folder.filePath("plant.harrier");
    const int port = freePort();
    const QStringList plant = {PLANT,   "--until-eof",         "--port", QString::number(port),
                               "--pki", folder.filePath("pki")};
    auto server = std::make_unique<PeerProcess>();
    const QString url = server->start(NODE, plant).section(' ', 0, 0);
    QVERIFY(!url.isEmpty());
    ModalUser user([&](QDialog* dialog) {
        if (qobject_cast<QvelTrustDialog*>(dialog)) {
            const QString text = named<QLabel>(*dialog->parentWidget(), "connectionText")->text();
            QVERIFY2(text.endsWith("waiting for your answer"), qPrintable(text));
            QTest::mouseClick(dialog->findChild<QPushButton*>("always"), Qt::LeftButton);
        } else if (auto* password = dialog->findChild<QLineEdit*>("password")) {
            type(dialog->findChild<QLineEdit*>("userName"), "operator");
            type(password, "kettle");
            QTest::keyClick(password, Qt::Key_Return);
        } else if (auto* file = dialog->findChild<QLineEdit*>("fileNameEdit")) {
            file->setText(project);
            QTimer::singleShot(0, dialog, [file] { QTest::keyClick(file, Qt::Key_Return); });
        } else {
            type(dialog->findChild<QLineEdit*>(), url);
            QTest::keyClick(dialog, Qt::Key_Return);
        }
    });
    {
        Run run(settings);
        Q_EMIT run.host.started();
        // Find.
        run.open("< Double", {}, true);
        run.open(url);
        const QModelIndex boiler = run.open("Boiler house");
        run.open("Basic256Sha256 - Sign & Encrypt", boiler);
        // Log in, trust.
        QWidget& form = run.page("connection");
        QTest::mouseClick(named<QWidget>(form, "radioButton_Username"), Qt::LeftButton, {}, {8, 8});
        type(named<QLineEdit>(form, "lineEdit_UserName"), "operator");
        QTest::mouseClick(named<QPushButton>(form, "connect"), Qt::LeftButton);
        QVERIFY(run.window.currentSession());
        const Server boilers(*run.window.currentSession());
        // What is gone to while Objects are on their way is not opened in their stead.
        const auto detour =
            connect(boilers.page.session(), &QvelSession::stateChanged, &boilers.space, [&] {
                if (boilers.isConnected())
                    boilers.space.goToText("/Objects/1:Boilers");
            });
        QTRY_VERIFY_WITH_TIMEOUT(boilers.isConnected(), 30000);
        const auto current = [&] { return boilers.space.view()->currentIndex(); };
        QTRY_COMPARE(current().data().toString(), "Boilers");
        QVERIFY(!boilers.space.view()->isExpanded(current()));
        disconnect(detour);
        QVERIFY(user.seen.contains("QvelTrustDialog|Trust the Server?"));
        // Browse.
        boilers.goTo("/Objects/1:Boilers/1:Boiler 1/1:Temperature");
        QTRY_COMPARE(boilers.attribute("BrowseName", 1).data().toString(), "1:Temperature");
        // Watch, trend: all that is selected.
        QTest::keyClick(boilers.space.view(), Qt::Key_Down, Qt::ShiftModifier);
        QTest::keyClick(boilers.space.view(), Qt::Key_Return);
        QTRY_COMPARE(boilers.data.model()->rowCount(), 2);
        QVERIFY(boilers.isMoving());
        QTest::keyClick(boilers.space.view(), Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(boilers.trend.series().size(), 2);
        const int series = boilers.trend.series().value(0);
        QTRY_VERIFY_WITH_TIMEOUT(boilers.trend.pointCount(series) > 3, 20000);
        // Log in anew, which may take no more than a moment.
        QSignalSpy states(boilers.page.session(), &QvelSession::stateChanged);
        QTest::keyClick(&run.window, Qt::Key_S, Qt::AltModifier);
        QTRY_VERIFY(QApplication::activePopupWidget());
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_L);
        QTRY_VERIFY_WITH_TIMEOUT(!states.isEmpty() && boilers.isConnected(), 30000);
        // Write.
        boilers.goTo("/Objects/1:Boilers/1:Boiler 1/1:TemperatureSetPoint");
        QTRY_VERIFY(boilers.attribute("Value", 1).flags() & Qt::ItemIsEditable);
        QTreeView& view = *boilers.attributes.view();
        const QRect cell = view.visualRect(boilers.attribute("Value", 1));
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, cell.center());
        QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, cell.center());
        auto* editor = view.viewport()->findChild<QLineEdit*>();
        QVERIFY(editor);
        type(editor, "101.5");
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_VERIFY(boilers.attribute("Value", 3).data().toString().contains("Good"));
        QTRY_VERIFY(boilers.attribute("Value", 1).data().toString().startsWith("101.5"));
        // Call.
        boilers.goTo("/Objects/1:Boilers/1:Boiler 1/1:Ramp");
        QTest::keyClick(boilers.space.view(), Qt::Key_Return);
        QTRY_COMPARE(boilers.call.inputModel()->rowCount(), 2);
        auto* inputs = boilers.call.findChild<QAbstractItemView*>();
        inputs->setFocus();
        inputs->setCurrentIndex(inputs->model()->index(0, 2));
        for (const char* value : {"111.5", "10"}) {
            QTest::keyClick(inputs, Qt::Key_F2);
            auto* argument = inputs->viewport()->findChild<QLineEdit*>();
            QVERIFY(argument);
            type(argument, value);
            QTest::keyClick(argument, Qt::Key_Return);
            QTRY_VERIFY(!inputs->viewport()->findChild<QLineEdit*>());
            QTest::keyClick(inputs, Qt::Key_Down);
        }
        for (auto* button : boilers.call.findChildren<QPushButton*>())
            if (button->text() == "C&all")
                QTest::mouseClick(button, Qt::LeftButton);
        QTRY_COMPARE(boilers.call.outputModel()->rowCount(), 1);
        // Lose the server, get it back.
        const auto* bar = named<QLabel>(boilers.page, "connectionText");
        QString german; // of what is said while it is tried
        connect(boilers.page.session(), &QvelSession::stateChanged, bar, [&](QvelSession::State s) {
            if (s != QvelSession::LookingUp || !german.isEmpty())
                return;
            for (const char* language : {"de", "en"}) {
                Language::install(language);
                QCoreApplication::sendPostedEvents(nullptr, QEvent::LanguageChange);
                german += bar->text();
            }
        });
        server->kill();
        QTRY_VERIFY_WITH_TIMEOUT(bar->isVisible() && bar->text().contains("lost"), 30000);
        QTRY_VERIFY_WITH_TIMEOUT(german.contains("abgebrochen"), 30000);
        server = std::make_unique<PeerProcess>();
        QVERIFY(!server->start(NODE, plant).isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(boilers.isConnected() && !bar->isVisible(), 60000);
        QVERIFY(boilers.isMoving());
        // Save, close.
        QTest::keyClick(&run.window, Qt::Key_S, Qt::ControlModifier);
        QTRY_VERIFY(QFile::exists(project));
        QVERIFY(run.window.close());
        run.window.closeSessions();
        QVERIFY(!boilers.isConnected());
    }
    const qsizetype questions = user.seen.filter("QvelTrustDialog").size();
    QFile file(project);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    QVERIFY2(content.contains("operator") && !content.contains("kettle"), content);
    // Open, all there.
    Run run(settings);
    QTest::keyClick(&run.window, Qt::Key_O, Qt::ControlModifier);
    QTRY_VERIFY(run.window.currentSession());
    const Server boilers(*run.window.currentSession());
    QTRY_VERIFY_WITH_TIMEOUT(boilers.isConnected(), 30000);
    QCOMPARE(user.seen.filter("QvelTrustDialog").size(), questions);
    QCOMPARE(boilers.data.model()->rowCount(), 2);
    const auto* tree = boilers.space.view();
    QTRY_COMPARE(tree->currentIndex().data().toString(), "Objects");
    QVERIFY(tree->isExpanded(tree->currentIndex()));
    QVERIFY(boilers.isMoving());
    QTRY_VERIFY(boilers.trend.pointCount(boilers.trend.series().value(0)) > 3);
    QVERIFY(run.window.close());
    run.window.closeSessions();
    QVERIFY(server->stop());
}

QTEST_MAIN(tst_FirstHour)
#include "tst_firsthour.moc"
