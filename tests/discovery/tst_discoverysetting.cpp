#include "endpoints.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/UaString>

using Record = QvelDiscoverySetting;

static void write(MemorySettings& store, const Record& record)
{
    void* handle = store.openSettings();
    record.storeSettings(&store, handle, "P.");
    store.closeSettings(handle);
}

// The texts of a record in the order of their keys.
static QStringList fieldTexts(const Record& record)
{
    const OpcUa_EndpointDescription& e = *record.endpointDescription();
    const OpcUa_ApplicationDescription& s = e.Server;
    QList<OpcUa_String> list = {
        e.EndpointUrl,          s.ApplicationUri,   s.ProductUri,         s.ApplicationName.Locale,
        s.ApplicationName.Text, s.GatewayServerUri, s.DiscoveryProfileUri};
    for (int i = 0; i < s.NoOfDiscoveryUrls; ++i)
        list.append(s.DiscoveryUrls[i]);
    list.append(e.SecurityPolicyUri);
    for (int j = 0; j < e.NoOfUserIdentityTokens; ++j) {
        const OpcUa_UserTokenPolicy& t = e.UserIdentityTokens[j];
        list << t.PolicyId << t.IssuedTokenType << t.IssuerEndpointUrl << t.SecurityPolicyUri;
    }
    list.append(e.TransportProfileUri);
    QStringList texts;
    for (const OpcUa_String& text : std::as_const(list))
        texts.append(UaString(&text).bytes());
    return texts << record.displayName() << record.sessionName() << record.userName()
                 << record.certificateFile() << record.privateKeyFile();
}

static QStringList texts(const QAbstractItemModel& model, const QModelIndex& parent = {})
{
    QStringList list;
    for (int row = 0; row < model.rowCount(parent); ++row)
        list.append(model.index(row, 0, parent).data().toString());
    return list;
}

// A store in which some keys cannot be read for the moment.
class MoodyStore : public MemorySettings
{
public:
    QVariant readSetting(void* handle, const QString& key) override
    {
        const QVariant value = MemorySettings::readSetting(handle, key);
        return key.contains(hidden) ? QVariant() : value;
    }
    std::unique_ptr<QvelDiscoveryModel> makeModel(int type = QvelDiscoveryWidget::OpcUa)
    {
        return std::make_unique<QvelDiscoveryModel>(QvelDiscoveryWidget::OpcType(type), this, 60000,
                                                    "session");
    }
    QRegularExpression hidden{"^$"};
};

class DiscoverySettingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void namesAndComparesEveryField()
    {
        MemorySettings store;
        QStringList keys, names;
        for (const auto& [key, value] :
             storedFields(2, {OpcUa_UserTokenType_UserName, OpcUa_UserTokenType_IssuedToken})) {
            store.values.insert("P." + key, value);
            keys.append("P." + key);
            if (value.userType() == QMetaType::QString)
                names.append(key);
        }
        const Record record = readRecord(store);
        QCOMPARE(fieldTexts(record), names);
        QCOMPARE(record.endpointDescription()->Server.ApplicationType, 2);
        QCOMPARE(int(record.messageSecurityMode()), 3);
        QCOMPARE(int(record.userTokenType()), 2);
        QCOMPARE(record.supportedUserTokenTypes().value(1), OpcUa_UserTokenType_IssuedToken);
        Record secret = record, stored = record;
        secret.setPassword("other");
        stored.setStorePassword(true);
        QVERIFY(secret != record && stored != record);
        MemorySettings target;
        write(target, fullSetting()); // neither the password nor the wish to store it
        QCOMPARE(target.written, keys);
        QCOMPARE(target.values, store.values);
        // Another number, or a text of another case, makes another record.
        for (const QString& key : std::as_const(keys)) {
            MemorySettings changed;
            changed.values = store.values;
            QVariant& value = changed.values[key];
            value = value.userType() == QMetaType::Int ? QVariant(value.toInt() - 1)
                                                       : QVariant(value.toString().toLower());
            QVERIFY2(readRecord(changed) != record && record != readRecord(changed),
                     qPrintable(key));
        }
    }
    void survivesStores()
    {
        constexpr quint32 seed = 20240614;
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        MemorySettings store; // what a longer record left behind stays in it
        for (int round = 0; round < 60; ++round) {
            QList<OpcUa_UserTokenType> tokens;
            for (int i = random.bounded(4); i > 0; --i)
                tokens.append(OpcUa_UserTokenType(random.bounded(4)));
            MemorySettings source, target;
            for (auto [key, value] : storedFields(random.bounded(5), tokens)) {
                const QStringList letters = {"a", "/",  "%2F", "é", "😀", " ",
                                             "=", "\n", "\"",  ";", ","};
                QString text = key == "DisplayName" ? "name" : "";
                for (int i = random.bounded(5); i > 0; --i)
                    text += letters.at(random.bounded(letters.size()));
                source.values.insert("P." + key, value == key ? text : value);
            }
            const Record record = readRecord(source);
            QCOMPARE(record.supportedUserTokenTypes(), tokens);
            write(target, record);
            QCOMPARE(target.values, source.values);
            write(store, record);
            QCOMPARE(readRecord(store), record);

            const QString file = m_folder.filePath(QString("%1.ini").arg(round));
            {
                QSettings settings(file, QSettings::IniFormat);
                record.storeSettings(settings,
                                     "a/b"); // the slash is encoded when it is written only
                settings.setValue("bare/ServerUrl", "opc.tcp://h");
            }
            QSettings settings(file, QSettings::IniFormat);
            QCOMPARE(settings.childGroups(), QStringList({"a%2Fb", "bare"}));
            QCOMPARE(Record::fromSetting(settings, "a%2Fb"), record);
            QCOMPARE(Record::fromSetting(settings, "bare").displayName(), "bare");
            Record moved(record);
            QCOMPARE(moved, record);
            const Record& alias = moved;
            moved = alias; // assigned to itself, it loses its description and keeps its choices
            QCOMPARE(moved.endpointDescription()->NoOfUserIdentityTokens, 0);
            QCOMPARE(moved.endpointUrl() + moved.serverName(), QString());
            QCOMPARE(moved.displayName(), record.displayName());
        }
    }
    // One key is enough for an entry to be there. The count stays as read where nothing goes with
    // it.
    void readsHostileStore()
    {
        const std::tuple<QVariant, int, int, int> rows[] = {
            // count, there, read, entries
            {{}, 3, 0, 0},           {INT_MIN, 3, INT_MIN, 0}, {QVariantList{1, 2}, 3, 0, 0},
            {1000, 0, 1000, 1000},   {1001, 0, 1001, 0},       {INT_MAX, 3, 3, 3},
            {2500, 2500, 2500, 2500}}; // with a gap
        for (const auto& [count, there, read, entries] : rows) {
            MemorySettings store, target;
            store.values = {{"P.Server.NoOfDiscoveryUrls", count},
                            {"P.NoOfUserIdentityTokens", count},
                            {"P.SecurityLevel", 300},
                            {"P.MessageSecurityMode", "4294967295"}};
            for (int i = 0; i < there; i += i == 1199 ? 100 : 1) {
                for (const char* key :
                     {"P.Server.DiscoveryUrl%1", "P.UserIdentityToken%1.PolicyId"})
                    store.values.insert(QString(key).arg(i), QString::number(i));
            }
            const Record record = readRecord(store);
            QCOMPARE(record.endpointDescription()->Server.NoOfDiscoveryUrls, read);
            QCOMPARE(record.endpointDescription()->NoOfUserIdentityTokens, read);
            QCOMPARE(record.supportedUserTokenTypes().size(), entries);
            QCOMPARE(int(record.endpointDescription()->SecurityLevel), 300 - 256);
            QCOMPARE(quint32(record.messageSecurityMode()), 4294967295u);
            if (entries == there && there > 0)
                QCOMPARE(fieldTexts(record).count(QString::number(there - 1)), 2);
            write(target, record);
            QCOMPARE(target.values.value("P.NoOfUserIdentityTokens").toInt(), read);
            QCOMPARE(target.written.size(), 21 + 6 * entries);
        }
        MemorySettings endless; // answers for every key
        endless.fallback = INT_MAX;
        QCOMPARE(readRecord(endless).endpointDescription()->NoOfUserIdentityTokens, INT_MAX);
        QVERIFY(readRecord(endless).supportedUserTokenTypes().isEmpty());
    }
    // Placeholders in a name are text like any other.
    void isNamedAfterItsEndpoint()
    {
        const std::tuple<const char*, const char*, int> rows[] = {
            {"Basic128Rsa15 - Sign", "a#b#Basic128Rsa15", 2},
            {"x\ny - Invalid", "a\nb#x\ny", 0},
            {" - Sign & Encrypt", "", 3},
            {"Basic256 - Unknown MessageSecurityMode", "Basic256", 7}};
        for (const auto& [name, policy, mode] : rows) {
            Record record, other;
            other.setServerName("Demo %2");
            other.setSecurityPolicy(policy);
            other.setMessageSecurityMode(OpcUa_MessageSecurityMode(mode));
            record.setEndpointDescription(other.endpointDescription());
            QCOMPARE(record.displayName(), QString("Demo %2 - ") + name);
        }
    }
    void keepsAdditions()
    {
        for (const int type : {0, 1, 2}) {
            const bool ua = type == QvelDiscoveryWidget::OpcUa;
            MoodyStore store;
            auto model = store.makeModel(type);
            QCOMPARE(texts(*model),
                     QStringList({"Local", "Local Network", ua ? "Custom Discovery" : "Custom Enum",
                                  "Recently Used"}));
            for (int row = 0; row < 4; ++row) {
                QCOMPARE(model->canFetchMore(model->index(row, 0)), row < 2);
                QCOMPARE(model->hasChildren(model->index(row, 0)), row < 3);
            }
            QCOMPARE(model->getLocalNode()->discoveryUrl(), ua ? "opc.tcp://localhost:4840" : "");
            QStringList urls = {"opc.tcp://one", "https://two", "OPC.TCP://three"};
            for (const QString& url : urls)
                model->addRemoteServer(url);
            model->editUrl(model->index(0, 0), "opc.tcp://127.0.0.1:2");
            QVERIFY(store.written.isEmpty());
            model.reset();
            QVERIFY(!QApplication::overrideCursor() && !store.isOpen());
            model = store.makeModel(type);
            urls.insert(0, "< Double click to Add Server... >");
            QCOMPARE(texts(*model, model->index(2, 0)), urls.mid(0, ua ? 2 : 4));
            QCOMPARE(model->index(0, 0).data(), "Local");
            QCOMPARE(model->getLocalNode()->discoveryUrl(), "opc.tcp://127.0.0.1:2");
            model->editUrl(model->index(0, 0), {}); // this computer, again
            model.reset();
            QCOMPARE(store.values.value("LocalDiscoveryUrl"), QVariant(QString()));
        }
    }

    void losesNothingOfStore()
    {
        const std::tuple<QVariant, int, const char*, int, int> cases[] = {
            // count, there, unreadable at first; rows, and with one entry more
            {1001, 1001, "^$", 1001, 1002},
            {4000, 4000, "^$", 4000, 4001},
            {INT_MAX, 3, "^$", 3, 4},
            {1000, 0, "^$", 1000, 1001},
            {-1, 0, "^$", 0, 1},
            {"many", 2, "^$", 0, 3},
            {3, 3, ".", 0, 4},
            {3, 3, "^NoOf", 0, 4},
            {3, 3, "^(Recent|Discovery)Server[12]", 3, 6}, // two of them blank
            {2000, 2000, "^(Recent|Discovery)Server", 0, 2001}};
        for (const auto& [count, there, hidden, rows, after] : cases) {
            MoodyStore store;
            store.values = {{"NoOfRecentServers", count},
                            {"NoOfDiscoveryServers", count},
                            {"LocalDiscoveryUrl", "opc.tcp://mine"}};
            QSet<QString> expected = {"opc.tcp://new"};
            for (int k = 0; k < there; ++k) {
                const QString url = QString("opc.tcp://%1").arg(k);
                expected.insert(url);
                store.values.insert(QString("DiscoveryServer%1").arg(k), url);
                store.values.insert(QString("RecentServer%1.DisplayName").arg(k), url);
            }
            store.hidden.setPattern(hidden);
            auto model = store.makeModel();
            QCOMPARE(model->rowCount(model->index(3, 0)), rows);
            QCOMPARE(model->rowCount(model->index(2, 0)), rows + 1);
            bool accepted = false;
            Record record;
            record.setDisplayName("opc.tcp://new");
            model->updateEndpointConfiguration(record, {}, accepted);
            model->addRemoteServer("opc.tcp://new");
            store.hidden.setPattern("^$"); // what could not be read can be at the end
            model.reset();
            model = store.makeModel();
            for (const int top : {2, 3}) {
                const QStringList entries = texts(*model, model->index(top, 0)).mid(3 - top);
                QCOMPARE(entries.size(), after);
                QVERIFY(QSet<QString>(entries.begin(), entries.end()).contains(expected));
            }
            QCOMPARE(model->getLocalNode()->discoveryUrl(), "opc.tcp://mine");
            QVERIFY(store.log().isEmpty());
        }
        MoodyStore endless; // more than can be read
        endless.fallback = INT_MAX;
        endless.makeModel().reset();
        QCOMPARE(endless.values.keys(), QStringList("LocalDiscoveryUrl"));
        QCOMPARE(endless.log().size(), 1);
    }

private:
    QTemporaryDir m_folder;
};

QTEST_MAIN(DiscoverySettingTest)
#include "tst_discoverysetting.moc"
