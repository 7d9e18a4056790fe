// What all views of a session have in common, whatever it is that they show.

#include "session/sessionuser.h"
#include "support/relay.h"
#include "support/warnings.h"

#include <Kestrel/QvelAddressSpaceModel>
#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelAttributesModel>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelCallWidget>
#include <Kestrel/QvelDataViewModel>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelNodeLink>
#include <Kestrel/QvelReferencesModel>
#include <Kestrel/QvelReferencesWidget>
#include <Kestrel/QvelSessionWidget>
#include <Kestrel/QvelSubscription>
#include <Kestrel/QvelTrendWidget>

#include <QtTest/QAbstractItemModelTester>
#include <QtWidgets/QtWidgets>

namespace {

constexpr int patience = 30'000;
const char good[] = "nsu=urn:first;s=Further", bad[] = "nsu=urn:first;s=Nothing";

/// A kind of view. What is not given, it has not.
struct View
{
    const char* name;
    std::function<QWidget*()> make;
    std::function<void(QWidget*, QvelSession*)> setSession;
    std::function<QvelSession*(QWidget*)> session;
    std::function<void(QWidget*, const UaExpandedNodeId&)> choose;
    /// What it shows of the good node, a value that moves, and what it says in words.
    std::function<QString(QWidget*)> shown, value, said;
    std::function<bool(QWidget*)> isStale;
    const char* signal = nullptr; ///< that the user, or the server, sets off
};

template <class Widget>
View view(const char* name, void (*choose)(Widget*, const UaExpandedNodeId&),
          QString (*shown)(Widget*), QString (*value)(Widget*), QString (*said)(Widget*),
          bool (*isStale)(Widget*), const char* signal)
{
    const auto as = [](auto function) {
        return [function](QWidget* widget, auto... arguments) {
            return function(static_cast<Widget*>(widget), arguments...);
        };
    };
    View made{name,  [] { return new Widget; }, {}, {}, {}, as(shown), {}, as(said), as(isStale),
              signal};
    made.setSession = as([](Widget* w, QvelSession* session) { w->setSession(session); });
    made.session = as([](Widget* w) { return w->session(); });
    if (choose)
        made.choose = as(choose);
    if (value)
        made.value = as(value);
    return made;
}

bool looksStale(const QModelIndex& index)
{
    const QVariant brush = index.data(Qt::ForegroundRole);
    return brush.isValid() &&
           brush.value<QBrush>() != QApplication::palette().brush(QPalette::Text) &&
           index.data(Qt::ToolTipRole).toString().contains("Not connected");
}

QModelIndex attribute(QvelAttributesWidget* w, const char* name, int column)
{
    const auto found =
        w->model()->match(w->model()->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly);
    return found.isEmpty() ? QModelIndex() : found.first().siblingAtColumn(column);
}

QString hint(QWidget* w)
{
    return w->findChild<QAbstractItemView*>()->accessibleDescription();
}

QLabel* label(QWidget* w, const char* name)
{
    for (auto* each : w->findChildren<QLabel*>())
        if (each->objectName() == name || each->accessibleName() == name)
            return each;
    return nullptr;
}

using Tree = QvelAddressSpaceWidget;
using Attributes = QvelAttributesWidget;
using References = QvelReferencesWidget;
using DataView = QvelDataViewWidget;
using Trend = QvelTrendWidget;
using Call = QvelCallWidget;
using Session = QvelSessionWidget;

const View views[] = {
    view<Tree>(
        "address space", [](Tree* w, const UaExpandedNodeId& id) { w->goTo(id); },
        [](Tree* w) { return w->view()->currentIndex().data().toString(); }, nullptr,
        [](Tree* w) { return w->findChild<QLabel*>()->text() + hint(w); },
        [](Tree* w) { return looksStale(w->view()->currentIndex()); },
        SIGNAL(nodeActivated(UaExpandedNodeId))),
    view<Attributes>(
        "attributes", [](Attributes* w, const UaExpandedNodeId& id) { w->setNode(id); },
        [](Attributes* w) { return attribute(w, "DisplayName", 1).data().toString(); },
        [](Attributes* w) { return attribute(w, "Value", 1).data().toString(); },
        [](Attributes* w) { return attribute(w, "NodeId", 2).data().toString() + hint(w); },
        [](Attributes* w) { return looksStale(attribute(w, "Value", 1)); }, nullptr),
    view<References>(
        "references", [](References* w, const UaExpandedNodeId& id) { w->setNode(id); },
        [](References* w) { return w->model()->index(0, 2).data().toString(); }, nullptr,
        [](References* w) { return w->model()->index(0, 0).data().toString() + hint(w); },
        [](References* w) { return looksStale(w->model()->index(0, 1)); },
        SIGNAL(nodeActivated(UaExpandedNodeId))),
    view<DataView>(
        "data view",
        [](DataView* w, const UaExpandedNodeId& id) {
            w->model()->removeRows(0, w->model()->rowCount());
            w->addNodes({{id, {}}});
        },
        [](DataView* w) { return w->model()->index(0, QvelDataViewModel::Name).data().toString(); },
        [](DataView* w) {
            return w->model()->index(0, QvelDataViewModel::Value).data().toString();
        },
        [](DataView* w) {
            return w->model()->index(0, QvelDataViewModel::Status).data().toString() + hint(w);
        },
        [](DataView* w) { return looksStale(w->model()->index(0, QvelDataViewModel::Value)); },
        SIGNAL(variableActivated(UaExpandedNodeId))),
    view<Trend>(
        "trend",
        [](Trend* w, const UaExpandedNodeId& id) {
            for (const int series : w->series())
                w->removeSeries(series);
            w->addVariable({id, {}});
        },
        [](Trend* w) { return w->seriesName(w->series().value(0)); },
        [](Trend* w) {
            return w->currentValue(w->series().value(0)).value().toString().toQString();
        },
        [](Trend* w) { return w->accessibleDescription(); },
        [](Trend* w) { return w->accessibleDescription().contains("not connected"); },
        SIGNAL(seriesChanged())),
    view<Call>(
        "call",
        [](Call* w, const UaExpandedNodeId& id) { // of what both servers have
            w->setMethod(*qvelParseNodeId("ns=1;s=Machine"),
                         *qvelParseNodeId(qvelNodeIdText(id) == good ? "ns=1;s=Add" : bad));
        },
        [](Call* w) { return w->inputModel()->index(0, 0).data().toString(); }, nullptr,
        [](Call* w) { return label(w, "Result")->text() + hint(w); },
        [](Call* w) {
            return label(w, "Result")->text().contains("no connection") &&
                   !w->findChild<QPushButton*>()->isEnabled();
        },
        SIGNAL(methodNameChanged(QString))),
    view<Session>(
        "session", nullptr, [](Session* w) { return w->findChild<QLineEdit*>("url")->text(); },
        nullptr, [](Session* w) { return label(w, "state")->text() + label(w, "error")->text(); },
        [](Session* w) { return label(w, "state")->text() != "Connected"; },
        SIGNAL(connectRequested())),
};

} // namespace

