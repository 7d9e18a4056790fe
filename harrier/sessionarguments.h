#pragma once

#include <Kestrel/OpcUaTypes>
#include <Kestrel/UaDateTime>
#include <Kestrel/UaExpandedNodeId>

#include <QtCore/QJsonValue>
#include <QtCore/QList>
#include <QtCore/QStringList>

/// One command that runs over a session.
struct SessionCommand
{
    enum Kind { Browse, Read, Write, Call, Watch, History };

    struct Node
    {
        QString text; ///< as it was typed
        UaExpandedNodeId id;
        OpcUa_UInt32 attributeId = 0;
    };

    Kind kind = Browse;
    QList<Node> nodes;        ///< of a call, the object and the method
    QList<QJsonValue> values; ///< to write, and the arguments of a call
    int duration = 0;         ///< of a watch, milliseconds
    int interval = 500;
    UaDateTime from; ///< of a history
    UaDateTime to;
};

/// What `harrier --connect` was told.
struct SessionArguments
{
    enum Trust { Reject, Once, Always };

    bool help = false;
    QString url;
    QString policyUri;                                                  ///< empty for the best one
    OpcUa_MessageSecurityMode mode = OpcUa_MessageSecurityMode_Invalid; ///< likewise
    QString user;
    QString passwordFile;
    QString certificateFile;
    QString keyFile;
    Trust trust = Reject;
    QString pki;
    int timeout = 0; ///< milliseconds; 0 for the library's own
    QList<SessionCommand> commands;

    /// Whether a command line asks for a session: it has --connect, or one of the commands.
    static bool ask(int argc, char** argv);
    /// Takes the arguments without the program's name. What is wrong with them, or an empty text.
    QString parse(const QStringList& arguments);
    static QString helpText();
};
