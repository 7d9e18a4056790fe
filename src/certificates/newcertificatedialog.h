#pragma once

#include "../kestrelexport.h"

#include <QtCore/QList>
#include <QtWidgets/QDialog>

#include <memory>

class UaPkiCertificate;
class UaPkiRsaKeyPair;

/// A modal dialog that collects the data of a new self-signed application instance certificate
/// (OPC 10000-6, 6.2.2) and creates it, and its key pair, when it is accepted; that blocks the
/// thread for up to some seconds. It writes no file. User-interface thread only.
class KESTREL_EXPORT QvelNewCertificateDlg : public QDialog
{
    Q_OBJECT
public:
    /// The common name starts as `applicationName`, the domain name as this computer's host name,
    /// the application URI as "urn:HOST:APPLICATIONURIPART:APPLICATIONNAME". A `mandatory` dialog
    /// can be neither cancelled nor closed. `passwordOption` offers to protect the private key.
    QvelNewCertificateDlg(const QString& applicationName, const QString& applicationUriPart,
                          bool mandatory, bool passwordOption, QWidget* parent);
    ~QvelNewCertificateDlg() override;

    void setCommonName(const QString& text);
    void setOrganization(const QString& text);
    void setOrganizationUnit(const QString& text);
    void setLocality(const QString& text);
    void setState(const QString& text);
    /// Two letters; what follows is cut off.
    void setCountry(const QString& text);
    /// The only way to change the application URI, which the user cannot edit.
    void setURI(const QString& text);
    void setIP(const QString& text);
    void setDNS(const QString& text);
    /// Selects a key strength that is offered, in bits, and the first one for any other number.
    void setRSAKeyStrength(int bits);

    /// The key strengths to offer, in bits and in this order, each from 1024 to 4096; others and
    /// repetitions are left out. Without any it is the default of 1024 and 2048. The selected
    /// strength stays selected if it is still offered, else the first one is.
    void setRSAKeyStrengths(const QList<int>& bits);
    QList<int> rsaKeyStrengths() const;

    /// How many seconds before now the validity starts, for servers whose clocks are slow; it ends
    /// where it would otherwise. 0, the default, at least.
    void setClockTolerance(int seconds);
    int clockTolerance() const;

    /// The application URI as the certificate holds it, which the application has to announce, too:
    /// the text of its field with what cannot stand in a URI percent-encoded (RFC 3986).
    QString applicationUri() const;
    /// Null until the dialog was accepted, then owned by the dialog. The certificate is a null one
    /// if it could not be created, as from an IP address that is none; shown again, the dialog
    /// tells why, with the focus in the field that is to blame.
    UaPkiCertificate* certificate() const;
    /// As certificate().
    UaPkiRsaKeyPair* keyPair() const;
    /// The password for the private key; empty when it is not to be protected.
    QString password() const;

    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private Q_SLOTS:
    void sltCreateCertificate();
    void sltCNChanged(QString text);
    void sltOChanged(QString text);
    void sltOUChanged(QString text);
    void sltLChanged(QString text);
    void sltSChanged(QString text);
    void sltCChanged(QString text);
    void sltURIChanged(QString text);
    void sltDNSChanged(QString text);
    void sltIPChanged(QString text);
    void validateSettings();
    void sltPasswordEnabled(int state);
    void sltPasswordChanged(QString text);

private:
    class Private;
    const std::unique_ptr<Private> d;
};
