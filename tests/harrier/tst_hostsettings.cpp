#include "callbacks.h"
#include "settingsstore.h"
#include "support/warnings.h"

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
    // Written through one run's interface, read by the next run's.
    void values()
    {
        QFETCH(QVariant, value);
        for (bool writes : {true, false}) {
            SettingsStore store(m_file);
            EditorCallback editors(store, "Editors");
            QStringList log;
            DiscoveryCallback callback(store, "Discovery", [&](auto& text) { log += text; });
            QvelDiscoveryCBInterface& discovery = callback;
            void* editorsHandle = editors.openSettings();
            void* discoveryHandle = discovery.openSettings(); // both open at once
            if (writes) {
                editors.writeSetting(editorsHandle, "Key", value);
                discovery.writeSetting(discoveryHandle, "Key", "another");
            }
            QCOMPARE(editors.readSetting(editorsHandle, "Key").toByteArray(), value.toByteArray());
            QCOMPARE(discovery.readSetting(discoveryHandle, "Key").toString(), "another");
            QVERIFY(!editors.readSetting(editorsHandle, "Other").isValid());
            editors.closeSettings(editorsHandle);
            discovery.closeSettings(discoveryHandle);
            discovery.logMessage("Adding Url opc.tcp://x");
            QCOMPARE(log, QStringList("Adding Url opc.tcp://x"));
            QString error;
            QVERIFY2(store.save(&error), qPrintable(error));
        }
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
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_file;
};

QTEST_GUILESS_MAIN(HostSettingsTest)
#include "tst_hostsettings.moc"
