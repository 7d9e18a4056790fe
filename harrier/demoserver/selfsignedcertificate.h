#pragma once

#include <QtCore/QByteArray>

/// The DER bytes of a new self-signed application instance certificate (OPC 10000-6, 6.2.2) for the
/// host "localhost": RSA 2048, SHA-256, valid for a year. Its private key is not kept. Empty when
/// OpenSSL fails.
QByteArray makeSelfSignedCertificate(const QByteArray& applicationName,
                                     const QByteArray& applicationUri);
