// Every widget, and harrier, as those meet it who do not see it, have no mouse, or need contrast.

#include "base/contrast_p.h"
#include "darkpalette.h"
#include "harrier/run.h"
#include "logview.h"
#include "session/sessionuser.h"
#include "support/memorysettings.h"
#include "support/store.h"
#include "support/warnings.h"
#include "support/widgets.h"
#include "values/editorcases.h"

#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelCallWidget>
#include <Kestrel/QvelDataViewModel>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelReferencesWidget>
#include <Kestrel/QvelSessionWidget>
#include <Kestrel/QvelTrendWidget>

#include <QtGui/QAccessible>

constexpr int patience = 30'000;

class tst_Accessibility : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { failOnWarnings(); }
    void widgets_data();
    void widgets();
    void harrier();
    void results();
    void colours_data();
    void colours();

private:
    using Create = std::function<QWidget*()>;
    // A view on the server, once there is something in it.
    template <class W, class Fill>
    W* live(Fill fill)
    {
        auto* widget = new W;
        widget->setSession(m_session.get());
        fill(widget);
        widget->resize(1200, 700);
        widget->show();
        const auto isFilled = [widget] {
            for (auto* view : widget->template findChildren<QAbstractItemView*>()) {
                const QModelIndex first = view->model()->index(0, 0);
                if (view->isVisible() && !first.data().toString().isEmpty()) {
                    view->setCurrentIndex(first);
                    return true;
                }
            }
            return false;
        };
        return QTest::qWaitFor(isFilled, patience) ? widget : nullptr;
    }
    QvelCallDialog* call()
    {
        return live<QvelCallDialog>(
            [this](auto* w) { w->setMethod(node("Machine"), node("Add")); });
    }
    UaExpandedNodeId node(const char* id) const
    {
        return m_session->toExpandedNodeId(UaNodeId(UaString(id), 1));
    }

    SessionUser m_user;
    PeerProcess m_server;
    Store m_store;
    QvelDiscoverySetting m_setting;
    std::unique_ptr<QvelSession> m_session = std::make_unique<QvelSession>(m_user.options);
};

static QString told(QWidget* widget, const char* fault)
{
    const QAccessibleInterface* item = QAccessible::queryAccessibleInterface(widget);
    return QString("%1 %2 \"%3\" %4")
        .arg(widget->metaObject()->className(), widget->objectName(), item->text(QAccessible::Name),
             fault);
}

// What a screen reader would miss or read wrongly, in an element and all below it.
static void listen(QAccessibleInterface* item, QStringList& faults)
{
    const QAccessible::State state = item ? item->state() : QAccessible::State();
    if (!item || !item->isValid() || state.invisible)
        return;
    const QString name = item->text(QAccessible::Name);
    const QString words = name + item->text(QAccessible::Description);
    auto* widget = qobject_cast<QWidget*>(item->object());
    const auto check = [&](bool isGood, const char* fault) {
        if (!isGood)
            faults.append(widget ? told(widget, fault) : name + ' ' + fault);
    };
    auto* const actions = item->actionInterface();
    const bool acts = state.focusable || (actions && !actions->actionNames().isEmpty());
    check(!acts || !name.isEmpty() || (widget && widget->focusProxy()), "has no name");
    check(item->role() != QAccessible::NoRole, "has no role");
    check(!Qt::mightBeRichText(words), "is told as markup");
    check(!widget || state.disabled == !widget->isEnabled(), "is told as enabled, or not");
    const auto* label = qobject_cast<const QLabel*>(widget);
    check(!label || Qt::mightBeRichText(label->text()) ||
              QString(words).remove('&').contains(QString(label->text()).remove('&')),
          "does not tell its text");
    const auto* edit = qobject_cast<const QLineEdit*>(widget);
    check(!edit || (state.readOnly == edit->isReadOnly() && item->textInterface()), "is no text");
    const auto* button = qobject_cast<const QAbstractButton*>(widget);
    check(!button || !button->isCheckable() || state.checked == button->isChecked(), "is checked?");
    const bool hasValue =
        qobject_cast<QAbstractSpinBox*>(widget) || qobject_cast<QProgressBar*>(widget);
    check(!hasValue || item->valueInterface(), "has no value");
    const auto* combo = qobject_cast<const QComboBox*>(widget);
    check(!combo || item->text(QAccessible::Value).isEmpty() == combo->currentText().isEmpty(),
          "does not tell its choice");
    QAccessibleTableInterface* table = item->tableInterface();
    for (int row = 0; table && row < qMin(table->rowCount(), 50); ++row) {
        QString texts;
        for (int column = 0; column < table->columnCount(); ++column)
            if (const QAccessibleInterface* cell = table->cellAt(row, column))
                texts += cell->text(QAccessible::Name);
        check(!texts.isEmpty() && !Qt::mightBeRichText(texts), "has a row without a text");
    }
    for (int i = 0; !table && i < item->childCount(); ++i)
        listen(item->child(i), faults);
}

