// Variables in a list as they change, and over time:
//
//     dataview opc.tcp://localhost:4850 "nsu=urn:localhost:kestrel:Boilerhouse;s=Boiler 1.Pressure"

#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/QvelNodeLink>
#include <Kestrel/QvelSession>
#include <Kestrel/QvelTrendWidget>

#include <QApplication>
#include <QSplitter>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    QvelDiscoverySetting server;
    server.setEndpointUrl(arguments.value(1, "opc.tcp://localhost:4850"));
    server.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#None");
    server.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
    QvelSession session;
    session.connectToServer(server);

    QSplitter window(Qt::Vertical);
    auto* list = new QvelDataViewWidget(&window);
    auto* trend = new QvelTrendWidget(&window);
    list->setSession(&session);
    trend->setSession(&session);
    for (const QString& text : arguments.mid(2)) {
        const auto nodeId = qvelParseNodeId(text); // what is dropped from an address space has one
        if (!nodeId) {
            qWarning("%s is not a NodeId", qPrintable(text));
            return 2;
        }
        list->addNodes({{*nodeId, {}}});
        trend->addVariable({*nodeId, {}});
    }
    window.resize(900, 600);
    window.show();
    return QApplication::exec();
}
