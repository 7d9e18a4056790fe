// The edit fields of ByteString, XmlElement and String: files, summaries and hostile input.

#include "editorcases.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <Kestrel/QvelDisplayDialog>

#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextEdit>
#include <QtWidgets/QToolButton>

#include <sys/stat.h>

namespace {

using Settings = MemoryStore<QvelSettingsCBInterface>;

// The buttons and the line of an edit field.
struct Field : Editor
{
    explicit Field(const QByteArray& type, int flags = 0)
        : Editor(editorNamed("QvelEditWidget" + type, flags))
    {
        line = controls<QLineEdit>(widget.get()).constFirst();
        showButton = controls<QToolButton>(widget.get()).constFirst();
        fileButton = controls<QToolButton>(widget.get()).constLast();
        dialog = widget->findChild<QvelDisplayDialog*>();
        widget->show();
    }

    void setSettings(Settings* settings)
    {
        const auto set = [settings](auto* w) {
            return w ? w->setSettingsCBInterface(settings) : void();
        };
        set(qobject_cast<QvelEditWidgetByteString*>(widget.get()));
        set(qobject_cast<QvelEditWidgetXmlElement*>(widget.get()));
        set(qobject_cast<QvelEditWidgetString*>(widget.get()));
    }

    // Clicks the button and chooses a file, or cancels when there is no name; gives the chooser's
    // title and the file name that it proposes.
    QStringList choose(const QString& name)
    {
        QStringList seen;
        QTimer::singleShot(0, [&] {
            auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!chooser)
                return;
            seen << chooser->windowTitle() << chooser->selectedFiles().value(0);
            chooser->setOption(QFileDialog::DontConfirmOverwrite);
            auto* edit = chooser->findChild<QLineEdit*>("fileNameEdit");
            edit->setText(name);
            const auto* buttons = chooser->findChild<QDialogButtonBox*>();
            if (name.isEmpty()) {
                QTest::mouseClick(buttons->button(QDialogButtonBox::Cancel), Qt::LeftButton);
            } else if (QFileInfo(name).isFile()) {
                QTest::keyClick(edit, Qt::Key_Return);
            } else {
                // The chooser refuses what is no file now, but that may change after the choice.
                static_cast<QDialog*>(chooser)->done(QDialog::Accepted);
            }
        });
        QTest::mouseClick(fileButton, Qt::LeftButton);
        return seen;
    }

    void writeInDialog(const QString& text)
    {
        QTest::mouseClick(showButton, Qt::LeftButton);
        auto* edit = dialog->findChild<QTextEdit*>();
        edit->selectAll();
        edit->insertPlainText(text);
        auto* buttons = dialog->findChild<QDialogButtonBox*>();
        QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
    }

    UaVariant validValue() const
    {
        bool ok = false;
        const UaVariant v = value(&ok);
        return ok ? v : UaVariant();
    }

    QLineEdit* line;
    QToolButton* showButton;
    QToolButton* fileButton;
    QvelDisplayDialog* dialog;
};

UaVariant typedValue(const QByteArray& type, const QByteArray& bytes)
{
    if (type == "ByteString")
        return variantOf(&UaVariant::setByteString, UaByteString(bytes));
    if (type == "XmlElement")
        return variantOf(&UaVariant::setXmlElement, UaByteString(bytes));
    return variantOf(&UaVariant::setString, UaString(bytes));
}

constexpr const char* types[] = {"ByteString", "XmlElement", "String"};

} // namespace

class LongValueEditorsTest : public QObject
{
    Q_OBJECT
    QTemporaryDir m_dir;

