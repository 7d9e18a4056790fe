#include "project.h"

#include <Kestrel/QvelDiscoverySetting>

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QSaveFile>

namespace {

constexpr qint64 maxSize = 64 * 1024 * 1024;
const QString formatKey = QStringLiteral("format");
const QString formatName = QStringLiteral("harrier project");
const QString serversKey = QStringLiteral("servers");
const QString versionKey = QStringLiteral("version");
const QString policyStem = QStringLiteral("http://opcfoundation.org/UA/SecurityPolicy#");

struct Name
{
    int value;
    const char* text;
};

constexpr Name modes[] = {{OpcUa_MessageSecurityMode_None, "None"},
                          {OpcUa_MessageSecurityMode_Sign, "Sign"},
                          {OpcUa_MessageSecurityMode_SignAndEncrypt, "SignAndEncrypt"}};
constexpr Name users[] = {{OpcUa_UserTokenType_Anonymous, "Anonymous"},
                          {OpcUa_UserTokenType_UserName, "UserName"},
                          {OpcUa_UserTokenType_Certificate, "Certificate"}};

template <std::size_t count>
QJsonValue nameOf(const Name (&names)[count], int value)
{
    for (const Name& name : names)
        if (name.value == value)
            return QLatin1String(name.text);
    return {};
}

template <std::size_t count>
int valueOf(const Name (&names)[count], const QJsonValue& text, int fallback)
{
    for (const Name& name : names)
        if (text.toString() == QLatin1String(name.text))
            return name.value;
    return fallback;
}

} // namespace

namespace Project {

bool read(const QString& name, QJsonObject* content, QString* error)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QCoreApplication::translate("Project", "%1 cannot be read: %2")
                     .arg(name, file.errorString());
        return false;
    }
    const QByteArray bytes = file.read(maxSize + 1);
    QJsonParseError fault;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &fault);
    if (bytes.size() > maxSize) {
        *error = QCoreApplication::translate("Project", "%1 is too large for a project.").arg(name);
    } else if (fault.error != QJsonParseError::NoError) {
        const auto line = bytes.left(fault.offset).count('\n') + 1;
        *error =
            QCoreApplication::translate(
                "Project", "%1 is damaged at line %2: %3. It was not opened, and is left as it is.")
                .arg(name)
                .arg(line)
                .arg(fault.errorString());
    } else if (document[formatKey].toString() != formatName) {
        *error = QCoreApplication::translate("Project", "%1 is no project of harrier.").arg(name);
    } else if (document[versionKey].toInt(version + 1) > version) {
        *error = QCoreApplication::translate(
                     "Project",
                     "%1 was made by a later harrier, which writes version %2 of the format; this "
                     "one knows version %3. It was not opened, and is left as it is.")
                     .arg(name, document[versionKey].toVariant().toString())
                     .arg(version);
    } else if (!document[serversKey].isUndefined() && !document[serversKey].isArray()) {
        *error = QCoreApplication::translate(
                     "Project",
                     "%1 is damaged: its servers are no list. It was not opened, and is left as it "
                     "is.")
                     .arg(name);
    } else {
        *content = document.object();
        return true;
    }
    return false;
}

bool write(const QString& name, const QJsonObject& content, QString* error)
{
    QJsonObject whole = content;
    whole[formatKey] = formatName;
    whole[versionKey] = version;
    QSaveFile file(name);
    const bool isWritten = file.open(QIODevice::WriteOnly) &&
                           file.write(QJsonDocument(whole).toJson(QJsonDocument::Indented)) >= 0 &&
                           file.commit();
    if (!isWritten)
        *error = QCoreApplication::translate("Project", "%1 cannot be written: %2")
                     .arg(name, file.errorString());
    return isWritten;
}

void put(QJsonObject& json, const QvelDiscoverySetting& setting)
{
    QString policy = setting.securityPolicy();
    if (policy.startsWith(policyStem))
        policy.remove(0, policyStem.size());
    json[QStringLiteral("name")] = setting.serverName();
    json[QStringLiteral("url")] = setting.endpointUrl();
    json[QStringLiteral("securityPolicy")] = policy;
    json[QStringLiteral("securityMode")] = nameOf(modes, setting.messageSecurityMode());
    json[QStringLiteral("sessionName")] = setting.sessionName();
    QJsonObject user = json[QStringLiteral("user")].toObject();
    user[QStringLiteral("type")] = nameOf(users, setting.userTokenType());
    user[QStringLiteral("name")] = setting.userName();
    user[QStringLiteral("certificateFile")] = setting.certificateFile();
    user[QStringLiteral("privateKeyFile")] = setting.privateKeyFile();
    json[QStringLiteral("user")] = user;
}

bool get(const QJsonObject& json, QvelDiscoverySetting* setting, QString* error)
{
    const QString url = json[QStringLiteral("url")].toString();
    if (url.isEmpty()) {
        *error = QCoreApplication::translate(
            "Project", "A server of the project has no URL. It is kept in the file.");
        return false;
    }
    const QString policy = json[QStringLiteral("securityPolicy")].toString();
    setting->setServerName(json[QStringLiteral("name")].toString());
    setting->setEndpointUrl(url);
    setting->setSecurityPolicy(
        policy.isEmpty() || policy.contains(QLatin1Char(':')) ? policy : policyStem + policy);
    setting->setMessageSecurityMode(OpcUa_MessageSecurityMode(
        valueOf(modes, json[QStringLiteral("securityMode")], OpcUa_MessageSecurityMode_Invalid)));
    setting->setSessionName(json[QStringLiteral("sessionName")].toString());
    const QJsonObject user = json[QStringLiteral("user")].toObject();
    setting->setUserTokenType(OpcUa_UserTokenType(
        valueOf(users, user[QStringLiteral("type")], OpcUa_UserTokenType_Anonymous)));
    setting->setUserName(user[QStringLiteral("name")].toString());
    setting->setCertificateFile(user[QStringLiteral("certificateFile")].toString());
    setting->setPrivateKeyFile(user[QStringLiteral("privateKeyFile")].toString());
    return true;
}

} // namespace Project
