#include "base/displaydialog.h"
#include "base/language.h"

#include <QtCore/QLocale>
#include <QtCore/QMetaProperty>
#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

#include <memory>

namespace {

using Widget = std::unique_ptr<QWidget>;

struct Maker
{
    const char* name;
    Widget (*make)();
};

const Maker makers[] = {
    {"QvelDisplayDialog", [] { return Widget(new QvelDisplayDialog); }},
    {"QvelDisplayDialog, read-only",
     [] { return Widget(new QvelDisplayDialog(QvelDisplayDialog::ReadOnly)); }},
};

void install(QLocale::Language language)
{
    QVERIFY(qvelInstallLanguage(QLocale(language)));
    QCoreApplication::processEvents();
}

// All texts of all that a widget is made of: its properties, and what models say in their headers.
QStringList texts(const QWidget* widget)
{
    QStringList found;
    QList<const QObject*> objects{widget};
    for (const QObject* child : widget->findChildren<QObject*>())
        objects << child;
    for (const QObject* object : objects) {
        const QMetaObject* meta = object->metaObject();
        const auto add = [&](const QString& what, const QString& text) {
            if (!text.isEmpty())
                found << QStringLiteral("%1 %2: %3").arg(meta->className(), what, text);
        };
        for (int i = 0; i < meta->propertyCount(); ++i) {
            if (meta->property(i).typeId() == QMetaType::QString)
                add(meta->property(i).name(), meta->property(i).read(object).toString());
        }
        if (const auto* combo = qobject_cast<const QComboBox*>(object)) {
            for (int i = 0; i < combo->count(); ++i)
                add("item", combo->itemText(i));
        }
        if (const auto* model = qobject_cast<const QAbstractItemModel*>(object)) {
            for (int i = 0; i < model->columnCount(); ++i) {
                for (const int role : {Qt::DisplayRole, Qt::ToolTipRole})
                    add("header", model->headerData(i, Qt::Horizontal, role).toString());
            }
        }
    }
    return found;
}

} // namespace

class tst_Language : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void followsTheLanguage_data()
    {
        QTest::addColumn<int>("maker");
        for (int i = 0; i < int(std::size(makers)); ++i)
            QTest::newRow(makers[i].name) << i;
    }
    void followsTheLanguage()
    {
        QFETCH(int, maker);
        install(QLocale::English);
        const Widget widget = makers[maker].make();
        widget->show();
        const QStringList english = texts(widget.get());
        install(QLocale::German);
        {
            const Widget fresh = makers[maker].make();
            fresh->show();
            QCOMPARE(texts(widget.get()), texts(fresh.get()));
        }
        QVERIFY(texts(widget.get()) != english);
        install(QLocale::English);
        QCOMPARE(texts(widget.get()), english);
    }
    void keepsTheLanguageThatThereIs()
    {
        install(QLocale::German);
        QVERIFY(!qvelInstallLanguage(QLocale(QLocale::Finnish)));
        QCOMPARE(QCoreApplication::translate("QvelDisplayDialog", "Close"), "Schließen");
        QCOMPARE(QCoreApplication::translate("QPlatformTheme", "Cancel"), "Abbrechen");
        install(QLocale::English);
        QCOMPARE(QCoreApplication::translate("QvelDisplayDialog", "Close"), "Close");
    }
};

QTEST_MAIN(tst_Language)
#include "tst_language.moc"
