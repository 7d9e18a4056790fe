#pragma once

/// \file
/// Nodes in a form that takes little room: hundreds of thousands of them are kept by the models.

#include "session/session.h"

#include <QtCore/QByteArrayView>
#include <QtCore/QElapsedTimer>
#include <QtCore/QHash>
#include <QtCore/QPointer>
#include <QtGui/QIcon>

#include <memory>
#include <vector>

class CompactNode;

/// What many nodes have in common, kept once: namespaces by URI, type definitions and reference
/// types with their names, which are read from the server. Also tells when the session comes and
/// goes.
///
/// A node is a key of a few bytes, which stays the same when the server comes back with another
/// table of namespaces: the number of the namespace, the kind of identifier, the identifier.
class NodeTable : public QObject
{
    Q_OBJECT
public:
    explicit NodeTable(QObject* parent) : QObject(parent) {}

    /// Not owned; may be null.
    void setSession(QvelSession* session);
    QvelSession* session() const { return m_session; }
    bool isConnected() const;

    QByteArray key(const UaNodeId& id);
    /// An index without a URI is that of the server which is connected.
    QByteArray key(const UaExpandedNodeId& id);
    UaExpandedNodeId id(QByteArrayView key) const;
    /// For the server that is connected; null for a namespace that it does not have, and for nodes
    /// of another server.
    UaNodeId nodeId(QByteArrayView key) const;
    /// As short as it goes: by the index where there is one.
    QString idText(QByteArrayView key) const;

    quint32 space(OpcUa_UInt16 namespaceIndex);
    /// "2:Pump", in the table of the server.
    QString nameText(quint32 space, const QString& name) const;

    /// The number of a type; 0 for the null key. Its name is asked for.
    quint32 type(const QByteArray& key, bool isReferenceType = false);
    /// The NodeId as long as the name is not known.
    QString typeName(quint32 type) const;
    QString inverseName(quint32 type) const;
    /// By class and type. Null for an unknown class.
    QIcon icon(const CompactNode& node);

Q_SIGNALS:
    /// Services can be called; the namespaces are those of this connection.
    void connected();
    /// From now on, what is known is of the past.
    void lost();
    void typeNamesChanged();

private:
    struct Space
    {
        UaString uri;
        OpcUa_UInt32 server = 0;
        OpcUa_UInt16 index = 0; ///< where there is no URI, or that of the server connected
        bool isThere = true;
    };
    struct Type
    {
        QByteArray key;
        QString name;
        QString inverseName;
        OpcUa_UInt32 number = 0; ///< of those that count for the icons
        bool isReferenceType = false;
    };
    quint32 space(const UaString& uri, OpcUa_UInt32 server, OpcUa_UInt16 index);
    void takeNamespaces();
    void readNames();

    QPointer<QvelSession> m_session;
    QStringList m_namespaces;
    QList<quint32> m_local;                // the spaces of the server's indexes
    QHash<OpcUa_UInt16, quint32> m_beyond; // of indexes that the server's table does not have
    QList<Space> m_spaces = {Space()};
    QHash<QByteArray, quint32> m_spaceOf;
    QList<Type> m_types = {Type()};
    QHash<QByteArray, quint32> m_typeOf;
    QList<quint32> m_unnamed;
    QHash<const void*, QIcon> m_icons;
    quint32 m_reading = 0; ///< the number of the read under way, 0 for none
    quint32 m_lastReading = 0;
    bool m_wasConnected = false;
};

/// A node, its texts in one piece.
class CompactNode
{
public:
    enum Flag : quint8 {
        Inverse = 1,
        Message = 2, ///< no node, but a line that says something
        Failed = 4,  ///< a message about a failure, or a node that is no longer there
    };

    CompactNode() = default;
    CompactNode(NodeTable& table, const QvelReference& reference);
    explicit CompactNode(const QString& message, bool isFailure);
    /// Without the attributes.
    explicit CompactNode(const QByteArray& key) { setTexts(key, {}, {}); }

    QByteArrayView key() const { return {m_text.get(), m_keySize}; }
    QString browseName() const;
    /// The browse name where the node has no other.
    QString displayName() const;
    /// Of bounded length, on one line.
    QString shownName() const { return shown(displayBytes()); }
    QString shownBrowseName() const { return shown(browseBytes()); }
    /// Keeps the key.
    void setNames(const UaQualifiedName& browseName, const UaLocalizedText& displayName,
                  NodeTable& table);
    /// Of a message.
    void setMessage(const QString& message) { setTexts({}, {}, message.toUtf8()); }
    bool isMessage() const { return (flags & Message) != 0; }
    bool isSame(const CompactNode& other) const
    {
        return referenceType == other.referenceType &&
               (flags & ~Failed) == (other.flags & ~Failed) && key() == other.key();
    }
    /// Takes the names and the rest of a newer answer; whether anything is another.
    bool update(CompactNode& newer);

    quint32 browseSpace = 0;
    quint32 typeDefinition = 0; ///< see NodeTable::type()
    quint32 referenceType = 0;
    quint8 nodeClass = 0;
    quint8 flags = 0;

private:
    static QString shown(QByteArrayView text);
    void setTexts(QByteArrayView key, QByteArrayView browseName, QByteArrayView displayName);
    QByteArrayView browseBytes() const { return {m_text.get() + m_keySize, m_browseSize}; }
    QByteArrayView displayBytes() const
    {
        return m_displaySize == 0
                   ? browseBytes()
                   : QByteArrayView(m_text.get() + m_keySize + m_browseSize, m_displaySize);
    }

    quint32 m_keySize = 0;
    quint32 m_browseSize = 0;
    quint32 m_displaySize = 0; // 0 for the same as the browse name
    std::unique_ptr<char[]> m_text;
};

/// References that have come and are not turned into nodes yet: that takes time, and is done piece
/// by piece.
class ReferenceIntake
{
public:
    explicit ReferenceIntake(QList<QvelReference> references = {})
        : m_references(std::move(references))
    {
    }
    qsizetype size() const { return m_references.size(); }
    bool isDone() const { return m_next == m_references.size(); }
    /// Calls `take` with one after the other until `clock` shows that it is time for others.
    template <class Function>
    void take(const QElapsedTimer& clock, Function function)
    {
        while (!isDone() && !clock.hasExpired(milliseconds)) {
            function(m_references[m_next]);
            m_references[m_next++] = {}; // freed as it goes, not all at once
        }
    }
    static constexpr int milliseconds = 4; // leaves most of a frame for others

private:
    QList<QvelReference> m_references;
    qsizetype m_next = 0;
};

/// What reads from left to right in a window of either direction, such as `1:Pump`.
QString leftToRight(const QString& text);
/// For a node class (OPC 10000-3, 5.2), its name; empty for an unknown one.
QString nodeClassName(OpcUa_UInt32 nodeClass);
