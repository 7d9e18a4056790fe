#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"
#include "uabytestring.h"
#include "uaguid.h"
#include "uastring.h"

#include <QtCore/QMetaType>

/// Identifier of a node in an address space (OPC 10000-3, 8.2). Copies share their storage.
class KESTREL_EXPORT UaNodeId
{
public:
    /// The null NodeId: i=0 in namespace 0.
    UaNodeId() = default;
    explicit UaNodeId(OpcUa_UInt32 id, OpcUa_UInt16 namespaceIndex = 0);
    UaNodeId(const UaString& id, OpcUa_UInt16 namespaceIndex);
    UaNodeId(const UaGuid& id, OpcUa_UInt16 namespaceIndex);
    UaNodeId(const UaByteString& id, OpcUa_UInt16 namespaceIndex);
    explicit UaNodeId(const OpcUa_NodeId& value);

    OpcUa_UInt16 namespaceIndex() const { return m_namespaceIndex; }
    OpcUa_IdentifierType identifierType() const { return m_type; }
    /// i=0, or an empty string, null Guid or empty opaque identifier, in namespace 0.
    bool isNull() const;

    /// The bare identifier: a decimal number, the text itself, a braced lower-case Guid, or
    /// hexadecimal digits without a prefix.
    UaString toString() const;
    /// The text form of OPC 10000-6, 5.3.1.10, such as `ns=2;s=Pump` or `i=85`.
    UaString toFullString() const;
    /// Replaces the initialised or filled `target` by a copy.
    [[nodiscard]] OpcUa_StatusCode copyTo(OpcUa_NodeId* target) const;

    friend KESTREL_EXPORT bool operator==(const UaNodeId& a, const UaNodeId& b);
    friend bool operator!=(const UaNodeId& a, const UaNodeId& b) { return !(a == b); }

private:
    friend struct UaNodeIdAccess;
    OpcUa_IdentifierType m_type = OpcUa_IdentifierType_Numeric;
    OpcUa_UInt16 m_namespaceIndex = 0;
    OpcUa_UInt32 m_numeric = 0;
    UaGuid m_guid;
    QByteArray m_bytes; // string or opaque identifier
};

Q_DECLARE_METATYPE(UaNodeId)
