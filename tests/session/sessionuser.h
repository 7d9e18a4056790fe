#pragma once

#include "support/peerprocess.h"

#include <Kestrel/QvelSession>
#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtTest/QtTest>

/// The value of a future once it is there, as the event loop brings it; a default one when it does
/// not come in time.
template <class T>
T resultOf(QFuture<T> future, int timeout = 30000)
{
    QEventLoop loop;
    QFutureWatcher<T> watcher;
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &loop, &QEventLoop::quit);
    watcher.setFuture(future);
    QTimer::singleShot(timeout, &loop, &QEventLoop::quit);
    if (!future.isFinished())
        loop.exec();
    return future.isFinished() && future.resultCount() > 0 ? future.result() : T();
}

/// An application with a certificate of its own, and a session that accepts any server.
struct SessionUser
{
    explicit SessionUser(int bits = 2048)
    {
        UaPkiIdentity identity;
        identity.commonName = "kestrel";
        UaPkiCertificateInfo info;
        info.applicationUri = "urn:localhost:kestrel";
        info.dnsName = "localhost";
        pair = UaPkiRsaKeyPair(bits);
        const UaPkiCertificate certificate(info, identity, pair.publicKey(), identity,
                                           pair.privateKey());
        options.applicationName = "kestrel";
        options.certificateFile = folder.filePath("own.der");
        options.privateKeyFile = folder.filePath("own.pem");
        certificate.toDERFile(QFile::encodeName(options.certificateFile));
        pair.toPEMFile(QFile::encodeName(options.privateKeyFile));
        for (const char* name : {"trusted", "rejected"})
            QDir(folder.path()).mkdir(name);
        options.trust.trusted = folder.filePath("trusted");
        options.trust.rejected = folder.filePath("rejected");
    }

    QTemporaryDir folder;
    QvelSessionOptions options;
    UaPkiRsaKeyPair pair;
};

/// Signed and encrypted where there is a policy.
inline QvelDiscoverySetting settingOf(const QString& url, const QString& policy = "None")
{
    QvelDiscoverySetting setting;
    setting.setEndpointUrl(url);
    setting.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#" + policy);
    setting.setMessageSecurityMode(policy == "None" ? OpcUa_MessageSecurityMode_None
                                                    : OpcUa_MessageSecurityMode_SignAndEncrypt);
    return setting;
}

/// Connects, and says how that went.
inline QvelSessionError connectSession(QvelSession& session, const QvelDiscoverySetting& setting,
                                       int timeout = 20000)
{
    QEventLoop loop;
    QObject context;
    QObject::connect(&session, &QvelSession::stateChanged, &context, [&](QvelSession::State state) {
        if (state == QvelSession::Connected || state == QvelSession::Disconnected)
            loop.quit();
    });
    QObject::connect(&session, &QvelSession::certificateQuestion, &context,
                     [&] { session.answerCertificate(QvelCertificateAnswer::AcceptAndTrust); });
    QTimer::singleShot(timeout, &loop, &QEventLoop::quit);
    session.connectToServer(setting);
    loop.exec();
    return session.lastError();
}
