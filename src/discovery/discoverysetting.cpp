#include "discoverysetting.h"

#include "discovery/discoverycbinterface.h"
#include "discovery/stacktext_p.h"
#include "discovery/storedentries_p.h"
#include "platform/pki/secret_p.h"
#include "platform/stack/checkmemory_p.h"
#include "platform/types/uabytestring.h"
#include "platform/types/uastring.h"

#include <QtCore/QSettings>
#include <QtCore/QVariant>

#include <cstring>
#include <utility>

QvelDiscoveryCBInterface::~QvelDiscoveryCBInterface() = default;

namespace {

void assign(OpcUa_String& target, const QString& text)
{
    checkMemory(UaString(text).copyTo(&target));
}

// A store is visited by key, in the order of the keys. `put` is called with a key and a QVariant.
template <class Put>
class SettingsWriter
{
public:
    explicit SettingsWriter(Put put) : m_put(std::move(put)) {}
    void text(const QString& key, const OpcUa_String& field) { m_put(key, toQString(field)); }
    void text(const QString& key, const QString& field) { m_put(key, field); }
    void bytes(const QString& key, const OpcUa_ByteString& field)
    {
        m_put(key, field.Data ? UaByteString(&field).bytes() : QByteArray(""));
    }
    template <class T>
    void number(const QString& key, const T& field)
    {
        m_put(key, int(field));
    }
    template <class T>
    void unsignedNumber(const QString& key, const T& field)
    {
        number(key, field);
    }
    template <class T, class Visit>
    void array(const QString& key, OpcUa_Int32 count, const T* entries, Visit visit)
    {
        number(key, count);
        for (OpcUa_Int32 i = 0; entries && i < count; ++i)
            visit(*this, i, entries[i]);
    }

private:
    Put m_put;
};

// Whether one of the keys is in the store. `get` gives the QVariant of a key, invalid for an absent
// one.
template <class Get>
class KeyFinder
{
public:
    explicit KeyFinder(Get get) : m_get(std::move(get)) {}
    template <class T>
    void text(const QString& key, const T&)
    {
        found = found || m_get(key).isValid();
    }
    template <class T>
    void bytes(const QString& key, const T& field)
    {
        text(key, field);
    }
    template <class T>
    void number(const QString& key, const T& field)
    {
        text(key, field);
    }
    template <class T>
    void unsignedNumber(const QString& key, const T& field)
    {
        text(key, field);
    }
    template <class T, class Visit>
    void array(const QString& key, OpcUa_Int32 count, const T*, Visit)
    {
        text(key, count);
    }

    bool found = false;

private:
    Get m_get;
};

template <class Get>
class SettingsReader
{
public:
    SettingsReader(Get get, StoredEntries& budget) : m_get(std::move(get)), m_budget(budget) {}
    void text(const QString& key, OpcUa_String& field) { assign(field, m_get(key).toString()); }
    void text(const QString& key, QString& field) { field = m_get(key).toString(); }
    void bytes(const QString& key, OpcUa_ByteString& field)
    {
        checkMemory(UaByteString(m_get(key).toByteArray()).copyTo(&field));
    }
    template <class T>
    void number(const QString& key, T& field)
    {
        field = T(m_get(key).toInt());
    }
    template <class T>
    void unsignedNumber(const QString& key, T& field)
    {
        field = T(m_get(key).toUInt());
    }
    // The count is kept as read where there are no entries to go with it.
    template <class T, class Visit>
    void array(const QString& key, OpcUa_Int32& count, T*& entries, Visit visit)
    {
        number(key, count);
        T none = {};
        const int length = entriesToRead(count, m_budget, [&](int i) {
            KeyFinder finder(m_get);
            visit(finder, i, none);
            return finder.found;
        });
        if (length <= 0)
            return;
        const std::size_t size = std::size_t(length) * sizeof(T);
        entries = static_cast<T*>(OpcUa_Memory_Alloc(size));
        if (!entries)
            return;
        std::memset(static_cast<void*>(entries), 0, size);
        count = length;
        for (OpcUa_Int32 i = 0; i < count; ++i)
            visit(*this, i, entries[i]);
    }

private:
    Get m_get;
    StoredEntries& m_budget;
};

} // namespace

