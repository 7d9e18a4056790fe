#include "sessionarguments.h"

#include "english.h"
#include "valuejson.h"

#include <Kestrel/QvelNodeLink>
#include <Kestrel/QvelSessionTypes>
#include <Kestrel/UaString>

#include <QtCore/QCoreApplication>
#include <QtCore/QUrl>

#include <algorithm>
#include <cstring>

namespace {

constexpr int maxMilliseconds = 2'000'000'000;
constexpr char policyPrefix[] = "http://opcfoundation.org/UA/SecurityPolicy#";
constexpr const char* policyNames[] = {
    "None",           "Basic128Rsa15",         "Basic256",
    "Basic256Sha256", "Aes128_Sha256_RsaOaep", "Aes256_Sha256_RsaPss"};
constexpr const char* modeNames[] = {"none", "sign", "encrypt"}; // by their number, from 1
constexpr const char* trustNames[] = {"reject", "once", "always"};

// The place of a name in a list, or -1.
template <std::size_t size>
int find(const char* const (&names)[size], const QString& name)
{
    const auto found = std::find_if(std::begin(names), std::end(names), [&name](const char* each) {
        return name.compare(QLatin1String(each), Qt::CaseInsensitive) == 0;
    });
    return found == std::end(names) ? -1 : int(found - std::begin(names));
}

bool takePolicy(SessionArguments& arguments, const QString& value)
{
    const QLatin1String prefix(policyPrefix);
    const int i = find(policyNames, value.startsWith(prefix) ? value.mid(prefix.size()) : value);
    if (i >= 0)
        arguments.policyUri = prefix + QLatin1String(policyNames[i]);
    return i >= 0;
}

bool takeMode(SessionArguments& arguments, const QString& value)
{
    const int i = find(modeNames, value);
    arguments.mode = OpcUa_MessageSecurityMode(i + 1);
    return i >= 0;
}

bool takeTrust(SessionArguments& arguments, const QString& value)
{
    const int i = find(trustNames, value);
    arguments.trust = SessionArguments::Trust(i);
    return i >= 0;
}

bool takeUrl(SessionArguments& arguments, const QString& value)
{
    const QUrl url(value);
    arguments.url = value;
    return url.scheme() == QLatin1String("opc.tcp") && !url.host().isEmpty();
}

bool takeMilliseconds(const QString& value, double unit, double least, int& result)
{
    bool ok = false;
    const double number = value.toDouble(&ok) * unit;
    ok = ok && number >= least && number <= maxMilliseconds;
    result = ok ? int(number) : 0;
    return ok;
}

template <QString SessionArguments::*member>
bool takeText(SessionArguments& arguments, const QString& value)
{
    arguments.*member = value;
    return !value.isEmpty();
}

// The command that an option belongs to: the last one, where it is of the right kind.
SessionCommand* last(SessionArguments& arguments, SessionCommand::Kind kind)
{
    auto& commands = arguments.commands;
    return !commands.isEmpty() && commands.last().kind == kind ? &commands.last() : nullptr;
}

template <UaDateTime SessionCommand::*member>
bool takeTime(SessionArguments& arguments, const QString& value)
{
    SessionCommand* const command = last(arguments, SessionCommand::History);
    bool ok = false;
    const UaDateTime time = UaDateTime::fromString(UaString(value), &ok);
    if (command)
        command->*member = time;
    return command && ok && !time.isNull();
}

template <int SessionCommand::*member, int unit, int least>
bool takeDuration(SessionArguments& arguments, const QString& value)
{
    SessionCommand* const command = last(arguments, SessionCommand::Watch);
    return command && takeMilliseconds(value, unit, least, command->*member);
}

struct Option
{
    const char* name;
    const char* argument;
    const char* help;
    bool (*take)(SessionArguments&, const QString&);
};

constexpr Option options[] = {
    {"connect", "URL", "The server, as opc.tcp://host:4840.", takeUrl},
    {"policy", "NAME",
     "None, Basic256Sha256, Aes128_Sha256_RsaOaep, Aes256_Sha256_RsaPss, and for old devices "
     "Basic256 or Basic128Rsa15. The best one that the server offers, if left out.",
     takePolicy},
    {"mode", "none|sign|encrypt", "Likewise.", takeMode},
    {"user", "NAME", "Log in by a user name.", takeText<&SessionArguments::user>},
    {"password-file", "FILE",
     "Its first line is the user's password, or that of the private key of --key.",
     takeText<&SessionArguments::passwordFile>},
    {"certificate", "DER", "Log in by a certificate.",
     takeText<&SessionArguments::certificateFile>},
    {"key", "PEM", "Its private key.", takeText<&SessionArguments::keyFile>},
    {"trust", "reject|once|always",
     "What to do with a server's certificate that is not trusted: reject it (if left out), accept "
     "it this time, or file it as trusted.",
     takeTrust},
    {"pki", "FOLDER",
     "The certificates: folders trusted, issuers (both with revocation lists), rejected, and "
     "private for the own key. harrier's own store, if left out. An own certificate is made where "
     "there is none.",
     takeText<&SessionArguments::pki>},
    {"timeout", "MS", "Milliseconds for connecting, and for each request.",
     [](SessionArguments& arguments, const QString& value) {
         return takeMilliseconds(value, 1, 1, arguments.timeout);
     }},
    {"for", "SECONDS", "Of --watch: how long. Ctrl-C ends it earlier.",
     takeDuration<&SessionCommand::duration, 1000, 1>},
    {"interval", "MS", "Of --watch: sampling and publishing interval; 500, if left out.",
     takeDuration<&SessionCommand::interval, 1, 0>},
    {"from", "TIME", "Of --history: begin, ISO 8601; UTC where it names no zone.",
     takeTime<&SessionCommand::from>},
    {"to", "TIME", "Of --history: end.", takeTime<&SessionCommand::to>},
};

struct Command
{
    SessionCommand::Kind kind;
    const char* name;
    const char* arguments;
    int nodes; // -1 for all arguments
    int leastValues;
    int mostValues;
    const char* help;
};

constexpr int many = 1000;
constexpr Command commands[] = {
    {SessionCommand::Browse, "browse", "NODEID", 1, 0, 0, "The children of a node."},
    {SessionCommand::Read, "read", "NODEID[@ATTRIBUTE]...", -1, 0, 0,
     "Attributes by their names in the standard, such as DisplayName; Value, if left out."},
    {SessionCommand::Write, "write", "NODEID JSON", 1, 1, 1,
     "Writes a value, in the DataType and ValueRank of the node."},
    {SessionCommand::Call, "call", "OBJECT METHOD [JSON...]", 2, 0, many,
     "Calls a method with its input arguments."},
    {SessionCommand::Watch, "watch", "NODEID... --for SECONDS [--interval MS]", -1, 0, 0,
     "Tells each change of values."},
    {SessionCommand::History, "history", "NODEID --from TIME --to TIME", 1, 0, 0,
     "The raw values of a time."},
};

template <class Table>
auto find(const Table& table, const QString& name)
{
    const auto found = std::find_if(std::begin(table), std::end(table), [&name](const auto& entry) {
        return name == QLatin1String(entry.name);
    });
    return found == std::end(table) ? nullptr : &*found;
}

// An identifier may hold "@" itself: it ends at the last one only, and only where the name of an
// attribute follows.
SessionCommand::Node splitNode(SessionCommand::Kind kind, const QString& text)
{
    SessionCommand::Node node{text, {}, QvelAttribute::Value};
    const qsizetype at = text.lastIndexOf(QLatin1Char('@'));
    const OpcUa_UInt32 attribute = at < 0 ? 0 : QvelAttribute::fromName(text.mid(at + 1));
    if (kind == SessionCommand::Read && attribute != 0) {
        node.text.truncate(at);
        node.attributeId = attribute;
    }
    return node;
}

QString parseCommand(const Command& command, const QStringList& values, SessionCommand& result)
{
    const qsizetype nodes =
        command.nodes < 0 ? std::max<qsizetype>(1, values.size()) : command.nodes;
    if (values.size() < nodes + command.leastValues || values.size() > nodes + command.mostValues)
        return english("--%1 takes %2")
            .arg(QLatin1String(command.name), english(command.arguments));
    result.kind = command.kind;
    for (const QString& text : values.first(nodes)) {
        SessionCommand::Node node = splitNode(command.kind, text);
        const auto id = qvelParseNodeId(node.text);
        if (!id || id->serverIndex() != 0)
            return english(
                       "%1 is no NodeId; one looks like i=85, ns=2;s=Pump or nsu=urn:plant;s=Pump")
                .arg(text);
        node.id = *id;
        result.nodes.append(node);
    }
    for (const QString& text : values.mid(nodes)) {
        const auto json = parseJson(text.toUtf8());
        if (!json)
            return english("%1 is no JSON; a text needs quotes that the shell leaves: '\"text\"'")
                .arg(text);
        result.values.append(*json);
    }
    return {};
}

// What only the whole tells.
QString checkTogether(SessionArguments& arguments)
{
    const bool isUser = !arguments.user.isEmpty();
    const bool isCertificate = !arguments.certificateFile.isEmpty();
    const bool hasPassword = !arguments.passwordFile.isEmpty();
    const QString none = QLatin1String(policyPrefix) + QLatin1String(policyNames[0]);
    if (arguments.url.isEmpty())
        return english("--connect URL is missing");
    if (arguments.commands.isEmpty())
        return english("There is no command, such as --read or --browse");
    if (isUser && isCertificate)
        return english("--user and --certificate exclude each other");
    if (isCertificate == arguments.keyFile.isEmpty())
        return english("--certificate and --key belong together");
    if (isUser ? !hasPassword : hasPassword && !isCertificate)
        return english("--user and --password-file belong together");
    if (arguments.mode == OpcUa_MessageSecurityMode_None && arguments.policyUri.isEmpty())
        arguments.policyUri = none;
    if (arguments.mode != OpcUa_MessageSecurityMode_Invalid && !arguments.policyUri.isEmpty() &&
        (arguments.mode == OpcUa_MessageSecurityMode_None) != (arguments.policyUri == none))
        return english("This policy and this mode exclude each other");
    for (const SessionCommand& command : std::as_const(arguments.commands)) {
        if (command.kind == SessionCommand::Watch && command.duration == 0)
            return english("--watch needs --for SECONDS");
        if (command.kind == SessionCommand::History &&
            (command.from.isNull() || command.to.isNull()))
            return english("--history needs --from TIME and --to TIME");
    }
    return {};
}

} // namespace

