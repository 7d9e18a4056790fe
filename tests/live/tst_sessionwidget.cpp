// How a session stands, and whether its server is trusted, as a user sees and answers it.

#include "session/sessionuser.h"
#include "support/warnings.h"

#include <Kestrel/OpcUaStatusCodes>
#include <Kestrel/QvelCertificateView>
#include <Kestrel/QvelLanguage>
#include <Kestrel/QvelSessionWidget>
#include <Kestrel/QvelTrustDialog>

#include <QtWidgets/QtWidgets>

class tst_SessionWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_url = m_server.start(NODE, {PEERS "/sessionserver.mjs"});
        QVERIFY(!m_url.isEmpty());
    }
    void init() { failOnWarnings(); }
    void trust();
    void nobodyWaits();
    void states();

private:
    PeerProcess m_server;
    QString m_url;
};

// Opens the dialog as soon as the session asks.
static std::unique_ptr<QvelTrustDialog> asked(QvelSession& session,
                                              const QvelDiscoverySetting& setting)
{
    std::unique_ptr<QvelTrustDialog> dialog;
    QObject context;
    QObject::connect(&session, &QvelSession::certificateQuestion, &context,
                     [&](const QvelCertificateQuestion& question) {
                         dialog = std::make_unique<QvelTrustDialog>(question);
                         dialog->setSession(&session);
                         dialog->show();
                     });
    session.connectToServer(setting);
    return QTest::qWaitFor([&] { return dialog != nullptr; }, 20000) ? std::move(dialog) : nullptr;
}

void tst_SessionWidget::trust()
{
    const std::tuple<const char*, Qt::Key, int> rows[] = {{"", Qt::Key_Return, 0}, // at once
                                                          {"", Qt::Key_Escape, 0},
                                                          {"once", {}, 1},
                                                          {"always", {}, 2}};
    for (const auto& [button, key, answer] : rows) {
        const Case each(button);
        const SessionUser user;
        QvelSession session(user.options);
        const auto dialog = asked(session, settingOf(m_url, "Basic256Sha256"));
        QVERIFY(dialog);
        const auto shown = [&](const char* name) {
            const auto* line = dialog->findChild<QLineEdit*>(name);
            return line ? line->text() : dialog->findChild<QLabel*>(name)->text();
        };
        QVERIFY(shown("heading").contains(m_url));
        QVERIFY2(shown("findings").contains("trusted yet"), qPrintable(shown("findings")));
        QCOMPARE(shown("applicationUri"), "urn:localhost:kestrel:Sessionserver");
        QVERIFY(shown("key").endsWith("048 bits") && shown("signature").startsWith("sha256With"));
        QCOMPARE(shown("sha1").size() + shown("sha256").size(), 20 * 3 - 1 + 32 * 3 - 1);
        QVERIFY(shown("issuer").endsWith("(itself)") && shown("validity").endsWith("UTC"));

        QSignalSpy answered(dialog.get(), &QvelTrustDialog::answered);
        if (!*button)
            QTest::keyClick(dialog->focusWidget(), key);
        else
            QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
        QVERIFY(dialog->isHidden() && answered.size() == 1);
        dialog->findChild<QPushButton*>("copy")->click();
        QVERIFY(QGuiApplication::clipboard()->text().contains(shown("sha256")));
        QCOMPARE(int(dialog->answer()), answer);
        const auto end = answer > 0 ? QvelSession::Connected : QvelSession::Disconnected;
        QTRY_VERIFY_WITH_TIMEOUT(
            session.state() == end && (answer || !session.lastError().isNull()), 20000);
        QCOMPARE(QDir(user.options.trust.trusted).entryList(QDir::Files).size(),
                 answer == 2 ? 1 : 0);
    }
}

// The question is over before it is answered.
void tst_SessionWidget::nobodyWaits()
{
    SessionUser user;
    for (const bool isDeleted : {false, true}) {
        auto session = std::make_unique<QvelSession>(user.options);
        const auto dialog = asked(*session, settingOf(m_url, "Basic256Sha256"));
        QVERIFY(dialog);
        QSignalSpy answered(dialog.get(), &QvelTrustDialog::answered);
        if (isDeleted)
            session.reset();
        else
            session->disconnectFromServer();
        QTRY_VERIFY(dialog->isHidden());
        QCOMPARE(int(dialog->answer()) + int(dialog->result()) + int(answered.size()), 0);
    }
    const QvelTrustDialog dialog({UaPkiCertificate(), {}});
    QVERIFY(!dialog.findChild<QPushButton*>("once")->isEnabled());
    QVERIFY(!dialog.findChild<QPushButton*>("always")->isEnabled());
}

void tst_SessionWidget::states()
{
    QvelSession session;
    QvelSessionWidget widget;
    widget.show();
    const auto label = [&](const char* name) { return widget.findChild<QLabel*>(name)->text(); };
    const auto line = [&](const char* name) { return widget.findChild<QLineEdit*>(name)->text(); };
    const auto press = [&](const char* name) {
        QTest::mouseClick(widget.findChild<QPushButton*>(name), Qt::LeftButton);
    };
    widget.setSession(&session);
    session.connectToServer(settingOf("opc.tcp://127.0.0.1:1"));
    QTRY_VERIFY(label("error").contains("failed: BadConnectionRejected"));
    QVERIFY(label("error").endsWith("\nCheck that the server runs, and its port."));
    QVERIFY(qvelInstallLanguage(QLocale::German));
    QTRY_COMPARE(label("error"), "Verbindungsaufbau ist fehlgeschlagen: BadConnectionRejected\n"
                                 "Prüfen Sie, ob der Server läuft, und seinen Port.");
    QVERIFY(qvelInstallLanguage(QLocale::English));

    QvelDiscoverySetting good = settingOf(m_url);
    good.setServerName("<b>Pump</b>\n" + QString(1 << 20, 'x'));
    session.connectToServer(good);
    QTRY_COMPARE(label("state"), "Connected");
    QVERIFY(label("error").isEmpty() && line("server").startsWith(u"<b>Pump</b>\ufffdxx"));
    QCOMPARE(line("url") + ' ' + line("security") + ' ' + line("user"),
             m_url + " None - None Anonymous");
    QTRY_VERIFY(line("requests").toInt() > 2 && line("lastAnswer").endsWith(" s ago"));
    press("disconnect");
    QTRY_COMPARE(label("state"), "Disconnected");
    press("reconnect");
    QTRY_COMPARE(label("state"), "Connected");
    press("disconnect");
    QTRY_COMPARE(label("state"), "Disconnected");
    QSignalSpy wanted(&widget, &QvelSessionWidget::connectRequested); // the host does it
    press("reconnect");
    QCOMPARE(wanted.size(), 1);
}

QTEST_MAIN(tst_SessionWidget)
#include "tst_sessionwidget.moc"