// Names and orders every key of a record, for reading and for writing.
template <class Store, class Record>
void QvelDiscoverySetting::visitSettings(Store& store, Record& record)
{
    auto& endpoint = record.m_endpoint;
    auto& server = endpoint.Server;
    store.text("ServerUrl", endpoint.EndpointUrl);
    store.text("Server.ApplicationUri", server.ApplicationUri);
    store.text("Server.ProductUri", server.ProductUri);
    store.text("Server.ApplicationNameLocale", server.ApplicationName.Locale);
    store.text("Server.ApplicationNameText", server.ApplicationName.Text);
    store.unsignedNumber("Server.ApplicationType", server.ApplicationType);
    store.text("Server.GatewayServerUri", server.GatewayServerUri);
    store.text("Server.DiscoveryProfileUri", server.DiscoveryProfileUri);
    store.array(
        "Server.NoOfDiscoveryUrls", server.NoOfDiscoveryUrls, server.DiscoveryUrls,
        [](auto& at, int i, auto& url) { at.text(QString("Server.DiscoveryUrl%1").arg(i), url); });
    store.bytes("ServerCertificate", endpoint.ServerCertificate);
    store.unsignedNumber("MessageSecurityMode", endpoint.SecurityMode);
    store.text("SecurityPolicy", endpoint.SecurityPolicyUri);
    store.array("NoOfUserIdentityTokens", endpoint.NoOfUserIdentityTokens,
                endpoint.UserIdentityTokens, [](auto& at, int i, auto& policy) {
                    const QString prefix = QString("UserIdentityToken%1.").arg(i);
                    at.text(prefix + "PolicyId", policy.PolicyId);
                    at.unsignedNumber(prefix + "TokenType", policy.TokenType);
                    at.text(prefix + "IssuedTokenType", policy.IssuedTokenType);
                    at.text(prefix + "IssuerEndpointUrl", policy.IssuerEndpointUrl);
                    at.text(prefix + "SecurityPolicyUri", policy.SecurityPolicyUri);
                });
    store.text("TransportProfileUri", endpoint.TransportProfileUri);
    store.unsignedNumber("SecurityLevel", endpoint.SecurityLevel);
    store.text("DisplayName", record.m_displayName);
    store.number("UserTokenType", record.m_userTokenType);
    store.text("SessionName", record.m_sessionName);
    store.text("UserName", record.m_userName);
    store.text("CertificateFile", record.m_certificateFile);
    store.text("PrivateKeyFile", record.m_privateKeyFile);
}

QvelDiscoverySetting::Endpoint::Endpoint()
{
    OpcUa_EndpointDescription_Initialize(this);
}

QvelDiscoverySetting::Endpoint::Endpoint(const Endpoint& other) : Endpoint()
{
    checkMemory(OpcUa_EndpointDescription_CopyTo(&other, this));
}

// Not guarded: assigned to itself, it is empty.
QvelDiscoverySetting::Endpoint& QvelDiscoverySetting::Endpoint::operator=(const Endpoint& other)
{
    OpcUa_EndpointDescription_Clear(this);
    checkMemory(OpcUa_EndpointDescription_CopyTo(&other, this));
    return *this;
}

QvelDiscoverySetting::Endpoint::Endpoint(Endpoint&& other) noexcept : Endpoint()
{
    take(other);
}

QvelDiscoverySetting::Endpoint& QvelDiscoverySetting::Endpoint::operator=(Endpoint&& other) noexcept
{
    take(other);
    return *this;
}

void QvelDiscoverySetting::Endpoint::take(OpcUa_EndpointDescription& other)
{
    std::swap(static_cast<OpcUa_EndpointDescription&>(*this), other);
}

QvelDiscoverySetting::Endpoint::~Endpoint()
{
    OpcUa_EndpointDescription_Clear(this);
}

QvelDiscoverySetting::Password& QvelDiscoverySetting::Password::operator=(Password other) noexcept
{
    text.swap(other.text);
    return *this;
}

QvelDiscoverySetting::Password::~Password()
{
    wipe(text);
}

void QvelDiscoverySetting::setPassword(const QString& password)
{
    Password other;
    other.text = password;
    m_password = std::move(other);
}

QvelDiscoverySetting::QvelDiscoverySetting() = default;
QvelDiscoverySetting::QvelDiscoverySetting(const QvelDiscoverySetting& other) = default;
QvelDiscoverySetting& QvelDiscoverySetting::operator=(const QvelDiscoverySetting& other) = default;
QvelDiscoverySetting::QvelDiscoverySetting(QvelDiscoverySetting&& other) noexcept = default;
QvelDiscoverySetting&
QvelDiscoverySetting::operator=(QvelDiscoverySetting&& other) noexcept = default;
QvelDiscoverySetting::~QvelDiscoverySetting() = default;

bool QvelDiscoverySetting::operator==(const QvelDiscoverySetting& other) const
{
    return OpcUa_EndpointDescription_Equal(&m_endpoint, &other.m_endpoint) &&
           m_displayName == other.m_displayName && m_userTokenType == other.m_userTokenType &&
           m_sessionName == other.m_sessionName && m_userName == other.m_userName &&
           m_password.text == other.m_password.text && m_storePassword == other.m_storePassword &&
           m_certificateFile == other.m_certificateFile &&
           m_privateKeyFile == other.m_privateKeyFile;
}

