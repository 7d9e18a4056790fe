#include "platform/stack/opcuastatuscodes.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelCallWidget>
#include <Kestrel/QvelCertificateManager>
#include <Kestrel/QvelCertificateView>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelDialogWidgetArray>
#include <Kestrel/QvelDialogWidgetExpandedNodeId>
#include <Kestrel/QvelDialogWidgetLocalizedText>
#include <Kestrel/QvelDialogWidgetMatrix>
#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryWidget>
#include <Kestrel/QvelDisplayDialog>
#include <Kestrel/QvelEditWidgetByteString>
#include <Kestrel/QvelEndpointSettingsWidget>
#include <Kestrel/QvelEnumInfo>
#include <Kestrel/QvelLanguage>
#include <Kestrel/QvelNewCertificateDlg>
#include <Kestrel/QvelReferencesWidget>
#include <Kestrel/QvelSession>
#include <Kestrel/QvelSessionWidget>
#include <Kestrel/QvelToolBox>
#include <Kestrel/QvelTrendWidget>
#include <Kestrel/QvelTrustDialog>
#include <Kestrel/QvelWidgetEnumFlags>
#include <Kestrel/QvelWidgetGuid>
#include <Kestrel/QvelWidgetValueRank>
#include <Kestrel/QvelWidgetVariant>
#include <Kestrel/QvelWidgetWriteMask>

#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

