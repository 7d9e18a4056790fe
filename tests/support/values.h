#pragma once

#include "platform/types/uabytearray.h"
#include "platform/types/uadatetime.h"
#include "platform/types/uaexpandednodeid.h"
#include "platform/types/uaextensionobject.h"
#include "platform/types/uaguid.h"
#include "platform/types/uanames.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/uastatuscode.h"
#include "platform/types/uavariant.h"

using V = UaVariant;

inline V xmlElement(const QByteArray& bytes)
{
    V value;
    value.setXmlElement(UaByteString(bytes));
    return value;
}

inline QString typeName(int type)
{
    return QString("Null Boolean SByte Byte Int16 UInt16 Int32 UInt32 Int64 UInt64 Float Double "
                   "String DateTime Guid ByteString XmlElement NodeId ExpandedNodeId StatusCode "
                   "QualifiedName LocalizedText")
        .section(' ', type, type);
}

/// Of a status.
inline QByteArray name(UaStatusCode status)
{
    return status.toString().bytes();
}
