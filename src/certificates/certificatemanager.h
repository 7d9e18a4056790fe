#pragma once

#include "../kestrelexport.h"

#include <QtWidgets/QWidget>

#include <memory>

/// Where a user manages the certificates that an application trusts and rejects, and makes the
/// application a new one.
///
/// All paths come from the host and none is kept in settings. Failures are shown in message boxes.
/// The host owns the widget. User-interface thread only; making a key blocks it for a moment.
class KESTREL_EXPORT QvelCertificateManager : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(QString applicationName READ applicationName WRITE setApplicationName)
    Q_PROPERTY(QString applicationUriPart READ applicationUriPart WRITE setApplicationUriPart)
    Q_PROPERTY(bool passwordOption READ passwordOption WRITE setPasswordOption)
    Q_PROPERTY(int clockTolerance READ clockTolerance WRITE setClockTolerance)
public:
    /// Without a store until setStore(): nothing is read or written, and the buttons are disabled.
    explicit QvelCertificateManager(QWidget* parent = nullptr);
    /// `applicationName` and `applicationUriPart` go into the URI "urn:host:part:name" of a new
    /// certificate. `trustedPath` and `rejectedPath` end with a separator; `secondPath` and
    /// `thirdPath` are not read, see QvelCertificateModel. A new certificate is written to
    /// `ownCertificateFile` as DER and its private key to `ownPrivateKeyFile` as PEM, encrypted if
    /// the user may (`passwordOption`) and does give a password. The application has to announce
    /// the URI that its certificate holds: UaPkiCertificateInfo::applicationUri of that file.
    QvelCertificateManager(const QString& applicationName, const QString& applicationUriPart,
                           const QString& trustedPath, const QString& secondPath,
                           const QString& thirdPath, const QString& rejectedPath,
                           const QString& ownCertificateFile, const QString& ownPrivateKeyFile,
                           const QIcon& ownCertificateIcon, bool passwordOption,
                           QWidget* parent = nullptr);
    ~QvelCertificateManager() override;

    /// The store, as the other constructor takes it.
    void setStore(const QString& trustedPath, const QString& rejectedPath,
                  const QString& ownCertificateFile, const QString& ownPrivateKeyFile,
                  const QIcon& ownCertificateIcon);

    QString applicationName() const;
    void setApplicationName(const QString& name);
    QString applicationUriPart() const;
    void setApplicationUriPart(const QString& part);
    bool passwordOption() const;
    void setPasswordOption(bool on);
    /// The key sizes that the dialog for a new certificate offers, in bits; see
    /// QvelNewCertificateDlg::setRSAKeyStrengths(). Empty is the dialog's default.
    void setRSAKeyStrengths(const QList<int>& bits);
    QList<int> rsaKeyStrengths() const;
    /// How far in the past the validity of a new certificate starts, in seconds; see
    /// QvelNewCertificateDlg::setClockTolerance(). 0 is the default.
    void setClockTolerance(int seconds);
    int clockTolerance() const;

public Q_SLOTS:
    /// Shows the trusted directory in the desktop's file manager.
    void sltOpenCertLocation();
    /// Asks for a file and copies the application's own certificate to it, but never over one that
    /// is there.
    void sltCopyCertificateTo();
    /// Asks for the data of a new certificate and replaces the application's own certificate and
    /// private key. The dialog comes back when no certificate can be made from the data. When one
    /// of the two files cannot be written, both stay as they were, and the user is told.
    void sltCreateNewCertificate();
    /// Shows the menu of the current certificate if there is a certificate at `pos` of the list.
    void sltViewContextMenu(QPoint pos);
    /// Moves the current certificate to the trusted directory.
    void sltTrustCertificate();
    /// Moves the current certificate to the rejected directory.
    void sltRejectCertificate();
    /// Removes the current certificate's file if the user agrees.
    void sltDeleteCertificate();
    /// Shows the current certificate in the desktop's viewer.
    void sltOpenCertificate();
    /// Reads the store again.
    void sltReload();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
