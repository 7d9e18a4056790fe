#pragma once

#include "base/enuminfo.h"
#include "platform/types/uanodeid.h"
#include "platform/types/uastatuscode.h"

#include <QtCore/QFuture>
#include <QtCore/QHash>
#include <QtCore/QObject>

#include <memory>

class QvelSession;
class UaVariant;

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

/// The DataTypes of a session's server, each asked for once a connection. Lives as long as the
/// session does, on its thread.
class DataTypes : public QObject
{
    Q_OBJECT
public:
    /// The one of a session, which owns it.
    static DataTypes* of(QvelSession* session);

    /// The future is canceled when the session is deleted.
    QFuture<DataTypeInfo> find(const UaNodeId& dataType);

private:
    struct Search;
    using SearchPtr = std::shared_ptr<Search>;

    explicit DataTypes(QvelSession* session);
    void readType(const SearchPtr& search);
    void readNames(const SearchPtr& search, const UaNodeId& property);
    void climb(const SearchPtr& search);
    void finish(const SearchPtr& search);

    QvelSession* const m_session;
    QHash<QByteArray, DataTypeInfo> m_known; // by the text of the NodeId
    QHash<QByteArray, SearchPtr> m_searches;
};
