// Finding servers, connecting to them, and trusting them.

#include "widgets.h"

#include <Kestrel/QvelCertificateManager>
#include <Kestrel/QvelCertificateView>
#include <Kestrel/QvelDiscoveryCBInterface>
#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/QvelDiscoveryWidget>
#include <Kestrel/QvelEndpointSettingsWidget>
#include <Kestrel/QvelNewCertificateDlg>
#include <Kestrel/QvelSession>
#include <Kestrel/QvelToolBox>
#include <Kestrel/QvelTrustDialog>
#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>
#include <Kestrel/UaPkiTrustStore>

#include <QtCore/QDebug>
#include <QtCore/QDir>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtGui/QIcon>
#include <QtWidgets/QListWidget>

namespace {

//! [QvelDiscoveryCBInterface]
// The host's side of discovery: where its settings are kept, and its log.
class Discovery : public QvelDiscoveryCBInterface
{
    void* openSettings() override { return new QSettings("Plant", "Discovery"); }
    void closeSettings(void* handle) override { delete static_cast<QSettings*>(handle); }
    QVariant readSetting(void* handle, const QString& key) override
    {
        return static_cast<QSettings*>(handle)->value(key);
    }
    void writeSetting(void* handle, const QString& key, const QVariant& value) override
    {
        static_cast<QSettings*>(handle)->setValue(key, value);
    }
    void logMessage(const QString& text) override { qInfo() << text; } // on any thread
};
//! [QvelDiscoveryCBInterface]

//! [QvelDiscoveryWidget]
QWidget* discovery()
{
    static Discovery callback; // a QvelDiscoveryCBInterface, which outlives the tree
    auto* tree =
        new QvelDiscoveryWidget(QvelDiscoveryWidget::OpcUa, &callback, 5000 /* ms */, "session");
    QObject::connect(tree, &QvelDiscoveryWidget::endpointActivated, tree,
                     [tree](const QvelDiscoverySetting& endpoint) {
                         qInfo() << "connect to" << endpoint.endpointUrl();
                         tree->updateEndpointConfiguration(endpoint); // "Recently Used"
                     });
    tree->expand(tree->model()->index(0, 0)); // asks this computer
    tree->resize(520, 300);
    return tree;
}
//! [QvelDiscoveryWidget]

//! [QvelEndpointSettingsWidget]
QWidget* endpointSettings()
{
    auto* form = new QvelEndpointSettingsWidget;
    form->setSecurityPolicies({"http://opcfoundation.org/UA/SecurityPolicy#Basic256Sha256",
                               "http://opcfoundation.org/UA/SecurityPolicy#Aes256_Sha256_RsaPss"});
    form->setEndpointUrl("opc.tcp://plant:4840");
    form->setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#Basic256Sha256");
    form->setSecurityMode(OpcUa_MessageSecurityMode_SignAndEncrypt);
    form->setUserTokenType(OpcUa_UserTokenType_UserName);
    form->setUserName("operator");
    QObject::connect(form, &QvelEndpointSettingsWidget::serverConfigChanged, form,
                     [form] { qInfo() << form->endpointUrl() << form->userName(); });
    return form;
}
//! [QvelEndpointSettingsWidget]

UaPkiCertificate certificate(const char* name)
{
    static const UaPkiRsaKeyPair pair(2048);
    UaPkiIdentity identity;
    identity.commonName = name;
    identity.organization = "Plant";
    UaPkiCertificateInfo info;
    info.applicationUri = UaString("urn:plant:" + QByteArray(name).toLower());
    info.dnsName = "plant";
    return {info, identity, pair.publicKey(), identity, pair.privateKey()};
}

QString sampleStore()
{
    static const QTemporaryDir folder;
    for (const char* name : {"trusted", "rejected", "own"})
        QDir(folder.path()).mkpath(name);
    for (const char* file : {"trusted/Boilerhouse", "trusted/Tanks", "rejected/Visitor"}) {
        const QString path = folder.filePath(QString(file) + ".der");
        certificate(strchr(file, '/') + 1).toDERFile(QFile::encodeName(path));
    }
    return folder.path();
}

//! [QvelCertificateManager]
QWidget* certificateManager()
{
    const QString pki = sampleStore() + '/'; // names of folders end with a separator
    auto* manager = new QvelCertificateManager(
        "client", "plant", pki + "trusted/", {}, {}, pki + "rejected/", pki + "own/own.der",
        pki + "own/own.pem", QIcon(), true /* may protect the key by a password */);
    manager->setRSAKeyStrengths({2048, 3072, 4096});
    manager->setClockTolerance(600); // servers' clocks may be ten minutes slow
    manager->resize(760, 320);
    return manager;
}
//! [QvelCertificateManager]

//! [QvelNewCertificateDlg]
QWidget* newCertificate()
{
    auto* dialog = new QvelNewCertificateDlg("client", "plant", false, true, nullptr);
    dialog->setOrganization("Plant");
    dialog->setDNS("workstation");
    dialog->setURI("urn:workstation:plant:client");
    dialog->setRSAKeyStrengths({2048, 3072, 4096});
    QObject::connect(dialog, &QDialog::accepted, dialog, [dialog] {
        if (dialog->certificate()->isNull())
            return dialog->show(); // which tells why
        qInfo() << "announce as" << dialog->applicationUri();
    });
    return dialog;
}
//! [QvelNewCertificateDlg]

//! [QvelCertificateView]
QWidget* certificateView()
{
    auto* view = new QvelCertificateView;
    view->setCertificate(certificate("Boilerhouse")); // a UaPkiCertificate
    view->resize(720, view->sizeHint().height());
    return view;
}
//! [QvelCertificateView]

//! [QvelTrustDialog]
QWidget* trustDialog()
{
    QvelCertificateQuestion question; // as QvelSession::certificateQuestion() brings one
    UaPkiExpectation expected;
    expected.hostName = "boilerhouse";
    const auto verdict = UaPkiTrustStore().check(certificate("Boilerhouse").toDER(), expected);
    question.certificate = verdict.certificate;
    question.findings = verdict.findings;

    auto* dialog = new QvelTrustDialog(question); // setSession() gives the answer to the session
    QObject::connect(dialog, &QvelTrustDialog::answered, dialog, [](QvelCertificateAnswer answer) {
        qInfo() << "trusted:" << (answer != QvelCertificateAnswer::Reject);
    });
    return dialog;
}
//! [QvelTrustDialog]

//! [QvelToolBox]
QWidget* toolBox()
{
    auto* box = new QvelToolBox;
    box->setItemTexts("&Servers|S&ettings"); // titles, in the order of the pages
    auto* servers = new QListWidget;
    servers->addItems({"Boiler house", "Tank farm", "Bottling line"});
    box->addPage(servers);
    box->addPage(new QvelEndpointSettingsWidget);
    box->setCurrentIndex(0);
    QObject::connect(box, &QvelToolBox::currentIndexChanged, box,
                     [box] { qInfo() << box->getCurrentItemText(); });
    box->resize(420, 620);
    return box;
}
//! [QvelToolBox]

} // namespace

QList<WidgetExample> connectionExamples()
{
    return {
        {"QvelDiscoveryWidget", discovery},
        {"QvelEndpointSettingsWidget", endpointSettings},
        {"QvelCertificateManager", certificateManager},
        {"QvelNewCertificateDlg", newCertificate},
        {"QvelCertificateView", certificateView},
        {"QvelTrustDialog", trustDialog},
        {"QvelToolBox", toolBox},
    };
}
