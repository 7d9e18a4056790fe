#include "endpoints.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <QtCore/QRandomGenerator>
#include <QtCore/QSettings>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using Record = QvelDiscoverySetting;

// A store that every key is written to, and read from, in both forms.
static Record read(MemorySettings& store)
{
    void* handle = store.openSettings();
    const Record record = Record::fromSetting(&store, handle, "P.");
    store.closeSettings(handle);
    return record;
}

static void write(MemorySettings& store, const Record& record)
{
    void* handle = store.openSettings();
    record.storeSettings(&store, handle, "P.");
    store.closeSettings(handle);
}

// The strings of a description in the order of their keys.
static QList<OpcUa_String*> strings(OpcUa_EndpointDescription& e)
{
    QList<OpcUa_String*> list = {&e.EndpointUrl,
                                 &e.Server.ApplicationUri,
                                 &e.Server.ProductUri,
                                 &e.Server.ApplicationName.Locale,
                                 &e.Server.ApplicationName.Text,
                                 &e.Server.GatewayServerUri,
                                 &e.Server.DiscoveryProfileUri};
    for (int i = 0; i < e.Server.NoOfDiscoveryUrls; ++i)
        list.append(&e.Server.DiscoveryUrls[i]);
    list.append(&e.SecurityPolicyUri);
    for (int j = 0; j < e.NoOfUserIdentityTokens; ++j) {
        OpcUa_UserTokenPolicy& token = e.UserIdentityTokens[j];
        list += {&token.PolicyId, &token.IssuedTokenType, &token.IssuerEndpointUrl,
                 &token.SecurityPolicyUri};
    }
    return list << &e.TransportProfileUri;
}

static OpcUa_EndpointDescription& description(Record& record)
{
    return *const_cast<OpcUa_EndpointDescription*>(record.endpointDescription());
}

static Record persistent(Record record)
{
    record.setPassword(QString());
    record.setStorePassword(false);
    return record;
}

class DiscoverySettingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void namesAndComparesEveryField();
    void survivesStores();
    void readsHostileStore_data();
    void readsHostileStore();
    void standsStoreThatAnswersEverything();
    void isNamedAfterItsEndpoint();

private:
    QTemporaryDir m_folder;
};

// Each text is the name of its key.
void DiscoverySettingTest::namesAndComparesEveryField()
{
    QStringList keys = QString("ServerUrl Server.ApplicationUri Server.ProductUri "
                               "Server.ApplicationNameLocale Server.ApplicationNameText "
                               "Server.ApplicationType=2 Server.GatewayServerUri "
                               "Server.DiscoveryProfileUri Server.NoOfDiscoveryUrls=2 "
                               "Server.DiscoveryUrl0 Server.DiscoveryUrl1 ServerCertificate=3 "
                               "MessageSecurityMode=3 SecurityPolicy NoOfUserIdentityTokens=2 ")
                           .split(' ', Qt::SkipEmptyParts);
    for (const char* type : {"0.TokenType=1", "1.TokenType=3"}) {
        const QString token = QString("UserIdentityToken%1.").arg(QChar(type[0]));
        keys += {token + "PolicyId", QString("UserIdentityToken") + type, token + "IssuedTokenType",
                 token + "IssuerEndpointUrl", token + "SecurityPolicyUri"};
    }
    keys += QString("TransportProfileUri SecurityLevel=200 DisplayName UserTokenType=2 SessionName "
                    "UserName CertificateFile PrivateKeyFile")
                .split(' ');
    Record record = fullSetting();
    const QStringList texts = keys.filter(QRegularExpression("^[^=]+$"));
    const QList<OpcUa_String*> fields = strings(description(record));
    for (int i = 0; i < fields.size(); ++i)
        assign(*fields[i], texts[i].toUtf8());
    record.setDisplayName("DisplayName");
    record.setSessionName("SessionName");
    record.setUserName("UserName");
    record.setCertificateFile("CertificateFile");
    record.setPrivateKeyFile("PrivateKeyFile");
    MemorySettings store;
    write(store, record);
    QStringList written;
    for (const QString& key : std::as_const(store.written)) {
        const QVariant value = store.values.value(key);
        const bool text = value.userType() == QMetaType::QString;
        const int bytes = int(value.toByteArray().size());
        const int number = value.userType() == QMetaType::QByteArray ? bytes : value.toInt();
        written += text ? value.toString() : QString("%1=%2").arg(key.mid(2)).arg(number);
        QVERIFY(!text || "P." + value.toString() == key);
    }
    QCOMPARE(written, keys);
    QCOMPARE(read(store), persistent(record));
    QVERIFY(record != persistent(record));
    Record other = record;
    other.setPassword("other");
    QVERIFY(other != record);
    other = record;
    other.setStorePassword(false);
    QVERIFY(other != record);
    // Another number, or a text of another case, makes another record.
    for (const QString& key : std::as_const(store.written)) {
        MemorySettings changed;
        changed.values = store.values;
        QVariant& value = changed.values[key];
        if (value.userType() == QMetaType::Int)
            value = value.toInt() - 1;
        else
            value = value.toString().isLower() ? "x" : value.toString().toLower();
        QVERIFY2(read(changed) != persistent(record) && persistent(record) != read(changed),
                 qPrintable(key));
    }
}

