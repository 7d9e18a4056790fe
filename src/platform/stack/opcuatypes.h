#pragma once

/// \file
/// The structures and enumerations of the OPC UA communication stack (OPC 10000-4 and 10000-6).
///
/// All structures are plain data. A structure whose bytes are all zero is its initialised, empty
/// value; `Initialize` makes it so, `Clear` frees what it owns and initialises it again, `CopyTo`
/// makes a deep copy into an initialised target. Memory comes from OpcUa_Memory_Alloc. The
/// functions may be called on any thread; one structure may only be used by one thread at a time.

#include "../../kestrelexport.h"

#include <cstddef>
#include <cstdint>

using OpcUa_Boolean = bool;
using OpcUa_SByte = std::int8_t;
using OpcUa_Byte = std::uint8_t;
using OpcUa_Int16 = std::int16_t;
using OpcUa_UInt16 = std::uint16_t;
using OpcUa_Int32 = std::int32_t;
using OpcUa_UInt32 = std::uint32_t;
using OpcUa_Int64 = std::int64_t;
using OpcUa_UInt64 = std::uint64_t;
using OpcUa_Float = float;
using OpcUa_Double = double;
using OpcUa_StatusCode = OpcUa_UInt32;
/// 100 ns ticks since 1601-01-01 00:00 UTC (OPC 10000-6, 5.2.2.5).
using OpcUa_DateTime = OpcUa_Int64;

/// Numbers of the built-in types (OPC 10000-6, 5.1.2).
enum OpcUa_BuiltInType {
    OpcUaType_Null = 0,
    OpcUaType_Boolean = 1,
    OpcUaType_SByte = 2,
    OpcUaType_Byte = 3,
    OpcUaType_Int16 = 4,
    OpcUaType_UInt16 = 5,
    OpcUaType_Int32 = 6,
    OpcUaType_UInt32 = 7,
    OpcUaType_Int64 = 8,
    OpcUaType_UInt64 = 9,
    OpcUaType_Float = 10,
    OpcUaType_Double = 11,
    OpcUaType_String = 12,
    OpcUaType_DateTime = 13,
    OpcUaType_Guid = 14,
    OpcUaType_ByteString = 15,
    OpcUaType_XmlElement = 16,
    OpcUaType_NodeId = 17,
    OpcUaType_ExpandedNodeId = 18,
    OpcUaType_StatusCode = 19,
    OpcUaType_QualifiedName = 20,
    OpcUaType_LocalizedText = 21,
    OpcUaType_ExtensionObject = 22,
    OpcUaType_DataValue = 23,
    OpcUaType_Variant = 24,
    OpcUaType_DiagnosticInfo = 25
};

/// Shape of the value in an OpcUa_Variant.
enum OpcUa_VariantArrayType {
    OpcUa_VariantArrayType_Scalar = 0,
    OpcUa_VariantArrayType_Array = 1,
    OpcUa_VariantArrayType_Matrix = 2
};

/// OPC 10000-3, 8.2.3.
enum OpcUa_IdentifierType {
    OpcUa_IdentifierType_Numeric = 0,
    OpcUa_IdentifierType_String = 1,
    OpcUa_IdentifierType_Guid = 2,
    OpcUa_IdentifierType_Opaque = 3
};

/// OPC 10000-4, 7.20.
enum OpcUa_MessageSecurityMode : std::uint32_t {
    OpcUa_MessageSecurityMode_Invalid = 0,
    OpcUa_MessageSecurityMode_None = 1,
    OpcUa_MessageSecurityMode_Sign = 2,
    OpcUa_MessageSecurityMode_SignAndEncrypt = 3
};

/// OPC 10000-4, 7.43.
enum OpcUa_UserTokenType : std::uint32_t {
    OpcUa_UserTokenType_Anonymous = 0,
    OpcUa_UserTokenType_UserName = 1,
    OpcUa_UserTokenType_Certificate = 2,
    OpcUa_UserTokenType_IssuedToken = 3
};

