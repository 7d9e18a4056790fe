#pragma once

/// \file
/// What the services of a session take and give: plain values, to be copied and kept.

#include "../platform/types/uabytestring.h"
#include "../platform/types/uadatavalue.h"
#include "../platform/types/uaexpandednodeid.h"
#include "../platform/types/uaextensionobject.h"
#include "../platform/types/uanames.h"
#include "../platform/types/uanodeid.h"
#include "../platform/types/uastatuscode.h"
#include "../platform/types/uastring.h"
#include "../platform/types/uavariant.h"

#include <QtCore/QList>
#include <QtCore/QMetaType>

/// Attributes (OPC 10000-6, A.1).
namespace QvelAttribute {
enum Id : OpcUa_UInt32 {
    NodeId = 1,
    NodeClass = 2,
    BrowseName = 3,
    DisplayName = 4,
    Description = 5,
    WriteMask = 6,
    UserWriteMask = 7,
    IsAbstract = 8,
    Symmetric = 9,
    InverseName = 10,
    ContainsNoLoops = 11,
    EventNotifier = 12,
    Value = 13,
    DataType = 14,
    ValueRank = 15,
    ArrayDimensions = 16,
    AccessLevel = 17,
    UserAccessLevel = 18,
    MinimumSamplingInterval = 19,
    Historizing = 20,
    Executable = 21,
    UserExecutable = 22,
    DataTypeDefinition = 23,
    RolePermissions = 24,
    UserRolePermissions = 25,
    AccessRestrictions = 26,
    AccessLevelEx = 27
};
/// As the standard spells it; null for an unknown number.
KESTREL_EXPORT const char* name(OpcUa_UInt32 id);
/// 0 for an unknown name.
KESTREL_EXPORT OpcUa_UInt32 fromName(const QString& name);
} // namespace QvelAttribute

/// How a service call went as a whole. Where it is not Good, the lists of its result are empty.
struct QvelServiceResult
{
    /// Good; the server's service result or fault; or the session's own: BadSessionClosed (not
    /// connected), BadConnectionClosed (lost meanwhile), BadTimeout, BadShutdown (the session's
    /// object is gone), BadRequestTooLarge, BadResponseTooLarge, BadDecodingError.
    UaStatusCode status;
    UaString reason; ///< the server's own words, mostly none
};

/// One attribute to read.
struct QvelReadItem
{
    UaNodeId nodeId;
    OpcUa_UInt32 attributeId = QvelAttribute::Value;
    UaString indexRange;          ///< OPC 10000-4, 7.27; empty for all
    UaQualifiedName dataEncoding; ///< empty for the default one
};
/// What was read.
struct QvelReadResult : QvelServiceResult
{
    QList<UaDataValue> values; ///< one an item, in the items' order
};

/// A value to write into one attribute.
struct QvelWriteItem
{
    UaNodeId nodeId;
    UaDataValue value; ///< many servers take the bare value only: without status and times
    OpcUa_UInt32 attributeId = QvelAttribute::Value;
    UaString indexRange;
};
/// How each write went.
struct QvelWriteResult : QvelServiceResult
{
    QList<UaStatusCode> results; ///< one an item
};

enum class QvelBrowseDirection : OpcUa_UInt32 { Forward = 0, Inverse = 1, Both = 2 };

/// The references of one node. By default its children.
struct QvelBrowseItem
{
    UaNodeId nodeId;
    QvelBrowseDirection direction = QvelBrowseDirection::Forward;
    UaNodeId referenceTypeId = UaNodeId(33); ///< HierarchicalReferences; null for all
    bool includeSubtypes = true;
    OpcUa_UInt32 nodeClassMask = 0; ///< of the targets, 0 for all
};
/// A reference, seen from the node that was browsed, and what the server says about its target.
struct QvelReference
{
    UaNodeId referenceTypeId;
    bool isForward = true;
    UaExpandedNodeId nodeId;
    UaQualifiedName browseName;
    UaLocalizedText displayName;
    OpcUa_UInt32 nodeClass = 0;
    UaExpandedNodeId typeDefinition; ///< of Objects and Variables, else null
};
/// The references of one node, from all continuation points.
struct QvelBrowseNodeResult
{
    UaStatusCode status;
    QList<QvelReference> references; ///< all of them; those before a failure, where it came late
};
/// What was browsed.
struct QvelBrowseResult : QvelServiceResult
{
    QList<QvelBrowseNodeResult> results; ///< one an item
};

/// One step of a browse path. By default down to a child.
struct QvelPathElement
{
    UaQualifiedName targetName;
    UaNodeId referenceTypeId = UaNodeId(33);
    bool isInverse = false;
    bool includeSubtypes = true;
};
/// The way from a node to others, by browse names.
struct QvelBrowsePath
{
    UaNodeId startingNode;
    QList<QvelPathElement> elements;
};
/// A node at the end of a path, or where the path leaves the server.
struct QvelPathTarget
{
    UaExpandedNodeId nodeId;
    OpcUa_UInt32 remainingPathIndex = 0; ///< 0xffffffff when the path is used up
};
/// Where one path leads: none, one or several nodes.
struct QvelTranslatedPath
{
    UaStatusCode status;
    QList<QvelPathTarget> targets;
};
/// Where the paths lead.
struct QvelTranslateResult : QvelServiceResult
{
    QList<QvelTranslatedPath> results; ///< one a path
};

/// A method to call on an object, with the input arguments in their declared order and types.
struct QvelCallItem
{
    UaNodeId objectId;
    UaNodeId methodId;
    QList<UaVariant> inputArguments;
};
/// How one call went, and what the method returned.
struct QvelMethodResult
{
    UaStatusCode status;
    QList<UaStatusCode> inputArgumentResults; ///< none where all are Good
    QList<UaVariant> outputArguments;
};
/// How the calls went.
struct QvelCallResult : QvelServiceResult
{
    QList<QvelMethodResult> results; ///< one an item
};

/// The history of one node, raw or, with an aggregate, processed (OPC 10000-11, 6.4).
struct QvelHistoryItem
{
    UaNodeId nodeId;
    UaString indexRange;
};
/// Which part of the history is read; backwards where `from` is after `to`.
struct QvelHistoryDetails
{
    UaDateTime from;
    UaDateTime to;
    OpcUa_UInt32 valuesPerNode = 0; ///< raw: how many are asked for at a time, 0 for the server's
    bool returnBounds = false;      ///< raw
    UaNodeId aggregateType;         ///< null for raw values
    double processingInterval = 0;  ///< processed, milliseconds
    OpcUa_UInt32 maximum = 10'000'000; ///< values that are taken altogether; BadTooManyMatches then
};
/// The history of one node, from all continuation points.
struct QvelHistoryNodeResult
{
    UaStatusCode status; ///< GoodNoData where there is nothing
    QList<UaDataValue> values;
};
/// What was read from the history.
struct QvelHistoryResult : QvelServiceResult
{
    QList<QvelHistoryNodeResult> results; ///< one an item
};

/// The NodeIds under which the server knows the nodes from now on, in this session.
struct QvelRegisterResult : QvelServiceResult
{
    QList<UaNodeId> nodeIds; ///< one a node
};

Q_DECLARE_METATYPE(QvelReference)
