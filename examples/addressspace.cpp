// The address space of a server, and the attributes of the node that is selected:
//
//     addressspace opc.tcp://localhost:4850

#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/QvelSession>

#include <QApplication>
#include <QSplitter>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QvelDiscoverySetting server;
    server.setEndpointUrl(QApplication::arguments().value(1, "opc.tcp://localhost:4850"));
    server.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#None");
    server.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
    QvelSession session;
    session.connectToServer(server);

    QSplitter window;
    auto* tree = new QvelAddressSpaceWidget(&window);
    auto* attributes = new QvelAttributesWidget(&window);
    tree->setSession(&session);
    attributes->setSession(&session);
    QObject::connect(tree, &QvelAddressSpaceWidget::currentNodeChanged, attributes,
                     &QvelAttributesWidget::setNode);
    window.resize(1000, 600);
    window.show();
    return QApplication::exec();
}
