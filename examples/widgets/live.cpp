// Views on a server. Each takes a QvelSession, and stays usable without a connection.

#include "widgets.h"

#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelCallDialog>
#include <Kestrel/QvelCallWidget>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelNodeLink>
#include <Kestrel/QvelReferencesWidget>
#include <Kestrel/QvelSession>
#include <Kestrel/QvelSessionWidget>
#include <Kestrel/QvelTrendWidget>

#include <QtCore/QDateTime>
#include <QtCore/QDebug>
#include <QtCore/QtMath>

namespace {

// A node by its identifier in the plant's first server.
UaExpandedNodeId node(const char* id)
{
    return {UaNodeId(UaString(id), 0), "urn:localhost:kestrel:Boilerhouse", 0};
}

//! [QvelSessionWidget]
QWidget* sessionState(QvelSession* session)
{
    auto* state = new QvelSessionWidget;
    state->setSession(session);
    QObject::connect(state, &QvelSessionWidget::connectRequested, session, [session] {
        session->connectToServer(session->setting()); // after asking for a password, if need be
    });
    state->resize(480, state->sizeHint().height());
    return state;
}
//! [QvelSessionWidget]

//! [QvelAddressSpaceWidget]
QWidget* addressSpace(QvelSession* session)
{
    auto* tree = new QvelAddressSpaceWidget;
    tree->setSession(session);
    tree->goTo(node("Boiler 1.Pressure")); // or by NodeId, browse path or name: goToText(), find()
    QObject::connect(tree, &QvelAddressSpaceWidget::nodeActivated, tree,
                     [](const UaExpandedNodeId& id) { qInfo() << qvelNodeIdText(id); });
    tree->resize(520, 420);
    return tree;
}
//! [QvelAddressSpaceWidget]

//! [QvelReferencesWidget]
QWidget* references(QvelSession* session)
{
    auto* table = new QvelReferencesWidget;
    table->setSession(session);
    table->setNode(node("Boiler 1"));
    QObject::connect(table, &QvelReferencesWidget::nodeActivated, table,
                     &QvelReferencesWidget::setNode); // follows a reference
    table->resize(620, 300);
    return table;
}
//! [QvelReferencesWidget]

//! [QvelAttributesWidget]
QWidget* attributes(QvelSession* session)
{
    auto* table = new QvelAttributesWidget; // edits in place what the user may write
    table->setSession(session);
    table->setNode(node("Boiler 1.TemperatureSetPoint"));
    table->resize(620, 420);
    return table;
}
//! [QvelAttributesWidget]

//! [QvelDataViewWidget]
QWidget* dataView(QvelSession* session)
{
    auto* lists = new QvelDataViewWidget;
    lists->setSession(session);
    lists->renameList(0, "Boiler 1");
    lists->addNodes({{node("Boiler 1.Temperature"), "Temperature"},
                     {node("Boiler 1.Pressure"), "Pressure"},
                     {node("Boiler 1.Mode"), "Mode"}});
    QObject::connect(lists, &QvelDataViewWidget::variableActivated, lists,
                     [](const UaExpandedNodeId& id) { qInfo() << qvelNodeIdText(id); });
    lists->resize(760, 260);
    return lists;
}
//! [QvelDataViewWidget]

//! [QvelTrendWidget]
QWidget* trend(QvelSession* session)
{
    auto* curves = new QvelTrendWidget;
    curves->setSession(session);
    curves->addVariable({node("Boiler 1.Pressure"), "Pressure"});
    QObject::connect(curves, &QvelTrendWidget::seriesChanged, curves, [curves] {
        if (curves->canLoadHistory()) // what the server keeps of the range that is shown
            curves->loadHistory();
    });

    const int computed = curves->addSeries("Demand", "%"); // values of the host's own
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (int second = -120; second <= 0; ++second)
        curves->append(computed, UaDateTime(now.addSecs(second)), 50 + 30 * qSin(second / 12.0));
    curves->setFollowing(120); // shows two minutes, and runs along
    curves->resize(680, 340);
    return curves;
}
//! [QvelTrendWidget]

//! [QvelCallWidget]
QWidget* call(QvelSession* session)
{
    auto* form = new QvelCallWidget; // with an editor for each argument, by its data type
    form->setSession(session);
    form->setMethod(node("Boiler 1"), node("Boiler 1.Ramp"));
    form->resize(560, 380);
    return form;
}
//! [QvelCallWidget]

//! [QvelCallDialog]
QWidget* callDialog(QvelSession* session)
{
    auto* dialog = new QvelCallDialog; // a QvelCallWidget in a window
    dialog->setSession(session);
    dialog->setMethod(node("Boiler 1"), node("Boiler 1.Stop"));
    dialog->resize(560, 380);
    return dialog;
}
//! [QvelCallDialog]

} // namespace

QList<WidgetExample> liveExamples()
{
    return {
        {"QvelSessionWidget", sessionState},
        {"QvelAddressSpaceWidget", addressSpace},
        {"QvelReferencesWidget", references},
        {"QvelAttributesWidget", attributes},
        {"QvelDataViewWidget", dataView},
        {"QvelTrendWidget", trend},
        {"QvelCallWidget", call},
        {"QvelCallDialog", callDialog},
    };
}