// Where Tab, or Shift+Tab, leads to from here until it is here again.
static QWidgetList journey(Qt::Key key, QStringList& faults)
{
    QWidgetList places = {QApplication::focusWidget()};
    for (int stays = 0; places.size() < 400;) {
        QWidget* last = places.last();
        const QImage focused = last->grab().toImage();
        QTest::keyClick(last, key, key == Qt::Key_Backtab ? Qt::ShiftModifier : Qt::NoModifier);
        QWidget* next = QApplication::focusWidget();
        if (next == last && ++stays < 10) // a part of a date
            continue;
        stays = 0;
        // Fusion shows a default button as one with the focus.
        const auto* button = qobject_cast<QPushButton*>(last);
        const bool isPlain = button && button->autoDefault();
        if (next != last && !isPlain && last->grab().toImage() == focused)
            faults.append(told(last, "hides its focus"));
        if (!next || places.contains(next)) {
            if (next != places.first())
                faults.append(told(last, "is a trap"));
            break;
        }
        places.append(next);
    }
    return places;
}

// Whether the Menu key opens a menu, at the current item.
static bool hasMenu(QAbstractItemView* view)
{
    bool found = false;
    const QRect room(view->mapToGlobal(QPoint()), view->size());
    const auto look = [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        // The certificates' opens at the mouse; on a small screen it is moved.
        found = menu && !menu->actions().isEmpty() &&
                (room.contains(menu->pos()) || view->objectName() == "treeView" ||
                 !view->screen()->geometry().contains(room));
        if (menu)
            QTest::keyClick(menu, Qt::Key_Escape);
    };
    QMetaObject::invokeMethod(view, look, Qt::QueuedConnection);
    const QPoint at = view->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, at, view->mapToGlobal(at));
    QApplication::sendEvent(view, &event); // as a window does for the key
    QCoreApplication::processEvents();
    return found;
}

