// What every value editor has in common, the texts that it takes, and lists of check boxes.

#include "editorcases.h"
#include "support/modaluser.h"
#include "support/warnings.h"

#include <Kestrel/QvelDisplayDialog>
#include <Kestrel/QvelEnumInfo>

namespace {

constexpr quint32 seed = 20240229;
constexpr int randomCount = 1000;

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
    void initTestCase()
    {
        qInfo("random values of seed %u", seed);
        // First of all, since nothing else may have registered a type before.
        for (const EditorCase& c : editorCases()) {
            const std::unique_ptr<QWidget> w(c.create(0));
            QCOMPARE(w->metaObject()->userProperty().name(), "value");
            for (int i = 0; i < w->metaObject()->methodCount(); ++i) {
                for (const QByteArray& type : w->metaObject()->method(i).parameterTypes())
                    QVERIFY2(!type.startsWith("Ua") || QMetaType::fromName(type).isValid(), type);
            }
        }
    }
    void init()
    {
        // A font that lacks the script of a random text warns.
        if (qstrcmp(QTest::currentTestFunction(), "randomValues") != 0)
            failOnWarnings();
    }

    void values_data() { addCases(); }
    void values()
    {
        const EditorCase& c = current();
        const V& first = c.first;
        for (int way = 0; way < 8; ++way) {
            const int flags = way % 4;
            Editor editor(c.create(way < 4 ? flags : 3 - flags));
            QVERIFY(editor.widget->setProperty("flags", flags)); // or from the beginning
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
            for (const V& value : {first, c.second, first}) {
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
            editor.focusOuts = 0;
            QFocusEvent leave(QEvent::FocusOut);
            if (control)
                QCoreApplication::sendEvent(control, &leave);
            QCOMPARE(editor.focusOuts, int(isSingle));
        }
    }

    void randomValues_data() { addCases(); }
    void randomValues()
    {
        QRandomGenerator random(seed);
        Editor editor(current().create(0));
        for (int i = 0; i < randomCount; ++i) {
            const V value = current().random(random);
            editor.told.clear();
            editor.setValue(value);
            QVERIFY2(editor.value() == value, value.toFullString().toUtf8());
            QVERIFY(editor.told.isEmpty() || editor.toldValue == value);
            for (auto* line : editor.all<QLineEdit>())
                QVERIFY(line->cursorPosition() == 0 || line->text().size() < 18);
        }
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
        const V& first = current().first;
        for (int start : {0, 3, 4, 7}) {
            const int flags = start % 4;
            Editor editor(current().create(start < 4 ? flags : 3 - flags));
            QVERIFY(editor.widget->setProperty("flags", flags));
            auto* dialog = editor.widget->findChild<QDialog*>();
            auto* buttons = dialog->findChild<QDialogButtonBox*>();
            auto* area = dialog->findChild<QTextEdit*>();
            if (const auto* typed = qobject_cast<QvelDialogWidgetBase*>(dialog)) // read-only or not
                QCOMPARE(int(typed->flags()), flags & QvelDialogWidgetBase::ReadOnly);
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
        editor.setValue(current().first);
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

    void texts()
    {
        struct Text
        {
            const char* editor;
            int type; // of the identifier, -1 for other editors
            QString text;
            QString shown; // null if the host sets it, past validator and mask
            V value;       // that an invalid text stands for
            bool valid = true;
        };
        const auto bytes = [](const char* hex) { return UaByteString(QByteArray::fromHex(hex)); };
        const auto opaque = [&](const char* hex) { return V(UaNodeId(bytes(hex), 3)); };
        const char *node = "QvelWidgetNodeId", *byteString = "QvelWidgetByteString";
        const char *guid = "QvelWidgetGuid", *code = "QvelWidgetStatusCode";
        const QString digits = "0F1e2d3c4b5a69788796a5b4c3d2e1f0";
        const QString braced = "{0F1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}";
        const UaGuid whole{QUuid(braced)};
        const V none(UaNodeId(0, 3)), null{UaNodeId()};
        const QList<Text> rows = {
            {node, 0, "21474836470", "2147483647", V(UaNodeId(2147483647, 3))},
            {"QvelDialogWidgetExpandedNodeId", 0, "-1", "-1",
             V(UaExpandedNodeId(UaNodeId(0, 3), "", 0)), false},
            {node, 0, "", "", none, false},
            {node, 1, "<b>1</b>", "<b>1</b>", V(UaNodeId(UaString("<b>1</b>"), 3))},
            {node, 1, "", "", V(UaNodeId(UaString(""), 3))},
            {node, 2, braced, braced, V(UaNodeId(whole, 3))},
            {node, 2, "{0F1E", "{0F1E----}", null, false},
            {node, 3, "0xAbCd", "0xAbCd", opaque("abcd")},
            {node, 3, "0X", "0X", opaque("")},
            {node, 3, "0xABC", "0xABC", null, false},
            {node, 3, "0xGG", "0x", opaque("")},
            {node, 3, "0x0x1F", {}, opaque("1f")},
            {node, 3, "10xF", {}, opaque("1f")},
            {node, 3, "0x1F\n", {}, null, false},
            {byteString, -1, "0x0A0b", "0x0A0b", V(bytes("0a0b"))},
            {byteString, -1, "0X", "0X", V(bytes(""))},
            {byteString, -1, "0xA", "0xA", V(bytes("")), false},
            {guid, -1, "zz" + digits + "77", braced, V(whole)},
            {guid, -1, digits.chopped(1), braced.chopped(2) + "}", V(UaGuid()), false},
            {code, -1, "80AB0000", "0x80AB0000", V(UaStatusCode(0x80ab0000u))},
            {code, -1, "8", "0x8", V(UaStatusCode(8))},
            {code, -1, "", "0x", V(UaStatusCode(0)), false},
            {"QvelWidgetXmlElement", -1, QString("a") + QChar(0xd800), {}, xmlElement("a?")}};
        for (const auto& [name, type, text, shown, value, valid] : rows) {
            Editor e(createNamed(name));
            e.widget->show();
            auto* line = e.lastLine();
            if (type >= 0) {
                e.all<QSpinBox>().constLast()->setValue(3);
                for (int other : {type == 0 ? 1 : 0, type})
                    e.all<QComboBox>().constFirst()->setCurrentIndex(other);
                const QStringList initial = {"0", "", QUuid().toString(), "0x0"};
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
            QVERIFY2(e.value(&ok) == (valid ? value : V()) && ok == valid, qPrintable(text));
            QVERIFY2(e.value() == (valid ? value : V()), qPrintable(text));
            QVERIFY2(e.value(nullptr) == value, qPrintable(text));
            if (valid && type < 0) { // read and set again, it is spelled as the editors spell it
                e.setValue(value);
                QVERIFY(line->text() == line->text().toLower() && e.value() == value);
                QVERIFY(name != code || line->text().size() == 10);
            }
        }
    }

    void enumTexts()
    {
        const QMap<int, QString> flags = {{0, "None"}, {1, "A"}, {2, "B"}, {4, "C"}};
        struct Row
        {
            int kind;
            QMap<int, QString> names;
            int value;
            const char* text;
        };
        for (const Row& row : {Row{0, flags, 1, "1"},
                               {3, flags, 1, "1"}, // a kind that there is none of
                               {1, {{1, "A"}}, 1, "1 (A)"},
                               {1, {{1, "A"}}, 2, "2"},
                               {1, {{-3, "%1 low"}}, -3, "-3 (%1 low)"},
                               {2, flags, 5, "5 (A | C)"},
                               {2, flags, 0, "0 (None)"},
                               {2, flags, 8, "8"}, // a bit without a name is not "None"
                               {2, flags, -1, "-1 (A | B | C)"},
                               {2, {{1, "A"}}, 0, "0"},
                               {2, {{3, "AB"}}, 1, "1 (AB)"}, // any common bit
                               {2, {{INT_MIN, "H"}, {1, "A"}}, INT_MIN, "-2147483648 (H)"}}) {
            QvelEnumInfo info;
            info.kind = row.kind;
            info.values = row.names;
            QCOMPARE(info.toString(row.value), QString(row.text));
        }
    }

    void losses()
    {
        const V server(UaExpandedNodeId(UaNodeId(1), "", 0x80000000u));
        const std::tuple<const char*, V, V> rows[] = {
            // A server index past that of a spin box
            {"QvelEditWidgetExpandedNodeId", server, V(UaExpandedNodeId(UaNodeId(1), "", 0))},
            // Values and bits without a name, and any bit that a name has in common with the value
            {"QvelWidgetEnum", V(7), V(0)},
            {"QvelWidgetEnumFlags", V(9), V(1)},
            {"QvelWidgetValueRank", V(3), V(0)},
            // Bytes that are no UTF-8, and any type as its text
            {"QvelEditWidgetString", V("a\xff\xc3"), V("a\xef\xbf\xbd\xef\xbf\xbd")},
            {"QvelEditWidgetString", V(-7), V("-7")}};
        for (const auto& [name, given, kept] : rows) {
            Editor lossy(createNamed(name));
            lossy.setValue(given);
            QVERIFY2(lossy.value() == kept, name);
        }
        QvelWidgetEnumFlags flags({{3, "Both"}, {4, "Other"}});
        flags.setEnumValue(1);
        QCOMPARE(flags.enumValue(), 3);
    }

    // Random use of a list of flags, by mouse and keys.
    void useOfFlags()
    {
        QvelWidgetAccessLevelMask editor;
        auto* combo = editor.findChild<QComboBox*>();
        auto* view = combo->view();
        QSignalSpy changed(&editor, &QvelWidgetAccessLevelMask::accessLevelMaskChanged);
        editor.show();
        QVERIFY(QTest::qWaitForWindowActive(&editor));
        combo->setFocus();
        QRandomGenerator random(seed);
        const auto press = [&](Qt::Key key) { // to wherever the window system would send it
            const QWidget* popup = QApplication::activePopupWidget();
            QTest::keyClick((popup ? popup : &editor)->windowHandle(), key);
        };
        const auto click = [&](int row, int x, Qt::MouseButton button = Qt::LeftButton) {
            const QPoint place(x, view->visualRect(view->model()->index(row, 0)).center().y());
            if (random.bounded(2)) // not by touch
                QTest::mouseMove(view->viewport(), place);
            QWidget* child = view->viewport()->childAt(place);
            QWidget* hit = child ? child : view->viewport();
            QTest::mouseClick(hit, button, {}, hit->mapFrom(view->viewport(), place));
        };
        int row = 0, told = 0;
        OpcUa_Byte bits = 0;
        for (int i = 0; i < 1000; ++i) {
            if (!view->isVisible()) {
                const int by = random.bounded(3);
                by == 0   ? QTest::mouseClick(combo, Qt::LeftButton)
                : by == 1 ? press(Qt::Key_F4)
                          : combo->showPopup();
                row = view->currentIndex().row();
                continue;
            }
            const Qt::Key moves[] = {Qt::Key_Home, Qt::Key_End, Qt::Key_Up, Qt::Key_Down};
            const Qt::Key ends[] = {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter};
            const int to[] = {0, 3, std::max(row - 1, 0), std::min(row + 1, 3)};
            const int any = random.bounded(4), operation = random.bounded(12);
            const OpcUa_Byte before = bits;
            bool stays = true;
            if (operation < 4) { // on the name and beside it
                row = any;
                bits ^= OpcUa_Byte(1 << row);
                click(row, random.bounded(2) ? 10 : view->viewport()->width() - 2);
            } else if (operation < 6) {
                bits ^= OpcUa_Byte(1 << row);
                press(Qt::Key_Space);
            } else if (operation < 9) {
                row = to[any];
                press(moves[any]);
            } else if (operation == 9) { // by the host
                bits = OpcUa_Byte(random.bounded(16));
                editor.setAccessLevelMask(bits);
            } else if (operation == 10) { // another button; pressed elsewhere
                click(row, 10, Qt::RightButton);
                QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, QPoint(10, 5));
            } else {
                press(ends[any % 3]);
                stays = false;
            }
            told += int(qPopulationCount(quint8(before ^ bits)));
            QCOMPARE(view->isVisible(), stays);
            QCOMPARE(editor.accessLevelMask(), bits);
            QCOMPARE(changed.count(), told);
            QVERIFY(!told || changed.constLast().constFirst().value<OpcUa_Byte>() == bits);
        }
    }

    // A click on the only entry counts, and a list of none does not open.
    void shortLists()
    {
        QvelWidgetEnumFlags none({{0, "None"}}), one({{8, "Only"}});
        for (auto* editor : {&none, &one}) {
            editor->show();
            auto* combo = editor->findChild<QComboBox*>();
            QCOMPARE(combo->toolTip(), QString(editor == &none ? "None" : ""));
            combo->showPopup();
            QCOMPARE(combo->view()->isVisible(), editor == &one);
        }
        auto* check = one.findChild<QComboBox*>()->view()->findChild<QCheckBox*>();
        QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(10, check->height() / 2));
        QCOMPARE(one.enumValue(), 8);
        // The current entry has the colours of a selection.
        QCOMPARE(check->grab().toImage().pixelColor(check->width() - 2, 2),
                 check->palette().color(QPalette::Highlight));
    }

    // Each choice and each bit under its name, and none without one.
    void names()
    {
        QvelWidgetEnum named({{0, "None"}, {4, "Execute"}});
        named.setEnumValue(4);
        QCOMPARE(named.findChild<QComboBox*>()->currentText(), QString("4 (Execute)"));
        const QStringList ranks = {"ScalarOrOneDimension", "Any",          "Scalar",
                                   "OneOrMoreDimensions",  "OneDimension", "TwoDimensions"};
        QvelWidgetValueRank rank;
        for (int i = 0; i < rank.findChild<QComboBox*>()->count(); ++i) {
            QCOMPARE(rank.valueRank(), i - 3);
            QCOMPARE(rank.findChild<QComboBox*>()->currentText(),
                     QString("%1 (%2)").arg(ranks.value(i)).arg(i - 3));
            rank.setValueRank(i - 2);
        }
        const std::pair<const char*, const char*> masks[] = {
            {"QvelWidgetWriteMask",
             "AccessLevel ArrayDimensions BrowseName ContainsNoLoops DataType Description "
             "DisplayName EventNotifier Executable Historizing InverseName IsAbstract "
             "MinimumSamplingInterval NodeClass NodeId Symmetric UserAccessLevel UserExecutable "
             "UserWriteMask ValueRank WriteMask ValueForVariableType"},
            {"QvelWidgetBrowseResultMask",
             "ReferenceTypeId IsForward NodeClass BrowseName DisplayName TypeDefinition"},
            {"QvelWidgetDiagnosticsMask",
             "ServiceSymbolicId ServiceLocalizedText ServiceAdditionalInfo ServiceInnerStatusCode "
             "ServiceInnerDiagnostics OperationSymbolicId OperationLocalizedText "
             "OperationAdditionalInfo OperationInnerStatusCode OperationInnerDiagnostics"},
            {"QvelWidgetEventNotifierMask", "SubscribeToEvents None HistoryRead HistoryWrite"},
            {"QvelWidgetAccessLevelMask", "CurrentRead CurrentWrite HistoryRead HistoryWrite"}};
        for (const auto& [editor, names] : masks) {
            Editor e(createNamed(editor));
            const bool isByte = e.value().type() == OpcUaType_Byte;
            for (int bit = 0; bit < (isByte ? 8 : 32); ++bit) {
                const V value = isByte ? V(OpcUa_Byte(1 << bit)) : V(1u << bit);
                e.setValue(value);
                const QString name = QString(names).split(' ').value(bit, "None");
                QCOMPARE(e.widget->findChild<QComboBox*>()->toolTip(), name);
                QCOMPARE(e.value() == value, name != "None");
            }
        }
    }

    // To the eye, in the tool tip, and to assistive technology.
    void closedBoxTellsTheNames()
    {
        QvelEnumFlagsComboBox box({{0, "None"}, {1, "Read"}, {2, "<b>Write"}, {4, "Execute"}});
        const auto looksLike = [&box](const QString& text) {
            QComboBox plain;
            plain.addItem(text);
            plain.resize(box.size());
            return box.grab().toImage() == plain.grab().toImage();
        };
        box.resize(400, box.sizeHint().height());
        const auto* accessible = QAccessible::queryAccessibleInterface(&box);
        const QString all = "Read | <b>Write | Execute";
        for (const auto& [flags, text] : {std::pair(0, QString("None")), {7, all}}) {
            box.setFlags(flags);
            QCOMPARE(box.toolTip(), flags ? "<span>" + text.toHtmlEscaped() + "</span>" : text);
            QCOMPARE(accessible->text(QAccessible::Value), text);
            QVERIFY(looksLike(text));
        }
        box.resize(100, box.height());
        bool elided = false;
        for (int length = 1; length < all.size(); ++length)
            elided |= looksLike(all.left(length) + QChar(0x2026));
        QVERIFY(elided);
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
