#include "support/warnings.h"

#include <Kestrel/QvelToolBox>

#include <QtWidgets/QtWidgets>

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

    // Against what the tool box has to be, told in its own terms.
    void randomSequence()
    {
        struct Page
        {
            QPointer<QWidget> content;
            QString title;
            bool open;
        };
        const quint32 seed = 20240607;
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        const QStringList titles = {"", "A", "A|B", "||", "Pump||Valve|Tank", "x|y|z|u|v|w|a|b|c"};
        m_box->show();
        QList<Page> pages;
        QStringList texts, log;
        int current = 0;
        QWidgetList spare; // given back, perhaps while closed
        for (int i = 0; i < 8; ++i)
            spare += new QLabel("Content");
        for (int operation = 0; operation < 5000; ++operation) {
            const int count = int(pages.size());
            const int any = random.bounded(-1, count + 2);
            const bool isPage = any >= 0 && any < count;
            const int kind = random.bounded(6);
            int next = current;
            if (kind == 0 && !spare.isEmpty()) {
                next = qMin(qMax(0, any), count);
                QWidget* content = spare.takeAt(random.bounded(spare.size()));
                const QString invented = QString("Page_%1").arg(count + 1);
                pages.insert(next, {content, texts.value(next, invented), true});
                if (next >= texts.size())
                    log += "texts " + (texts += invented).join('|');
                next == count ? m_box->addPage(content) : m_box->insertPage(next, content);
            } else if (kind == 1) {
                if (isPage) {
                    spare += pages.takeAt(any).content;
                    if (any < texts.size())
                        texts.removeAt(any);
                    log += "texts " + texts.join('|');
                }
                m_box->removePage(any);
                QVERIFY(!isPage || !spare.last()->parent());
            } else if (kind == 2) {
                const QString text = titles.at(random.bounded(titles.size()));
                texts = text.split('|');
                for (int i = 0; i < count; ++i)
                    pages[i].title = texts.value(i, QString("Page_%1").arg(i + 1));
                log += "texts " + text;
                m_box->setItemTexts(text);
            } else if (kind == 3) {
                const QString text = titles.at(random.bounded(titles.size()));
                if (current >= 0 && current < count) {
                    pages[current].title = text;
                    if (current < texts.size())
                        texts[current] = text;
                }
                log << "text " + text << "texts " + texts.join('|');
                m_box->setCurrentItemText(text);
            } else if (kind == 4) {
                m_box->setCurrentIndex(next = any);
            } else if (isPage) {
                pages[any].open = !pages[any].open;
                QTest::mouseClick(toggle(any), Qt::LeftButton);
                const auto open = [](const Page& page) { return page.open; };
                const bool stretched = std::none_of(pages.cbegin(), pages.cend(), open);
                QCOMPARE(m_box->layout()->count(), count + (stretched ? 1 : 0));
            }
            if (next != current)
                log += QString("current %1").arg(current = next);
            QCOMPARE(std::exchange(m_log, {}), std::exchange(log, {}));
            QCOMPARE(m_box->count(), pages.size());
            QCOMPARE(m_box->getItemTexts(), texts.join('|'));
            QCOMPARE(m_box->getCurrentIndex(), current);
            QCOMPARE(m_box->getCurrentItemText(), texts.value(current));
            for (int i = 0; i < pages.size(); ++i) {
                QCOMPARE(m_box->widget(i), pages[i].content);
                QCOMPARE(header(i)->text(), pages[i].title);
                QCOMPARE(pages[i].content->isVisible(), pages[i].open);
                QCOMPARE(toggle(i)->isChecked(), pages[i].open);
            }
        }
        qDeleteAll(spare);
    }

    void outOfTheWay()
    {
        for (int i = 0; i < 2; ++i)
            m_box->addPage(new QLabel("Content"));
        QCOMPARE(m_box->sizeHint(), QSize(200, 200));
        for (QWidget* page : {m_box->widget(7), m_box->widget(0)}) {
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
    }

    // What a host does in its slots, and a page in its events.
    void pagesThatLeaveMeanwhile()
    {
        struct Leaving : QLabel
        {
            void hideEvent(QHideEvent*) override { box->removePage(0); }
            QvelToolBox* box;
        } content;
        content.box = m_box.get();
        m_box->addPage(&content);
        m_box->show();
        QTest::mouseClick(toggle(0), Qt::LeftButton);
        QCOMPARE(m_box->count(), 0);
        QCOMPARE(content.parent(), nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!m_box->findChild<QToolButton*>());

        const QPointer<QWidget> first = new QWidget;
        m_box->addPage(first);
        connect(m_box.get(), &QvelToolBox::itemTextsChanged, first,
                [this] { m_box->count() ? m_box->removePage(0) : void(); });
        auto* second = new QWidget;
        m_box->addPage(second); // its title makes the first one go
        delete first;
        QCOMPARE(m_box->count(), 1);
        QCOMPARE(m_box->widget(0), second);
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
    template <class W>
    W* part(int page, int number) const
    {
        QLayout* layout = m_box->layout()->itemAt(page)->widget()->layout();
        return qobject_cast<W*>(layout->itemAt(0)->layout()->itemAt(number)->widget());
    }
    QLabel* header(int page) const { return part<QLabel>(page, 0); }
    QToolButton* toggle(int page) const { return part<QToolButton>(page, 1); }

    std::unique_ptr<QvelToolBox> m_box;
    QStringList m_log;
};

QTEST_MAIN(ToolBoxTest)
#include "tst_toolbox.moc"