// Listens to a window, and goes through it by keys.
static QStringList faultsOf(QWidget* window)
{
    QStringList faults;
    window->activateWindow();
    QCoreApplication::processEvents(); // pages are filled when they are shown
    listen(QAccessible::queryAccessibleInterface(window), faults);
    if (!QTest::qWaitForWindowActive(window))
        return faults << "is not active";
    for (int i = 0; i < 2; ++i) // from here on focus is shown
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : window,
                        Qt::Key_Tab);
    const QWidgetList there =
        QApplication::focusWidget() ? journey(Qt::Key_Tab, faults) : QWidgetList();
    QWidgetList back = there.isEmpty() ? there : journey(Qt::Key_Backtab, faults);
    std::reverse(back.begin() + qMin<qsizetype>(1, back.size()), back.end());
    if (back != there)
        faults.append("goes back another way");
    const auto areaOf = [window](QWidget* w) {
        return QRect(w->mapTo(window, QPoint()), w->size());
    };
    const auto dockOf = [](QWidget* w) {
        while (w && !qobject_cast<QDockWidget*>(w))
            w = w->parentWidget();
        return w;
    };
    int top = INT_MAX; // of which one the journey comes round to
    for (QWidget* each : there)
        top = qMin(top, areaOf(each).bottom());
    for (qsizetype i = 0; i + 1 < there.size(); ++i) {
        const QRect from = areaOf(there[i]), to = areaOf(there[i + 1]);
        const bool isAbove =
            to.bottom() < from.top() && to.left() <= from.right() && from.left() <= to.right();
        const bool isBefore =
            to.right() < from.left() && to.top() <= from.bottom() && from.top() <= to.bottom();
        // The order round this one is fixed.
        if ((isAbove || isBefore) && to.top() > top && dockOf(there[i]) == dockOf(there[i + 1]) &&
            there[i]->objectName() != "lineEdit_SessionName")
            faults.append(told(there[i], "comes before one above"));
    }
    for (QWidget* each : window->findChildren<QWidget*>()) {
        if (each->window() != window || !each->isVisible() || !each->isEnabled())
            continue;
        const auto* radio = qobject_cast<QRadioButton*>(each);
        if ((each->focusPolicy() & Qt::TabFocus) && !each->focusProxy() && !there.contains(each) &&
            (!radio || radio->isChecked()))
            faults.append(told(each, "is out of reach"));
        auto* view = qobject_cast<QAbstractItemView*>(each);
        if (view && view->contextMenuPolicy() != Qt::DefaultContextMenu &&
            view->currentIndex().isValid() && !hasMenu(view))
            faults.append(told(each, "has no menu by key"));
        if (view && view->model()->rowCount() > 0 && !view->accessibleDescription().isEmpty())
            faults.append(told(each, "says why it is empty"));
    }
    for (const QString& fault : std::as_const(faults))
        qInfo("%s", qPrintable(fault));
    return faults;
}

void tst_Accessibility::initTestCase()
{
    QApplication::setStyle("Fusion");
    QApplication::setCursorFlashTime(0);
    m_setting = settingOf(m_server.start(NODE, {PEERS "/sessionserver.mjs", "--conformance"}));
    QVERIFY(connectSession(*m_session, m_setting).isNull());
}

void tst_Accessibility::widgets_data()
{
    QTest::addColumn<Create>("create");
    const auto add = [](const char* name, Create create) { QTest::addRow("%s", name) << create; };
    for (const EditorCase& editor : editorCases()) {
        add(editor.name, [&editor] {
            Editor edited(editor.create(0));
            edited.setValue(editor.first);
            return edited.widget.release();
        });
        const bool isLine = !QByteArray(editor.name).contains("ditWidget") &&
                            !QByteArray(editor.name).contains("Dialog");
        add(editor.name + QByteArray(" read only"),
            [&editor, isLine] { return editor.create(isLine ? 2 : 1); });
    }
    V array, matrix;
    array.setStringArray({UaString("a"), UaString("b")});
    QVERIFY(matrix.setInt32Matrix({1, 2, 3, 4, 5, 6}, {2, 3}));
    for (const V& value : {V(1), V("text"), V(UaDateTime::now()), V(UaNodeId(85)), array, matrix})
        add("QvelWidgetVariant " + value.toString().bytes(), [value] {
            auto* editor = new QvelWidgetVariant;
            editor->setValue(value);
            return editor;
        });
    add("QvelDialogWidgetArray of strings", [=] { return new QvelDialogWidgetArray(array); });
    add("QvelDialogWidgetMatrix of numbers", [=] { return new QvelDialogWidgetMatrix(matrix); });
    for (const WidgetCase& widget : widgetCases(FIXTURES "/"))
        add(widget.name, widget.create);
    add("QvelTrendWidget", [this] {
        auto* trend = new QvelTrendWidget;
        trend->setSession(m_session.get());
        trend->addVariable({node("Item0"), "Item0"});
        return trend;
    });
    add("QvelSessionWidget", [this] {
        auto* widget = new QvelSessionWidget;
        widget->setSession(m_session.get());
        return widget;
    });
    add("QvelAddressSpaceWidget", [this] { return live<QvelAddressSpaceWidget>([](auto*) {}); });
    add("QvelAttributesWidget", [this] {
        return live<QvelAttributesWidget>([this](auto* w) { w->setNode(node("Temperature")); });
    });
    add("QvelReferencesWidget", [this] {
        return live<QvelReferencesWidget>([this](auto* w) { w->setNode(node("Machine")); });
    });
    add("QvelDataViewWidget", [this] {
        return live<QvelDataViewWidget>([this](auto* w) { w->addNodes({{node("Mode"), {}}}); });
    });
    add("QvelCallDialog", [this] { return call(); });
}

