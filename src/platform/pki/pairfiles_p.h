#pragma once

#include <QtCore/QString>

#include <optional>

class UaPkiCertificate;
class UaPkiRsaKeyPair;

struct FileFailure
{
    QString file;
    QString reason;
};

/// Replaces the file of a certificate, as DER, and that of its private key, as
/// UaPkiRsaKeyPair::toPEMFile() writes it. After a failure, which is returned, both old files stay.
std::optional<FileFailure> replacePair(const UaPkiCertificate& certificate,
                                       const QString& certificateFile,
                                       const UaPkiRsaKeyPair& keyPair, const QString& keyFile,
                                       const char* password);
