#pragma once

#include "../kestrelexport.h"

#include <QtWidgets/QWidget>

#include <memory>

class UaPkiCertificate;

/// Shows what a certificate says: subject, issuer, validity, application URI, host names, key,
/// signature and thumbprints, each a line to read and copy from.
///
/// The texts of a certificate may be anything; they are shown as plain text on one line, of bounded
/// length. Its signature is not checked. User-interface thread only.
class KESTREL_EXPORT QvelCertificateView : public QWidget
{
    Q_OBJECT
public:
    explicit QvelCertificateView(QWidget* parent = nullptr);
    ~QvelCertificateView() override;

    /// The null certificate empties all lines.
    void setCertificate(const UaPkiCertificate& certificate);
    UaPkiCertificate certificate() const;
    /// All lines with their labels, nothing shortened, for the clipboard.
    QString text() const;

private:
    class Private;
    std::unique_ptr<Private> d;
};
