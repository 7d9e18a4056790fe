#pragma once

#include "../../kestrelexport.h"
#include "uabytestring.h"
#include "uaexpandednodeid.h"

/// A value of a type that the library does not know, as it was encoded (OPC 10000-6, 5.2.2.15).
/// Copies share their storage.
class KESTREL_EXPORT UaExtensionObject
{
public:
    UaExtensionObject() = default;
    /// `encoding` is 0 for no body, 1 for a binary one and 2 for XML.
    UaExtensionObject(const UaExpandedNodeId& typeId, const UaByteString& body,
                      OpcUa_Byte encoding = 1);
    explicit UaExtensionObject(const OpcUa_ExtensionObject& value);

    const UaExpandedNodeId& typeId() const { return m_typeId; }
    const UaByteString& body() const { return m_body; }
    OpcUa_Byte encoding() const { return m_encoding; }
    /// The type and the size of the body, such as "ns=2;i=5001 (24 bytes)".
    UaString toString() const;
    /// Replaces the initialised or filled `target` by a copy.
    [[nodiscard]] OpcUa_StatusCode copyTo(OpcUa_ExtensionObject* target) const;

private:
    UaExpandedNodeId m_typeId;
    UaByteString m_body;
    OpcUa_Byte m_encoding = 0;
};

Q_DECLARE_METATYPE(UaExtensionObject)
