#pragma once

#include "../kestrelexport.h"
#include "../platform/stack/opcuatypes.h"

#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QString>

class QSettings;
class QvelDiscoveryCBInterface;
struct StoredEntries;

/// One connection configuration of a client: an endpoint as a server described it
/// (OPC 10000-4, 7.14) and the client's own choices that go with it.
///
/// A value; a copy owns a deep copy of the endpoint description. Any thread, one at a time.
class KESTREL_EXPORT QvelDiscoverySetting
{
public:
    /// Everything empty or zero; user token type Anonymous.
    QvelDiscoverySetting();
    QvelDiscoverySetting(const QvelDiscoverySetting& other);
    /// Assigning a record to itself empties its endpoint description; the other fields stay.
    QvelDiscoverySetting& operator=(const QvelDiscoverySetting& other);
    /// What is moved from may be assigned to and destroyed.
    QvelDiscoverySetting(QvelDiscoverySetting&& other) noexcept;
    QvelDiscoverySetting& operator=(QvelDiscoverySetting&& other) noexcept;
    ~QvelDiscoverySetting();

    /// All fields, the password and the wish to store it among them. Texts compare with their case;
    /// an absent text of the description equals an empty one.
    bool operator==(const QvelDiscoverySetting& other) const;
    bool operator!=(const QvelDiscoverySetting& other) const { return !(*this == other); }

    /// The description itself; valid until this record changes. A description that was read from a
    /// settings store may have an array with a count, negative or too large, but without entries:
    /// its pointer is null.
    const OpcUa_EndpointDescription* endpointDescription() const { return &m_endpoint; }
    /// Takes a deep copy and names the record "server - policy - mode". Null stands for an empty
    /// description.
    void setEndpointDescription(const OpcUa_EndpointDescription* description);
    /// "policy - mode", such as "Basic256 - Sign & Encrypt".
    QString shortName() const;
    /// The token type of every user token policy, in order, duplicates kept.
    QList<OpcUa_UserTokenType> supportedUserTokenTypes() const;

    QString serverName() const;
    void setServerName(const QString& name);
    QString endpointUrl() const;
    void setEndpointUrl(const QString& url);
    /// The full URI of the security policy.
    QString securityPolicy() const;
    void setSecurityPolicy(const QString& uri);
    OpcUa_MessageSecurityMode messageSecurityMode() const { return m_endpoint.SecurityMode; }
    void setMessageSecurityMode(OpcUa_MessageSecurityMode mode) { m_endpoint.SecurityMode = mode; }

    QString displayName() const { return m_displayName; }
    void setDisplayName(const QString& name) { m_displayName = name; }
    OpcUa_UserTokenType userTokenType() const { return m_userTokenType; }
    void setUserTokenType(OpcUa_UserTokenType type) { m_userTokenType = type; }
    QString sessionName() const { return m_sessionName; }
    void setSessionName(const QString& name) { m_sessionName = name; }
    QString userName() const { return m_userName; }
    void setUserName(const QString& name) { m_userName = name; }
    /// Held in memory only: never written to a settings store.
    /// Wiped where the last of its copies goes with a record.
    QString password() const { return m_password.text; }
    void setPassword(const QString& password);
    /// The user's wish that the host store the password. Held in memory only.
    bool isStorePassword() const { return m_storePassword; }
    void setStorePassword(bool store) { m_storePassword = store; }
    QString certificateFile() const { return m_certificateFile; }
    void setCertificateFile(const QString& file) { m_certificateFile = file; }
    QString privateKeyFile() const { return m_privateKeyFile; }
    void setPrivateKeyFile(const QString& file) { m_privateKeyFile = file; }

    /// Writes the record into the group `name`, in which "/" is written as "%2F". Keys that the
    /// group holds already are overwritten or stay.
    void storeSettings(QSettings& settings, const QString& name) const;
    /// Reads the group `name`, exactly as given. A group without a display name gives its own.
    /// Whatever is absent or of another type is empty or zero. An array of more than 1000 entries
    /// ends with the last one that has a key in the store; if none has, the count stays as read.
    static QvelDiscoverySetting fromSetting(QSettings& settings, const QString& name);
    /// Writes the record under keys that begin with `prefix`; the caller opens and closes `handle`.
    void storeSettings(QvelDiscoveryCBInterface* cb, void* handle, const QString& prefix) const;
    /// Reads the keys that begin with `prefix`, with the bounds of the other form.
    static QvelDiscoverySetting fromSetting(QvelDiscoveryCBInterface* cb, void* handle,
                                            const QString& prefix);

private:
    friend class DiscoveryStore;   // reads many records at the price of one
    friend class QvelDiscoveryJob; // hands over what a server sent

    template <class Store, class Record>
    static void visitSettings(Store& store, Record& record);
    static QvelDiscoverySetting fromSetting(QvelDiscoveryCBInterface* cb, void* handle,
                                            const QString& prefix, StoredEntries& budget);
    static bool isStored(QvelDiscoveryCBInterface* cb, void* handle, const QString& prefix);
    void takeEndpointDescription(OpcUa_EndpointDescription& description);
    void nameAfterEndpoint();
    static QString securityModeToString(OpcUa_MessageSecurityMode mode);

    /// \cond
    // Owns what a description points to.
    struct KESTREL_EXPORT Endpoint : OpcUa_EndpointDescription
    {
        Endpoint();
        Endpoint(const Endpoint& other);
        Endpoint& operator=(const Endpoint& other);
        Endpoint(Endpoint&& other) noexcept;
        Endpoint& operator=(Endpoint&& other) noexcept;
        void take(OpcUa_EndpointDescription& other);
        ~Endpoint();
    };

    // Wipes the text that it lets go.
    struct KESTREL_EXPORT Password
    {
        Password() = default;
        Password(const Password& other) = default;
        Password(Password&& other) noexcept = default;
        Password& operator=(Password other) noexcept;
        ~Password();
        QString text;
    };
    /// \endcond

    Endpoint m_endpoint;
    QString m_displayName;
    OpcUa_UserTokenType m_userTokenType = OpcUa_UserTokenType_Anonymous;
    QString m_sessionName;
    QString m_userName;
    Password m_password;
    bool m_storePassword = false;
    QString m_certificateFile;
    QString m_privateKeyFile;
};

Q_DECLARE_METATYPE(QvelDiscoverySetting)