void tst_Accessibility::widgets()
{
    QFETCH(Create, create);
    const std::unique_ptr<QWidget> widget(create());
    QVERIFY(widget);
    widget->show();
    QVERIFY(faultsOf(widget.get()).isEmpty());
}

// Its windows, with a server.
void tst_Accessibility::harrier()
{
    Run run(m_store.path("harrier.ini"));
    MainWindow& window = run.window;
    const SessionPage* page = window.addSession(m_setting);
    window.currentSession()->connectQuietly();
    QTRY_COMPARE_WITH_TIMEOUT(page->session()->state(), QvelSession::Connected, patience);
    const auto* tree = named<QTreeView>(*page, "Address space");
    QTRY_VERIFY_WITH_TIMEOUT(tree->currentIndex().isValid(), patience);
    QStringList faults = faultsOf(&window);
    window.serverTabs()->setCurrentIndex(0);
    const std::pair<QWidget*, QTabWidget*> all[] = {{&window, window.pageTabs()},
                                                    {&window.gallery(), window.gallery().tabs()}};
    for (const auto& [shown, tabs] : all)
        for (int i = 0; i < tabs->count(); ++i) {
            shown->show();
            tabs->setCurrentIndex(i);
            faults += faultsOf(shown);
        }
    for (const QAction* menu : window.menuBar()->actions()) {
        Q_EMIT menu->menu()->aboutToShow();
        for (const QAction* action : menu->menu()->actions())
            if (!action->isSeparator() && !action->text().contains('&'))
                faults.append(action->text() + " has no letter in its menu");
    }
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
}

// What became of an action is told where it is shown.
void tst_Accessibility::results()
{
    const std::unique_ptr<QvelCallDialog> dialog(call());
    QVERIFY(dialog);
    dialog->widget()->call();
    QStringList faults;
    QTRY_VERIFY_WITH_TIMEOUT(!dialog->widget()->isCalling(), patience);
    listen(QAccessible::queryAccessibleInterface(dialog.get()), faults);
    QvelSession none;
    QvelSessionWidget session;
    session.setSession(&none);
    session.show();
    none.connectToServer({});
    QTRY_VERIFY_WITH_TIMEOUT(!session.findChild<QLabel*>("error")->text().isEmpty(), patience);
    listen(QAccessible::queryAccessibleInterface(&session), faults);
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join('\n')));
}

// What a tenth of the picture's area reaches: its outlines.
static double contrast(const QPixmap& picture, const QColor& ground)
{
    std::vector<double> all;
    const QImage image = picture.toImage();
    for (int i = 0; i < image.width() * image.height(); ++i)
        if (const QColor c = image.pixelColor(i % image.width(), i / image.width()); c.alpha() > 0)
            all.push_back(contrast(mixed(ground, c, c.alphaF()), ground));
    std::sort(all.begin(), all.end(), std::greater<>());
    return all.empty() ? 0 : all[all.size() / 10];
}