/// OPC 10000-4, 7.4.
enum OpcUa_ApplicationType : std::uint32_t {
    OpcUa_ApplicationType_Server = 0,
    OpcUa_ApplicationType_Client = 1,
    OpcUa_ApplicationType_ClientAndServer = 2,
    OpcUa_ApplicationType_DiscoveryServer = 3
};

/// UTF-8 text. `Data` is null for the null String; otherwise `Length` bytes and a terminating NUL.
struct OpcUa_String
{
    OpcUa_Int32 Length;
    char* Data;
};

/// Bytes. `Data` is null for the null ByteString.
struct OpcUa_ByteString
{
    OpcUa_Int32 Length;
    OpcUa_Byte* Data;
};
/// UTF-8 XML text in a byte string.
using OpcUa_XmlElement = OpcUa_ByteString;

/// OPC 10000-6, 5.1.3. The numbers in the byte order of this computer.
struct OpcUa_Guid
{
    OpcUa_UInt32 Data1;
    OpcUa_UInt16 Data2;
    OpcUa_UInt16 Data3;
    OpcUa_Byte Data4[8];
};

/// OPC 10000-3, 8.2. All zero for the null NodeId.
struct OpcUa_NodeId
{
    OpcUa_UInt16 IdentifierType; ///< an OpcUa_IdentifierType
    OpcUa_UInt16 NamespaceIndex;
    union
    {
        OpcUa_UInt32 Numeric;
        OpcUa_String String;
        OpcUa_Guid Guid;
        OpcUa_ByteString ByteString;
    } Identifier;
};

/// A NodeId that may be another server's. The URI counts instead of the namespace index where there
/// is one; server 0 is the one that was asked.
struct OpcUa_ExpandedNodeId
{
    OpcUa_NodeId NodeId;
    OpcUa_String NamespaceUri;
    OpcUa_UInt32 ServerIndex;
};

/// OPC 10000-3, 8.3.
struct OpcUa_QualifiedName
{
    OpcUa_UInt16 NamespaceIndex;
    OpcUa_String Name;
};

/// OPC 10000-3, 8.5. A locale is such as "de-DE".
struct OpcUa_LocalizedText
{
    OpcUa_String Locale;
    OpcUa_String Text;
};

/// A value of a type that the Variant does not know, as a server encoded it.
struct OpcUa_ExtensionObject
{
    OpcUa_ExpandedNodeId TypeId;
    OpcUa_Byte Encoding; ///< 0 no body, 1 binary, 2 XML
    OpcUa_ByteString Body;
};

/// One scalar of any built-in type; which one, the Variant's `Datatype` says.
union OpcUa_VariantValue
{
    OpcUa_Boolean Boolean;
    OpcUa_SByte SByte;
    OpcUa_Byte Byte;
    OpcUa_Int16 Int16;
    OpcUa_UInt16 UInt16;
    OpcUa_Int32 Int32;
    OpcUa_UInt32 UInt32;
    OpcUa_Int64 Int64;
    OpcUa_UInt64 UInt64;
    OpcUa_Float Float;
    OpcUa_Double Double;
    OpcUa_DateTime DateTime;
    OpcUa_String String;
    OpcUa_Guid Guid;
    OpcUa_ByteString ByteString;
    OpcUa_XmlElement XmlElement;
    OpcUa_NodeId NodeId;
    OpcUa_ExpandedNodeId ExpandedNodeId;
    OpcUa_StatusCode StatusCode;
    OpcUa_QualifiedName QualifiedName;
    OpcUa_LocalizedText LocalizedText;
    /// One element of a type from ExtensionObject on, in memory of the stack.
    void* Boxed;
    /// Elements of an array, one after the other.
    struct
    {
        OpcUa_Int32 Length;
        void* Elements;
    } Array;
    /// Elements of a matrix in row-major order; their number is the product of the dimensions.
    struct
    {
        OpcUa_Int32 NoOfDimensions;
        OpcUa_UInt32* Dimensions;
        void* Elements;
    } Matrix;
};

