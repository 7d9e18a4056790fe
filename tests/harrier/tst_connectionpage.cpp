#include "connectionpage.h"
#include "discovery/endpoints.h"
#include "host.h"
#include "mainwindow.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNode>
#include <Kestrel/QvelEndpointSettingsWidget>

#include <QtTest/QtTest>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabWidget>

class ConnectionPageTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    // From the tree to the form, and back to the tree.
    void usedConnectionIsFiled()
    {
        SettingsStore store;
        {
            Host host(store, 100);
            MainWindow window(host);
            window.show();
            auto* page = window.findChild<ConnectionPage*>();
            window.pageTabs()->setCurrentWidget(page);
            auto* form = page->findChild<QvelEndpointSettingsWidget*>();
            auto* use = page->findChild<QPushButton*>("useConnection");
            QVERIFY(!use->isEnabled());

            host.setEndpoint(
                endpoint("Basic256Sha256", OpcUa_MessageSecurityMode_Sign,
                         {OpcUa_UserTokenType_UserName, OpcUa_UserTokenType_Certificate}));
            QCOMPARE(form->endpointUrl(), "opc.tcp://plant:4840");
            QCOMPARE(form->securityPolicy().section('#', 1), "Basic256Sha256");
            QCOMPARE(form->securityMode(), OpcUa_MessageSecurityMode_Sign);
            QCOMPARE(form->sessionName(), "morning shift");
            QCOMPARE(form->userTokenType(), OpcUa_UserTokenType_UserName);
            QVERIFY(!form->findChild<QWidget*>("radioButton_Anonymous")->isEnabled());

            // A node without an endpoint and the focus in the tree take nothing from the user.
            QTest::keyClicks(form->findChild<QLineEdit*>("lineEdit_UserName"), "ann");
            host.setEndpoint(QvelDiscoverySetting(host.endpoint()));
            host.setEndpoint({});
            QCOMPARE(form->userName(), "ann");
            QTest::mouseClick(form->findChild<QWidget*>("checkBox_StorePassword"), Qt::LeftButton,
                              {}, {8, 8});
            QTest::keyClicks(form->findChild<QLineEdit*>("lineEdit_Password"), "secret");
            form->setSecurityMode(OpcUa_MessageSecurityMode_SignAndEncrypt);
            QTest::mouseClick(use, Qt::LeftButton);
            QCOMPARE(window.currentView()->noOfRecentNodes(), 1);
            QVERIFY(host.endpoint() == page->connection());
            QCOMPARE(host.endpoint().displayName(), "Pump - Basic256Sha256 - Sign & Encrypt");
            QCOMPARE(host.endpoint().password(), "secret");
            QCOMPARE(form->password(), "secret");

            form->setStorePassword(false); // now it is current: filed in place
            QTest::mouseClick(use, Qt::LeftButton);
            QCOMPARE(window.currentView()->noOfRecentNodes(), 1);
            QCOMPARE(host.endpoint().password(), "");
        }
        Host host(store, 100);
        MainWindow window(host);
        QCOMPARE(host.endpoint().userName(), "ann");
        QCOMPARE(host.endpoint().userTokenType(), OpcUa_UserTokenType_UserName);
        QCOMPARE(host.endpoint().supportedUserTokenTypes().size(), 2);
        QCOMPARE(window.findChild<QvelEndpointSettingsWidget*>()->userName(), "ann");
    }

    void policies()
    {
        SettingsStore store;
        Host host(store, 100);
        const ConnectionPage page(host);
        auto* form = page.findChild<QvelEndpointSettingsWidget*>();
        auto* combo = form->findChild<QComboBox*>("comboBox_SecurityPolicy");
        QCOMPARE(combo->count(), 12);
        for (int i = 0; i < combo->count(); ++i) {
            const bool old =
                combo->itemText(i) == "Basic256" || combo->itemText(i) == "Basic128Rsa15";
            QCOMPARE(combo->itemData(i, Qt::ToolTipRole).toString().contains("withdrawn"), old);
            QCOMPARE(i >= 10, old); // they come last
        }
        // A policy of tomorrow is offered for the server that wants it; an endless one is not.
        const auto mode = OpcUa_MessageSecurityMode_SignAndEncrypt;
        host.setEndpoint(endpoint("Tomorrow", mode, {}));
        QCOMPARE(combo->currentText(), "Tomorrow");
        QVERIFY(combo->itemData(12, Qt::ToolTipRole).toString().contains("unknown"));
        host.setEndpoint(endpoint("None", OpcUa_MessageSecurityMode_None, {}));
        QCOMPARE(combo->count(), 12);
        QSignalSpy message(&host, &Host::message);
        host.setEndpoint(endpoint(QByteArray(5000, 'x'), mode, {}));
        QCOMPARE(combo->count(), 12);
        QCOMPARE(combo->currentText(), "None");
        QCOMPARE(message.size(), 1);
    }

    void connectionByHand()
    {
        SettingsStore store;
        Host host(store, 100);
        ConnectionPage page(host);
        auto* use = page.findChild<QPushButton*>("useConnection");
        QSignalSpy used(&host, &Host::useConnectionRequested);
        auto* url = page.findChild<QLineEdit*>("lineEdit_EndpointUrl");
        QTest::keyClicks(url, " ");
        QVERIFY(!use->isEnabled());
        QTest::keyClicks(url, "opc.tcp://a:1");
        QTest::mouseClick(use, Qt::LeftButton);
        QCOMPARE(used.size(), 1);
        const auto connection = used.at(0).at(0).value<QvelDiscoverySetting>();
        QCOMPARE(connection.endpointUrl(), "opc.tcp://a:1");
        QCOMPARE(connection.displayName(), "opc.tcp://a:1 - None - None");
    }

private:
    static QvelDiscoverySetting endpoint(const QByteArray& policy, OpcUa_MessageSecurityMode mode,
                                         const QList<OpcUa_UserTokenType>& tokens)
    {
        Endpoint description("Pump", "opc.tcp://plant:4840", policy, mode);
        setTokens(description.value, tokens);
        QvelDiscoverySetting setting;
        setting.setEndpointDescription(&description.value);
        setting.setSessionName("morning shift");
        return setting;
    }
};

QTEST_MAIN(ConnectionPageTest)
#include "tst_connectionpage.moc"
