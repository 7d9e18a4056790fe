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

    void outOfTheWay()
    {
        for (int i = 0; i < 2; ++i)
            m_box->addPage(new QLabel("Content"));
        QCOMPARE(m_box->sizeHint(), QSize(200, 200));
        for (QWidget* page : {static_cast<QWidget*>(nullptr), m_box->widget(0)}) {
            QTest::ignoreMessage(QtWarningMsg,
                                 "QvelToolBox::insertPage: the page is null or held already");
            m_box->addPage(page);
        }
        QCOMPARE(m_box->count(), 2);
        for (const int index : {-7, 99}) { // appends
            auto* page = new QWidget;
            m_box->insertPage(index, page);
            QCOMPARE(m_box->widget(m_box->count() - 1), page);
        }
        delete m_box->widget(1); // by someone else
        QCOMPARE(m_box->widget(1), nullptr);
        toggle(1)->click();
        m_box->removePage(1);
        QCOMPARE(m_box->count(), 3);
        const QMetaObject* meta = m_box->metaObject();
        const int index = meta->indexOfProperty("currentIndex");
        QVERIFY(meta->property(index).hasNotifySignal());
    }

    // What a host does in its slots, and a page in its events.
    void pagesThatLeaveMeanwhile()
    {
        class Leaving : public QLabel
        {
        public:
            explicit Leaving(std::function<void()> leave) : m_leave(std::move(leave)) {}
            void hideEvent(QHideEvent*) override { m_leave(); }

        private:
            std::function<void()> m_leave;
        };
        Leaving content([this] { m_box->removePage(0); });
        m_box->addPage(&content);
        m_box->show();
        QTest::mouseClick(toggle(0), Qt::LeftButton);
        QCOMPARE(m_box->count(), 0);
        QCOMPARE(content.parent(), nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!m_box->findChild<QToolButton*>());

        const QPointer<QWidget> first = new QWidget;
        m_box->addPage(first);
        const auto connection = connect(m_box.get(), &QvelToolBox::itemTextsChanged, this,
                                        [this] { m_box->count() ? m_box->removePage(0) : void(); });
        auto* second = new QWidget;
        m_box->addPage(second); // its title makes the first one go
        disconnect(connection);
        delete first;
        QCOMPARE(m_box->count(), 1);
        QCOMPARE(m_box->widget(0), second);
        m_box->removePage(0);
        delete second;
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
