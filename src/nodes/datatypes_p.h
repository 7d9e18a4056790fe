#pragma once

#include "base/enuminfo.h"
#include "session/sessiontypes.h"

#include <QtCore/QCache>
#include <QtCore/QFuture>
#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QObject>

#include <memory>

class QvelSession;

/// What there is to know about a DataType, to show and to edit its values.
struct DataTypeInfo
{
    QString name; ///< its browse name; its NodeId where the server does not tell
    /// What its values are encoded as; Null for an abstract one, whose values may be of several
    /// types, and for an unknown one.
    OpcUa_BuiltInType builtInType = OpcUaType_Null;
    /// What a value is where there is none to begin with: builtInType; of abstract numbers the
    /// widest one; Null for BaseDataType.
    OpcUa_BuiltInType emptyType = OpcUaType_Null;
    QvelEnumInfo enumInfo; ///< NoEnumeration where its values have no names
    UaStatusCode status;   ///< not Good where the server did not tell it all
};

/// The names of an enumeration, or of the bits of an option set, out of EnumStrings, EnumValues,
/// OptionSetValues or DataTypeDefinition (OPC 10000-3, 5.8). No names for any other value, and for
/// more than can be offered in a list.
QvelEnumInfo namesOf(const UaVariant& value, QvelEnumInfo::Kind kind);

/// What a node has of the properties that tell what values mean (OPC 10000-8, 5.3), by name:
/// EngineeringUnits, EURange, FalseState, TrueState, EnumStrings, EnumValues, OptionSetValues.
using ValueProperties = QMap<QByteArray, UaDataValue>;

/// The names among them; those that a variable itself has count before its DataType's.
QvelEnumInfo namesOf(const ValueProperties& properties,
                     QvelEnumInfo::Kind kind = QvelEnumInfo::Enumeration);

/// The DataTypes of a session's server, each asked for once a connection, and the properties that
/// tell more. Lives as long as the session does, on its thread.
class DataTypes : public QObject
{
    Q_OBJECT
public:
    /// The one of a session, which owns it.
    static DataTypes* of(QvelSession* session);

    /// The future is canceled when the session is deleted.
    QFuture<DataTypeInfo> find(const UaNodeId& dataType);
    /// Those of all nodes that are asked for at a time are read together. Their values are always
    /// new; which ones there are is remembered for some thousand nodes while the connection lasts.
    /// None where the server does not answer.
    /// The future is canceled when the session is deleted.
    QFuture<QList<ValueProperties>> readProperties(const QList<UaNodeId>& nodes);
    /// It is to be asked again which properties there are.
    void forgetProperties(const UaNodeId& node);

private:
    struct Search;
    using SearchPtr = std::shared_ptr<Search>;
    struct Batch;
    using BatchPtr = std::shared_ptr<Batch>;
    using Places = QMap<QByteArray, UaNodeId>; // of the properties of a node, by name

    explicit DataTypes(QvelSession* session);
    void readType(const SearchPtr& search);
    void climb(const SearchPtr& search);
    void finish(const SearchPtr& search);
    void browseProperties();
    void readValues(const BatchPtr& batch);

    QvelSession* const m_session;
    QHash<QByteArray, DataTypeInfo> m_known; // by the text of the NodeId
    QHash<QByteArray, SearchPtr> m_searches;
    QCache<QByteArray, Places> m_places; // by the text of the NodeId
    BatchPtr m_next;
    quint32 m_connection = 0; // answers of an earlier one are not kept
};
