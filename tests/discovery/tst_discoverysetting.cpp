#include "endpoints.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

#include <functional>

using Change = std::function<void(QvelDiscoverySetting&)>;
Q_DECLARE_METATYPE(Change)

// What a store gives back: the record without what is held in memory only.
static QvelDiscoverySetting persistent(QvelDiscoverySetting setting)
{
    setting.setPassword(QString());
    setting.setStorePassword(false);
    return setting;
}

static QvelDiscoverySetting read(MemorySettings& store, const QString& prefix = "P.")
{
    void* handle = store.openSettings();
    const QvelDiscoverySetting setting = QvelDiscoverySetting::fromSetting(&store, handle, prefix);
    store.closeSettings(handle);
    return setting;
}

static void write(MemorySettings& store, const QvelDiscoverySetting& setting,
                  const QString& prefix = "P.")
{
    void* handle = store.openSettings();
    setting.storeSettings(&store, handle, prefix);
    store.closeSettings(handle);
}

class DiscoverySettingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void isNamedAfterItsEndpoint_data();
    void isNamedAfterItsEndpoint();
    void comparesEveryField_data();
    void comparesEveryField();
    void copiesDeeply();
    void losesDescriptionWhenAssignedToItself();
    void keepsTextsWhole();
    void survivesPrefixForm();
    void survivesGroupForm();
    void writesKeysInOrder();
    void readsThreeOfFiveUrls();
    void readsHostileStore_data();
    void readsHostileStore();
    void readsNumbersByTheirKind();

private:
    QTemporaryDir m_folder;
};

// Placeholders in a name are text like any other.
void DiscoverySettingTest::isNamedAfterItsEndpoint_data()
{
    QTest::addColumn<QString>("policy");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("name");
    const auto row = [](const char* policy, int mode, const char* name) {
        QTest::newRow(name) << QString(policy) << mode << QString(name);
    };
    row("http://opcfoundation.org/UA/SecurityPolicy#None", 1, "None - None");
    row("a#b#Basic128Rsa15", 2, "Basic128Rsa15 - Sign");
    row("a\nb#x\ny", 0, "x\ny - Invalid");
    row("", 3, " - Sign & Encrypt");
    row("Basic256", 7, "Basic256 - Unknown MessageSecurityMode");
}

void DiscoverySettingTest::isNamedAfterItsEndpoint()
{
    QFETCH(QString, policy);
    QFETCH(int, mode);
    QFETCH(QString, name);
    Endpoint endpoint("Demo %2", "opc.tcp://h:1", "", OpcUa_MessageSecurityMode(mode));
    assign(endpoint.value.SecurityPolicyUri, policy.toUtf8());
    QvelDiscoverySetting setting;
    setting.setSessionName("kept");
    setting.setEndpointDescription(&endpoint.value);
    QCOMPARE(setting.shortName(), name);
    QCOMPARE(setting.displayName(), "Demo %2 - " + name);
    QCOMPARE(setting.serverName(), "Demo %2");
    QCOMPARE(setting.sessionName(), "kept");
    setting.setEndpointDescription(nullptr);
    QCOMPARE(setting.displayName(), " -  - Invalid");
}

