#include "support/warnings.h"

#include <Kestrel/QvelToolBox>

#include <QtCore/QPointer>
#include <QtCore/QRandomGenerator>
#include <QtGui/QAccessible>
#include <QtTest/QtTest>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QToolButton>

namespace {

/// What a tool box has to be after a number of operations; told in its own terms.
struct Oracle
{
    struct Page
    {
        QPointer<QWidget> content;
        QString title;
        bool open;
    };
    QList<Page> pages;
    QStringList texts;
    int current = 0;
    bool stretch = false;
    QStringList log;

    void textsChanged() { log += "texts " + texts.join('|'); }
    void makeCurrent(int index)
    {
        if (index != current)
            log += QString("current %1").arg(current = index);
    }
    void insert(int index, QWidget* content)
    {
        QString title = texts.value(index);
        if (index >= texts.size()) {
            title = QString("Page_%1").arg(pages.size() + 1);
            texts.append(title);
            textsChanged();
        }
        pages.insert(index, {content, title, true});
        makeCurrent(index);
    }
    void remove(int index)
    {
        if (index < 0 || index >= pages.size())
            return;
        pages.removeAt(index);
        if (index < texts.size())
            texts.removeAt(index);
        textsChanged();
    }
    void setTexts(const QString& joined)
    {
        texts = joined.split('|');
        for (int i = 0; i < pages.size(); ++i)
            pages[i].title = i < texts.size() ? texts[i] : QString("Page_%1").arg(i + 1);
        textsChanged();
    }
    void setCurrentText(const QString& text)
    {
        if (current >= 0 && current < pages.size()) {
            pages[current].title = text;
            if (current < texts.size())
                texts[current] = text;
        }
        log += "text " + text;
        textsChanged();
    }
    void toggle(int index)
    {
        pages[index].open = !pages[index].open;
        stretch = std::none_of(pages.cbegin(), pages.cend(), [](const Page& p) { return p.open; });
    }
};

} // namespace

class ToolBoxTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_box = std::make_unique<QvelToolBox>();
        m_log.clear();
        connect(m_box.get(), &QvelToolBox::currentIndexChanged, this,
                [this](int index) { m_log += QString("current %1").arg(index); });
        connect(m_box.get(), &QvelToolBox::currentItemTextChanged, this,
                [this](const QString& text) { m_log += "text " + text; });
        connect(m_box.get(), &QvelToolBox::itemTextsChanged, this,
                [this](const QStringList& texts) { m_log += "texts " + texts.join('|'); });
    }

    void randomSequence()
    {
        const quint32 seed = 20240607;
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        const QStringList titles = {"", "A", "A|B", "||", "Pump||Valve|Tank", "x|y|z|u|v|w|a|b|c"};
        m_box->resize(300, 600);
        m_box->show();
        Oracle oracle;
        QWidgetList spare; // given back, perhaps while closed
        for (int i = 0; i < 8; ++i)
            spare += new QLabel(QString("Content %1").arg(i));
        for (int operation = 0; operation < 5000; ++operation) {
            const int count = int(oracle.pages.size());
            const int any = random.bounded(-1, count + 2);
            switch (random.bounded(6)) {
            case 0:
                if (!spare.isEmpty()) {
                    QWidget* content = spare.takeAt(random.bounded(spare.size()));
                    const int index = random.bounded(count + 1);
                    oracle.insert(index, content);
                    index == count ? m_box->addPage(content) : m_box->insertPage(index, content);
                }
                break;
            case 1: {
                const QPointer<QWidget> content = m_box->widget(any);
                oracle.remove(any);
                m_box->removePage(any);
                if (any >= 0 && any < count) {
                    QVERIFY(content && !content->parent());
                    spare += content;
                }
                break;
            }
            case 2: {
                const QString text = titles.at(random.bounded(titles.size()));
                random.bounded(2) ? (oracle.setTexts(text), m_box->setItemTexts(text))
                                  : (oracle.setCurrentText(text), m_box->setCurrentItemText(text));
                break;
            }
            case 3:
                oracle.makeCurrent(any);
                m_box->setCurrentIndex(any);
                break;
            default: // twice as often: open or close
                if (any >= 0 && any < count) {
                    oracle.toggle(any);
                    QTest::mouseClick(toggle(any), Qt::LeftButton);
                }
            }
            QVERIFY2(equals(oracle), qPrintable(QString("operation %1").arg(operation)));
        }
        qDeleteAll(spare);
    }

    void titles_data()
    {
        QTest::addColumn<QString>("before"); // "-": never set
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("texts");
        QTest::newRow("none") << "-"
                              << "-"
                              << "Page_1,Page_2,Page_3"
                              << "Page_1|Page_2|Page_3";
        QTest::newRow("two before") << "A|B"
                                    << "-"
                                    << "A,B,Page_3"
                                    << "A|B|Page_3";
        QTest::newRow("one after") << "-"
                                   << "A"
                                   << "A,Page_2,Page_3"
                                   << "A";
        QTest::newRow("empty between") << "-"
                                       << "A||C"
                                       << "A,,C"
                                       << "A||C";
        QTest::newRow("empty") << ""
                               << "-"
                               << ",Page_2,Page_3"
                               << "|Page_2|Page_3";
        QTest::newRow("too many") << "A|B|C|D"
                                  << "-"
                                  << "A,B,C"
                                  << "A|B|C|D";
    }
    void titles()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        if (before != "-")
            m_box->setItemTexts(before);
        addPages(3);
        if (after != "-")
            m_box->setItemTexts(after);
        QStringList shown;
        for (int i = 0; i < 3; ++i)
            shown += header(i)->text();
        QTEST(shown.join(','), "shown");
        QTEST(m_box->getItemTexts(), "texts");
    }

    void outOfTheWay()
    {
        QCOMPARE(m_box->sizeHint(), QSize(200, 200));
        addPages(2);
        QCOMPARE(m_box->sizeHint(), QSize(200, 200));
        QCOMPARE(m_box->widget(-1), nullptr);
        QCOMPARE(m_box->widget(2), nullptr);
        QTest::ignoreMessage(QtWarningMsg,
                             "QvelToolBox::insertPage: the page is null or held already");
        m_box->addPage(nullptr);
        QTest::ignoreMessage(QtWarningMsg,
                             "QvelToolBox::insertPage: the page is null or held already");
        m_box->addPage(m_box->widget(0));
        QCOMPARE(m_box->count(), 2);
        for (const int index : {-7, 99}) { // appends
            auto* page = new QWidget;
            m_box->insertPage(index, page);
            QCOMPARE(m_box->widget(m_box->count() - 1), page);
            QCOMPARE(m_box->getCurrentIndex(), m_box->count() - 1);
        }
        delete m_box->widget(1); // by someone else
        QCOMPARE(m_box->widget(1), nullptr);
        toggle(1)->click();
        m_box->removePage(1);
        QCOMPARE(m_box->count(), 3);
        // Titles of pages that the texts do not reach.
        m_box->setItemTexts("one");
        m_box->addPage(new QWidget);
        m_box->setCurrentItemText("last");
        QCOMPARE(header(3)->text(), "last");
        QCOMPARE(m_box->getItemTexts(), "one|Page_4");
    }

    void pageThatLeavesWhileItIsClosed()
    {
        class Leaving : public QLabel
        {
        public:
            explicit Leaving(QvelToolBox* box) : m_box(box) {}
            void hideEvent(QHideEvent*) override { m_box->removePage(0); }

        private:
            QvelToolBox* m_box;
        } content(m_box.get());
        m_box->addPage(&content);
        m_box->show();
        QTest::mouseClick(toggle(0), Qt::LeftButton);
        QCOMPARE(m_box->count(), 0);
        QCOMPARE(content.parent(), nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!m_box->findChild<QToolButton*>());
    }

    void looksOfThePage()
    {
        addPages(1);
        const QLabel* label = header(0);
        using P = QPalette;
        for (const auto group : {P::Active, P::Inactive, P::Disabled}) {
            const QColor text = group == P::Disabled ? QColor(106, 104, 100) : QColor(Qt::white);
            const QColor base = group == P::Disabled ? QColor(128, 128, 128) : QColor(Qt::white);
            QCOMPARE(label->palette().color(group, P::WindowText), text);
            QCOMPARE(label->palette().color(group, P::Base), base);
            QCOMPARE(label->palette().color(group, P::Window), QColor(128, 128, 128));
        }
        QVERIFY(label->autoFillBackground());
        QCOMPARE(label->margin(), 2);
        QCOMPARE(label->indent(), 5);
        QVERIFY(toggle(0)->isChecked() && toggle(0)->autoRaise());
        const QIcon icon = toggle(0)->icon();
        const auto image = [&](QIcon::State state) {
            return icon.pixmap(QSize(16, 16), QIcon::Normal, state).toImage();
        };
        QCOMPARE(
            image(QIcon::Off),
            QImage(":/kestrel/images/showGroup.png").convertToFormat(image(QIcon::Off).format()));
        QCOMPARE(
            image(QIcon::On),
            QImage(":/kestrel/images/hideGroup.png").convertToFormat(image(QIcon::On).format()));
    }

    void properties()
    {
        addPages(3);
        const std::pair<const char*, bool> expected[] = {
            {"currentIndex", true}, {"currentItemText", false}, {"itemTexts", true}};
        const QMetaObject* meta = m_box->metaObject();
        for (int i = 0; i < 3; ++i) {
            const QMetaProperty property = meta->property(meta->propertyOffset() + i);
            QCOMPARE(property.name(), expected[i].first);
            QCOMPARE(property.isStored(), expected[i].second);
            QVERIFY(property.isReadable() && property.isWritable() && property.isDesignable() &&
                    property.isScriptable());
            QCOMPARE(property.metaType().id(), i == 0 ? QMetaType::Int : QMetaType::QString);
        }
        m_log.clear();
        QVERIFY(m_box->setProperty("itemTexts", "a|b"));
        QVERIFY(m_box->setProperty("currentIndex", 1));
        QVERIFY(m_box->setProperty("currentItemText", "B"));
        QCOMPARE(m_box->property("itemTexts"), "a|B");
        QCOMPARE(m_box->property("currentItemText"), "B");
        QCOMPARE(m_log, QStringList({"texts a|b", "current 1", "text B", "texts a|B"}));
        QVERIFY(m_box->setProperty("currentIndex", -5)); // no range
        QCOMPARE(m_box->property("currentItemText"), "");
    }

    void keyboard()
    {
        QLineEdit *first = new QLineEdit, *second = new QLineEdit, *third = new QLineEdit;
        m_box->addPage(first);
        m_box->addPage(third);
        m_box->insertPage(1, second); // the Tab key follows the places
        m_box->setItemTexts("&First|Second|Third");
        m_box->show();
        m_box->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_box.get()));
        toggle(0)->setFocus();
        for (QWidget* next : QWidgetList{first, toggle(1), second, toggle(2), third, toggle(0)}) {
            QTest::keyClick(m_box->focusWidget(), Qt::Key_Tab);
            QCOMPARE(m_box->focusWidget(), next);
        }
        QTest::keyClick(toggle(0), Qt::Key_Space);
        QVERIFY(!first->isVisible() && second->isVisible());
        QTest::keyClick(m_box.get(), Qt::Key_F, Qt::AltModifier);
        QTRY_VERIFY(first->isVisible());
        const auto* accessible = QAccessible::queryAccessibleInterface(toggle(0));
        QCOMPARE(accessible->text(QAccessible::Name), "First");
    }

