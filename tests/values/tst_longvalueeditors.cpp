// The edit fields of ByteString, XmlElement and String: files, summaries and hostile input.

#include "editorcases.h"
#include "support/memorysettings.h"
#include "support/modaluser.h"
#include "support/store.h"
#include "support/warnings.h"

#include <sys/stat.h>

namespace {

using Settings = MemoryStore<QvelSettingsCBInterface>;

// The buttons and the line of an edit field.
struct Field : Editor
{
    explicit Field(const QByteArray& type, int flags = 0, Settings* settings = nullptr)
        : Editor(createNamed("QvelEditWidget" + type, flags))
    {
        useIn<QvelEditWidgetByteString>(settings);
        useIn<QvelEditWidgetXmlElement>(settings);
        useIn<QvelEditWidgetString>(settings);
        widget->show();
    }

    template <class W>
    void useIn(Settings* settings)
    {
        if (auto* field = qobject_cast<W*>(widget.get()))
            field->setSettingsCBInterface(settings);
    }

    // Clicks the button and chooses a file, or cancels when there is no name; gives the chooser's
    // title and the file name that it proposes.
    QStringList choose(const QString& name)
    {
        QStringList seen;
        ModalUser user([&](QDialog* modal) {
            auto* chooser = qobject_cast<QFileDialog*>(modal);
            seen << chooser->windowTitle() << chooser->selectedFiles().value(0);
            chooser->findChild<QLineEdit*>("fileNameEdit")->setText(name);
            // It refuses what is no file now, but that may change after the choice.
            modal->done(name.isEmpty() ? QDialog::Rejected : QDialog::Accepted);
        });
        QTest::mouseClick(fileButton, Qt::LeftButton);
        return seen;
    }

    void writeInDialog(const QString& text)
    {
        QTest::mouseClick(showButton, Qt::LeftButton);
        area->selectAll();
        area->insertPlainText(text);
        QTest::mouseClick(write, Qt::LeftButton);
    }

    QLineEdit* const line = lastLine();
    QToolButton* const showButton = all<QToolButton>().constFirst();
    QToolButton* const fileButton = all<QToolButton>().constLast();
    QDialog* const dialog = widget->findChild<QDialog*>();
    QTextEdit* const area = dialog->findChild<QTextEdit*>();
    QPushButton* const write = dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
};

V typedValue(const QByteArray& type, const QByteArray& bytes)
{
    return type == "ByteString"   ? V(UaByteString(bytes))
           : type == "XmlElement" ? xmlElement(bytes)
                                  : V(UaString(bytes));
}

} // namespace

class LongValueEditorsTest : public QObject
{
    Q_OBJECT
    Store m_store;
    QByteArray m_type;

    QString path(const char* name) const { return m_store.path(name); }
    QString pipe(const char* name) const
    {
        mkfifo(QFile::encodeName(path(name)).constData(), 0600);
        return path(name);
    }
private Q_SLOTS:
    void initTestCase_data()
    {
        QTest::addColumn<QByteArray>("type");
        for (const char* type : {"ByteString", "XmlElement", "String"})
            QTest::newRow(type) << QByteArray(type);
    }
    void init()
    {
        failOnWarnings();
        QFETCH_GLOBAL(QByteArray, type);
        m_type = type;
    }

