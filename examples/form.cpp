// A form that was made in Qt Designer (form.ui), and what its program gives the widgets:
//
//     form opc.tcp://localhost:4850

#include "ui_form.h"

#include <Kestrel/QvelDiscoveryCBInterface>
#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/QvelLanguage>
#include <Kestrel/QvelSession>

#include <QApplication>
#include <QDebug>
#include <QIcon>
#include <QStandardPaths>
#include <QVariant>

// Keeps nothing, and logs to the standard error.
class Discovery : public QvelDiscoveryCBInterface
{
    void* openSettings() override { return nullptr; }
    void closeSettings(void*) override {}
    QVariant readSetting(void*, const QString&) override { return {}; }
    void writeSetting(void*, const QString&, const QVariant&) override {}
    void logMessage(const QString& text) override { qInfo() << text; }
};

class Form : public QWidget
{
public:
    // Both outlive the form: its tree ends with a look at the settings.
    Form(QvelSession* session, QvelDiscoveryCBInterface& callback)
    {
        const QString folder =
            QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + '/';
        ui.setupUi(this);
        ui.discovery->start(&callback);
        ui.certificates->setStore(folder + "trusted/", folder + "rejected/", folder + "own.der",
                                  folder + "own.pem", QIcon());
        ui.addressSpace->setSession(session);
    }

private:
    Ui::Form ui;
};

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    qvelInstallLanguage(QLocale()); // German, or English

    QvelDiscoverySetting server;
    server.setEndpointUrl(QApplication::arguments().value(1, "opc.tcp://localhost:4850"));
    server.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#None");
    server.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
    QvelSession session;
    session.connectToServer(server);

    Discovery callback;
    Form form(&session, callback);
    form.show();
    return QApplication::exec();
}