class tst_ViewContract : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void deleteView() { delete std::exchange(m_widget, nullptr); }

private Q_SLOTS:
    void initTestCase_data() // all are tried with each
    {
        QTest::addColumn<const View*>("view");
        for (const View& view : views)
            QTest::newRow(view.name) << &view;
    }
    void initTestCase()
    {
        const char* const namespaces[] = {"urn:first,urn:second", "urn:third,urn:second,urn:first"};
        for (int i = 0; i < 2; ++i) {
            m_urls[i] = m_servers[i].start(NODE, {PEERS "/sessionserver.mjs", "--children", "10",
                                                  "--items", "10", "--namespaces", namespaces[i]});
            QVERIFY(!m_urls[i].isEmpty());
        }
    }
    void init()
    {
        failOnWarnings();
        QFETCH_GLOBAL(const View*, view);
        m_view = view;
        make();
    }
    void cleanup() { deleteView(); }
    // It says in words why nothing is there, and what to do.
    void empty()
    {
        QTRY_VERIFY(!said().isEmpty());
        QvelSession idle(m_user.options);
        m_view->setSession(m_widget, &idle); // without a connection
        pressKeys();
        QTRY_VERIFY(!said().isEmpty() && shown().isEmpty());
        const auto session = connected(m_urls[0]);
        m_view->setSession(m_widget, session.get());
        pressKeys();
        QTest::qWait(100);
        m_view->setSession(m_widget, nullptr);
        QTRY_VERIFY(!said().isEmpty() && shown().isEmpty());
        QCOMPARE(m_view->session(m_widget), nullptr);
    }
    void failure()
    {
        const auto session = connected(m_view->choose ? m_urls[0] : "opc.tcp://127.0.0.1:1");
        m_view->setSession(m_widget, session.get());
        choose(bad);
        QTRY_VERIFY2_WITH_TIMEOUT(said().contains("Bad"), qPrintable(said()), patience);
        const auto second = connected(m_urls[0]);
        m_view->setSession(m_widget, second.get());
        choose(good);
        waitUntilLive();
        QTRY_VERIFY2_WITH_TIMEOUT(!said().contains("Bad"), qPrintable(said()), patience);
    }
    // What was seen last stays and looks so, until the server is back, with other namespace
    // indexes.
    void interruption()
    {
        Relay relay{quint16(QUrl(m_urls[0]).port())};
        const auto session = connected(relay.url());
        m_view->setSession(m_widget, session.get());
        choose(good);
        waitUntilLive();
        pressKeys(); // what is asked for comes no more
        relay.refuse();
        relay.cut();
        QTRY_VERIFY2_WITH_TIMEOUT(isStale(), qPrintable(said()), patience);
        const QString last = value();
        QVERIFY(!shown().isEmpty() && last.isEmpty() == !m_view->value);
        pressKeys();
        QTest::qWait(300);
        QVERIFY(isStale() && value() == last);
        relay.setServer(quint16(QUrl(m_urls[1]).port()));
        relay.mend();
        session->reconnectNow();
        QTRY_VERIFY_WITH_TIMEOUT(session->state() == QvelSession::Connected, patience);
        waitUntilLive(last);
        QVERIFY(!shown().isEmpty() && !said().contains("Bad"));
    }
    void replaced()
    {
        const auto first = connected(m_urls[0]);
        auto second = connected(m_urls[1]);
        m_view->setSession(m_widget, first.get());
        choose(good);
        waitUntilLive();
        m_view->setSession(m_widget, second.get());
        choose(good);
        waitUntilLive(value());
        QTRY_VERIFY(first->findChildren<QvelSubscription*>().isEmpty());
        first->disconnectFromServer(); // which is nobody's any more
        QTest::qWait(100);
        QVERIFY(!isStale());
        const bool stays = m_view->choose != nullptr; // the session itself is not there to be shown
        const QString last = value();
        second.reset();
        QTRY_VERIFY2(isStale(), qPrintable(said()));
        QVERIFY(shown().isEmpty() != stays && value() == last);
        QCOMPARE(m_view->session(m_widget), nullptr);
        pressKeys();
        second = connected(m_urls[0]);
        m_view->setSession(m_widget, second.get());
        choose(good);
        waitUntilLive(last);
    }
    // Another palette, live and stale.
    void looks()
    {
        const auto session = connected(m_urls[0]);
        m_view->setSession(m_widget, session.get());
        choose(good);
        waitUntilLive();
        const QPalette before = QApplication::palette();
        const auto restore = qScopeGuard([&] { QApplication::setPalette(before); });
        const QPalette dark(QColor("#303030"), QColor("#202020"));
        const auto lightness = [this] {
            const QImage image = m_widget->grab().toImage();
            return qGray(image.scaled(1, 1, {}, Qt::SmoothTransformation).pixel(0, 0));
        };
        for (const bool stale : {false, true}) {
            if (stale)
                session->disconnectFromServer();
            QTRY_COMPARE(isStale(), stale);
            QApplication::setPalette(dark);
            QTRY_VERIFY(lightness() < 100);
            QCOMPARE(isStale(), stale);
            QApplication::setPalette(before);
            QTRY_VERIFY(lightness() > 150);
        }
    }
    // While it waits for the server, and while it tells the host something.
    void deleted()
    {
        const auto session = connected(m_urls[0]);
        for (int delay = 0; delay < 20; delay += 2) {
            m_view->setSession(m_widget, session.get());
            choose(good);
            if (delay)
                QTest::qWait(delay);
            deleteView();
            make();
        }
        QTRY_VERIFY(session->findChildren<QvelSubscription*>().isEmpty());
        if (m_view->signal) {
            if (!m_view->choose)
                session->disconnectFromServer();
            m_view->setSession(m_widget, session.get());
            choose(good);
            QVERIFY(connect(m_widget, m_view->signal, this, SLOT(deleteView())));
            // The call and the trend are told by the server, the others by the user.
            QTRY_VERIFY(!m_widget || (!shown().isEmpty() && (m_view->choose || isStale())));
            if (auto* button = m_widget ? m_widget->findChild<QPushButton*>("reconnect") : nullptr)
                QTest::mouseClick(button, Qt::LeftButton);
            if (auto* list = m_widget ? m_widget->findChild<QAbstractItemView*>() : nullptr) {
                if (!list->currentIndex().isValid())
                    list->setCurrentIndex(list->model()->index(0, 0));
                QTest::keyClick(list, Qt::Key_Return);
            }
            QTRY_VERIFY_WITH_TIMEOUT(!m_widget, patience);
            make();
        }
        const auto ending = connected(m_urls[0]);
        m_view->setSession(m_widget, ending.get());
        choose(good);
        connect(ending.get(), SIGNAL(stateChanged(QvelSession::State)), this, SLOT(deleteView()));
        ending->disconnectFromServer();
        QTRY_VERIFY(!m_widget);
    }