void tst_Accessibility::colours_data()
{
    QTest::addColumn<bool>("isDark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

// WCAG 2.1 AA; and all that is on the screen follows the palette at once.
void tst_Accessibility::colours()
{
    QFETCH(bool, isDark);
    QvelNewCertificateDlg dialog("kestrel", "access", false, true, nullptr);
    QvelToolBox box;
    box.addPage(new QWidget);
    LogBuffer lines;
    LogView log(lines);
    lines.appendFailure("failed");
    QTRY_VERIFY(!log.document()->isEmpty());
    QvelDataViewModel stale;
    stale.addNodes({{node("Item0"), {}}});
    dialog.show();
    QApplication::setPalette(isDark ? QApplication::style()->standardPalette() : darkPalette());
    QApplication::setPalette(isDark ? darkPalette() : QApplication::style()->standardPalette());
    QCoreApplication::processEvents();

    using P = QPalette;
    const P palette = QApplication::palette();
    double lowest[2] = {21, 21};
    QStringList faults;
    const auto check = [&](const QString& what, double ratio, bool isText) {
        lowest[isText] = qMin(lowest[isText], ratio);
        if (ratio < (isText ? 4.5 : 3))
            faults.append(QString("%1: %2").arg(what).arg(ratio, 0, 'f', 2));
    };
    QCOMPARE(contrast(QColor(Qt::white), QColor(Qt::black)), 21.);
    const std::pair<P::ColorRole, P::ColorRole> pairs[] = {
        {P::Text, P::Base},           {P::Text, P::AlternateBase},
        {P::WindowText, P::Window},   {P::ButtonText, P::Button},
        {P::Link, P::Base},           {P::HighlightedText, P::Highlight},
        {P::PlaceholderText, P::Base}};
    for (const auto& [text, ground] : pairs)
        if (isDark) // else they are Qt's
            check(QMetaEnum::fromType<P::ColorRole>().valueToKey(text),
                  contrast(palette.color(text), palette.color(ground)), true);
    const QColor base = palette.color(P::Base);
    const QColor grounds[] = {base, palette.color(P::AlternateBase), palette.color(P::Window)};
    const QColor past = stale.index(0, 0).data(Qt::ForegroundRole).value<QBrush>().color();
    check("stale", qMin(contrast(past, base), contrast(past, grounds[1])), true);
    const QTextBlock line = log.document()->lastBlock();
    check("log", contrast((--line.end()).fragment().charFormat().foreground().color(), base), true);
    const auto* header = box.findChild<QLabel*>(); // its colours are fixed: white on middle grey
    check("header",
          contrast(header->palette().color(P::WindowText), header->palette().color(P::Window)),
          false);
    for (const auto state :
         {QvelSession::Connected, QvelSession::Disconnected, QvelSession::Creating})
        check("session", contrast(SessionPage::icon(state).pixmap(16), grounds[2]), false);
    for (const char* folder : {":/kestrel/images/", ":/images/"}) {
        const QDir images(folder + QString(isDark ? "dark/" : ""));
        for (const QString& name : images.entryList({"*.png"}, QDir::Files))
            for (const QColor& ground : grounds)
                check(name, contrast(QPixmap(images.filePath(name)), ground), false);
    }
    const auto image = [&](const char* name) {
        const QString path = QString(":/kestrel/images/%1%2.png").arg(isDark ? "dark/" : "", name);
        return QIcon(path).pixmap(16).toImage();
    };
    QCOMPARE(dialog.findChild<QLabel*>("lblStatCN")->pixmap(Qt::ReturnByValue).toImage(),
             image("on"));
    const QIcon toggle = box.findChild<QToolButton*>("toggleButton")->icon();
    QCOMPARE(toggle.pixmap(16, QIcon::Normal, QIcon::On).toImage(), image("hideGroup"));
    QCOMPARE(toggle.pixmap(16, QIcon::Normal, QIcon::Off).toImage(), image("showGroup"));
    MemorySettings settings;
    const QvelDiscoveryWidget tree(QvelDiscoveryWidget::OpcUa, &settings, 1000, {});
    for (int row = 0; row < tree.model()->rowCount(); ++row) {
        const auto icon = tree.model()->index(row, 0).data(Qt::DecorationRole).value<QIcon>();
        check("selected", contrast(icon.pixmap(16, QIcon::Selected), palette.color(P::Highlight)),
              false);
    }
    qInfo("lowest contrast: text %.2f, pictures %.2f", lowest[1], lowest[0]);
    QVERIFY2(faults.isEmpty(), qPrintable('\n' + faults.join('\n')));
}

QTEST_MAIN(tst_Accessibility)
#include "tst_accessibility.moc"