void DiscoverySettingTest::comparesEveryField_data()
{
    QTest::addColumn<Change>("change");
    using E = OpcUa_EndpointDescription;
    const auto row = [](const char* name, void (*change)(E&)) {
        QTest::newRow(name) << Change([change](QvelDiscoverySetting& setting) {
            change(*const_cast<E*>(setting.endpointDescription()));
        });
    };
    row("url", [](E& e) { assign(e.EndpointUrl, "OPC.tcp://plant7:4840"); });
    row("application uri", [](E& e) { assign(e.Server.ApplicationUri, "x"); });
    row("product uri", [](E& e) { assign(e.Server.ProductUri, "x"); });
    row("locale", [](E& e) { assign(e.Server.ApplicationName.Locale, "DE"); });
    row("name", [](E& e) { assign(e.Server.ApplicationName.Text, "Pumpe"); });
    row("type", [](E& e) { e.Server.ApplicationType = OpcUa_ApplicationType_Client; });
    row("gateway", [](E& e) { assign(e.Server.GatewayServerUri, ""); });
    row("profile", [](E& e) { assign(e.Server.DiscoveryProfileUri, "x"); });
    row("url count", [](E& e) {
        OpcUa_String_Clear(&e.Server.DiscoveryUrls[1]);
        e.Server.NoOfDiscoveryUrls = 1;
    });
    row("last url", [](E& e) { assign(e.Server.DiscoveryUrls[1], "x"); });
    row("certificate",
        [](E& e) { OpcUa_ByteString_Assign(&e.ServerCertificate, "\x30\x00\xfe", 3); });
    row("mode", [](E& e) { e.SecurityMode = OpcUa_MessageSecurityMode_Sign; });
    row("policy", [](E& e) { assign(e.SecurityPolicyUri, "x"); });
    row("token count", [](E& e) {
        OpcUa_UserTokenPolicy_Clear(&e.UserIdentityTokens[1]);
        e.NoOfUserIdentityTokens = 1;
    });
    row("policy id", [](E& e) { assign(e.UserIdentityTokens[1].PolicyId, "x"); });
    row("token type",
        [](E& e) { e.UserIdentityTokens[1].TokenType = OpcUa_UserTokenType_Anonymous; });
    row("issued type", [](E& e) { assign(e.UserIdentityTokens[1].IssuedTokenType, "x"); });
    row("issuer", [](E& e) { assign(e.UserIdentityTokens[1].IssuerEndpointUrl, "x"); });
    row("token policy", [](E& e) { assign(e.UserIdentityTokens[1].SecurityPolicyUri, "x"); });
    row("transport", [](E& e) { assign(e.TransportProfileUri, "x"); });
    row("level", [](E& e) { e.SecurityLevel = 1; });

    using S = QvelDiscoverySetting;
    const auto choice = [](const char* name, Change change) { QTest::newRow(name) << change; };
    choice("display name", [](S& s) { s.setDisplayName("x"); });
    choice("chosen token type", [](S& s) { s.setUserTokenType(OpcUa_UserTokenType_UserName); });
    choice("session name", [](S& s) { s.setSessionName("x"); });
    choice("user name", [](S& s) { s.setUserName("USER"); });
    choice("password", [](S& s) { s.setPassword("x"); });
    choice("store password", [](S& s) { s.setStorePassword(false); });
    choice("certificate file", [](S& s) { s.setCertificateFile("x"); });
    choice("private key file", [](S& s) { s.setPrivateKeyFile("x"); });
}

void DiscoverySettingTest::comparesEveryField()
{
    QFETCH(Change, change);
    const QvelDiscoverySetting setting = fullSetting();
    QvelDiscoverySetting other = setting;
    QVERIFY(other == setting);
    change(other);
    QVERIFY(other != setting);
    QVERIFY(setting != other);
}

void DiscoverySettingTest::copiesDeeply()
{
    QvelDiscoverySetting copy;
    {
        const QvelDiscoverySetting setting = fullSetting();
        copy = setting;
    }
    QCOMPARE(copy, fullSetting());
    const QvelDiscoverySetting second(copy);
    copy.setServerName("other");
    QCOMPARE(second, fullSetting());
}

void DiscoverySettingTest::losesDescriptionWhenAssignedToItself()
{
    QvelDiscoverySetting setting = fullSetting();
    const QvelDiscoverySetting& alias = setting;
    setting = alias;
    QvelDiscoverySetting expected = fullSetting();
    const QString name = expected.displayName();
    expected.setEndpointDescription(nullptr);
    expected.setDisplayName(name);
    QCOMPARE(setting, expected);
}

void DiscoverySettingTest::keepsTextsWhole()
{
    const QString text = QString::fromUtf8("a\0é😀", 8);
    QvelDiscoverySetting setting;
    setting.setServerName(text);
    setting.setEndpointUrl(text);
    setting.setSecurityPolicy(text);
    QCOMPARE(setting.serverName(), text);
    QCOMPARE(setting.endpointUrl(), text);
    QCOMPARE(setting.securityPolicy(), text);
    QCOMPARE(setting.endpointDescription()->EndpointUrl.Length, 8);
}

void DiscoverySettingTest::survivesPrefixForm()
{
    MemorySettings store;
    write(store, fullSetting());
    QCOMPARE(read(store), persistent(fullSetting()));
    QCOMPARE(store.values.value("P.ServerCertificate").userType(), int(QMetaType::QByteArray));
    QCOMPARE(store.values.value("P.SecurityLevel"), QVariant(200));
    QCOMPARE(read(store).supportedUserTokenTypes(),
             QList({OpcUa_UserTokenType_UserName, OpcUa_UserTokenType_IssuedToken}));
    for (const QVariant& value : std::as_const(store.values))
        QVERIFY(value.toString() != "secret");
}

// A slash in the group's name is encoded when it is written, and nowhere else.
void DiscoverySettingTest::survivesGroupForm()
{
    const QString file = m_folder.filePath("round.ini");
    {
        QSettings settings(file, QSettings::IniFormat);
        fullSetting().storeSettings(settings, "a/b");
        settings.setValue("bare/ServerUrl", "opc.tcp://h");
        QCOMPARE(settings.group(), QString());
    }
    QSettings settings(file, QSettings::IniFormat);
    QCOMPARE(settings.childGroups(), QStringList({"a%2Fb", "bare"}));
    QCOMPARE(QvelDiscoverySetting::fromSetting(settings, "a%2Fb"), persistent(fullSetting()));
    QCOMPARE(QvelDiscoverySetting::fromSetting(settings, "a/b").endpointUrl(), QString());
    QCOMPARE(QvelDiscoverySetting::fromSetting(settings, "bare").displayName(), "bare");
    QCOMPARE(settings.group(), QString());
}

