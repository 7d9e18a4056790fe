#pragma once

#include "../../kestrelexport.h"
#include "uanodeid.h"

/// A NodeId that may name its namespace by URI and its server (OPC 10000-4, 7.16). Copies share
/// their storage.
class KESTREL_EXPORT UaExpandedNodeId
{
public:
    /// The null NodeId on the local server.
    UaExpandedNodeId() = default;
    UaExpandedNodeId(const UaNodeId& nodeId, const UaString& namespaceUri,
                     OpcUa_UInt32 serverIndex);
    explicit UaExpandedNodeId(const OpcUa_ExpandedNodeId& value);

    const UaNodeId& nodeId() const { return m_nodeId; }
    const UaString& namespaceUri() const { return m_namespaceUri; }
    OpcUa_UInt32 serverIndex() const { return m_serverIndex; }
    /// The bare identifier of the NodeId.
    UaString toString() const { return m_nodeId.toString(); }
    /// The text form of OPC 10000-6, 5.3.1.11, such as "svr=1;nsu=urn:x;i=85". A namespace URI
    /// takes the place of the index; its ";" and "%" are percent-encoded.
    UaString toFullString() const;
    /// Replaces the initialised or filled `target` by a copy.
    [[nodiscard]] OpcUa_StatusCode copyTo(OpcUa_ExpandedNodeId* target) const;

    friend bool operator==(const UaExpandedNodeId& a, const UaExpandedNodeId& b)
    {
        return a.m_serverIndex == b.m_serverIndex && a.m_nodeId == b.m_nodeId &&
               a.m_namespaceUri == b.m_namespaceUri;
    }
    friend bool operator!=(const UaExpandedNodeId& a, const UaExpandedNodeId& b)
    {
        return !(a == b);
    }

private:
    UaNodeId m_nodeId;
    UaString m_namespaceUri;
    OpcUa_UInt32 m_serverIndex = 0;
};

Q_DECLARE_METATYPE(UaExpandedNodeId)