/// A value of any built-in type, scalar, array or matrix. All zero for the empty value.
struct OpcUa_Variant
{
    OpcUa_Byte Datatype;  ///< an OpcUa_BuiltInType
    OpcUa_Byte ArrayType; ///< an OpcUa_VariantArrayType
    OpcUa_VariantValue Value;
};

/// OPC 10000-4, 7.11. Ordered so that there are no gaps: they come by the hundred thousand.
struct OpcUa_DataValue
{
    OpcUa_Variant Value;
    OpcUa_DateTime SourceTimestamp; ///< 0 for none
    OpcUa_DateTime ServerTimestamp;
    OpcUa_StatusCode Status;
    OpcUa_UInt16 SourcePicoseconds; ///< in units of 10 ps
    OpcUa_UInt16 ServerPicoseconds;
};

/// OPC 10000-4, 7.12. The first four are indexes into a table of texts, -1 for none; the
/// empty structure has none either.
struct OpcUa_DiagnosticInfo
{
    OpcUa_Int32 SymbolicId;
    OpcUa_Int32 NamespaceUri;
    OpcUa_Int32 Locale;
    OpcUa_Int32 LocalizedText;
    OpcUa_String AdditionalInfo;
    OpcUa_StatusCode InnerStatusCode;
    OpcUa_Int32 NoOfInnerDiagnosticInfos; ///< 0 or 1
    OpcUa_DiagnosticInfo* InnerDiagnosticInfos;
};

/// OPC 10000-4, 7.2.
struct OpcUa_ApplicationDescription
{
    OpcUa_String ApplicationUri;
    OpcUa_String ProductUri;
    OpcUa_LocalizedText ApplicationName;
    OpcUa_ApplicationType ApplicationType;
    OpcUa_String GatewayServerUri;
    OpcUa_String DiscoveryProfileUri;
    OpcUa_Int32 NoOfDiscoveryUrls;
    OpcUa_String* DiscoveryUrls;
};

/// OPC 10000-4, 7.42.
struct OpcUa_UserTokenPolicy
{
    OpcUa_String PolicyId;
    OpcUa_UserTokenType TokenType;
    OpcUa_String IssuedTokenType;
    OpcUa_String IssuerEndpointUrl;
    OpcUa_String SecurityPolicyUri;
};

/// OPC 10000-4, 7.14.
struct OpcUa_EndpointDescription
{
    OpcUa_String EndpointUrl;
    OpcUa_ApplicationDescription Server;
    OpcUa_ByteString ServerCertificate; ///< DER
    OpcUa_MessageSecurityMode SecurityMode;
    OpcUa_String SecurityPolicyUri;
    OpcUa_Int32 NoOfUserIdentityTokens;
    OpcUa_UserTokenPolicy* UserIdentityTokens;
    OpcUa_String TransportProfileUri;
    OpcUa_Byte SecurityLevel;
};

/// OPC 10000-4, 5.5.3 (FindServersOnNetwork).
struct OpcUa_ServerOnNetwork
{
    OpcUa_UInt32 RecordId;
    OpcUa_String ServerName;
    OpcUa_String DiscoveryUrl;
    OpcUa_Int32 NoOfServerCapabilities;
    OpcUa_String* ServerCapabilities;
};

#define KESTREL_DECLARE_STACK_TYPE(Type)                                                           \
    KESTREL_EXPORT void Type##_Initialize(Type* value);                                            \
    KESTREL_EXPORT void Type##_Clear(Type* value);                                                 \
    /** Good, or BadOutOfMemory, or BadEncodingLimitsExceeded for Variants that are nested deeper  \
        than 100, with the target empty. `to` must be initialised. */                              \
    [[nodiscard]] KESTREL_EXPORT OpcUa_StatusCode Type##_CopyTo(const Type* from, Type* to);       \
    KESTREL_EXPORT bool Type##_Equal(const Type* a, const Type* b);                                \
    inline void OpcUa_ClearValue(Type& value)                                                      \
    {                                                                                              \
        Type##_Clear(&value);                                                                      \
    }                                                                                              \
    [[nodiscard]] inline OpcUa_StatusCode OpcUa_CopyValue(const Type& from, Type& to)              \
    {                                                                                              \
        return Type##_CopyTo(&from, &to);                                                          \
    }

