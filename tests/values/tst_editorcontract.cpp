// What every value editor has in common, and the texts that it takes.

#include "editorcases.h"
#include "support/modaluser.h"
#include "support/warnings.h"

#include <Kestrel/QvelDisplayDialog>

#include <QtCore/QLibraryInfo>
#include <QtCore/QTranslator>
#include <QtGui/QScreen>
#include <QtGui/QStandardItemModel>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDataWidgetMapper>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QTextEdit>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QToolTip>

namespace {

constexpr quint32 seed = 20240229;
constexpr int randomCount = 1000;

class FocusOutCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::FocusOut;
        return false;
    }
};

// Notes what is looked up in the contexts of the editors.
class Lookups : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        if (qstrncmp(context, "Qvel", 4) == 0)
            seen.insert(QString("<%1> %2").arg(context, text));
        return {};
    }
    mutable QSet<QString> seen;
};

} // namespace

class EditorContractTest : public QObject
{
    Q_OBJECT

    static void addCases(const QMetaObject* base = &QWidget::staticMetaObject)
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < editorCases().size(); ++i) {
            if (Editor(editorCases().at(i).create(0)).widget->metaObject()->inherits(base))
                QTest::newRow(editorCases().at(i).name) << i;
        }
    }
    static const EditorCase& current()
    {
        return editorCases().at(*static_cast<const int*>(QTest::qData("index", QMetaType::Int)));
    }

