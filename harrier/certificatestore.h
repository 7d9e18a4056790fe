#pragma once

#include <Kestrel/QvelSessionOptions>

#include <QtCore/QString>

#include <functional>

/// Where harrier keeps certificates: its own, which is one of the trusted ones, and those of
/// servers. Each folder ends in a slash.
struct CertificateStore
{
    explicit CertificateStore(const QString& folder);
    /// Makes the folders; `log` is told of each that cannot be made. That of the key is the user's
    /// alone.
    void makeFolders(const std::function<void(const QString&)>& log) const;
    /// Makes harrier's own certificate and key where neither is there. `log` is told of that, of a
    /// failure, and of a certificate that is not valid today. Whether it made them.
    bool makeOwnCertificate(const std::function<void(const QString&)>& log) const;
    /// How harrier presents itself to servers, and whom it trusts.
    QvelSessionOptions sessionOptions() const;

    QString folder;
    QString trusted;
    QString issuers;
    QString rejected;
    QString keys;
    QString certificate; ///< harrier's own
    QString key;
};
