#pragma once

#include "../kestrelexport.h"
#include "../platform/stack/opcuatypes.h"

#include <QtCore/QList>
#include <QtCore/QStringList>
#include <QtWidgets/QWidget>

#include <memory>

/// A form that edits one connection configuration of a client: endpoint URL, security policy and
/// mode, user identity and session name (OPC 10000-4, 5.4.4, 5.5.2, 5.6.2 and 5.6.3).
///
/// The host fills it, listens to its signals and reads it when it connects. The form keeps the
/// choices consistent and nothing more: it does not connect, store or validate. User-interface
/// thread only.
class KESTREL_EXPORT QvelEndpointSettingsWidget : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(GuiElements visibleGuiElements READ visibleGuiElements WRITE setVisibleGuiElements
                   RESET resetVisibleGuiElements NOTIFY visibleGuiElementsChanged)
    Q_PROPERTY(QString endpointUrl READ endpointUrl WRITE setEndpointUrl NOTIFY endpointUrlChanged)
    /// The policies by the part of their URIs after "#", joined with "|"; others by the whole URI.
    Q_PROPERTY(QString policyNames READ policyNames WRITE setPolicyNames RESET resetSecurityPolicies
                   NOTIFY securityPoliciesChanged)
    Q_PROPERTY(QString policyName READ policyName WRITE setPolicyName NOTIFY securityPolicyChanged)
    Q_PROPERTY(
        QStringList securityPolicies READ securityPolicies WRITE setSecurityPolicies RESET
            resetSecurityPolicies NOTIFY securityPoliciesChanged DESIGNABLE false STORED false)
    Q_PROPERTY(QString securityPolicy READ securityPolicy WRITE setSecurityPolicy NOTIFY
                   securityPolicyChanged DESIGNABLE false STORED false)
    Q_PROPERTY(MessageSecurity messageSecurity READ messageSecurity WRITE setMessageSecurity NOTIFY
                   securityModeChanged)
    Q_PROPERTY(QString sessionName READ sessionName WRITE setSessionName NOTIFY sessionNameChanged)
    Q_PROPERTY(UserIdentity userIdentity READ userIdentity WRITE setUserIdentity NOTIFY
                   userTokenTypeChanged)
    Q_PROPERTY(QString userName READ userName WRITE setUserName NOTIFY userNameChanged)
    /// Never in a form's file.
    Q_PROPERTY(QString password READ password WRITE setPassword NOTIFY passwordChanged
                   DESIGNABLE false STORED false)
    Q_PROPERTY(
        bool storePassword READ isStorePassword WRITE setStorePassword NOTIFY storePasswordToggled)
    Q_PROPERTY(QString certificateFile READ certificateFile WRITE setCertificateFile NOTIFY
                   certificateFileChanged)
    Q_PROPERTY(QString privateKeyFile READ privateKeyFile WRITE setPrivateKeyFile NOTIFY
                   privateKeyFileChanged)
    Q_PROPERTY(QString certificateFilePath READ certificateFilePath WRITE setCertificateFilePath)
    Q_PROPERTY(QString privateKeyFilePath READ privateKeyFilePath WRITE setPrivateKeyFilePath)
