#pragma once

#include "support/memorysettings.h"

#include <Kestrel/QvelDiscoverySetting>

/// What a store holds of a record without an empty field, in the order of its keys; each text is
/// its key.
inline QList<std::pair<QString, QVariant>> storedFields(int urls,
                                                        const QList<OpcUa_UserTokenType>& tokens)
{
    QList<std::pair<QString, QVariant>> fields;
    const auto add = [&fields](const QString& keys) { // "key key=number"
        for (const QString& key : keys.split(' ')) {
            const bool isText = !key.contains('=');
            fields.append({key.section('=', 0, 0),
                           isText ? QVariant(key) : QVariant(key.section('=', 1).toInt())});
        }
    };
    add(QString("ServerUrl Server.ApplicationUri Server.ProductUri Server.ApplicationNameLocale "
                "Server.ApplicationNameText Server.ApplicationType=2 Server.GatewayServerUri "
                "Server.DiscoveryProfileUri Server.NoOfDiscoveryUrls=%1")
            .arg(urls));
    for (int i = 0; i < urls; ++i)
        add(QString("Server.DiscoveryUrl%1").arg(i));
    fields.append({"ServerCertificate", QByteArray("\x30\x00\xff", 3)});
    add(QString("MessageSecurityMode=3 SecurityPolicy NoOfUserIdentityTokens=%1")
            .arg(tokens.size()));
    for (int j = 0; j < tokens.size(); ++j)
        add(QString("UserIdentityToken%1.PolicyId UserIdentityToken%1.TokenType=%2 "
                    "UserIdentityToken%1.IssuedTokenType UserIdentityToken%1.IssuerEndpointUrl "
                    "UserIdentityToken%1.SecurityPolicyUri")
                .arg(j)
                .arg(int(tokens[j])));
    add("TransportProfileUri SecurityLevel=200 DisplayName UserTokenType=2 SessionName UserName "
        "CertificateFile PrivateKeyFile");
    return fields;
}

inline QvelDiscoverySetting readRecord(MemorySettings& store)
{
    void* handle = store.openSettings();
    const auto record = QvelDiscoverySetting::fromSetting(&store, handle, "P.");
    store.closeSettings(handle);
    return record;
}

/// A configuration without an empty field.
inline QvelDiscoverySetting fullSetting(int urls = 2, const QList<OpcUa_UserTokenType>& tokens = {
                                                          OpcUa_UserTokenType_UserName,
                                                          OpcUa_UserTokenType_IssuedToken})
{
    MemorySettings store;
    for (const auto& [key, value] : storedFields(urls, tokens))
        store.values.insert("P." + key, value);
    QvelDiscoverySetting setting = readRecord(store);
    setting.setPassword("secret");
    setting.setStorePassword(true);
    return setting;
}