private:
    void make()
    {
        m_widget = m_view->make();
        for (auto* model : m_widget->findChildren<QAbstractItemModel*>())
            if (!model->inherits("QStandardItemModel"))
                (new QAbstractItemModelTester(model, model))->setUseFetchMore(false);
        m_widget->resize(900, 500);
        m_widget->show();
        QVERIFY(QTest::qWaitForWindowActive(m_widget));
    }
    void choose(const char* id) const
    {
        if (m_view->choose)
            m_view->choose(m_widget, *qvelParseNodeId(id));
    }
    std::unique_ptr<QvelSession> connected(const QString& url)
    {
        auto session = std::make_unique<QvelSession>(m_user.options);
        connectSession(*session, settingOf(url));
        return session;
    }
    QString shown() const { return m_view->shown(m_widget); }
    QString value() const { return m_view->value ? m_view->value(m_widget) : QString(); }
    QString said() const { return m_view->said(m_widget); }
    bool isStale() const { return m_view->isStale(m_widget); }
    void waitUntilLive(const QString& before = {})
    {
        QTRY_VERIFY2_WITH_TIMEOUT(!shown().isEmpty() && !isStale(), qPrintable(said()), patience);
        if (m_view->value)
            QTRY_VERIFY2_WITH_TIMEOUT(!value().isEmpty() && value() != before, qPrintable(said()),
                                      patience);
    }
    // As a user would who knows no better.
    void pressKeys() const
    {
        for (auto* each : m_widget->findChildren<QAbstractItemView*>())
            if (each->isVisible())
                for (const int key : {int(Qt::Key_F5), int(Qt::Key_F2), int(Qt::Key_Down)})
                    QTest::keyClick(each, Qt::Key(key));
    }

    SessionUser m_user;
    PeerProcess m_servers[2]; // with the same namespaces, in another order
    QString m_urls[2];
    const View* m_view = nullptr;
    QWidget* m_widget = nullptr;
};

QTEST_MAIN(tst_ViewContract)
#include "tst_viewcontract.moc"