public:
    /// Parts of the form that the host may hide.
    enum GuiElement {
        ServerInformation = 0x01,
        SecuritySettings = 0x02,
        AuthenticationSettings = 0x04,
        SessionSettings = 0x08,
        BottomStretch = 0x10,       ///< the stretch below the groups
        StorePasswordOption = 0x20, ///< without it, the password is editable for every user name
    };
    Q_DECLARE_FLAGS(GuiElements, GuiElement)
    Q_FLAG(GuiElements)
    /// The security modes by names for forms; the numbers are those of OpcUa_MessageSecurityMode.
    enum MessageSecurity { NoSecurity = 1, Sign = 2, SignAndEncrypt = 3 };
    Q_ENUM(MessageSecurity)
    /// As MessageSecurity, of OpcUa_UserTokenType.
    enum UserIdentity { Anonymous = 0, UserName = 1, Certificate = 2 };
    Q_ENUM(UserIdentity)

    /// Policy and mode None, user Anonymous, all texts empty.
    explicit QvelEndpointSettingsWidget(QWidget* parent = nullptr, Qt::WindowFlags f = {});
    ~QvelEndpointSettingsWidget() override;

    QString endpointUrl() const;
    /// The full URI of the security policy.
    QString securityPolicy() const;
    /// Invalid when no mode is selected.
    OpcUa_MessageSecurityMode securityMode() const;
    QString sessionName() const;
    OpcUa_UserTokenType userTokenType() const;
    QString userName() const;
    /// The text of the field, whether the password is to be stored or not.
    QString password() const;
    bool isStorePassword() const;
    QString certificateFile() const;
    QString privateKeyFile() const;
    /// Where the file dialog opens while the field of the certificate is empty: the directory of
    /// the file that the user picked last.
    QString certificateFilePath() const;
    /// As certificateFilePath(), for the private key.
    QString privateKeyFilePath() const;
    /// The URIs of the policies that are offered; None is the first.
    QStringList securityPolicies() const;
    QString policyNames() const;
    QString policyName() const;
    GuiElements visibleGuiElements() const;
    MessageSecurity messageSecurity() const { return MessageSecurity(securityMode()); }
    UserIdentity userIdentity() const { return UserIdentity(userTokenType()); }

    void setEndpointUrl(const QString& url);
    /// Selects an offered policy by its full URI, compared with its case; an unknown URI changes
    /// nothing.
    void setSecurityPolicy(const QString& uri);
    /// Invalid selects None; a value beyond the standard's clears the selection.
    void setSecurityMode(OpcUa_MessageSecurityMode mode);
    void setSessionName(const QString& name);
    /// IssuedToken changes nothing.
    void setUserTokenType(OpcUa_UserTokenType type);
    void setUserName(const QString& name);
    void setPassword(const QString& password);
    void setStorePassword(bool store);
    void setCertificateFile(const QString& file);
    void setPrivateKeyFile(const QString& file);
    void setCertificateFilePath(const QString& directory);
    void setPrivateKeyFilePath(const QString& directory);
    /// Enables the choices that a server accepts and selects the first of Anonymous, UserName and
    /// Certificate among them; an empty list enables all.
    void setSupportedUserTokenTypes(const QList<OpcUa_UserTokenType>& types);
    void setVisibleGuiElements(QFlags<GuiElement> elements);
    /// Shows all.
    void resetVisibleGuiElements() { setVisibleGuiElements(GuiElements(0x3f)); }
    void setMessageSecurity(MessageSecurity mode)
    {
        setSecurityMode(OpcUa_MessageSecurityMode(mode));
    }
    void setUserIdentity(UserIdentity identity) { setUserTokenType(OpcUa_UserTokenType(identity)); }
    /// Offers these policies (OPC 10000-7, 6.6) in this order, each shown by the part of its URI
    /// after "#". None always comes first, whether it is listed or not; empty and repeated entries
    /// are left out. An empty list restores the default: None, Basic128Rsa15, Basic256. The current
    /// policy stays selected, without a signal, if it is still offered; otherwise None is selected.
    void setSecurityPolicies(const QStringList& uris);
    void resetSecurityPolicies() { setSecurityPolicies({}); }
    void setPolicyNames(const QString& names);
    void setPolicyName(const QString& name);

Q_SIGNALS:
    /// Follows each of the other signals, and every change of policy or mode.
    void serverConfigChanged();
    void endpointUrlChanged(QString sEndpointUrl);
    void securityPolicyChanged(QString sSecurityPolicy);
    void securityModeChanged(OpcUa_MessageSecurityMode securityMode);
    void sessionNameChanged(QString sSessionName);
    void userTokenTypeChanged(OpcUa_UserTokenType userTokenType);
    void userNameChanged(QString sUserName);
    void passwordChanged(QString sPassword);
    void storePasswordToggled(bool bEnabled);
    void certificateFileChanged(QString sCertificateFile);
    void privateKeyFileChanged(QString sPrivateKeyFile);
    void visibleGuiElementsChanged();
    void securityPoliciesChanged();

private Q_SLOTS:
    void sltEndpointUrlChanged(QString text);
    void sltSecurityPolicyChanged(int index);
    void sltSecurityModeChanged(int index);
    void sltSessionNameChanged(QString text);
    void sltAnonymousToggled(bool on);
    void sltUsernameToggled(bool on);
    void sltCertificateToggled(bool on);
    void sltUserNameChanged(QString text);
    void sltPasswordChanged(QString text);
    void sltStorePasswordToggled(bool on);
    void sltCertificateChanged(QString text);
    void sltPrivateKeyChanged(QString text);
    void sltBrowseCertificateFile();
    void sltBrowsePrivateKeyFile();

private:
    class Private;
    std::unique_ptr<Private> d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(QvelEndpointSettingsWidget::GuiElements)