bool SessionArguments::ask(int argc, char** argv)
{
    return std::any_of(argv, argv + argc, [](const char* argument) {
        const QString text = QString::fromLocal8Bit(argument).section(QLatin1Char('='), 0, 0);
        return text.startsWith(QLatin1String("--")) &&
               (text == QLatin1String("--connect") || find(::commands, text.mid(2)));
    });
}

QString SessionArguments::parse(const QStringList& arguments)
{
    help = arguments.contains(QLatin1String("--help")) || arguments.contains(QLatin1String("-h"));
    if (help)
        return {};
    const auto isOption = [](const QString& text) { return text.startsWith(QLatin1String("--")); };
    for (auto next = arguments.begin(); next != arguments.end();) {
        const QString argument = *next++;
        if (!isOption(argument))
            return english("Unexpected argument: %1").arg(argument);
        const qsizetype equals = argument.indexOf(QLatin1Char('='));
        const QString name = argument.mid(2, equals < 0 ? -1 : equals - 2);
        QStringList values;
        if (equals >= 0)
            values.append(argument.mid(equals + 1));
        while (next != arguments.end() && !isOption(*next))
            values.append(*next++);
        if (const Option* option = find(options, name)) {
            if (values.size() != 1 || !option->take(*this, values.first()))
                return english("--%1 takes %2. %3")
                    .arg(name, english(option->argument), english(option->help));
        } else if (const Command* command = find(::commands, name)) {
            SessionCommand result;
            const QString error = parseCommand(*command, values, result);
            if (!error.isEmpty())
                return error;
            commands.append(result);
        } else {
            return english("Unknown option: --%1").arg(name);
        }
    }
    return checkTogether(*this);
}

