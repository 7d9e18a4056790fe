#pragma once

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

    QString folder;
    QString trusted;
    QString issuers;
    QString rejected;
    QString keys;
    QString certificate; ///< harrier's own
    QString key;
};