void DiscoverySettingTest::survivesStores()
{
    constexpr quint32 seed = 20240614;
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    const auto text = [&random] {
        const QStringList letters = {"a", "/", "%2F", "é", "😀", " ", "=", "\n", "\"", ";", ","};
        QString result;
        for (int i = random.bounded(5); i > 0; --i)
            result += letters.at(random.bounded(letters.size()));
        return result;
    };
    MemorySettings store; // what a longer record left behind stays in it
    for (int round = 0; round < 60; ++round) {
        QList<OpcUa_UserTokenType> tokens;
        for (int i = random.bounded(4); i > 0; --i)
            tokens.append(OpcUa_UserTokenType(random.bounded(4)));
        Record record = fullSetting(random.bounded(5), tokens);
        for (OpcUa_String* each : strings(description(record)))
            assign(*each, text().toUtf8());
        record.setDisplayName("name" + text());
        record.setSessionName(text());
        record.setUserTokenType(OpcUa_UserTokenType(random.bounded(4)));
        QCOMPARE(record.supportedUserTokenTypes(), tokens);

        write(store, record);
        QCOMPARE(read(store), persistent(record));
        const QString file = m_folder.filePath(QString("%1.ini").arg(round));
        {
            QSettings settings(file, QSettings::IniFormat);
            record.storeSettings(settings, "a/b"); // the slash is encoded when it is written only
            settings.setValue("bare/ServerUrl", "opc.tcp://h");
        }
        QSettings settings(file, QSettings::IniFormat);
        QCOMPARE(settings.childGroups(), QStringList({"a%2Fb", "bare"}));
        QCOMPARE(Record::fromSetting(settings, "a%2Fb"), persistent(record));
        QCOMPARE(Record::fromSetting(settings, "bare").displayName(), "bare");
        const Record copy(record);
        Record moved(std::move(record));
        QCOMPARE(moved, copy);
        const Record& alias = moved;
        moved = alias; // assigned to itself, it loses its description and keeps its choices
        QCOMPARE(moved.endpointDescription()->NoOfUserIdentityTokens, 0);
        QCOMPARE(moved.endpointUrl() + moved.serverName(), QString());
        QCOMPARE(moved.displayName(), copy.displayName());
    }
}

void DiscoverySettingTest::readsHostileStore_data()
{
    QTest::addColumn<QVariant>("count");
    QTest::addColumn<int>("there"); // entries in the store, but for those between 1200 and 1300
    QTest::addColumn<int>("read");
    QTest::addColumn<int>("entries");
    const auto row = [](const char* name, const QVariant& count, int there, int read, int entries) {
        QTest::newRow(name) << count << there << read << entries;
    };
    row("nothing", {}, 3, 0, 0);
    row("minus one", -1, 3, -1, 0);
    row("most negative", INT_MIN, 3, INT_MIN, 0);
    row("beyond numbers", "99999999999999999999", 3, 0, 0);
    row("list", QVariantList{1, 2}, 3, 0, 0);
    row("three of two", 3, 2, 3, 3);
    row("a thousand of none", 1000, 0, 1000, 1000);
    row("1001 of none", 1001, 0, 1001, 0);
    row("huge, of none", INT_MAX, 0, INT_MAX, 0);
    row("huge, of three", INT_MAX, 3, 3, 3);
    row("1001", 1001, 1001, 1001, 1001);
    row("2500 with a gap", 2500, 2500, 2500, 2500);
}

