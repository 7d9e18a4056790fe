#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelWidgetNodeId>
#include <Kestrel/UaVariant>

#include "support/warnings.h"

#include <QtTest/QtTest>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

namespace {

// Both editors behind one face, so that every case runs on both.
struct Editor
{
    explicit Editor(bool isDialog)
    {
        if (isDialog)
            adopt(new QvelDialogWidgetNodeId);
        else
            adopt(new QvelWidgetNodeId);
        spin = widget->findChild<QSpinBox*>();
        combo = widget->findChild<QComboBox*>();
        // The spin box has a line edit of its own.
        for (auto* edit : widget->findChildren<QLineEdit*>()) {
            if (edit->parent() != spin)
                line = edit;
        }
        widget->show();
    }

    template <class W>
    void adopt(W* w)
    {
        widget.reset(w);
        value = [w](bool* ok) { return w->value(ok); };
        nodeId = [w](bool* ok) { return w->nodeId(ok); };
        QObject::connect(w, &W::valueChanged, w, [this](const UaVariant& v) { lastValue = v; });
        QObject::connect(w, &W::nodeIdChanged, w, [this](const UaNodeId& id) { lastNodeId = id; });
    }

    // Replaces the identifier's text as a person does.
    void type(const QString& text)
    {
        line->setFocus();
        line->selectAll();
        QTest::keyClick(line, Qt::Key_Delete);
        QTest::keyClicks(line, text);
    }

    std::unique_ptr<QWidget> widget;
    std::function<UaVariant(bool*)> value;
    std::function<UaNodeId(bool*)> nodeId;
    QSpinBox* spin = nullptr;
    QComboBox* combo = nullptr;
    QLineEdit* line = nullptr;
    UaVariant lastValue;
    UaNodeId lastNodeId;
};

UaByteString bytes(const char* hex)
{
    return UaByteString(QByteArray::fromHex(hex));
}

UaVariant variantOf(const UaNodeId& id)
{
    UaVariant v;
    v.setNodeId(id);
    return v;
}

UaGuid guidOf(const char* text)
{
    UaGuid guid;
    guid.fromString(UaString(text));
    return guid;
}

constexpr const char* someGuid = "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}";

} // namespace

Q_DECLARE_METATYPE(OpcUa_IdentifierType)

class NodeIdEditorsTest : public QObject
{
    Q_OBJECT

    // Runs the caller's rows once for each class.
    static void forBoth(const char* tag, const std::function<void(QTestData&)>& fill)
    {
        for (bool isDialog : {false, true}) {
            fill(QTest::addRow("%s, %s", isDialog ? "dialog" : "inline", tag) << isDialog);
        }
    }

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void typedText_data()
    {
        QTest::addColumn<bool>("isDialog");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<UaNodeId>("expected");
        const auto row = [](const char* tag, int type, const char* text, bool valid, UaNodeId id) {
            forBoth(tag, [&](QTestData& d) { d << type << QString(text) << valid << id; });
        };
        row("number", 0, "85", true, UaNodeId(85, 3));
        row("largest typed number", 0, "2147483647", true, UaNodeId(2147483647, 3));
        row("number past the validator", 0, "21474836470", true, UaNodeId(2147483647, 3));
        row("negative number", 0, "-1", false, UaNodeId(0, 3));
        row("no number", 0, "", false, UaNodeId(0, 3));
        row("string", 1, "Pump <b>1</b>", true, UaNodeId(UaString("Pump <b>1</b>"), 3));
        row("empty string", 1, "", true, UaNodeId(UaString(""), 3));
        row("guid", 2, "{0F1E2D3C-4b5a-6978-8796-a5b4c3d2e1f0}", true,
            UaNodeId(guidOf(someGuid), 3));
        row("half a guid", 2, "{0F1E", false, UaNodeId());
        row("opaque", 3, "0xAbCd", true, UaNodeId(bytes("abcd"), 3));
        row("opaque, other prefix", 3, "0XabCD", true, UaNodeId(bytes("abcd"), 3));
        row("opaque, empty", 3, "0x", true, UaNodeId(bytes(""), 3));
        row("opaque, odd", 3, "0xABC", false, UaNodeId());
        row("opaque, no digit", 3, "0xGG", true, UaNodeId(bytes(""), 3));
    }
    void typedText()
    {
        QFETCH(bool, isDialog);
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(UaNodeId, expected);
        Editor editor(isDialog);
        editor.spin->setValue(3);
        editor.combo->setCurrentIndex(type);
        if (type == 2)
            editor.line->home(false);
        editor.type(text);

        bool ok = !valid;
        const UaVariant value = editor.value(&ok);
        QCOMPARE(ok, valid);
        QVERIFY(value == (valid ? variantOf(expected) : UaVariant()));
        // Without a flag the fallback comes through, and the signals carry it.
        QVERIFY(editor.nodeId(nullptr) == expected);
        QVERIFY(editor.lastValue == variantOf(expected));
        QVERIFY(editor.lastNodeId == expected);
    }