void QvelDiscoverySetting::setEndpointDescription(const OpcUa_EndpointDescription* description)
{
    OpcUa_EndpointDescription_Clear(&m_endpoint);
    if (description)
        checkMemory(OpcUa_EndpointDescription_CopyTo(description, &m_endpoint));
    nameAfterEndpoint();
}

void QvelDiscoverySetting::takeEndpointDescription(OpcUa_EndpointDescription& description)
{
    m_endpoint.take(description);
    nameAfterEndpoint();
}

void QvelDiscoverySetting::nameAfterEndpoint()
{
    m_displayName = QString("%1 - %2").arg(serverName(), shortName());
}

QString QvelDiscoverySetting::shortName() const
{
    const QString policy = securityPolicy();
    return QString("%1 - %2").arg(policy.mid(policy.lastIndexOf('#') + 1),
                                  securityModeToString(m_endpoint.SecurityMode));
}

QString QvelDiscoverySetting::securityModeToString(OpcUa_MessageSecurityMode mode)
{
    static constexpr const char* names[] = {"Invalid", "None", "Sign", "Sign & Encrypt"};
    return std::size_t(mode) < std::size(names) ? names[mode] : "Unknown MessageSecurityMode";
}

QList<OpcUa_UserTokenType> QvelDiscoverySetting::supportedUserTokenTypes() const
{
    QList<OpcUa_UserTokenType> types;
    const OpcUa_UserTokenPolicy* policies = m_endpoint.UserIdentityTokens;
    for (OpcUa_Int32 i = 0; policies && i < m_endpoint.NoOfUserIdentityTokens; ++i)
        types.append(policies[i].TokenType);
    return types;
}

QString QvelDiscoverySetting::serverName() const
{
    return toQString(m_endpoint.Server.ApplicationName.Text);
}

void QvelDiscoverySetting::setServerName(const QString& name)
{
    assign(m_endpoint.Server.ApplicationName.Text, name);
}

QString QvelDiscoverySetting::endpointUrl() const
{
    return toQString(m_endpoint.EndpointUrl);
}

void QvelDiscoverySetting::setEndpointUrl(const QString& url)
{
    assign(m_endpoint.EndpointUrl, url);
}

QString QvelDiscoverySetting::securityPolicy() const
{
    return toQString(m_endpoint.SecurityPolicyUri);
}

void QvelDiscoverySetting::setSecurityPolicy(const QString& uri)
{
    assign(m_endpoint.SecurityPolicyUri, uri);
}

void QvelDiscoverySetting::storeSettings(QSettings& settings, const QString& name) const
{
    QString group = name;
    settings.beginGroup(group.replace('/', "%2F"));
    SettingsWriter writer(
        [&settings](const QString& key, const QVariant& value) { settings.setValue(key, value); });
    visitSettings(writer, *this);
    settings.endGroup();
}

QvelDiscoverySetting QvelDiscoverySetting::fromSetting(QSettings& settings, const QString& name)
{
    QvelDiscoverySetting record;
    settings.beginGroup(name);
    StoredEntries budget;
    SettingsReader reader([&settings](const QString& key) { return settings.value(key); }, budget);
    visitSettings(reader, record);
    settings.endGroup();
    if (record.m_displayName.isEmpty())
        record.m_displayName = name;
    return record;
}

void QvelDiscoverySetting::storeSettings(QvelDiscoveryCBInterface* cb, void* handle,
                                         const QString& prefix) const
{
    SettingsWriter writer([&](const QString& key, const QVariant& value) {
        cb->writeSetting(handle, prefix + key, value);
    });
    visitSettings(writer, *this);
}

QvelDiscoverySetting QvelDiscoverySetting::fromSetting(QvelDiscoveryCBInterface* cb, void* handle,
                                                       const QString& prefix)
{
    StoredEntries budget;
    return fromSetting(cb, handle, prefix, budget);
}

QvelDiscoverySetting QvelDiscoverySetting::fromSetting(QvelDiscoveryCBInterface* cb, void* handle,
                                                       const QString& prefix, StoredEntries& budget)
{
    QvelDiscoverySetting record;
    SettingsReader reader([&](const QString& key) { return cb->readSetting(handle, prefix + key); },
                          budget);
    visitSettings(reader, record);
    return record;
}

bool QvelDiscoverySetting::isStored(QvelDiscoveryCBInterface* cb, void* handle,
                                    const QString& prefix)
{
    const QvelDiscoverySetting none;
    KeyFinder finder([&](const QString& key) { return cb->readSetting(handle, prefix + key); });
    visitSettings(finder, none);
    return finder.found;
}