QString SessionArguments::helpText()
{
    QString text =
        english("Usage: harrier --connect URL [options] COMMAND...\n"
                "Runs commands, one after the other, over a session with an OPC UA server.\n"
                "Prints one JSON object a line; the log goes to the standard error.\n");
    const auto add = [&text](const char* name, const char* argument, const char* what) {
        text += QStringLiteral("  --%1 %2\n      %3\n")
                    .arg(QLatin1String(name), english(argument), english(what));
    };
    text += english("\nOptions:\n");
    for (const Option& option : options)
        add(option.name, option.argument, option.help);
    text += english("\nCommands:\n");
    for (const Command& command : ::commands)
        add(command.name, command.arguments, command.help);
    text += english(
        "\nA value is printed in the reversible JSON of OPC 10000-6, 5.4, as "
        "{\"Type\":6,\"Body\":-5}.\n"
        "--write and --call take the Body alone, -5 or for 64 bits \"-5\", for a matrix an "
        "object:\n"
        "{\"Body\":[1,2,3,4],\"Dimensions\":[2,2]}. Where the type of the node is abstract, "
        "a value\nhas the type of the one that it replaces, or names its own, as printed.\n"
        "\nExit status: 0 when every status was Good, 1 when one was not, 2 for wrong\n"
        "arguments, 3 when there was no session.\n");
    return text;
}
