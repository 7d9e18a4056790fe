#pragma once

/// \file
/// A value of each built-in type that can be edited, with its texts.

#include "values/editorcases.h"

#include <Kestrel/UaByteString>
#include <Kestrel/UaDateTime>
#include <Kestrel/UaVariant>

struct ElementCase
{
    const char* name;
    OpcUa_BuiltInType type;
    UaVariant value;
    const char* display;
    const char* edit;
    const char* keys; ///< what a person types to get the value; a space checks a box
    std::function<UaVariant(QRandomGenerator&)> random;
};

inline UaDateTime dateOf(const char* text)
{
    return UaDateTime::fromString(UaString(text));
}

inline const QList<ElementCase>& elementCases()
{
    using V = UaVariant;
    using R = QRandomGenerator;
    const auto bytes = [](const char* text) { return UaByteString(QByteArray::fromHex(text)); };
#define KESTREL_ELEMENT(Type) #Type, OpcUaType_##Type
#define KESTREL_NUMBER(Type, number, text)                                                         \
    {                                                                                              \
#Type, OpcUaType_##Type, variantOf(&V::set##Type, OpcUa_##Type(number)), text, text, text, \
            [](R & r) { return variantOf(&V::set##Type, OpcUa_##Type(r.generate64())); }           \
    }
    static const QList<ElementCase> cases = {
        {KESTREL_ELEMENT(Boolean), V(true), "true", "true", " ",
         [](R& r) { return V(OpcUa_Boolean(r.bounded(2) == 1)); }},
        KESTREL_NUMBER(SByte, -128, "-128"),
        KESTREL_NUMBER(Byte, 255, "255"),
        KESTREL_NUMBER(Int16, -32768, "-32768"),
        KESTREL_NUMBER(UInt16, 65535, "65535"),
        KESTREL_NUMBER(Int32, -2147483647, "-2147483647"),
        KESTREL_NUMBER(UInt32, 4294967295u, "4294967295"),
        KESTREL_NUMBER(Int64, -9223372036854775807, "-9223372036854775807"),
        KESTREL_NUMBER(UInt64, 18446744073709551615u, "18446744073709551615"),
        KESTREL_NUMBER(Float, 1.5, "1.5"),
        KESTREL_NUMBER(Double, -1e300, "-1e+300"),
        {KESTREL_ELEMENT(String), variantOf(&V::setString, "Pump 1"), "Pump 1", "Pump 1", "Pump 1",
         [](R& r) { return variantOf(&V::setString, randomString(r)); }},
        {KESTREL_ELEMENT(DateTime), variantOf(&V::setDateTime, dateOf("2024-02-29T13:14:15Z")),
         "2024-02-29T13:14:15Z", "2024-02-29T13:14:15Z", "2024-02-29T13:14:15Z",
         [](R& r) {
             return variantOf(&V::setDateTime, UaDateTime(OpcUa_DateTime(r.generate64() >> 4)));
         }},
        {KESTREL_ELEMENT(Guid),
         variantOf(&V::setGuid, guidOf("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0")),
         "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}", "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}",
         "0f1e2d3c4b5a69788796a5b4c3d2e1f0",
         [](R& r) { return variantOf(&V::setGuid, randomGuid(r)); }},
        {KESTREL_ELEMENT(ByteString), variantOf(&V::setByteString, bytes("0aff00")), "0a ff 00",
         "0aff00", "0x0AFF00",
         [](R& r) { return variantOf(&V::setByteString, UaByteString(randomBytes(r))); }},
        {KESTREL_ELEMENT(XmlElement),
         variantOf(&V::setXmlElement, UaByteString(QByteArray("<a/>"))), "<a/>", "<a/>", "<a/>",
         [](R& r) { return variantOf(&V::setXmlElement, UaByteString(randomString(r).bytes())); }},
        {KESTREL_ELEMENT(NodeId), variantOf(&V::setNodeId, UaNodeId(85, 0)), "85", "85", "85",
         [](R& r) { return variantOf(&V::setNodeId, randomNodeId(r)); }},
        {KESTREL_ELEMENT(ExpandedNodeId),
         variantOf(&V::setExpandedNodeId, UaExpandedNodeId(UaNodeId(85, 0), UaString(), 0)), "85",
         "85", "85",
         [](R& r) {
             return variantOf(&V::setExpandedNodeId,
                              UaExpandedNodeId(randomNodeId(r), randomString(r), r.generate()));
         }},
        {KESTREL_ELEMENT(StatusCode), variantOf(&V::setStatusCode, 0x80340000u), "BadNodeIdUnknown",
         "0x80340000", "80340000", [](R& r) { return variantOf(&V::setStatusCode, r.generate()); }},
        {KESTREL_ELEMENT(QualifiedName),
         variantOf(&V::setQualifiedName, UaQualifiedName("Pump", 0)), "Pump", "Pump", "Pump",
         [](R& r) {
             return variantOf(&V::setQualifiedName,
                              UaQualifiedName(randomString(r), OpcUa_UInt16(r.bounded(65536))));
         }},
        {KESTREL_ELEMENT(LocalizedText),
         variantOf(&V::setLocalizedText, UaLocalizedText("", "Pump")), "Pump", "Pump", "Pump",
         [](R& r) {
             return variantOf(&V::setLocalizedText,
                              UaLocalizedText(randomString(r), randomString(r)));
         }},
    };
#undef KESTREL_ELEMENT
#undef KESTREL_NUMBER
    return cases;
}

/// An empty array or matrix of a type.
inline UaVariant emptyOf(OpcUa_BuiltInType type, bool isMatrix)
{
    UaVariant value;
    if (isMatrix)
        value.setEmptyMatrix(type);
    else
        value.setEmptyArray(type);
    return value;
}

/// An element of zero bytes, the null value of every type.
inline UaVariant nullOf(OpcUa_BuiltInType type)
{
    OpcUa_Variant null = {};
    null.Datatype = OpcUa_Byte(type);
    return UaVariant(null);
}
