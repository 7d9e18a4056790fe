#include "support/showntexts.h"
#include "support/warnings.h"
#include "support/widgets.h"
#include "values/editorcases.h"

#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelCallWidget>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelLanguage>
#include <Kestrel/QvelReferencesWidget>
#include <Kestrel/QvelSessionWidget>
#include <Kestrel/QvelTrendWidget>

#include <QtTest/QAbstractItemModelTester>

namespace {

// What the other tests do not have: without a session, or with too much.
const std::function<QWidget*()> makers[] = {
    [] { // a text that is too long for its dialog
        auto* field = new QvelEditWidgetString();
        field->setString(UaString(QString(250'001, 'x')));
        field->findChildren<QToolButton*>().first()->click();
        return field;
    },
    [] { // there is no connection
        auto* space = new QvelAddressSpaceWidget();
        space->find("pump");
        return space;
    },
    [] { return new QvelAttributesWidget; },
    [] { return new QvelReferencesWidget; },
    [] { return new QvelSessionWidget; },
    [] { return new QvelTrendWidget; },
    [] { return new QvelCallDialog; },
    [] { // the name that a list gets at first keeps its language
        auto* lists = new QvelDataViewWidget();
        lists->renameList(0, "pumps");
        return lists;
    },
};

void install(QLocale::Language language)
{
    QVERIFY(qvelInstallLanguage(QLocale(language)));
    QCoreApplication::processEvents();
}

QObjectList objectsOf(QObject* object)
{
    return QObjectList{object} + object->findChildren<QObject*>();
}

// What the catalogue has another text for, and is not a German word of its own ("Attribute").
QSet<QString> translatedTexts()
{
    QSet<QString> texts, german;
    QString source;
    QFile file(CATALOGUE);
    QXmlStreamReader xml(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
    while (!xml.atEnd()) {
        xml.readNextStartElement();
        if (xml.name() == u"source") {
            source = xml.readElementText();
        } else if (xml.name() == u"translation") {
            const QString translation = xml.readElementText();
            german << translation;
            if (!translation.isEmpty() && translation != source)
                texts << source;
        }
    }
    return texts - german;
}

using Widgets = std::vector<std::unique_ptr<QWidget>>;

Widgets makeAll()
{
    Widgets widgets;
    for (const EditorCase& editor : editorCases())
        widgets.emplace_back(editor.create(0))->show();
    for (const WidgetCase& other : widgetCases(FIXTURES "/"))
        widgets.emplace_back(other.create())->show();
    for (const auto& maker : makers)
        widgets.emplace_back(maker())->show();
    return widgets;
}

} // namespace

class tst_Language : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        install(QLocale::English);
    }
    // Back and forth: a widget says what one says that was made in the language.
    void followsTheLanguage()
    {
        const QSet<QString> translated = translatedTexts();
        QVERIFY(translated.size() > 150);
        const Widgets widgets = makeAll();
        std::vector<QStringList> english;
        qsizetype objects = 0;
        for (const auto& widget : widgets) {
            english.push_back(shownTexts(widget.get(), true));
            objects += objectsOf(widget.get()).size();
        }
        QObject testers;
        for (const auto& widget : widgets)
            for (QObject* object : objectsOf(widget.get()))
                if (const auto* tree = qobject_cast<QTreeView*>(object))
                    new QAbstractItemModelTester(tree->model(), &testers);
        for (int i = 0; i < 100; ++i) {
            install(QLocale::German);
            install(QLocale::English);
        }
        install(QLocale::German);
        const Widgets fresh = makeAll();
        for (size_t i = 0; i < widgets.size(); ++i) {
            const Case each(widgets[i]->metaObject()->className());
            const QStringList german = shownTexts(widgets[i].get(), true);
            QCOMPARE(german, shownTexts(fresh[i].get(), true));
            for (const QString& text : german)
                QVERIFY2(!translated.contains(text), qPrintable(text));
        }
        install(QLocale::English);
        for (size_t i = 0; i < widgets.size(); ++i) {
            const Case each(widgets[i]->metaObject()->className());
            QCOMPARE(shownTexts(widgets[i].get(), true), english[i]);
            objects -= objectsOf(widgets[i].get()).size();
        }
        QCOMPARE(objects, 0);
    }
    void keepsWhatOthersHaveSet()
    {
        const Widgets widgets = makeAll();
        const auto contents = [&widgets](bool isSet) { // set before, on request
            QVariantList contents;
            for (const auto& widget : widgets) {
                if (isSet)
                    widget->setWindowTitle("title");
                contents << widget->windowTitle();
                for (auto* line : widget->findChildren<QLineEdit*>()) {
                    if (isSet)
                        QTest::keyClick(line, Qt::Key_1);
                    if (!line->isReadOnly())
                        contents << line->text() << line->cursorPosition();
                }
                for (auto* combo : widget->findChildren<QComboBox*>()) {
                    if (isSet)
                        combo->setCurrentIndex(combo->count() - 1);
                    contents << combo->currentIndex();
                }
                for (auto* group : widget->findChildren<QGroupBox*>(QRegularExpression("."))) {
                    if (isSet)
                        group->setTitle("title");
                    contents << group->title();
                }
            }
            return contents;
        };
        contents(true);
        const QVariantList before = contents(false);
        install(QLocale::German);
        QCOMPARE(contents(false), before);
    }
    void keepsTheLanguageThatThereIs()
    {
        const auto close = [] { return QCoreApplication::translate("QvelDisplayDialog", "Close"); };
        install(QLocale::German);
        QVERIFY(!qvelInstallLanguage(QLocale(QLocale::Finnish)));
        QCOMPARE(close(), "Schließen");
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), "Abbrechen");
        QVERIFY(qvelInstallLanguage(QLocale::c()));
        QCOMPARE(close(), "Close");
    }
};

QTEST_MAIN(tst_Language)
#include "tst_language.moc"