    void loading()
    {
        const bool isString = m_type == "String";
        Settings settings;
        Field field(m_type, 0, &settings);
        const V manual = typedValue(m_type, "typed");
        field.setValue(manual);
        const QString summary = field.line->text();
        QCOMPARE(field.fileButton->text(), QString("Load file..."));

        // Cancelled: nothing but the key was read.
        QCOMPARE(field.choose({}).value(0), QString("Load"));
        QVERIFY(!field.fileButton->isChecked() && field.showButton->isEnabled());
        QCOMPARE(field.line->text(), summary);
        QVERIFY(field.value() == manual);
        QVERIFY(settings.reads == 1 && settings.written.isEmpty() && !settings.isOpen());

        field.told.clear();
        const QString name = m_store.put("value %1.bin", "<b>\n");
        field.choose(name);
        const V loaded = typedValue(m_type, isString ? "<b>" : "<b>\n");
        QVERIFY(field.value() == loaded);
        QCOMPARE(field.line->text(), "Using file '" + name + "'");
        QVERIFY(field.line->isReadOnly() && field.fileButton->isChecked());
        QVERIFY(!field.showButton->isEnabled());
        QCOMPARE(field.fileButton->toolTip(), QString("Click again to enter value manually"));
        QCOMPARE(field.told.size(), 2);
        QVERIFY(field.toldValue == loaded);
        QVERIFY(settings.reads == 2 && !settings.isOpen());
        const QString key = "QvelEditWidget" + m_type + ".LastLoadFilename";
        QCOMPARE(settings.values, (QHash<QString, QVariant>{{key, name}}));
        // The file is read afresh each time, even when a value was set meanwhile. The last byte of
        // a text makes room for the NUL that ends it.
        field.setValue(typedValue(m_type, "stored"));
        for (const QByteArray& bytes : {QByteArray(""), QByteArray("abc\n"), QByteArray("abc"),
                                        QByteArray("a"), QByteArray("a\0bc", 4)}) {
            m_store.put("value %1.bin", bytes);
            const QByteArray kept =
                isString ? QByteArray(bytes.chopped(!bytes.isEmpty()).constData()) : bytes;
            QVERIFY2(field.value() == typedValue(m_type, kept), bytes);
        }

        QTest::mouseClick(field.fileButton, Qt::LeftButton);
        QVERIFY(settings.written.size() == 1 && !settings.isOpen());
        QVERIFY(!field.fileButton->isChecked() && field.showButton->isEnabled());
        QVERIFY(field.fileButton->toolTip().isEmpty() && field.line->text().isEmpty());
        QVERIFY(field.value() == typedValue(m_type, isString ? "" : "stored"));
        // Typing reaches only the value of a String.
        QTest::keyClicks(field.line, "t");
        QCOMPARE(field.line->text(), QString("t"));
        QVERIFY(field.value() == typedValue(m_type, isString ? "t" : "stored"));
        QCOMPARE(field.choose({}).value(1), name); // the next chooser starts at the last file
    }

    void saving()
    {
        Settings settings;
        Field field(m_type, QvelEditWidgetBase::ReadOnly, &settings);
        QCOMPARE(field.fileButton->text(), QString("Save as..."));
        QVERIFY(!field.fileButton->isCheckable());
        const QByteArray bytes = "Gr\xc3\xbc\xc3\x9f" + QByteArray("e\0\n", 3);
        field.setValue(typedValue(m_type, bytes));
        const QString name = m_store.put("saved", "longer than what is written over it");
        QCOMPARE(field.choose(name).value(0), QString("Save"));
        QFile saved(name);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(saved.readAll(), bytes);
        QVERIFY(field.showButton->isEnabled() && field.value() == typedValue(m_type, bytes));
        // Where nothing can be written, only the name is kept.
        settings.written.clear();
        const QString key = "QvelEditWidget" + m_type + ".LastSaveFilename";
        for (const QString& bad : {m_store.dir.path(), path("none/such"), pipe("save pipe")}) {
            settings.values.clear();
            field.choose(bad);
            QCOMPARE(settings.values[key].toString(), bad);
            field.choose({});
            QVERIFY(settings.written.size() == 1 && !settings.isOpen());
            settings.written.clear();
        }
    }