namespace {

template <class W, auto... flags>
QWidget* make()
{
    return new W(flags...);
}

UaPkiCertificate certificate()
{
    return UaPkiCertificate::fromDERFile(FIXTURES "/full.der");
}

const QMap<int, QString> names = {{1, "one"}, {2, "two"}};

template <class Field>
QWidget* enumField()
{
    QvelEnumInfo info;
    info.kind = QvelEnumInfo::Enumeration;
    info.values = names;
    auto* field = new Field;
    field->setEnumInfo(info);
    return field;
}

// Every class with texts of its own, in the states that have texts of their own.
const std::function<QWidget*()> makers[] = {
    make<QvelDisplayDialog>,
    make<QvelDisplayDialog, QvelDisplayDialog::ReadOnly>,
    make<QvelWidgetNodeId>,
    make<QvelDialogWidgetNodeId>,
    make<QvelDialogWidgetExpandedNodeId>,
    make<QvelEditWidgetExpandedNodeId>,
    make<QvelWidgetQualifiedName>,
    make<QvelDialogWidgetQualifiedName>,
    make<QvelWidgetLocalizedText>,
    make<QvelDialogWidgetLocalizedText>,
    make<QvelWidgetByteString>,
    make<QvelWidgetXmlElement>,
    make<QvelEditWidgetByteString>,
    make<QvelEditWidgetXmlElement>,
    [] { // a text that is too long for its dialog
        auto* field = new QvelEditWidgetString();
        field->setString(UaString(QString(250'001, 'x')));
        field->findChildren<QToolButton*>().first()->click();
        return field;
    },
    make<QvelWidgetStatusCode>,
    make<QvelWidgetGuid>,
    [] { return new QvelWidgetEnum(names); },
    [] { return new QvelWidgetEnumFlags(names); },
    make<QvelWidgetWriteMask>,
    make<QvelWidgetValueRank>,
    make<QvelWidgetVariant>,
    [] { return new QvelDialogWidgetArray(UaVariant()); },
    [] { return new QvelDialogWidgetMatrix(UaVariant()); },
    enumField<QvelEditWidgetArray>,
    enumField<QvelEditWidgetMatrix>,
    [] {
        static MemorySettings settings;
        return new QvelDiscoveryWidget(QvelDiscoveryWidget::OpcUa, &settings, 1000, "s");
    },
    [] {
        auto* form = new QvelEndpointSettingsWidget();
        form->setSecurityPolicies({"urn:other", "http://opcfoundation.org/UA/SecurityPolicy#Z"});
        return form;
    },
    [] {
        const QString store = FIXTURES "/";
        return new QvelCertificateManager("a", "b", store, store, store, store, "own.der",
                                          "own.pem", QIcon(), true);
    },
    [] { // data of which no certificate can be made
        auto* dialog = new QvelNewCertificateDlg("name", "part", false, true, nullptr);
        dialog->setRSAKeyStrengths({1024, 3072});
        dialog->setCountry("1");
        dialog->accept();
        return dialog;
    },
    [] {
        auto* view = new QvelCertificateView();
        view->setCertificate(certificate());
        return view;
    },
    [] {
        QvelCertificateQuestion question;
        question.certificate = certificate();
        question.findings = {{OpcUa_BadCertificateUntrusted, "peer", "Detail."}};
        return new QvelTrustDialog(question);
    },
    [] {
        auto* box = new QvelToolBox();
        box->addPage(new QWidget);
        return box;
    },
    [] { // there is no connection
        auto* space = new QvelAddressSpaceWidget();
        space->find("pump");
        return space;
    },
    make<QvelAttributesWidget>,
    make<QvelReferencesWidget>,
    make<QvelSessionWidget>,
    make<QvelTrendWidget>,
    make<QvelCallDialog>,
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

// All that a widget says: texts of properties and lists, and what models have in their headers and
// at their top.
QStringList textsOf(QWidget* widget)
{
    QStringList texts;
    for (QObject* object : objectsOf(widget)) {
        if (!object->isWidgetType() && !qobject_cast<QAction*>(object))
            continue;
        const QMetaObject* meta = object->metaObject();
        for (int i = 0; i < meta->propertyCount(); ++i)
            if (meta->property(i).typeId() == QMetaType::QString &&
                qstrcmp(meta->property(i).name(), "selectedText") != 0)
                texts << meta->property(i).read(object).toString();
        const auto* combo = qobject_cast<QComboBox*>(object);
        const auto* view = qobject_cast<QAbstractItemView*>(object);
        const auto* model = combo ? combo->model() : view ? view->model() : nullptr;
        for (int column = 0; model && column < model->columnCount(); ++column)
            for (const int role : {Qt::DisplayRole, Qt::ToolTipRole}) {
                texts << model->headerData(column, Qt::Horizontal, role).toString();
                for (int row = 0; row < model->rowCount(); ++row)
                    texts << model->index(row, column).data(role).toString();
            }
    }
    texts.removeAll(QString());
    return texts;
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
            english.push_back(textsOf(widget.get()));
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
            const QStringList german = textsOf(widgets[i].get());
            QCOMPARE(german, textsOf(fresh[i].get()));
            for (const QString& text : german)
                QVERIFY2(!translated.contains(text), qPrintable(text));
        }
        install(QLocale::English);
        for (size_t i = 0; i < widgets.size(); ++i) {
            const Case each(widgets[i]->metaObject()->className());
            QCOMPARE(textsOf(widgets[i].get()), english[i]);
            objects -= objectsOf(widgets[i].get()).size();
        }
        QCOMPARE(objects, 0);
    }
    void keepsWhatOthersHaveSet()
    {
        const Widgets widgets = makeAll();
        for (const auto& widget : widgets) {
            widget->setWindowTitle("title");
            for (auto* line : widget->findChildren<QLineEdit*>())
                QTest::keyClick(line, Qt::Key_1);
            for (auto* combo : widget->findChildren<QComboBox*>())
                combo->setCurrentIndex(combo->count() - 1);
            for (auto* group : widget->findChildren<QGroupBox*>())
                if (!group->objectName().isEmpty())
                    group->setTitle("title");
        }
        const auto contents = [&widgets] {
            QVariantList contents;
            for (const auto& widget : widgets) {
                contents << widget->windowTitle();
                for (auto* line : widget->findChildren<QLineEdit*>())
                    if (!line->isReadOnly())
                        contents << line->text() << line->cursorPosition();
                for (auto* combo : widget->findChildren<QComboBox*>())
                    contents << combo->currentIndex();
                for (auto* group : widget->findChildren<QGroupBox*>())
                    if (!group->objectName().isEmpty())
                        contents << group->title();
            }
            return contents;
        };
        const QVariantList before = contents();
        install(QLocale::German);
        QCOMPARE(contents(), before);
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