KESTREL_DECLARE_STACK_TYPE(OpcUa_String)
KESTREL_DECLARE_STACK_TYPE(OpcUa_ByteString)
KESTREL_DECLARE_STACK_TYPE(OpcUa_NodeId)
KESTREL_DECLARE_STACK_TYPE(OpcUa_ExpandedNodeId)
KESTREL_DECLARE_STACK_TYPE(OpcUa_QualifiedName)
KESTREL_DECLARE_STACK_TYPE(OpcUa_LocalizedText)
KESTREL_DECLARE_STACK_TYPE(OpcUa_ExtensionObject)
KESTREL_DECLARE_STACK_TYPE(OpcUa_Variant)
KESTREL_DECLARE_STACK_TYPE(OpcUa_DataValue)
KESTREL_DECLARE_STACK_TYPE(OpcUa_DiagnosticInfo)
KESTREL_DECLARE_STACK_TYPE(OpcUa_ApplicationDescription)
KESTREL_DECLARE_STACK_TYPE(OpcUa_UserTokenPolicy)
KESTREL_DECLARE_STACK_TYPE(OpcUa_EndpointDescription)
KESTREL_DECLARE_STACK_TYPE(OpcUa_ServerOnNetwork)
#undef KESTREL_DECLARE_STACK_TYPE

/// `length` bytes (1 byte at least), not initialised; null when there are none to be had.
KESTREL_EXPORT void* OpcUa_Memory_Alloc(std::size_t length);
/// As std::realloc: null leaves the old block as it was.
KESTREL_EXPORT void* OpcUa_Memory_ReAlloc(void* block, std::size_t length);
KESTREL_EXPORT void OpcUa_Memory_Free(void* block);
KESTREL_EXPORT void OpcUa_Memory_MemCpy(void* to, const void* from, std::size_t length);

/// The bytes of a String, NUL-terminated; an empty text for the null String.
KESTREL_EXPORT const char* OpcUa_String_GetRawString(const OpcUa_String* value);
/// Number of bytes without the terminating NUL.
KESTREL_EXPORT OpcUa_UInt32 OpcUa_String_StrSize(const OpcUa_String* value);
/// Compares as std::strncmp does; `length` -1 compares the whole texts. The null String equals the
/// empty one. Case is folded for ASCII letters only.
KESTREL_EXPORT OpcUa_Int32 OpcUa_String_StrnCmp(const OpcUa_String* a, const OpcUa_String* b,
                                                OpcUa_Int32 length, bool ignoreCase);
/// Replaces `target` (initialised or holding a text) by a copy of `length` bytes. Good, or
/// BadOutOfMemory with the target null.
[[nodiscard]] KESTREL_EXPORT OpcUa_StatusCode OpcUa_String_Assign(OpcUa_String* target,
                                                                  const char* utf8,
                                                                  OpcUa_Int32 length);
/// As OpcUa_String_Assign, for bytes.
[[nodiscard]] KESTREL_EXPORT OpcUa_StatusCode OpcUa_ByteString_Assign(OpcUa_ByteString* target,
                                                                      const void* data,
                                                                      OpcUa_Int32 length);

inline constexpr OpcUa_Guid OpcUa_Guid_Null = {};

inline bool OpcUa_IsGood(OpcUa_StatusCode code)
{
    return code < 0x40000000u;
}
/// Neither Good nor Uncertain.
inline bool OpcUa_IsBad(OpcUa_StatusCode code)
{
    return code >= 0x80000000u;
}
/// Bad or Uncertain: either of the two top bits is set.
inline bool OpcUa_IsNotGood(OpcUa_StatusCode code)
{
    return !OpcUa_IsGood(code);
}