    void badFiles()
    {
        Field field(m_type);
        QFile sparse(path("sparse"));
        QVERIFY(sparse.open(QIODevice::WriteOnly) && sparse.resize((qint64(512) << 20) + 1));
        for (const QString& name : {path("vanished"), sparse.fileName(), pipe("pipe"),
                                    m_store.dir.path(), QString("/dev/zero")}) {
            QVERIFY(!field.choose(name).isEmpty());
            QVERIFY2(field.fileButton->isChecked(), qPrintable(name));
            bool ok = true;
            QVERIFY2(field.value(&ok).isEmpty() && !ok, qPrintable(name));
            QVERIFY(field.value(nullptr) == typedValue(m_type, ""));
            QVERIFY(field.toldValue == typedValue(m_type, ""));
            QTest::mouseClick(field.fileButton, Qt::LeftButton);
        }
    }

    // Beyond its limit the dialog opens with a word about it, and leaves the value as it is.
    void lengths()
    {
        const bool isHex = m_type == "ByteString", isString = m_type == "String";
        Field field(m_type);
        const ModalUser user; // of a box that there should not be
        for (int length : {0, 99, 100, 101, 250'000, 250'001, 8'000'000, 250'000}) {
            const bool isWhole = length <= 250'000;
            const int count = isHex && length > 1000 ? (length + 1) / 2 : length;
            const QString unit = isHex ? "61" : "a";
            const V value = typedValue(m_type, QByteArray(count, 'a'));
            field.setValue(value);
            QCOMPARE(isString ? "" : field.line->text(),
                     isString
                         ? ""
                         : QString("Length=%1, Content=").arg(count) +
                               unit.repeated(std::min(count, 100)) + (count < 100 ? "" : "..."));
            QTest::mouseClick(field.showButton, Qt::LeftButton);
            QCOMPARE(field.area->toPlainText(),
                     isWhole ? unit.repeated(count)
                             : QString("The value is too long to be shown here, where texts of up "
                                       "to 250,000 characters are. It stays as it is."));
            QCOMPARE(field.area->isReadOnly(), !isWhole);
            QCOMPARE(field.write->isEnabled(), isWhole);
            field.dialog->accept();
            QVERIFY(field.value() == value);
        }
    }

    void dialogTexts()
    {
        const QString xml = "  <a>\n\tx \u6c34</a>";
        const QList<std::pair<QString, QByteArray>> texts = {{xml, xml.toUtf8()}};
        const QList<std::pair<QString, QByteArray>> hex = {
            {"0X00fF", QByteArray("\0\xff", 2)},
            {"", ""},
            {"00 ff", {}},
            {"00ff\n", {}},
            {"00f", {}},
            {QString(2, QChar(0x0663)), {}}}; // digits of another script
        for (const auto& [text, bytes] : m_type == "ByteString" ? hex : texts) {
            Field field(m_type);
            field.setValue(typedValue(m_type, "<b>A</b>"));
            QTest::mouseClick(field.showButton, Qt::LeftButton);
            // What looks like HTML is taken for it when the dialog opens.
            QCOMPARE(field.area->toPlainText(),
                     QString(m_type == "ByteString" ? "3c623e413c2f623e" : "A"));
            ModalUser user;
            field.writeInDialog(text);
            QStringList told;
            if (bytes.isNull()) // refused
                told << "W|Conversion Error|The ByteString entered was not valid!|OK";
            QCOMPARE(user.seen, told);
            QVERIFY(field.value() == typedValue(m_type, bytes.isNull() ? "<b>A</b>" : bytes));
        }
    }

    // The field may be gone when the chooser or the message box closes.
    void deletedMeanwhile()
    {
        for (int flags = 0; flags < (m_type == "ByteString" ? 3 : 2); ++flags) {
            Settings settings;
            Field field(m_type, flags, &settings);
            int shown = 0;
            QTimer watch;
            watch.callOnTimeout([&] {
                if (!QApplication::activeModalWidget())
                    return;
                ++shown;
                field.widget.reset();
            });
            watch.start(5);
            if (flags == 2) // the dialog instead of the chooser
                field.writeInDialog("zz");
            else
                QTest::mouseClick(field.fileButton, Qt::LeftButton);
            QCOMPARE(shown, 1);
            QVERIFY(!field.widget && !settings.isOpen() && settings.written.isEmpty());
        }
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
