#include "nodeidpage.h"
#include "support/warnings.h"

#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelWidgetNodeId>

#include <QtTest/QtTest>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

class NodeIdPageTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_page = std::make_unique<NodeIdPage>();
        m_page->show();
    }

    void showsValueFlagAndSignals()
    {
        auto* editor = inlineEditor("Inline");
        editor->setNodeId(UaNodeId(85));
        QCOMPARE(shown("Inline: value"), "i=85");
        editor->findChild<QSpinBox*>()->setValue(7);
        QCOMPARE(shown("Inline: value"), "ns=7;i=85");
        const QStringList lines = signalLines();
        QCOMPARE(lines.mid(lines.size() - 4, 2),
                 QStringList({"Inline: valueChanged", "Inline: nodeIdChanged(ns=7;i=85)"}));
    }

    void readOnlyCopyFollowsValidInputOnly()
    {
        auto* editor = inlineEditor("Inline");
        editor->setNodeId(UaNodeId(85));
        auto* identifier = identifierOf(editor);
        identifier->setFocus();
        identifier->clear();
        QTest::keyClicks(identifier, "-1");
        QCOMPARE(shown("Inline: value"), "");
        QCOMPARE(inlineEditor("Read-only copy")->nodeId(nullptr), UaNodeId(85));
        QCOMPARE(shown("Read-only copy: value"), "i=85");
    }

    void outputIsBounded()
    {
        auto* editor = inlineEditor("Inline");
        for (int i = 0; i < 1000; ++i)
            editor->setNodeId(UaNodeId(OpcUa_UInt32(i)));
        QVERIFY(signalLines().size() <= 200 && signalLines().last().contains("i=999"));
        editor->setNodeId(UaNodeId(UaString(QByteArray(5000, 'x')), 1));
        QVERIFY(shown("Inline: value").startsWith("ns=1;s=xxx"));
        QVERIFY(shown("Inline: value").size() <= 200);
    }

    void dialogKeepsWhatWasAccepted()
    {
        auto* dialog = m_page->findChild<QvelDialogWidgetNodeId*>();
        auto* buttons = dialog->findChild<QDialogButtonBox*>();
        auto* open = named<QPushButton>("Dialog");
        QTest::mouseClick(open, Qt::LeftButton);
        QTRY_VERIFY(dialog->isVisible());
        dialog->setNodeId(UaNodeId(1));
        QTest::mouseClick(buttons->button(QDialogButtonBox::Ok), Qt::LeftButton);
        QVERIFY(!dialog->isVisible());

        QTest::mouseClick(open, Qt::LeftButton);
        dialog->setNodeId(UaNodeId(2));
        QCOMPARE(shown("Dialog: value"), "i=2");
        QTest::mouseClick(buttons->button(QDialogButtonBox::Cancel), Qt::LeftButton);
        QCOMPARE(shown("Dialog: value"), "i=1");
    }

private:
    template <class W>
    W* named(const QString& name) const
    {
        for (auto* widget : m_page->findChildren<W*>()) {
            if (widget->accessibleName() == name)
                return widget;
        }
        qFatal("no widget %s", qPrintable(name));
    }
    QvelWidgetNodeId* inlineEditor(const QString& name) const
    {
        return named<QvelWidgetNodeId>(name);
    }
    QString shown(const QString& name) const { return named<QLineEdit>(name)->text(); }
    QStringList signalLines() const
    {
        return m_page->findChild<QPlainTextEdit*>("signals")->toPlainText().split('\n');
    }
    static QLineEdit* identifierOf(QWidget* editor)
    {
        for (auto* edit : editor->findChildren<QLineEdit*>()) {
            if (!qobject_cast<QSpinBox*>(edit->parent()))
                return edit;
        }
        return nullptr;
    }

    std::unique_ptr<NodeIdPage> m_page;
};

QTEST_MAIN(NodeIdPageTest)
#include "tst_nodeidpage.moc"
