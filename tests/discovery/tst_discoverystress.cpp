#include "discoveryserver.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryWidget>

#include <QtNetwork/QTcpServer>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>

#include <random>

/// Views that come and go while jobs run. It is meant for the builds with sanitizers, too.
class DiscoveryStressTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void survivesUsers();
};

static DiscoveryServer::Servers pumps(int count)
{
    return [count](auto& servers) {
        for (int i = 0; i < count; ++i)
            addServer(servers, "Pump " + QByteArray::number(i), OpcUa_ApplicationType_Server,
                      {"opc.tcp://127.0.0.1:1"});
    };
}

void DiscoveryStressTest::survivesUsers()
{
    constexpr unsigned seed = 20240611;
    qInfo("seed %u", seed);
    std::mt19937 random(seed);
    const auto below = [&random](int bound) {
        return std::uniform_int_distribution<int>(0, bound - 1)(random);
    };

    failOnWarnings();
    const DiscoveryServer quick(pumps(3));
    const DiscoveryServer large(pumps(300));
    const DiscoveryServer plain(
        {}, [](auto& endpoints) { addEndpoint(endpoints, "Plain", "opc.tcp://127.0.0.1:1"); });
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    const QStringList urls = {quick.url(), large.url(), plain.url(), "opc.tcp://127.0.0.1:1",
                              QString("opc.tcp://127.0.0.1:%1").arg(silent.serverPort())};

    MemorySettings settings;
    settings.values.insert("LocalDiscoveryUrl", quick.url());
    int deliveries = 0;
    for (int round = 0; round < 200; ++round) {
        settings.values.insert("NoOfDiscoveryServers", 0);
        QvelDiscoveryWidget view(QvelDiscoveryWidget::OpcUa, &settings, 20000, "session");
        view.show();
        auto* model = static_cast<QvelDiscoveryModel*>(view.model());
        connect(model, &QAbstractItemModel::rowsInserted, this, [&] { ++deliveries; });
        const QModelIndex custom = model->index(2, 0);
        for (int step = below(30); step > 0; --step) {
            const int rows = model->rowCount(custom);
            const QModelIndex node = model->index(below(rows), 0, custom);
            switch (below(6)) {
            case 0:
                model->addRemoteServer(urls[below(int(urls.size()))]);
                break;
            case 1:
                view.expand(node);
                break;
            case 2: // rebrowse
                view.setCurrentIndex(node);
                QMetaObject::invokeMethod(&view, "sltRebrowse");
                break;
            case 3:
                view.setCurrentIndex(node);
                QTest::keyClick(&view, Qt::Key_Delete);
                break;
            case 4: // a server that a job has found
                if (const int servers = model->rowCount(node))
                    view.expand(model->index(below(servers), 0, node));
                break;
            case 5:
                QTest::qWait(below(15));
                break;
            }
        }
        if (below(4) == 0)
            QThread::msleep(below(20)); // results wait for delivery
    }
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(deliveries > 200); // or nothing was tried
}

QTEST_MAIN(DiscoveryStressTest)
#include "tst_discoverystress.moc"