void DiscoverySettingTest::writesKeysInOrder()
{
    MemorySettings store;
    write(store, fullSetting(), QString());
    const QString token =
        "UserIdentityToken%1.PolicyId UserIdentityToken%1.TokenType "
        "UserIdentityToken%1.IssuedTokenType UserIdentityToken%1.IssuerEndpointUrl "
        "UserIdentityToken%1.SecurityPolicyUri ";
    const QString expected =
        "ServerUrl Server.ApplicationUri Server.ProductUri Server.ApplicationNameLocale "
        "Server.ApplicationNameText Server.ApplicationType Server.GatewayServerUri "
        "Server.DiscoveryProfileUri Server.NoOfDiscoveryUrls Server.DiscoveryUrl0 "
        "Server.DiscoveryUrl1 ServerCertificate MessageSecurityMode SecurityPolicy "
        "NoOfUserIdentityTokens " +
        token.arg(0) + token.arg(1) +
        "TransportProfileUri SecurityLevel DisplayName UserTokenType SessionName UserName "
        "CertificateFile PrivateKeyFile";
    QCOMPARE(store.written.join(' '), expected);
}

void DiscoverySettingTest::readsThreeOfFiveUrls()
{
    MemorySettings store;
    write(store, fullSetting(5));
    write(store, fullSetting(3));
    QVERIFY(store.values.contains("P.Server.DiscoveryUrl4"));
    QCOMPARE(read(store), persistent(fullSetting(3)));
}

void DiscoverySettingTest::readsHostileStore_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("count"); // as read
    QTest::newRow("nothing") << QVariant() << 0;
    QTest::newRow("minus one") << QVariant(-1) << -1;
    QTest::newRow("most negative") << QVariant(INT_MIN) << INT_MIN;
    QTest::newRow("one too many") << QVariant(1001) << 1001;
    QTest::newRow("huge") << QVariant(INT_MAX) << INT_MAX;
    QTest::newRow("too large for a number") << QVariant("99999999999999999999") << 0;
    QTest::newRow("list") << QVariant(QVariantList{1, 2}) << 0;
    QTest::newRow("map") << QVariant(QVariantMap{{"a", 1}}) << 0;
    QTest::newRow("10 MB") << QVariant(QString(10 << 20, 'x')) << 0;
}

// Every key has the same value; no array may get entries by it.
void DiscoverySettingTest::readsHostileStore()
{
    QFETCH(QVariant, value);
    QFETCH(int, count);
    MemorySettings store;
    store.fallback = value;
    const QvelDiscoverySetting setting = read(store);
    QCOMPARE(store.reads, 21);
    QCOMPARE(setting.endpointDescription()->Server.NoOfDiscoveryUrls, count);
    QCOMPARE(setting.endpointDescription()->NoOfUserIdentityTokens, count);
    QVERIFY(!setting.endpointDescription()->Server.DiscoveryUrls);
    QVERIFY(!setting.endpointDescription()->UserIdentityTokens);
    QCOMPARE(setting.endpointUrl(), value.toString());
    QVERIFY(value.isValid() || setting == QvelDiscoverySetting());

    // Everyone who reads the arrays copes with that.
    QVERIFY(setting.supportedUserTokenTypes().isEmpty());
    QVERIFY(setting == read(store));
    const QvelDiscoverySetting copy = setting;
    QCOMPARE(copy.endpointDescription()->NoOfUserIdentityTokens, std::max(count, 0));
    MemorySettings target;
    write(target, setting);
    QCOMPARE(target.written.size(), 21);
    QCOMPARE(target.values.value("P.NoOfUserIdentityTokens").toInt(), count);
}

void DiscoverySettingTest::readsNumbersByTheirKind()
{
    MemorySettings store;
    store.values = {{"P.SecurityLevel", 300},
                    {"P.MessageSecurityMode", "4294967295"},
                    {"P.Server.ApplicationType", "three"}};
    const QvelDiscoverySetting setting = read(store);
    QCOMPARE(int(setting.endpointDescription()->SecurityLevel), 300 - 256);
    QCOMPARE(quint32(setting.messageSecurityMode()), 4294967295u);
    QCOMPARE(setting.endpointDescription()->Server.ApplicationType, OpcUa_ApplicationType_Server);
}

QTEST_GUILESS_MAIN(DiscoverySettingTest)
#include "tst_discoverysetting.moc"