    QString path(const char* name) const { return m_dir.filePath(name); }
    QString file(const char* name, const QByteArray& contents) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
            qFatal("cannot write %s", name);
        return file.fileName();
    }
    static QByteArray contents(const QString& name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    }
    static void addTypes()
    {
        QTest::addColumn<QByteArray>("type");
        for (const char* type : types)
            QTest::newRow(type) << QByteArray(type);
    }

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void init() { failOnWarnings(); }

    void loading_data() { addTypes(); }
    void loading()
    {
        QFETCH(QByteArray, type);
        Field field(type);
        Settings settings;
        field.setSettings(&settings);
        const UaVariant manual = typedValue(type, "typed");
        field.setValue(manual);
        const QString summary = field.line->text();
        QCOMPARE(field.fileButton->text(), QString("Load file..."));

        // Cancelled: nothing but the key was read.
        QCOMPARE(field.choose({}).value(0), QString("Load"));
        QVERIFY(!field.fileButton->isChecked() && field.showButton->isEnabled());
        QCOMPARE(field.line->text(), summary);
        QVERIFY(field.validValue() == manual);
        QVERIFY(settings.reads == 1 && settings.written.isEmpty() && !settings.isOpen());

        field.told->clear();
        const QString name = file("value %1.bin", "<b>\n");
        field.choose(name);
        const QByteArray kept = type == "String" ? "<b>" : "<b>\n";
        QVERIFY(field.validValue() == typedValue(type, kept));
        QCOMPARE(field.line->text(), "Using file '" + name + "'");
        QCOMPARE(field.line->cursorPosition(), 0);
        QVERIFY(field.line->isReadOnly() && field.fileButton->isChecked());
        QVERIFY(!field.showButton->isEnabled());
        QCOMPARE(field.fileButton->toolTip(), QString("Click again to enter value manually"));
        QCOMPARE(field.told->size(), 2);
        QVERIFY(field.told->constLast().value == typedValue(type, kept));
        QVERIFY(settings.reads == 2 && !settings.isOpen());
        const QString key = "QvelEditWidget" + type + ".LastLoadFilename";
        QCOMPARE(settings.values, (QHash<QString, QVariant>{{key, name}}));
        // The file is read afresh each time, even when a value was set meanwhile.
        file("value %1.bin", "other\n");
        field.setValue(typedValue(type, "stored"));
        QVERIFY(field.validValue() == typedValue(type, type == "String" ? "other" : "other\n"));

        QTest::mouseClick(field.fileButton, Qt::LeftButton);
        QVERIFY(settings.written.size() == 1 && !settings.isOpen());
        QVERIFY(!field.fileButton->isChecked() && field.showButton->isEnabled());
        QVERIFY(field.fileButton->toolTip().isEmpty() && field.line->text().isEmpty());
        QVERIFY(!field.line->isReadOnly());
        QVERIFY(field.validValue() == typedValue(type, type == "String" ? "" : "stored"));
        // Typing reaches only the value of a String.
        QTest::keyClicks(field.line, "t");
        QVERIFY(field.validValue() == typedValue(type, type == "String" ? "t" : "stored"));
        // The next chooser starts at the last file.
        QCOMPARE(field.choose({}).value(1), name);
    }

    void lastByteOfATextFile()
    {
        Field field("String");
        QVERIFY(field.choose(file("text", "")).size());
        const QList<QPair<QByteArray, QByteArray>> texts = {
            {"", ""}, {"abc\n", "abc"}, {"abc", "ab"}, {"a", ""}, {QByteArray("a\0bc", 4), "a"}};
        for (const auto& [bytes, text] : texts) {
            file("text", bytes);
            QVERIFY2(field.validValue() == typedValue("String", text), bytes);
        }
    }

    void saving_data() { addTypes(); }
    void saving()
    {
        QFETCH(QByteArray, type);
        Field field(type, QvelEditWidgetBase::ReadOnly);
        QCOMPARE(field.fileButton->text(), QString("Save as..."));
        QVERIFY(!field.fileButton->isCheckable());
        const QByteArray bytes = "Gr\xc3\xbc\xc3\x9f" + QByteArray("e\0\n", 3);
        field.setValue(typedValue(type, bytes));
        const QString name = file("saved", "longer than what is written over it");
        QCOMPARE(field.choose(name).value(0), QString("Save"));
        QCOMPARE(contents(name), bytes);
        QVERIFY(field.showButton->isEnabled() && field.validValue() == typedValue(type, bytes));
        QFile::remove(name);
        field.choose({});
        QVERIFY(!QFile::exists(name));
        // Where nothing can be written, only the name is kept.
        Settings settings;
        field.setSettings(&settings);
        const QByteArray pipe = QFile::encodeName(path("save pipe"));
        mkfifo(pipe.constData(), 0600);
        const QString key = "QvelEditWidget" + type + ".LastSaveFilename";
        for (const QString& bad : {m_dir.path(), path("none/such"), QString(pipe)}) {
            field.choose(bad);
            QCOMPARE(settings.values[key].toString(), bad);
            QVERIFY(!settings.isOpen());
        }
    }

    void badFiles_data() { addTypes(); }
    void badFiles()
    {
        QFETCH(QByteArray, type);
        Field field(type);
        const QByteArray pipe = QFile::encodeName(path("pipe"));
        mkfifo(pipe.constData(), 0600);
        QFile sparse(path("sparse"));
        QVERIFY(sparse.open(QIODevice::WriteOnly) && sparse.resize(qint64(2) << 30));
        for (const QString& name : {path("vanished"), sparse.fileName(), QString(pipe),
                                    m_dir.path(), QString("/dev/zero")}) {
            QVERIFY(!field.choose(name).isEmpty());
            QVERIFY2(field.fileButton->isChecked(), qPrintable(name));
            bool ok = true;
            QVERIFY2(field.value(&ok).isEmpty(), qPrintable(name));
            QVERIFY(!ok);
            QVERIFY(field.value(nullptr) == typedValue(type, ""));
            QVERIFY(field.told->constLast().value == typedValue(type, ""));
            QTest::mouseClick(field.fileButton, Qt::LeftButton);
        }
        field.choose(file("empty", ""));
        QVERIFY(field.validValue() == typedValue(type, ""));
    }

    void summaries()
    {
        for (int length : {0, 99, 100, 101}) {
            const QString start = QString("Length=%1, Content=").arg(length);
            const QString end = length < 100 ? "" : "...";
            const int shown = std::min(length, 100);
            Field bytes("ByteString");
            bytes.setValue(typedValue("ByteString", QByteArray(length, '\xab')));
            QCOMPARE(bytes.line->text(), start + QString("ab").repeated(shown) + end);
            QCOMPARE(bytes.line->cursorPosition(), 0);
            Field xml("XmlElement");
            xml.setValue(typedValue("XmlElement", QByteArray(length, 'x')));
            QCOMPARE(xml.line->text(), start + QString("x").repeated(shown) + end);
        }
    }

    void byteStringDialog_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("prefix") << "0X00fF" << QByteArray("\0\xff", 2);
        QTest::newRow("empty") << "" << QByteArray("");
        QTest::newRow("space") << "00 ff" << QByteArray();
        QTest::newRow("line end") << "00ff\n" << QByteArray();
        QTest::newRow("odd") << "00f" << QByteArray();
        QTest::newRow("other digits") << QString(QChar(0x0663)).repeated(2) << QByteArray();
    }
    void byteStringDialog()
    {
        QFETCH(QString, text);
        QFETCH(QByteArray, bytes);
        Field field("ByteString");
        field.setValue(typedValue("ByteString", "\x01"));
        QTest::mouseClick(field.showButton, Qt::LeftButton);
        QCOMPARE(field.dialog->text(), QString("01"));
        QString title, message;
        QTimer timer;
        connect(&timer, &QTimer::timeout, [&] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                title = box->windowTitle();
                message = box->text();
                QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
            }
        });
        timer.start(1);
        field.writeInDialog(text);
        const bool valid = !bytes.isNull();
        QCOMPARE(title, QString(valid ? "" : "Conversion Error"));
        QCOMPARE(message, QString(valid ? "" : "The ByteString entered was not valid!"));
        QVERIFY(field.validValue() == typedValue("ByteString", valid ? bytes : "\x01"));
    }

    // What looks like HTML is taken for it when the dialog opens.
    void textDialogs()
    {
        for (const char* type : {"XmlElement", "String"}) {
            Field field(type);
            field.writeInDialog("  <a>\n\tx \u6c34</a>");
            QVERIFY(field.validValue() == typedValue(type, "  <a>\n\tx \u6c34</a>"));
            field.setValue(typedValue(type, "<b>bold</b>"));
            QTest::mouseClick(field.showButton, Qt::LeftButton);
            QCOMPARE(field.dialog->text(), QString("bold"));
        }
    }

    // Line ends, controls and marks of direction are kept; a paste is cut at a line's limit.
    void hostilePastes_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < editorCases().size(); ++i)
            QTest::newRow(editorCases().at(i).name) << i;
    }
    void hostilePastes()
    {
        QFETCH(int, index);
        const EditorCase& c = editorCases().at(index);
        const QString odd = QString("a\r\n\t\u0001\u200f\u202e\u0007") + QChar(0) + "z";
        const Editor editor = c.create(0);
        for (auto* edit : editor.widget->findChildren<QLineEdit*>()) {
            for (const QString& text : {QString(10'000'000, u'7'), odd}) {
                edit->selectAll();
                edit->insert(text);
                QVERIFY(edit->text().size() <= 32767);
                bool ok = false;
                editor.value(&ok);
                editor.value(nullptr);
            }
        }
        if (c.type == OpcUaType_XmlElement && c.shape == Shape::Inline)
            QCOMPARE(editor.value(nullptr).toXmlElement().bytes(), odd.toUtf8());
        if (c.type == OpcUaType_String)
            QVERIFY(editor.value(nullptr).toString() == stringOf(odd));
        if (c.type == OpcUaType_LocalizedText)
            QVERIFY(editor.value(nullptr).toLocalizedText().locale() == stringOf(odd));
    }
};

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication app(argc, argv);
    LongValueEditorsTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_longvalueeditors.moc"
