#include "callbacks.h"
#include "settingsstore.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoverySetting>

#include <QtTest/QtTest>

class HostSettingsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_dir = std::make_unique<QTemporaryDir>();
        m_file = m_dir->filePath("harrier.ini");
    }

    void values_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::newRow("text") << QVariant(QStringLiteral("opc.tcp://h\u00e4user:4840/a=b;c,\"d\""));
        QTest::newRow("empty") << QVariant(QString());
        QTest::newRow("at") << QVariant("@Invalid()");
        QTest::newRow("line breaks") << QVariant("a\r\nb");
        QTest::newRow("number") << QVariant(255);
        QTest::newRow("bytes") << QVariant(QByteArray("\x30\x00\xff\x0a", 4));
    }
    // Written through either interface, read by the next run.
    void values()
    {
        QFETCH(QVariant, value);
        QVERIFY(writeAndRead<EditorCallback>(value) == value.toString());
        SettingsStore store(m_file);
        DiscoveryCallback callback(store, "Discovery", [](const QString&) {});
        QvelDiscoveryCBInterface& cb = callback;
        void* handle = cb.openSettings();
        cb.writeSetting(handle, "Key", value);
        cb.closeSettings(handle);
        QString error;
        QVERIFY2(store.save(&error), qPrintable(error));
        SettingsStore later(m_file);
        DiscoveryCallback again(later, "Discovery", [](const QString&) {});
        QCOMPARE(again.readSetting(again.openSettings(), "Key").toByteArray(), value.toByteArray());
    }

    void groupsStayApart()
    {
        SettingsStore store(m_file);
        EditorCallback a(store, "A");
        EditorCallback b(store, "B");
        void* handleA = a.openSettings();
        void* handleB = b.openSettings(); // both open at once
        a.writeSetting(handleA, "Key", 1);
        b.writeSetting(handleB, "Key", 2);
        QCOMPARE(a.readSetting(handleA, "Key").toInt(), 1);
        QVERIFY(!a.readSetting(handleA, "Other").isValid());
        a.closeSettings(handleA);
        QCOMPARE(b.readSetting(handleB, "Key").toInt(), 2);
        b.closeSettings(handleB);
    }

    void recordRoundTrip()
    {
        QvelDiscoverySetting record;
        record.setServerName("Pump / <A>");
        record.setEndpointUrl("opc.tcp://plant:4840/x?y=z");
        record.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#None");
        record.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
        record.setDisplayName("Pump - None - None");
        {
            SettingsStore store(m_file);
            DiscoveryCallback callback(store, "Discovery", [](const QString&) {});
            record.storeSettings(&callback, callback.openSettings(), "RecentServer0.");
            QString error;
            QVERIFY(store.save(&error));
        }
        SettingsStore store(m_file);
        DiscoveryCallback callback(store, "Discovery", [](const QString&) {});
        QVERIFY(QvelDiscoverySetting::fromSetting(&callback, callback.openSettings(),
                                                  "RecentServer0.") == record);
    }

    void logGoesToTheHost()
    {
        SettingsStore store;
        QStringList lines;
        DiscoveryCallback callback(store, "Discovery", [&](const QString& text) { lines += text; });
        QvelDiscoveryCBInterface& cb = callback;
        cb.logMessage("Adding Url opc.tcp://x");
        QCOMPARE(lines, QStringList("Adding Url opc.tcp://x"));
    }

    void brokenFileIsLeftAlone()
    {
        const QByteArray content = "this is not\na settings file\n";
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        {
            SettingsStore store(m_file);
            QVERIFY(store.error().contains(m_file));
            store.setValue("A/Key", 1);
            QCOMPARE(store.value("A/Key").toInt(), 1); // for this run
            QString error;
            QVERIFY(!store.save(&error));
            QCOMPARE(error, store.error());
        }
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), content);
    }

    void impossibleFileIsReported()
    {
        QFile file(m_dir->filePath("plain"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        SettingsStore store(file.fileName() + "/harrier.ini"); // below a plain file
        store.setValue("Key", 1);
        QString error;
        QVERIFY(!store.save(&error));
        QVERIFY(error.contains("harrier.ini"));
    }

private:
    template <class Callback>
    QString writeAndRead(const QVariant& value)
    {
        {
            SettingsStore store(m_file);
            Callback callback(store, "Editors");
            callback.writeSetting(callback.openSettings(), "Key", value);
            QString error;
            if (!store.save(&error))
                return error;
        }
        SettingsStore store(m_file);
        Callback callback(store, "Editors");
        return callback.readSetting(callback.openSettings(), "Key").toString();
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_file;
};

QTEST_GUILESS_MAIN(HostSettingsTest)
#include "tst_hostsettings.moc"
