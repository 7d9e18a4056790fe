// What every value editor has in common.

#include "editorcases.h"
#include "support/warnings.h"

#include <QtTest/QtTest>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QTextEdit>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

namespace {

constexpr quint32 seed = 20240229;
constexpr int randomCount = 2000;

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

QToolButton* button(const QWidget* field, const QString& text)
{
    for (auto* button : controls<QToolButton>(field)) {
        if (button->text() == text)
            return button;
    }
    return nullptr;
}

} // namespace

class EditorContractTest : public QObject
{
    Q_OBJECT

    static void addCases(bool (*wanted)(const EditorCase&))
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < editorCases().size(); ++i) {
            if (wanted(editorCases().at(i)))
                QTest::newRow(editorCases().at(i).name) << i;
        }
    }
    static const EditorCase& current()
    {
        return editorCases().at(*static_cast<const int*>(QTest::qData("index", QMetaType::Int)));
    }
    static bool any(const EditorCase&) { return true; }
    static bool hasInvalidInput(const EditorCase& c) { return !c.fallback.isEmpty(); }
    static bool takesOneType(const EditorCase& c) { return c.type != OpcUaType_String; }
    static bool isField(const EditorCase& c) { return c.shape == Shape::Field; }

private Q_SLOTS:
    void initTestCase() { qInfo("random values of seed %u, %d an editor", seed, randomCount); }
    void init()
    {
        // A font that lacks the script of a random text warns.
        if (qstrcmp(QTest::currentTestFunction(), "randomValues") != 0)
            failOnWarnings();
    }

    // First of all, since nothing else may have registered a type before.
    void valueClassesAreRegistered_data() { addCases(any); }
    void valueClassesAreRegistered()
    {
        const Editor editor = current().create(0);
        const QMetaObject* meta = editor.widget->metaObject();
        QVERIFY(QMetaType::fromName("UaVariant").isValid());
        QVERIFY(meta->methodOffset() < meta->methodCount());
        for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
            for (const QByteArray& type : meta->method(i).parameterTypes())
                QVERIFY2(!type.startsWith("Ua") || QMetaType::fromName(type).isValid(), type);
        }
    }

    void validInput_data() { addCases(any); }
    void validInput()
    {
        const EditorCase& c = current();
        const Editor editor = c.create(0);
        for (const UaVariant& value : {c.first, c.second, c.first}) {
            editor.setValue(value);
            QCOMPARE(value.type(), c.type);
            for (const auto& getter : {editor.value, editor.typed}) {
                bool ok = false;
                QVERIFY(getter(&ok) == value);
                QVERIFY(ok);
                QVERIFY(getter(nullptr) == value);
            }
        }
    }

    void invalidInput_data() { addCases(hasInvalidInput); }
    void invalidInput()
    {
        const EditorCase& c = current();
        const Editor editor = c.create(0);
        editor.setValue(c.first);
        controls<QLineEdit>(editor.widget.get()).constLast()->setText(c.invalid);
        bool ok = true;
        QVERIFY(editor.value(&ok).isEmpty());
        QVERIFY(!ok);
        ok = true;
        editor.typed(&ok);
        QVERIFY(!ok);
        // Without a flag, and so in the signals, the fallback comes through.
        QVERIFY(editor.value(nullptr) == c.fallback);
        QVERIFY(editor.typed(nullptr) == c.fallback);
        for (const Told& told : editor.told->mid(editor.told->size() - 2))
            QVERIFY(told.value == c.fallback);
    }

    void changesAreTold_data() { addCases(any); }
    void changesAreTold()
    {
        const EditorCase& c = current();
        const Editor editor = c.create(0);
        editor.setValue(c.first);
        editor.told->clear();
        editor.setValue(c.second);
        const bool isMask =
            editor.widget->metaObject()->indexOfSignal("valueChanged(UaVariant)") < 0;
        QCOMPARE(isMask, QByteArray(c.name).endsWith("Mask"));
        QCOMPARE(editor.told->size(), isMask ? c.changes : 2 * c.changes);
        for (int i = 0; i < editor.told->size(); ++i)
            QCOMPARE(editor.told->at(i).isTyped, isMask || i % 2 == 1);
        for (const Told& told : editor.told->mid(editor.told->size() - (isMask ? 1 : 2)))
            QVERIFY(told.value == c.second);
        editor.told->clear();
        editor.setValue(c.second);
        QVERIFY(editor.told->isEmpty());
    }

    void otherValuesAreIgnored_data() { addCases(takesOneType); }
    void otherValuesAreIgnored()
    {
        const EditorCase& c = current();
        const Editor editor = c.create(0);
        editor.setValue(c.first);
        editor.told->clear();
        QList<UaVariant> others;
        OpcUa_Variant other = {};
        for (int type = OpcUaType_Null; type <= OpcUaType_DiagnosticInfo; ++type) {
            other.Datatype = OpcUa_Byte(type);
            if (type != c.type)
                others << UaVariant(other);
        }
        other.Datatype = OpcUa_Byte(c.type);
        for (auto shape : {OpcUa_VariantArrayType_Array, OpcUa_VariantArrayType_Matrix}) {
            other.ArrayType = OpcUa_Byte(shape);
            others << UaVariant(other);
            QCOMPARE(others.constLast().arrayType(), shape);
        }
        for (const UaVariant& value : others)
            editor.setValue(value);
        QVERIFY(editor.value(nullptr) == c.first);
        QVERIFY(editor.told->isEmpty());
    }

    void flags_data() { addCases(any); }
    void flags()
    {
        const EditorCase& c = current();
        for (int flags = 0; flags < 4; ++flags) {
            const Editor editor = c.create(flags);
            const bool isInline = c.shape == Shape::Inline;
            const bool readOnly = flags & (isInline ? 2 : 1);
            const bool framed = !isInline || flags != 1;
            int count = 0;
            for (auto* edit : controls<QLineEdit>(editor.widget.get())) {
                const bool isSummary = c.shape == Shape::Field && c.type != OpcUaType_String;
                QCOMPARE(edit->isReadOnly(), readOnly || isSummary);
                QCOMPARE(edit->hasFrame(), framed);
                ++count;
            }
            for (auto* spin : controls<QSpinBox>(editor.widget.get())) {
                QCOMPARE(spin->isReadOnly(), readOnly);
                QCOMPARE(spin->hasFrame(), framed);
                ++count;
            }
            for (auto* combo : controls<QComboBox>(editor.widget.get())) {
                QCOMPARE(combo->isEnabled(), !readOnly);
                QCOMPARE(combo->hasFrame(), framed);
                ++count;
            }
            QVERIFY(count > 0);
            // A value can be set all the same.
            editor.setValue(c.second);
            QVERIFY(editor.value(nullptr) == c.second);
        }
    }

    void focusLeaves_data() { addCases(any); }
    void focusLeaves()
    {
        const EditorCase& c = current();
        QWidget window;
        const Editor editor = c.create(0);
        QWidget* widget = editor.widget.get();
        QCOMPARE(widget->focusProxy() != nullptr, c.isSingle);
        if (c.shape == Shape::Dialog)
            return;
        auto* layout = new QVBoxLayout(&window);
        auto* other = new QLineEdit;
        layout->addWidget(widget);
        layout->addWidget(other);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QWidget* control = nullptr;
        for (auto* child : controls<QWidget>(widget)) {
            if (!control && child->focusPolicy() & Qt::TabFocus)
                control = child;
        }
        (c.isSingle ? widget : control)->setFocus();
        QVERIFY(control->hasFocus());
        FocusOutCounter counter;
        widget->installEventFilter(&counter);
        other->setFocus();
        QVERIFY(other->hasFocus());
        QCOMPARE(counter.count, c.isSingle ? 1 : 0);
        window.hide();
        widget->setParent(nullptr);
    }

    void rowsOfDialog_data()
    {
        addCases([](const EditorCase& c) { return c.shape == Shape::Dialog; });
    }
    void rowsOfDialog()
    {
        const Editor editor = current().create(0);
        editor.widget->show();
        int below = 0;
        for (auto* label : editor.widget->findChildren<QLabel*>()) {
            QVERIFY(label->buddy());
            QVERIFY(label->y() >= below && label->buddy()->y() >= below);
            QVERIFY(label->geometry().right() < label->buddy()->x());
            below = label->buddy()->geometry().bottom() + 1;
        }
        QVERIFY(below > 0);
    }

    void dialogOfField_data() { addCases(isField); }
    void dialogOfField()
    {
        const EditorCase& c = current();
        const Editor editor = c.create(0);
        QWidget* field = editor.widget.get();
        field->show();
        editor.setValue(c.first);
        auto* dialog = field->findChild<QDialog*>();
        auto* line = controls<QLineEdit>(field).constFirst();
        const QString text = line->text();
        auto* buttons = dialog->findChild<QDialogButtonBox*>();
        const auto open = [&] { QTest::mouseClick(button(field, "..."), Qt::LeftButton); };
        const auto click = [&](QDialogButtonBox::StandardButton which) {
            QTest::mouseClick(buttons->button(which), Qt::LeftButton);
            QVERIFY(!dialog->isVisible());
        };
        const auto type = [&](const QString& keys) {
            QWidget* input = dialog->findChild<QTextEdit*>();
            if (!input)
                input = controls<QLineEdit>(dialog).constFirst();
            QTest::keyClick(input, Qt::Key_End);
            QTest::keyClicks(input, keys);
        };

        open();
        QVERIFY(dialog->isVisible() && !dialog->isModal());
        QCOMPARE(dialog->pos(), line->mapToGlobal(QPoint(0, 0)));
        type("a1");
        click(QDialogButtonBox::Cancel);
        QCOMPARE(line->text(), text);
        QVERIFY(editor.value(nullptr) == c.first);
        open(); // on the last accepted value, again
        editor.told->clear();
        click(QDialogButtonBox::Ok);
        QVERIFY(editor.value(nullptr) == c.first);
        QVERIFY(editor.told->isEmpty());

        open();
        type("a1");
        click(QDialogButtonBox::Ok);
        bool ok = false;
        const UaVariant accepted = editor.value(&ok);
        QVERIFY(ok && accepted != c.first);
        QVERIFY(line->text() != text);
        QCOMPARE(editor.told->size(), 2);
        QVERIFY(editor.told->constFirst().value == accepted);
        open();
        click(QDialogButtonBox::Cancel);
        QVERIFY(editor.value(nullptr) == accepted);
    }

    void dialogOfReadOnlyField_data() { addCases(isField); }
    void dialogOfReadOnlyField()
    {
        const EditorCase& c = current();
        const Editor editor = c.create(QvelEditWidgetBase::ReadOnly | QvelEditWidgetBase::NoResize);
        editor.widget->show();
        editor.setValue(c.first);
        QTest::mouseClick(button(editor.widget.get(), "..."), Qt::LeftButton);
        if (auto* dialog = editor.widget->findChild<QvelDialogWidgetBase*>()) {
            QCOMPARE(dialog->flags(), QvelDialogWidgetBase::ReadOnly);
            auto* write = dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
            QCOMPARE(write->text(), QString("Write"));
            QTest::mouseClick(write, Qt::LeftButton);
            QCOMPARE(dialog->result(), int(QDialog::Accepted));
        } else {
            auto* text = editor.widget->findChild<QTextEdit*>();
            QVERIFY(text->isReadOnly() && text->isVisible());
            // NoResize has the number of the display dialog's WrapAnywhere.
            QCOMPARE(text->wordWrapMode() == QTextOption::WrapAnywhere,
                     c.type == OpcUaType_ByteString);
        }
        QVERIFY(editor.value(nullptr) == c.first);
    }

    void randomValues_data() { addCases(any); }
    void randomValues()
    {
        const EditorCase& c = current();
        QRandomGenerator random(seed);
        const Editor editor = c.create(0);
        for (int i = 0; i < randomCount; ++i) {
            const UaVariant value = c.random(random);
            editor.told->clear();
            editor.setValue(value);
            bool ok = false;
            const UaVariant back = editor.value(&ok);
            QVERIFY2(ok && back == value, "seed " + QByteArray::number(seed) + ", value " +
                                              QByteArray::number(i) + ": " +
                                              value.toFullString().toUtf8() + " became " +
                                              back.toFullString().toUtf8());
            if (!editor.told->isEmpty())
                QVERIFY(editor.told->constLast().value == value);
        }
    }

    void losses_data()
    {
        using V = UaVariant;
        QTest::addColumn<QByteArray>("editor");
        QTest::addColumn<UaVariant>("given");
        QTest::addColumn<UaVariant>("kept");
        const auto row = [](const char* editor, const V& given, const V& kept) {
            QTest::addRow("%s, %s", editor, given.toFullString().toUtf8())
                << QByteArray(editor) << given << kept;
        };
        const auto expanded = [](OpcUa_UInt32 server) {
            return variantOf(&V::setExpandedNodeId, UaExpandedNodeId(UaNodeId(1), "", server));
        };
        // A server index past that of a spin box
        row("QvelDialogWidgetExpandedNodeId", expanded(0x80000000u), expanded(0));
        row("QvelEditWidgetExpandedNodeId", expanded(0x80000000u), expanded(0));
        // Values and bits without a name
        row("QvelWidgetEnum", V(OpcUa_Int32(7)), V(OpcUa_Int32(0)));
        row("QvelWidgetEnumFlags", V(OpcUa_Int32(9)), V(OpcUa_Int32(1)));
        row("QvelWidgetValueRank", V(OpcUa_Int32(3)), V(OpcUa_Int32(0)));
        row("QvelWidgetEventNotifierMask", V(OpcUa_Byte(3)), V(OpcUa_Byte(1)));
        row("QvelWidgetAccessLevelMask", V(OpcUa_Byte(0xff)), V(OpcUa_Byte(0x0f)));
        row("QvelWidgetWriteMask", V(OpcUa_UInt32(0xffffffff)), V(OpcUa_UInt32(0x3fffff)));
        // Bytes that are no UTF-8, and any type as its text
        row("QvelEditWidgetString", variantOf(&V::setString, "a\xff\xc3"),
            variantOf(&V::setString, "a\xef\xbf\xbd\xef\xbf\xbd"));
        row("QvelEditWidgetString", V(OpcUa_Int32(-7)), variantOf(&V::setString, "-7"));
    }
    void losses()
    {
        QFETCH(QByteArray, editor);
        QFETCH(UaVariant, given);
        QFETCH(UaVariant, kept);
        const Editor lossy = editorNamed(editor);
        lossy.setValue(given);
        bool ok = false;
        QVERIFY(lossy.value(&ok) == kept);
        QVERIFY(ok);
    }

    void combinedFlagIsCheckedByAnyOfItsBits()
    {
        QvelWidgetEnumFlags flags({{3, "Both"}, {4, "Other"}});
        flags.setEnumValue(1);
        QCOMPARE(flags.enumValue(nullptr), 3);
    }

    // The value stays, its spelling does not.
    void spellingIsNormalised()
    {
        QvelWidgetByteString bytes;
        auto* edit = bytes.findChild<QLineEdit*>();
        QTest::keyClicks(edit, "0x0A0b");
        bytes.setValue(bytes.value(nullptr));
        QCOMPARE(edit->text(), QString("0a0b"));
        for (const char* empty : {"", "0x", "0X"}) {
            edit->setText(empty);
            bool ok = false;
            QVERIFY(bytes.byteString(&ok).length() == 0 && ok);
        }
        QvelWidgetGuid guid;
        edit = guid.findChild<QLineEdit*>();
        edit->setText("{0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0}");
        guid.setValue(guid.value(nullptr));
        QCOMPARE(edit->text(), QString("{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}"));
    }

    void typedHalfOfASurrogatePair()
    {
        QvelWidgetXmlElement xml;
        xml.findChild<QLineEdit*>()->setText(QString("a") + QChar(0xd800) + "b");
        QCOMPARE(xml.xmlElement(nullptr).bytes(), QByteArray("a?b"));
    }
};

QTEST_MAIN(EditorContractTest)
#include "tst_editorcontract.moc"