    // Texts that no key lets in, but that a host can set.
    void opaqueTextDropsEveryPrefix()
    {
        Editor editor(false);
        editor.combo->setCurrentIndex(OpcUa_IdentifierType_Opaque);
        bool ok = false;
        for (const char* text : {"0x0x1F", "1F", "0X1F", "10xF", "0x1f"}) {
            editor.line->setText(text);
            QVERIFY2(editor.nodeId(&ok) == UaNodeId(bytes("1f"), 0) && ok, text);
        }
        editor.line->setText("0x1F\n");
        QVERIFY(editor.nodeId(&ok).isNull() && !ok);
    }

    void typeChangesTheDefaultText()
    {
        Editor editor(false);
        QCOMPARE(editor.line->text(), QString("0"));
        const QStringList texts = {"0", "", "{00000000-0000-0000-0000-000000000000}", "0x0"};
        const QStringList names = {"Numeric", "String", "Guid", "Opaque"};
        for (int type : {1, 2, 3, 0}) {
            QTest::keyClick(editor.combo, type ? Qt::Key_Down : Qt::Key_Home);
            QCOMPARE(editor.combo->currentText(), names[type]);
            QCOMPARE(editor.line->text(), texts[type]);
        }
        editor.combo->setCurrentIndex(3);
        bool ok = true;
        QVERIFY(editor.value(&ok).isEmpty() && !ok); // "0x0" is an odd number of digits
    }

    void dialogRowsStandBelowEachOther()
    {
        Editor editor(true);
        QVERIFY(editor.spin->geometry().bottom() < editor.combo->geometry().top());
        QVERIFY(editor.combo->geometry().bottom() < editor.line->geometry().top());
        for (auto* label : editor.widget->findChildren<QLabel*>())
            QCOMPARE(label->geometry().top(), label->buddy()->geometry().top());
    }

    void hostileTexts()
    {
        Editor editor(false);
        editor.combo->setCurrentIndex(OpcUa_IdentifierType_String);
        const QString text = QString::fromUtf8("a\u202e\u0001") + QChar(0xd800) + QChar(0) + 'z';
        editor.line->setText(text);
        bool ok = false;
        editor.value(&ok);
        QVERIFY(ok);
        // A paste of any size ends in the longest text that a line edit holds.
        editor.line->selectAll();
        editor.line->insert(QString(10'000'000, '7'));
        QVERIFY(editor.nodeId(nullptr).toString().size() <= 32767);
        for (int type : {0, 2, 3}) {
            editor.combo->setCurrentIndex(type);
            editor.line->setText(text);
            editor.value(&ok);
            QVERIFY(!ok);
        }
    }
};

QTEST_MAIN(NodeIdEditorsTest)
#include "tst_nodeideditors.moc"
