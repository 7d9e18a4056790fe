// The way to a secure session: a certificate of the application's own, the question whether the
// server is trusted, and how the session stands:
//
//     connect opc.tcp://localhost:4850

#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/QvelSession>
#include <Kestrel/QvelSessionWidget>
#include <Kestrel/QvelTrustDialog>
#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QSysInfo>

// The application's certificate and the folders of those that it trusts and rejects.
static QvelSessionOptions sessionOptions()
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    QvelSessionOptions options;
    options.applicationName = QApplication::applicationName();
    options.certificateFile = folder.filePath("own.der");
    options.privateKeyFile = folder.filePath("own.pem");
    options.trust.trusted = folder.filePath("trusted");
    options.trust.rejected = folder.filePath("rejected");
    for (const QString& path : {options.trust.trusted, options.trust.rejected})
        QDir().mkpath(path);
    if (QFile::exists(options.certificateFile) && QFile::exists(options.privateKeyFile))
        return options;

    const QByteArray host = QSysInfo::machineHostName().toUtf8();
    UaPkiIdentity identity;
    identity.commonName = UaString(options.applicationName.toUtf8());
    UaPkiCertificateInfo info;
    info.applicationUri = UaString("urn:" + host + ":" + options.applicationName.toUtf8());
    info.dnsName = UaString(host);
    const UaPkiRsaKeyPair pair(2048);
    const UaPkiCertificate certificate(info, identity, pair.publicKey(), identity,
                                       pair.privateKey());
    if (!pair.toPEMFile(QFile::encodeName(options.privateKeyFile)) ||
        !certificate.toDERFile(QFile::encodeName(options.certificateFile)))
        qWarning("The certificate cannot be kept in %s", qPrintable(folder.path()));
    return options;
}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName("kestrel-connect");
    QvelSession session(sessionOptions());
    QvelSessionWidget window;
    window.setSession(&session);
    window.show();

    QObject::connect(&session, &QvelSession::certificateQuestion, &window,
                     [&](const QvelCertificateQuestion& question) {
                         auto* dialog = new QvelTrustDialog(question, &window);
                         dialog->setAttribute(Qt::WA_DeleteOnClose);
                         dialog->setSession(&session); // gives it the answer
                         dialog->open();
                     });
    QvelDiscoverySetting server; // without a policy: the best that the server has
    server.setEndpointUrl(QApplication::arguments().value(1, "opc.tcp://localhost:4850"));
    session.connectToServer(server);
    return QApplication::exec();
}
