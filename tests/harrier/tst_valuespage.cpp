#include "host.h"
#include "support/warnings.h"
#include "valuespage.h"

#include <Kestrel/QvelEditWidgetString>
#include <Kestrel/QvelWidgetGuid>

#include <QtTest/QtTest>
#include <QtWidgets/QLineEdit>

class ValuesPageTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void siblingsFollowAndSignalsAreShown()
    {
        SettingsStore store;
        Host host(store, 1000);
        ValuesPage page(host);
        page.show();
        const auto editors = page.findChildren<QvelWidgetGuid*>();
        QCOMPARE(editors.size(), 3);
        auto* line = editors[0]->findChild<QLineEdit*>();
        line->setFocus();
        line->home(false);
        QTest::keyClicks(line, "12345678-1234-1234-1234-123456789abc");
        const UaGuid typed = editors[0]->guid(nullptr);
        QCOMPARE(typed.toString().toUtf8(), "{12345678-1234-1234-1234-123456789abc}");
        QTRY_VERIFY(editors[1]->guid(nullptr) == typed && editors[2]->guid(nullptr) == typed);
        QStringList shown;
        for (auto* output : page.findChildren<QLineEdit*>())
            shown << output->text();
        QVERIFY(shown.filter("valueChanged, guidChanged").size() >= 1);
    }

    // An invalid value is told, and does not reach the siblings.
    void invalidInput()
    {
        SettingsStore store;
        Host host(store, 1000);
        ValuesPage page(host);
        const auto editors = page.findChildren<QvelWidgetGuid*>();
        const UaGuid before = editors[1]->guid(nullptr);
        editors[0]->findChild<QLineEdit*>()->setText("{12");
        QCoreApplication::processEvents();
        QVERIFY(editors[1]->guid(nullptr) == before);
    }

    void savedFilesAreChecked()
    {
        SettingsStore store;
        Host host(store, 1000);
        ValuesPage page(host);
        QSignalSpy messages(&host, &Host::message);
        const auto named = [&host](const QString& file) {
            EditorCallback& callback = host.editorCallback();
            void* handle = callback.openSettings();
            callback.writeSetting(handle, "QvelEditWidgetString.LastSaveFilename", file);
            callback.closeSettings(handle);
        };
        QTemporaryDir dir;
        const QString file = dir.filePath("value.txt");
        named(file);
        QCOMPARE(messages.takeFirst().at(0).toString(), file + " could not be written");
        const auto fields = page.findChildren<QvelEditWidgetString*>();
        QFile written(file);
        QVERIFY(written.open(QIODevice::WriteOnly));
        written.write(fields.last()->string(nullptr).toUtf8());
        written.close();
        named(file);
        QCOMPARE(messages.takeFirst().at(0).toString(), "Saved " + file);
    }
};

QTEST_MAIN(ValuesPageTest)
#include "tst_valuespage.moc"