private Q_SLOTS:
    void initTestCase() { qInfo("random values of seed %u", seed); }
    void init()
    {
        // A font that lacks the script of a random text warns.
        if (qstrcmp(QTest::currentTestFunction(), "randomValues") != 0)
            failOnWarnings();
    }

    // First of all, since nothing else may have registered a type before.
    void valueClassesAreRegistered()
    {
        for (const EditorCase& c : editorCases()) {
            const std::unique_ptr<QWidget> w(c.create(0));
            for (int i = 0; i < w->metaObject()->methodCount(); ++i) {
                for (const QByteArray& type : w->metaObject()->method(i).parameterTypes())
                    QVERIFY2(!type.startsWith("Ua") || QMetaType::fromName(type).isValid(), type);
            }
        }
    }

    void values_data() { addCases(); }
    void values()
    {
        const EditorCase& c = current();
        const V& first = c.values.first;
        for (int flags = 0; flags < 4; ++flags) {
            Editor editor(c.create(flags));
            const bool isInline = editor.widget->inherits("QvelWidgetBase");
            const bool readOnly = flags & (isInline ? 2 : 1);
            const bool framed = !isInline || flags != 1;
            const bool isSummary =
                editor.widget->inherits("QvelEditWidgetBase") && first.type() != OpcUaType_String;
            for (auto* line : editor.all<QLineEdit>())
                QVERIFY(line->isReadOnly() == (readOnly || isSummary) &&
                        line->hasFrame() == framed);
            for (auto* spin : editor.all<QSpinBox>())
                QVERIFY(spin->isReadOnly() == readOnly && spin->hasFrame() == framed);
            for (auto* combo : editor.all<QComboBox>())
                QVERIFY(combo->isEnabled() != readOnly && combo->hasFrame() == framed);
            // A value can be set whatever the flags are.
            for (const V& value : {first, c.values.second, first}) {
                editor.told.clear();
                editor.setValue(value);
                QVERIFY(editor.value() == value && editor.value(nullptr) == value);
                QVERIFY(editor.told.isEmpty() || editor.toldValue == value);
            }
            const bool isMask = QByteArray(c.name).endsWith("Mask");
            QCOMPARE(editor.told.size(), (isMask ? 1 : 2) * c.changes);
            for (int i = 0; i < editor.told.size(); ++i)
                QCOMPARE(editor.told.at(i) == "valueChanged", !isMask && i % 2 == 0);
            editor.told.clear();
            editor.setValue(first);

            OpcUa_Variant other = {};
            for (int i = 0; i < 3 * OpcUaType_DiagnosticInfo; ++i) {
                other.Datatype = OpcUa_Byte(i / 3);
                other.ArrayType = OpcUa_Byte(i % 3);
                if (first.type() != OpcUaType_String && (i % 3 || i / 3 != first.type()))
                    editor.setValue(V(other));
            }
            QVERIFY(editor.value(nullptr) == first && editor.told.isEmpty());

            // An editor of one control passes on that the focus leaves it.
            QWidget* control = editor.widget->layout()->itemAt(0)->widget();
            const bool isSingle = isInline && !isMask && editor.widget->layout()->count() == 1;
            QCOMPARE(editor.widget->focusProxy(), isSingle ? control : nullptr);
            FocusOutCounter counter;
            editor.widget->installEventFilter(&counter);
            QFocusEvent leave(QEvent::FocusOut);
            if (control)
                QCoreApplication::sendEvent(control, &leave);
            QCOMPARE(counter.count, int(isSingle));
        }
    }

    void randomValues_data() { addCases(); }
    void randomValues()
    {
        QRandomGenerator random(seed);
        Editor editor(current().create(0));
        for (int i = 0; i < randomCount; ++i) {
            const V value = current().values.random(random);
            editor.told.clear();
            editor.setValue(value);
            QVERIFY2(editor.value() == value, value.toFullString().toUtf8());
            QVERIFY(editor.told.isEmpty() || editor.toldValue == value);
            for (auto* line : editor.all<QLineEdit>())
                QVERIFY(line->cursorPosition() == 0 || line->text().size() < 18);
        }
    }

    // Every editor on a column of a model.
    void mapped()
    {
        QStandardItemModel model(1, int(editorCases().size()));
        std::vector<std::unique_ptr<QWidget>> editors;
        QDataWidgetMapper mapper;
        mapper.setSubmitPolicy(QDataWidgetMapper::ManualSubmit);
        mapper.setModel(&model);
        for (const EditorCase& c : editorCases()) {
            editors.emplace_back(c.create(0));
            const int column = int(editors.size()) - 1;
            model.setData(model.index(0, column), QVariant::fromValue(c.values.first));
            mapper.addMapping(editors.back().get(), column);
        }
        mapper.toFirst();
        for (int i = 0; i < model.columnCount(); ++i) {
            const Values& values = editorCases().at(i).values;
            QVERIFY(editors[size_t(i)]->property("value").value<V>() == values.first);
            editors[size_t(i)]->setProperty("value", QVariant::fromValue(values.second));
        }
        QVERIFY(mapper.submit());
        for (int i = 0; i < model.columnCount(); ++i)
            QVERIFY(model.index(0, i).data().value<V>() == editorCases().at(i).values.second);
    }

    void dialogs_data() { addCases(&QvelDialogWidgetBase::staticMetaObject); }
    void dialogs()
    {
        const Editor editor(current().create(0));
        auto* dialog = qobject_cast<QDialog*>(editor.widget.get());
        QVERIFY(!dialog->windowFlags().testFlag(Qt::WindowCloseButtonHint));
        QWidgetList chain;
        for (auto* label : editor.all<QLabel>())
            chain << label->buddy();
        auto* buttons = dialog->findChild<QDialogButtonBox*>();
        for (auto which : {QDialogButtonBox::Ok, QDialogButtonBox::Cancel})
            chain << buttons->button(which);
        // Opened again, too, whatever had the focus before.
        for (auto which : {QDialogButtonBox::Ok, QDialogButtonBox::Cancel}) {
            dialog->show();
            QVERIFY(QTest::qWaitForWindowActive(dialog));
            for (QWidget* control : chain) {
                QCOMPARE(dialog->focusWidget(), control);
                QTest::keyClick(control, Qt::Key_Tab);
            }
            for (int i = 1; i < editor.all<QLabel>().size(); ++i)
                QVERIFY(chain[i]->y() > chain[i - 1]->geometry().bottom());
            QTest::mouseClick(buttons->button(which), Qt::LeftButton);
            QVERIFY(!dialog->isVisible());
        }
        // A Guid fits its line.
        if (auto* combo = dialog->findChild<QComboBox*>()) {
            combo->setCurrentIndex(OpcUa_IdentifierType_Guid);
            const QString guid = "{dddddddd-dddd-dddd-dddd-dddddddddddd}";
            QVERIFY(combo->fontMetrics().horizontalAdvance(guid) < editor.lastLine()->width() - 8);
        }
    }

    // The same dialog on one screen after the other.
    void dialogsStayOnScreen()
    {
        QvelDisplayDialog text;
        QvelDialogWidgetNodeId node;
        for (const QScreen* screen : QGuiApplication::screens() + QGuiApplication::screens()) {
            const QRect area = screen->availableGeometry();
            for (QDialog* dialog : {static_cast<QDialog*>(&text), static_cast<QDialog*>(&node)}) {
                const auto shownAt = [dialog](const QPoint& place, const QSize& size) {
                    dialog->resize(size);
                    dialog->move(place);
                    dialog->show();
                    const QRect frame = dialog->frameGeometry();
                    dialog->hide();
                    return frame;
                };
                const QSize size(300, 250);
                const QPoint inside = area.topLeft() + QPoint(50, 60), edge(80, 20);
                QCOMPARE(shownAt(inside, size).topLeft(), inside);
                QCOMPARE(shownAt(area.topLeft() - edge, size).topLeft(), area.topLeft());
                QCOMPARE(shownAt(area.bottomRight() - 2 * edge, size).bottomRight(),
                         area.bottomRight());
                QCOMPARE(shownAt(area.topLeft(), area.size() + QSize(100, 50)).bottomRight(),
                         area.bottomRight());
            }
        }
    }

    void fields_data() { addCases(&QvelEditWidgetBase::staticMetaObject); }
    void fields()
    {
        const V& first = current().values.first;
        for (int flags : {0, 3}) {
            Editor editor(current().create(flags));
            auto* dialog = editor.widget->findChild<QDialog*>();
            auto* buttons = dialog->findChild<QDialogButtonBox*>();
            auto* area = dialog->findChild<QTextEdit*>();
            editor.widget->show();
            QVERIFY(QTest::qWaitForWindowActive(editor.widget.get()));
            editor.setValue(first);
            auto* line = editor.lastLine();
            const QString text = line->text();
            for (int i = 0; i < 6; ++i) {
                QTest::mouseClick(editor.all<QToolButton>().constFirst(), Qt::LeftButton);
                QVERIFY(QTest::qWaitForWindowActive(dialog) && !dialog->isModal());
                QCOMPARE(dialog->pos(), line->mapToGlobal(QPoint(0, 0)));
                const V before = editor.value();
                editor.told.clear();
                if (i != 3) { // which accepts without a change
                    QTest::keyClick(dialog->focusWidget(), Qt::Key_End);
                    QTest::keyClicks(dialog->focusWidget(), "a1");
                }
                auto* ok = buttons->button(QDialogButtonBox::Ok);
                const bool accepts = i % 2 && ok->isVisible();
                QTest::mouseClick(accepts ? ok : buttons->button(QDialogButtonBox::Cancel),
                                  Qt::LeftButton);
                const bool isChanged = accepts && i != 3 && !flags;
                QVERIFY(!dialog->isVisible() && (editor.value() != before) == isChanged);
                QCOMPARE(line->text() != text, editor.value() != first);
                QCOMPARE(editor.told.size(), isChanged ? 2 : 0);
            }
            QCOMPARE(buttons->button(QDialogButtonBox::Ok)->text(),
                     QString(flags && area ? "OK" : "Write"));
            if (!area)
                continue;
            // NoResize has the number of the text dialog's WrapAnywhere, and is not passed on.
            QCOMPARE(area->wordWrapMode() == QTextOption::WrapAnywhere,
                     first.type() == OpcUaType_ByteString);
            dialog->show();
            QVERIFY(QTest::qWaitForWindowActive(dialog) && !area->accessibleName().isEmpty());
            QTest::keyClick(area, Qt::Key_Tab);
            QVERIFY(qobject_cast<QPushButton*>(dialog->focusWidget()));
        }
    }

    // Line ends, controls and marks of direction are kept; a paste that is cut is told.
    void pastes_data() { addCases(); }
    void pastes()
    {
        const QString odd = QString("a\r\n\t\u0001\u200f\u202e\u0007<b>") + QChar(0) + "z";
        Editor editor(current().create(0));
        editor.widget->show();
        for (auto* line : editor.all<QLineEdit>()) {
            if (line->isReadOnly())
                continue;
            for (const QString& text : {odd, QString(10'000'000, u'7')}) {
                QToolTip::hideText();
                QTRY_VERIFY(QToolTip::text().isEmpty());
                line->selectAll();
                line->insert(text);
                QCoreApplication::processEvents();
                const bool isFree = !line->validator() && line->inputMask().isEmpty();
                QVERIFY(!isFree || line->text() == text.left(32767));
                QCOMPARE(QToolTip::text().contains("32,767"), line->text().size() == 32767);
                QVERIFY(line->toolTip().size() < 1100 && !line->toolTip().contains("<b>"));
                editor.value(nullptr);
            }
        }
        // What a narrow control may cut is its tool tip.
        editor.setValue(current().values.first);
        for (auto* control : editor.all<QWidget>())
            QVERIFY(control->maximumWidth() > 50 || !control->toolTip().isEmpty());
    }

    // A text can be translated when lupdate finds it in the context in which it is looked up.
    void textsAreExtracted()
    {
        const QString lupdate = QLibraryInfo::path(QLibraryInfo::BinariesPath) + "/lupdate";
        Lookups lookups;
        QCoreApplication::installTranslator(&lookups);
        for (const EditorCase& c : editorCases()) {
            for (int flags : {0, 1}) {
                const Editor editor(c.create(flags));
                ModalUser user([](QDialog* chooser) { chooser->done(QDialog::Accepted); });
                if (auto* button = editor.all<QToolButton>().value(1))
                    QTest::mouseClick(button, Qt::LeftButton);
            }
        }
        QCoreApplication::removeTranslator(&lookups);
        QVERIFY(lookups.seen.contains("<QvelEditWidgetString> Save"));
        QTemporaryDir folder;
        QFile file(folder.filePath("a.ts"));
        QCOMPARE(QProcess::execute(lupdate, {"-silent", SOURCES "/base", SOURCES "/values", "-ts",
                                             file.fileName()}),
                 0);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QString context;
        for (QXmlStreamReader xml(&file); !xml.atEnd(); xml.readNext()) {
            if (xml.isStartElement() && xml.name() == u"name")
                context = xml.readElementText();
            else if (xml.isStartElement() && xml.name() == u"source")
                lookups.seen.remove(QString("<%1> %2").arg(context, xml.readElementText()));
        }
        QCOMPARE(QStringList(lookups.seen.values()).join("\n"), QString());
    }

    void texts_data()
    {
        QTest::addColumn<QByteArray>("editor");
        QTest::addColumn<int>("type"); // of the identifier
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown"); // null if the host sets it, past validator and mask
        QTest::addColumn<V>("value");
        QTest::addColumn<bool>("valid"); // if not, the value is what stands for it
        const auto row = [](const char* editor, int type, const QString& text, const QString& shown,
                            const V& value, bool valid = true) {
            QTest::addRow("%s, %d, %s", editor, type, qPrintable(text))
                << QByteArray(editor) << type << text << shown << value << valid;
        };
        const auto id = [&row](int type, const QString& text, const QString& shown,
                               const UaNodeId& id, bool valid = true) {
            row("QvelWidgetNodeId", type, text, shown, variantOf(&V::setNodeId, id), valid);
            row("QvelDialogWidgetExpandedNodeId", type, text, shown,
                variantOf(&V::setExpandedNodeId, UaExpandedNodeId(id, "", 0)), valid);
        };
        const auto opaque = [](const char* hex) {
            return UaNodeId(UaByteString(QByteArray::fromHex(hex)), 3);
        };
        const QString digits = "0F1e2d3c4b5a69788796a5b4c3d2e1f0";
        const QString braced = "{0F1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}";
        const UaGuid guid = guidOf("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0");
        id(0, "21474836470", "2147483647", UaNodeId(2147483647, 3));
        id(0, "-1", "-1", UaNodeId(0, 3), false);
        id(0, "", "", UaNodeId(0, 3), false);
        id(1, "<b>1</b>", "<b>1</b>", UaNodeId(UaString("<b>1</b>"), 3));
        id(1, "", "", UaNodeId(UaString(""), 3));
        id(2, braced, braced, UaNodeId(guid, 3));
        id(2, "{0F1E", "{0F1E----}", UaNodeId(), false);
        id(3, "0xAbCd", "0xAbCd", opaque("abcd"));
        id(3, "0X", "0X", opaque(""));
        id(3, "0xABC", "0xABC", UaNodeId(), false);
        id(3, "0xGG", "0x", opaque(""));
        for (const char* text : {"0x0x1F", "1F", "0X1F", "10xF"})
            id(3, text, {}, opaque("1f"));
        id(3, "0x1F\n", {}, UaNodeId(), false);
        const auto bytes = [](const char* hex) {
            return variantOf(&V::setByteString, UaByteString(QByteArray::fromHex(hex)));
        };
        row("QvelWidgetByteString", -1, "0x0A0b", "0x0A0b", bytes("0a0b"));
        row("QvelWidgetByteString", -1, "0X", "0X", bytes(""));
        row("QvelWidgetByteString", -1, "0xA", "0xA", bytes(""), false);
        const V whole = variantOf(&V::setGuid, guid), none = variantOf(&V::setGuid, UaGuid());
        row("QvelWidgetGuid", -1, "zz" + digits + "77", braced, whole);
        row("QvelWidgetGuid", -1, digits.chopped(1), braced.chopped(2) + "}", none, false);
        const auto code = [](OpcUa_StatusCode c) { return variantOf(&V::setStatusCode, c); };
        row("QvelWidgetStatusCode", -1, "80AB0000", "0x80AB0000", code(0x80ab0000u));
        row("QvelWidgetStatusCode", -1, "8", "0x8", code(8));
        row("QvelWidgetStatusCode", -1, "", "0x", code(0), false);
        row("QvelWidgetXmlElement", -1, QString("a") + QChar(0xd800), {},
            variantOf(&V::setXmlElement, UaByteString(QByteArray("a?"))));
    }
    void texts()
    {
        QFETCH(QByteArray, editor);
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(QString, shown);
        QFETCH(V, value);
        QFETCH(bool, valid);
        Editor e(createNamed(editor));
        e.widget->show();
        auto* line = e.lastLine();
        if (type >= 0) {
            e.all<QSpinBox>().constLast()->setValue(3);
            for (int other : {type == 0 ? 1 : 0, type})
                e.all<QComboBox>().constFirst()->setCurrentIndex(other);
            const QStringList initial = {"0", "", "{00000000-0000-0000-0000-000000000000}", "0x0"};
            QCOMPARE(line->text(), initial[type]);
        }
        if (shown.isNull()) {
            line->setText(text);
        } else {
            line->selectAll();
            QTest::keyClick(line, Qt::Key_Delete);
            line->home(false);
            QTest::keyClicks(line, text);
            QCOMPARE(line->text(), shown);
        }
        bool ok = !valid;
        QVERIFY(e.value(&ok) == (valid ? value : V()) && ok == valid);
        QVERIFY(e.value() == (valid ? value : V()));
        QVERIFY(e.value(nullptr) == value);
        if (valid && type < 0) { // read and set again, it is spelled as the editors spell it
            e.setValue(value);
            QVERIFY(line->text() == line->text().toLower() && e.value() == value);
            QVERIFY(value.type() != OpcUaType_StatusCode || line->text().size() == 10);
        }
    }

    void losses()
    {
        const auto expanded = [](OpcUa_UInt32 server) {
            return variantOf(&V::setExpandedNodeId, UaExpandedNodeId(UaNodeId(1), "", server));
        };
        const QList<std::tuple<const char*, V, V>> rows = {
            // A server index past that of a spin box
            {"QvelDialogWidgetExpandedNodeId", expanded(0x80000000u), expanded(0)},
            {"QvelEditWidgetExpandedNodeId", expanded(0x80000000u), expanded(0)},
            // Values and bits without a name
            {"QvelWidgetEnum", V(OpcUa_Int32(7)), V(OpcUa_Int32(0))},
            {"QvelWidgetEnumFlags", V(OpcUa_Int32(9)), V(OpcUa_Int32(1))},
            {"QvelWidgetValueRank", V(OpcUa_Int32(3)), V(OpcUa_Int32(0))},
            // Bytes that are no UTF-8, and any type as its text
            {"QvelEditWidgetString", variantOf(&V::setString, "a\xff\xc3"),
             variantOf(&V::setString, "a\xef\xbf\xbd\xef\xbf\xbd")},
            {"QvelEditWidgetString", V(OpcUa_Int32(-7)), variantOf(&V::setString, "-7")}};
        for (const auto& [name, given, kept] : rows) {
            Editor lossy(createNamed(name));
            lossy.setValue(given);
            QVERIFY2(lossy.value() == kept, name);
        }
    }
};

int main(int argc, char** argv)
{
    // Two screens, where the platform can have them without a display.
    QTemporaryDir folder;
    QFile file(folder.filePath("screens.json"));
    if (qgetenv("QT_QPA_PLATFORM") == "offscreen" && file.open(QIODevice::WriteOnly)) {
        file.write(R"({"screens": [{"name": "1", "x": 0, "y": 0, "width": 800, "height": 800},
                                   {"name": "2", "x": 800, "y": 0, "width": 900, "height": 700}]})");
        file.close();
        qputenv("QT_QPA_PLATFORM", ("offscreen:configfile=" + file.fileName()).toUtf8());
    }
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    EditorContractTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_editorcontract.moc"