private:
    void addPages(int count)
    {
        for (int i = 0; i < count; ++i)
            m_box->addPage(new QLabel("Content"));
    }
    QWidget* page(int index) const { return m_box->layout()->itemAt(index)->widget(); }
    QLabel* header(int index) const
    {
        return qobject_cast<QLabel*>(
            page(index)->layout()->itemAt(0)->layout()->itemAt(0)->widget());
    }
    QToolButton* toggle(int index) const
    {
        return qobject_cast<QToolButton*>(
            page(index)->layout()->itemAt(0)->layout()->itemAt(1)->widget());
    }
    bool equals(const Oracle& oracle) const
    {
        bool equal = m_log == oracle.log && m_box->count() == oracle.pages.size() &&
                     m_box->getItemTexts() == oracle.texts.join('|') &&
                     m_box->getCurrentIndex() == oracle.current &&
                     m_box->getCurrentItemText() == oracle.texts.value(oracle.current) &&
                     m_box->layout()->count() == oracle.pages.size() + (oracle.stretch ? 1 : 0);
        for (int i = 0; equal && i < oracle.pages.size(); ++i) {
            const Oracle::Page& expected = oracle.pages.at(i);
            equal = m_box->widget(i) == expected.content && header(i)->text() == expected.title &&
                    expected.content->isVisible() == expected.open &&
                    toggle(i)->isChecked() == expected.open;
        }
        if (!equal)
            qWarning() << m_log.mid(m_log.size() - 5) << oracle.log.mid(oracle.log.size() - 5);
        return equal;
    }

    std::unique_ptr<QvelToolBox> m_box;
    QStringList m_log;
};

QTEST_MAIN(ToolBoxTest)
#include "tst_toolbox.moc"