// One key is enough for an entry to be there. The count stays as read where nothing goes with it.
void DiscoverySettingTest::readsHostileStore()
{
    QFETCH(QVariant, count);
    QFETCH(int, there);
    QFETCH(int, read);
    QFETCH(int, entries);
    MemorySettings store;
    QSettings settings(m_folder.filePath("hostile.ini"), QSettings::IniFormat);
    settings.clear();
    const auto put = [&](const QString& key, const QVariant& value) {
        store.values.insert("P." + key, value);
        settings.setValue("P/" + key, value);
    };
    put("Server.NoOfDiscoveryUrls", count);
    put("NoOfUserIdentityTokens", count);
    put("SecurityLevel", 300);
    put("MessageSecurityMode", "4294967295");
    for (int i = 0; i < there; i += i == 1199 ? 100 : 1) {
        put(QString("Server.DiscoveryUrl%1").arg(i), QString::number(i));
        put(QString("UserIdentityToken%1.SecurityPolicyUri").arg(i), QString::number(i));
    }
    for (const Record& record : {::read(store), Record::fromSetting(settings, "P")}) {
        const OpcUa_EndpointDescription& endpoint = *record.endpointDescription();
        QCOMPARE(endpoint.Server.NoOfDiscoveryUrls, read);
        QCOMPARE(endpoint.NoOfUserIdentityTokens, read);
        QCOMPARE(bool(endpoint.Server.DiscoveryUrls), entries > 0);
        QCOMPARE(record.supportedUserTokenTypes().size(), entries);
        QCOMPARE(int(endpoint.SecurityLevel), 300 - 256);
        QCOMPARE(quint32(record.messageSecurityMode()), 4294967295u);
        if (entries == there && there > 0) {
            const QByteArray last = QByteArray::number(there - 1);
            const OpcUa_String& url = endpoint.Server.DiscoveryUrls[there - 1];
            const OpcUa_String& uri = endpoint.UserIdentityTokens[there - 1].SecurityPolicyUri;
            QCOMPARE(UaString(&url).bytes(), last);
            QCOMPARE(UaString(&uri).bytes(), last);
        }
        MemorySettings target;
        write(target, record);
        QCOMPARE(target.values.value("P.NoOfUserIdentityTokens").toInt(), read);
        QCOMPARE(target.written.size(), 21 + 6 * entries);
        QVERIFY(Record(record) == record || entries == 0);
    }
}

void DiscoverySettingTest::standsStoreThatAnswersEverything()
{
    for (const QVariant& value : {QVariant(INT_MAX), QVariant(QString(10 << 20, 'x'))}) {
        MemorySettings store;
        store.fallback = value;
        const Record record = read(store);
        QCOMPARE(record.endpointDescription()->NoOfUserIdentityTokens, value.toInt());
        QVERIFY(record.supportedUserTokenTypes().isEmpty());
        QCOMPARE(record.endpointUrl(), value.toString());
    }
}

// Placeholders in a name are text like any other.
void DiscoverySettingTest::isNamedAfterItsEndpoint()
{
    const std::tuple<const char*, const char*, int> rows[] = {
        {"None - None", "http://opcfoundation.org/UA/SecurityPolicy#None", 1},
        {"Basic128Rsa15 - Sign", "a#b#Basic128Rsa15", 2},
        {"x\ny - Invalid", "a\nb#x\ny", 0},
        {" - Sign & Encrypt", "", 3},
        {"Basic256 - Unknown MessageSecurityMode", "Basic256", 7}};
    for (const auto& [name, policy, mode] : rows) {
        Endpoint endpoint("Demo %2", "opc.tcp://h:1", "", OpcUa_MessageSecurityMode(mode));
        assign(endpoint.value.SecurityPolicyUri, policy);
        Record record;
        record.setEndpointDescription(&endpoint.value);
        QCOMPARE(record.displayName(), QString("Demo %2 - ") + name);
    }
}

QTEST_GUILESS_MAIN(DiscoverySettingTest)
#include "tst_discoverysetting.moc"
