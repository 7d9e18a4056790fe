// harrier's commands over a session with a server of another make tell and change what that make's
// own client sees there.

#include "session/sessionuser.h"
#include "support/values.h"
#include "support/warnings.h"

#include <map>

namespace {

constexpr int timeout = 120'000; // ms

using Lines = QList<QJsonObject>;

Lines linesOf(const QByteArray& output)
{
    Lines lines;
    for (const QByteArray& line : output.split('\n'))
        if (!line.isEmpty())
            lines.append(QJsonDocument::fromJson(line).object());
    return lines;
}

struct Run
{
    int code = -1;
    QByteArray output;
    QByteArray errors;
};

Run harrier(const QStringList& arguments)
{
    QProcess process;
    process.setEnvironment({"HOME=/nonexistent"}); // and no display
    process.start(HARRIER, arguments);
    Run run;
    if (process.waitForFinished(timeout))
        run = {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    return run;
}

} // namespace

class tst_CommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_url = m_server.start(NODE, {"--security-revert=CVE-2023-46809",
                                      PEERS "/sessionserver.mjs", "--conformance"});
        QVERIFY(!m_url.isEmpty());
        m_url.replace("127.0.0.1", "localhost"); // as its certificate names it
        m_client.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_client.start(NODE, {PEERS "/sessionclient.mjs", m_url});
        while (!m_client.canReadLine())
            QVERIFY(m_client.waitForReadyRead(timeout));
        QVERIFY(m_client.readLine().startsWith("READY"));
    }

    void cleanupTestCase()
    {
        m_client.closeWriteChannel();
        QVERIFY(m_client.waitForFinished(timeout) && m_client.exitCode() == 0);
    }

    void init() { failOnWarnings(); }
    // The whole address space, level by level; one of its folders holds 10,000 children.
    void browsed()
    {
        const Lines expected = ask({"walk", "i=84"});
        Lines actual;
        QStringList level{"i=84"};
        QSet<QString> seen(level.cbegin(), level.cend());
        // The diagnostics of sessions come and go with clients; many others are alike.
        const QRegularExpression skipped("^(i=3706|ns=1;s=(Tag|Item)\\d\\d.*)$");
        while (!level.isEmpty()) {
            QStringList commands;
            for (const QString& id : std::exchange(level, {}))
                commands << "--browse" << id;
            const Lines lines = run(commands);
            for (const QJsonObject& line : lines) {
                const QString target = line["target"].toString();
                if (seen.contains(target) || skipped.match(target).hasMatch())
                    continue;
                seen.insert(target);
                level.append(target);
                if (line["nodeClass"] == "Variable")
                    m_variables.append(target);
            }
            actual += lines;
        }
        compare(actual, expected);
        QCOMPARE(
            std::count_if(actual.cbegin(), actual.cend(),
                          [](const QJsonObject& line) { return line["nodeId"] == "ns=1;s=Many"; }),
            10'000);
    }

    // Each value as the other client sees it, before or after, where it does not change meanwhile.
    void values()
    {
        const Lines before = ask(QStringList("read") + m_variables);
        const Lines actual = run(QStringList("--read") + m_variables, 1);
        const Lines after = ask(QStringList("read") + m_variables);
        QCOMPARE(actual.size(), m_variables.size());
        int compared = 0;
        QMap<int, int> shapes; // of the values that were compared: the type, and the shape
        for (qsizetype i = 0; i < actual.size(); ++i) {
            if (before[i] != after[i])
                continue;
            ++compared;
            QCOMPARE(QJsonDocument(actual[i]).toJson(), QJsonDocument(before[i]).toJson());
            const QJsonValue value = actual[i]["value"];
            shapes[value["Type"].toInt()] |= value["Dimensions"].isArray() ? 4
                                             : value["Body"].isArray()     ? 2
                                                                           : 1;
        }
        for (int type = OpcUaType_Boolean; type <= OpcUaType_DiagnosticInfo; ++type)
            QVERIFY2(shapes[type] == 7, QByteArray::number(type));
        QVERIFY2(compared > 4000, QByteArray::number(compared));
    }

    // Another value of each type and shape arrives there, in the type of its node.
    void written()
    {
        QStringList ids;
        for (int type = OpcUaType_Boolean; type <= OpcUaType_LocalizedText; ++type)
            for (const char* shape : {"Scalar", "Array", "Matrix"})
                ids << QString("ns=1;s=%1%2").arg(shape, typeName(type));
        const Lines before = ask(QStringList("read") + ids);
        QCOMPARE(before.size(), ids.size());
        Lines expected = before;
        QStringList commands;
        for (qsizetype i = 0; i < ids.size(); ++i) {
            QJsonObject value = expected[i]["value"].toObject();
            // The elements in another order; of a scalar, the second element of its array.
            QJsonArray elements = before[i - i % 3 + 1]["value"]["Body"].toArray();
            QJsonValue body = elements[1];
            if (i % 3 > 0) {
                elements = value["Body"].toArray();
                elements.append(elements.takeAt(0));
                body = elements;
            }
            QJsonArray argument{body};
            value["Body"] = body;
            if (i % 3 == 2)
                argument = {QJsonObject{{"Body", body}, {"Dimensions", value["Dimensions"]}}};
            else if (body.isNull()) // a Good StatusCode
                value.remove("Body");
            QVERIFY2(before[i]["value"] != value, qPrintable(ids[i]));
            expected[i]["value"] = value;
            const QByteArray json = QJsonDocument(argument).toJson(QJsonDocument::Compact);
            commands << "--write" << ids[i] << QString::fromUtf8(json.mid(1, json.size() - 2));
        }
        for (const QJsonObject& line : run(commands))
            QCOMPARE(line["status"].toString(), "Good");
        Lines actual = ask(QStringList("read") + ids);
        for (Lines* lines : {&actual, &expected})
            for (QJsonObject& line : *lines)
                line.remove("sourceTimestamp");
        compare(actual, expected);
    }

    void history()
    {
        const QString id = "ns=1;s=Historic";
        const Lines actual =
            run({"--history", id, "--from", "2024-01-01", "--to", "2024-01-02T00:00:00+01:00"});
        QCOMPARE(actual.size(), 3000);
        Lines expected = ask({"history", id, "2024-01-01", "2024-01-02"});
        for (QJsonObject& line : expected)
            line["service"] = "history";
        compare(actual, expected);
    }

    void security_data()
    {
        QTest::addColumn<int>("serverBits");
        for (int bits : {1024, 2048, 3072, 4096})
            if (ALL_SECURITY || bits == 1024 || bits == 4096)
                QTest::addRow("%d bits", bits) << bits;
    }

    // Each policy in each mode with each identity and keys of each size that the policy takes.
    void security()
    {
        QFETCH(int, serverBits);
        PeerProcess server;
        const QString url = startServer(server, serverBits, {"--children", "1", "--items", "1"});
        QFile password(m_folder.filePath("password"));
        QVERIFY(password.open(QIODevice::WriteOnly) && password.write("walnut\nnot this\n") > 0);
        password.close();
        const QvelSessionOptions& user = owner(2048).options;
        const QList<QStringList> identities = {
            {},
            {"--user", "operator", "--password-file", password.fileName()},
            {"--certificate", user.certificateFile, "--key", user.privateKeyFile}};
        int count = 0;
        int sessions = 0;
        for (int bits : {1024, 2048, 3072, 4096}) {
            const QDir pki(owner(bits).folder.path());
            pki.mkdir("private");
            QFile::copy(pki.filePath("own.der"), pki.filePath("trusted/harrier.der"));
            QFile::copy(pki.filePath("own.pem"), pki.filePath("private/harrier.pem"));
            for (const char* policy : {"None", "Basic128Rsa15", "Basic256", "Basic256Sha256",
                                       "Aes128_Sha256_RsaOaep", "Aes256_Sha256_RsaPss"}) {
                const bool isSecure = qstrcmp(policy, "None") != 0;
                const bool isOld = qstrlen(policy) < 14; // OPC 10000-7, 6.6
                const auto fits = [isOld](int size) { return isOld ? size <= 2048 : size >= 2048; };
                if (isSecure && !(fits(bits) && fits(serverBits)))
                    continue;
                for (const char* mode : {"none", "sign", "encrypt"}) {
                    for (const QStringList& identity : identities) {
                        // An identity is proven by the best policy that the server's key allows.
                        const bool isKnown = isSecure || identity.isEmpty() || serverBits >= 2048;
                        if (isSecure == (qstrcmp(mode, "none") == 0) || !isKnown ||
                            (!ALL_SECURITY && bits != serverBits && ++count % 4 > 0))
                            continue;
                        const Run run =
                            harrier(QStringList{"--connect", url, "--policy", policy, "--mode",
                                                mode, "--pki", pki.path(), "--trust", "once",
                                                "--read", "ns=1;s=ScalarInt32"} +
                                    identity);
                        QVERIFY2(run.code == 0, QByteArray(policy) + ' ' + mode + ' ' +
                                                    identity.value(0).toUtf8() + ' ' +
                                                    QByteArray::number(bits) + ": " + run.errors);
                        QVERIFY(run.output.contains(R"({"Type":6,"Body":-2147483648})"));
                        ++sessions;
                    }
                }
            }
        }
        qInfo() << sessions << "sessions";
        QVERIFY(sessions > 15);
    }

    void exitStatus()
    {
        const auto row = [this](const QString& arguments, int code, const char* told) {
            const Case here(arguments.toUtf8());
            const QTemporaryDir pki; // where nothing is trusted
            const Run run =
                harrier(QStringList{"--connect", m_url, "--trust", "once", "--pki", pki.path()} +
                        arguments.split(' ', Qt::SkipEmptyParts));
            QVERIFY2((run.errors + run.output).contains(told), run.errors + run.output);
            QCOMPARE(run.code, code);
        };
        const QString call = "--call ns=1;s=Machine ns=1;s=Add ", number = " ns=1;s=ScalarInt32 ";
        row("--read i=2259@DisplayName", 0, R"("attribute":"DisplayName")");
        row("--read nsu=urn:localhost:kestrel:Sessionserver;s=ScalarInt32@Value", 0, "Good");
        row(call + "1 2.5", 0, R"([{"Type":11,"Body":3.5}])");
        row(call + "1 \"2\"", 1, R"(["Good","BadTypeMismatch"])");
        row(call + "1", 1, "BadArgumentsMissing");
        row(call + "1 2 3", 1, "BadTooManyArguments");
        row("--watch ns=1;s=Item0 ns=1;s=Item1 --for 0.5 --interval 50", 0, "watch");
        row("--watch" + number + "ns=1;s=none --for 0.5", 1, "BadNodeIdUnknown");
        row("--read" + number + "ns=1;s=@", 1, "BadNodeIdUnknown");
        row("--read nsu=urn:x;i=1", 1, "no namespace urn:x");
        row("--browse ns=1;s=none", 1, "BadNodeIdUnknown");
        row("--write" + number + "[1]", 1, "BadTypeMismatch");
        row("--write" + number + "2147483648", 1, "BadOutOfRange");
        row("--write i=2259 1", 1, "Bad");
        row("--history" + number + "--from 2024-01-01 --to 2024-01-02", 1, "Bad");
        row("--connect --help", 0, "Usage");
        row("", 2, "no command");
        row("--read", 2, "--read");
        row("--read Pump", 2, "Pump is no NodeId");
        row("--write" + number + "one", 2, "one is no JSON");
        row("--watch" + number, 2, "--for");
        row("--history" + number + "--from soon", 2, "--from");
        row("--mode both --read" + number, 2, "--mode");
        row("--mode sign --policy None --read" + number, 2, "exclude");
        row("--user operator --read" + number, 2, "--password-file");
        row("--connect http://localhost --read" + number, 2, "--connect");
        row("--read" + number + "--policy Basic256Sha256 --trust reject", 3, "Untrusted");
        row("--read" + number + "--connect opc.tcp://localhost:1", 3, "Connecting: Bad");
        row("--read" + number + "--user operator --password-file /dev/null", 3, "Activating");
        row("--read" + number + "--user operator --password-file /none", 3, "/none");
    }

private:
    Lines run(const QStringList& commands, int code = 0) const
    {
        const Run run =
            harrier(QStringList{"--connect", m_url, "--trust", "always", "--pki", m_folder.path()} +
                    commands);
        if (run.code != code)
            qWarning() << commands.mid(0, 10) << run.code << run.errors;
        Lines lines = linesOf(run.output);
        for (QJsonObject& line : lines)
            line.remove("serverTimestamp");
        return lines;
    }

    Lines ask(const QStringList& question)
    {
        m_client.write(
            QJsonDocument(QJsonArray::fromStringList(question)).toJson(QJsonDocument::Compact) +
            '\n');
        QByteArray output;
        while (!output.endsWith("END\n")) {
            if (!m_client.canReadLine() && !m_client.waitForReadyRead(timeout)) {
                qWarning() << "no answer to" << question.mid(0, 10);
                return {};
            }
            output += m_client.readAll();
        }
        return linesOf(output.chopped(4));
    }

    static void compare(const Lines& actual, const Lines& expected)
    {
        QVERIFY(!expected.isEmpty());
        for (qsizetype i = 0; i < std::min(actual.size(), expected.size()); ++i)
            QCOMPARE(QJsonDocument(actual[i]).toJson(), QJsonDocument(expected[i]).toJson());
        QCOMPARE(actual.size(), expected.size());
    }

    // Whom a certificate and a key of a size belong to.
    const SessionUser& owner(int bits) { return m_owners.try_emplace(bits, bits).first->second; }
    QString startServer(PeerProcess& server, int bits, const QStringList& options)
    {
        const QvelSessionOptions& files = owner(bits).options;
        QString url =
            server.start(NODE, QStringList{"--security-revert=CVE-2023-46809",
                                           PEERS "/sessionserver.mjs", "--certificate",
                                           files.certificateFile, "--key", files.privateKeyFile} +
                                   options);
        return url.replace("127.0.0.1", "localhost"); // as its certificate names it
    }

    QTemporaryDir m_folder;
    std::map<int, SessionUser> m_owners;
    PeerProcess m_server;
    QProcess m_client;
    QString m_url;
    QStringList m_variables;
};

QTEST_GUILESS_MAIN(tst_CommandLine)
#include "tst_commandline.moc"
