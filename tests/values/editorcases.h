#pragma once

/// \file
/// Every scalar value editor behind one face, with values to try it on.

#include <Kestrel/QvelDialogWidgetExpandedNodeId>
#include <Kestrel/QvelDialogWidgetLocalizedText>
#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelDialogWidgetQualifiedName>
#include <Kestrel/QvelEditWidgetByteString>
#include <Kestrel/QvelEditWidgetExpandedNodeId>
#include <Kestrel/QvelEditWidgetString>
#include <Kestrel/QvelEditWidgetXmlElement>
#include <Kestrel/QvelWidgetAccessLevelMask>
#include <Kestrel/QvelWidgetBrowseResultMask>
#include <Kestrel/QvelWidgetByteString>
#include <Kestrel/QvelWidgetDiagnosticsMask>
#include <Kestrel/QvelWidgetEnum>
#include <Kestrel/QvelWidgetEnumFlags>
#include <Kestrel/QvelWidgetEventNotifierMask>
#include <Kestrel/QvelWidgetGuid>
#include <Kestrel/QvelWidgetLocalizedText>
#include <Kestrel/QvelWidgetNodeId>
#include <Kestrel/QvelWidgetQualifiedName>
#include <Kestrel/QvelWidgetStatusCode>
#include <Kestrel/QvelWidgetValueRank>
#include <Kestrel/QvelWidgetWriteMask>
#include <Kestrel/QvelWidgetXmlElement>
#include <Kestrel/UaVariant>

#include <QtCore/QRandomGenerator>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>

#include <functional>
#include <limits>
#include <memory>

struct Told
{
    bool isTyped;
    UaVariant value;
};

/// One editor; `told` lists its change signals.
struct Editor
{
    std::unique_ptr<QWidget> widget;
    std::function<UaVariant(bool*)> value;
    std::function<UaVariant(bool*)> typed; ///< the typed getter, in a variant
    std::function<void(const UaVariant&)> setValue;
    std::shared_ptr<QList<Told>> told = std::make_shared<QList<Told>>();
};

enum class Shape { Inline, Dialog, Field };

struct EditorCase
{
    const char* name;
    std::function<Editor(int flags)> create;
    Shape shape;
    OpcUa_BuiltInType type;
    UaVariant first, second;
    int changes; ///< controls, or entries of a list, in which `first` and `second` differ
    std::function<UaVariant(QRandomGenerator&)> random; ///< a value that is kept without a loss
    bool isSingle = false;                              ///< its one control stands in for its focus
    QString invalid = {}; ///< what its last line edit holds when its input is invalid
    UaVariant fallback = {};
};

inline const QMap<int, QString>& flagNames()
{
    static const QMap<int, QString> names = {{0, "None"},
                                             {1, "Read"},
                                             {2, "Write"},
                                             {4, "Execute"},
                                             {std::numeric_limits<int>::min(), "Highest"}};
    return names;
}

template <class Setter, class T>
UaVariant variantOf(Setter setter, const T& typed)
{
    UaVariant value;
    (value.*setter)(typed);
    return value;
}

template <class W, class = void>
constexpr bool hasValueChanged = false;
template <class W>
constexpr bool hasValueChanged<W, std::void_t<decltype(&W::valueChanged)>> = true;

template <class W, class T, class S, class Setter>
std::function<Editor(int)> creator(T (W::*getter)(bool*) const, void (W::*changed)(S),
                                   Setter setter)
{
    return [=](int number) {
        using Flags = decltype(std::declval<W&>().flags());
        W* w = nullptr;
        if constexpr (std::is_constructible_v<W, QMap<int, QString>, Flags>)
            w = new W(flagNames(), Flags(number));
        else
            w = new W(Flags(number));
        Editor editor;
        editor.widget.reset(w);
        editor.value = [w](bool* ok) { return w->value(ok); };
        editor.typed = [=](bool* ok) { return variantOf(setter, (w->*getter)(ok)); };
        editor.setValue = [w](const UaVariant& v) { w->setValue(v); };
        if constexpr (hasValueChanged<W>) {
            QObject::connect(w, &W::valueChanged, w, [told = editor.told](const UaVariant& v) {
                told->append({false, v});
            });
        }
        QObject::connect(w, changed, w, [told = editor.told, setter](const S& typed) {
            told->append({true, variantOf(setter, typed)});
        });
        return editor;
    };
}

inline UaString stringOf(const QString& text)
{
    return UaString(text.toUtf8());
}

inline UaGuid guidOf(const char* text)
{
    UaGuid guid;
    guid.fromString(UaString(text));
    return guid;
}

inline QByteArray randomBytes(QRandomGenerator& r)
{
    QByteArray bytes(r.bounded(400) == 0 ? 20'000 : r.bounded(130), Qt::Uninitialized);
    for (char& byte : bytes)
        byte = char(r.bounded(256));
    return bytes;
}

/// Any code points: control characters, line ends, NUL and U+FEFF among them.
inline UaString randomString(QRandomGenerator& r)
{
    QString text;
    for (int left = r.bounded(400) == 0 ? 40'000 : r.bounded(24); left > 0; --left) {
        static constexpr char32_t ends[] = {0x20, 0x7f, 0x250, 0xd800, 0x10000, 0x110000};
        const char32_t c = r.bounded(quint32(ends[r.bounded(6)]));
        if (QChar::isSurrogate(c))
            text += QChar(0xfeff);
        else
            text += QChar::fromUcs4(c);
    }
    return stringOf(text);
}

inline UaGuid randomGuid(QRandomGenerator& r)
{
    OpcUa_Guid guid = {};
    r.fillRange(reinterpret_cast<quint32*>(&guid), sizeof guid / sizeof(quint32));
    return UaGuid(guid);
}

inline UaNodeId randomNodeId(QRandomGenerator& r)
{
    const auto index = OpcUa_UInt16(r.bounded(65536));
    switch (r.bounded(4)) {
    case 0:
        return UaNodeId(r.generate(), index);
    case 1:
        return UaNodeId(randomString(r), index);
    case 2:
        return UaNodeId(randomGuid(r), index);
    default:
        return UaNodeId(UaByteString(randomBytes(r)), index);
    }
}

inline const QList<EditorCase>& editorCases()
{
    using V = UaVariant;
    const auto bytes = [](const char* text) { return UaByteString(QByteArray(text)); };
    const V node = variantOf(&V::setNodeId, UaNodeId(85, 3));
    const V otherNode = variantOf(&V::setNodeId, UaNodeId(86, 4));
    const auto nextNode = [](auto& r) { return variantOf(&V::setNodeId, randomNodeId(r)); };
    const V expanded =
        variantOf(&V::setExpandedNodeId, UaExpandedNodeId(UaNodeId(85, 3), "urn:a;b", 1));
    const V otherExpanded =
        variantOf(&V::setExpandedNodeId, UaExpandedNodeId(UaNodeId(86, 4), "urn:c", 2));
    const V noExpanded =
        variantOf(&V::setExpandedNodeId, UaExpandedNodeId(UaNodeId(0, 3), "urn:a;b", 1));
    const auto nextExpanded = [](auto& r) {
        return variantOf(&V::setExpandedNodeId, UaExpandedNodeId(randomNodeId(r), randomString(r),
                                                                 r.generate() & 0x7fffffff));
    };
    const V name = variantOf(&V::setQualifiedName, UaQualifiedName("Pump", 1));
    const V otherName = variantOf(&V::setQualifiedName, UaQualifiedName("", 65535));
    const auto nextName = [](auto& r) {
        return variantOf(&V::setQualifiedName,
                         UaQualifiedName(randomString(r), OpcUa_UInt16(r.bounded(65536))));
    };
    const V text = variantOf(&V::setLocalizedText, UaLocalizedText("en", "Pump"));
    const V otherText = variantOf(&V::setLocalizedText, UaLocalizedText("", "\xe6\xb0\xb4"));
    const auto nextText = [](auto& r) {
        return variantOf(&V::setLocalizedText, UaLocalizedText(randomString(r), randomString(r)));
    };
    const auto nextBytes = [](auto& r) {
        return variantOf(&V::setByteString, UaByteString(randomBytes(r)));
    };
    const auto nextInt = [](std::initializer_list<int> of) {
        return [list = QList<int>(of)](auto& r) {
            return V(OpcUa_Int32(list.at(r.bounded(int(list.size())))));
        };
    };
    const auto nextMask = [](OpcUa_UInt32 named) {
        return [named](auto& r) { return V(OpcUa_UInt32(r.generate() & named)); };
    };
    const auto nextByte = [](OpcUa_UInt32 named) {
        return [named](auto& r) { return V(OpcUa_Byte(r.generate() & named)); };
    };
    const auto int32 = [](int number) { return V(OpcUa_Int32(number)); };
    const auto uint32 = [](unsigned number) { return V(OpcUa_UInt32(number)); };
    const auto byte = [](unsigned number) { return V(OpcUa_Byte(number)); };
    constexpr int highest = std::numeric_limits<int>::min();
#define KESTREL_CASE(Class, getter, Type)                                                          \
#Class, creator(&Class::getter, &Class::getter##Changed, &V::set##Type)
#define KESTREL_MASK_CASE(Class, getter, Type)                                                     \
    KESTREL_CASE(Class, getter, Type), Shape::Inline, OpcUaType_##Type

    static const QList<EditorCase> cases = {
        {KESTREL_CASE(QvelWidgetNodeId, nodeId, NodeId), Shape::Inline, OpcUaType_NodeId, node,
         otherNode, 2, nextNode, false, "-1", variantOf(&V::setNodeId, UaNodeId(0, 3))},
        {KESTREL_CASE(QvelDialogWidgetNodeId, nodeId, NodeId), Shape::Dialog, OpcUaType_NodeId,
         node, otherNode, 2, nextNode, false, "-1", variantOf(&V::setNodeId, UaNodeId(0, 3))},
        {KESTREL_CASE(QvelDialogWidgetExpandedNodeId, expandedNodeId, ExpandedNodeId),
         Shape::Dialog, OpcUaType_ExpandedNodeId, expanded, otherExpanded, 4, nextExpanded, false,
         "x", noExpanded},
        {KESTREL_CASE(QvelEditWidgetExpandedNodeId, expandedNodeId, ExpandedNodeId), Shape::Field,
         OpcUaType_ExpandedNodeId, expanded, otherExpanded, 1, nextExpanded},
        {KESTREL_CASE(QvelWidgetQualifiedName, qualifiedName, QualifiedName), Shape::Inline,
         OpcUaType_QualifiedName, name, otherName, 2, nextName},
        {KESTREL_CASE(QvelDialogWidgetQualifiedName, qualifiedName, QualifiedName), Shape::Dialog,
         OpcUaType_QualifiedName, name, otherName, 2, nextName},
        {KESTREL_CASE(QvelWidgetLocalizedText, localizedText, LocalizedText), Shape::Inline,
         OpcUaType_LocalizedText, text, otherText, 2, nextText},
        {KESTREL_CASE(QvelDialogWidgetLocalizedText, localizedText, LocalizedText), Shape::Dialog,
         OpcUaType_LocalizedText, text, otherText, 2, nextText},
        {KESTREL_CASE(QvelWidgetByteString, byteString, ByteString), Shape::Inline,
         OpcUaType_ByteString, variantOf(&V::setByteString, bytes("\x0a\x0b")),
         variantOf(&V::setByteString, bytes("")), 1, nextBytes, true, "0xA",
         variantOf(&V::setByteString, bytes(""))},
        {KESTREL_CASE(QvelEditWidgetByteString, byteString, ByteString), Shape::Field,
         OpcUaType_ByteString, variantOf(&V::setByteString, bytes("\x0a\x0b")),
         variantOf(&V::setByteString, bytes("\xff")), 1, nextBytes},
        {KESTREL_CASE(QvelWidgetXmlElement, xmlElement, XmlElement), Shape::Inline,
         OpcUaType_XmlElement, variantOf(&V::setXmlElement, bytes("<a>\n</a>")),
         variantOf(&V::setXmlElement, bytes("")), 1,
         [](auto& r) {
             return variantOf(&V::setXmlElement, UaByteString(randomString(r).bytes()));
         },
         true},
        {KESTREL_CASE(QvelEditWidgetXmlElement, xmlElement, XmlElement), Shape::Field,
         OpcUaType_XmlElement, variantOf(&V::setXmlElement, bytes("plain")),
         variantOf(&V::setXmlElement, bytes("<a/>")), 1,
         [](auto& r) { return variantOf(&V::setXmlElement, UaByteString(randomBytes(r))); }},
        {KESTREL_CASE(QvelEditWidgetString, string, String), Shape::Field, OpcUaType_String,
         variantOf(&V::setString, "Pump"), variantOf(&V::setString, "Gr\xc3\xb6\xc3\x9f\nen"), 1,
         [](auto& r) { return variantOf(&V::setString, randomString(r)); }},
        {KESTREL_CASE(QvelWidgetStatusCode, statusCode, StatusCode), Shape::Inline,
         OpcUaType_StatusCode, variantOf(&V::setStatusCode, 0x80000000u),
         variantOf(&V::setStatusCode, 0u), 1,
         [](auto& r) { return variantOf(&V::setStatusCode, r.generate()); }, true, "",
         variantOf(&V::setStatusCode, 0u)},
        {KESTREL_CASE(QvelWidgetGuid, guid, Guid), Shape::Inline, OpcUaType_Guid,
         variantOf(&V::setGuid, guidOf("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0")),
         variantOf(&V::setGuid, UaGuid()), 1,
         [](auto& r) { return variantOf(&V::setGuid, randomGuid(r)); }, true, "{0f1e2d3c-4b5a",
         variantOf(&V::setGuid, UaGuid())},
        {KESTREL_CASE(QvelWidgetEnum, enumValue, Int32), Shape::Inline, OpcUaType_Int32, int32(1),
         int32(highest), 1, nextInt({0, 1, 2, 4, highest}), true},
        {KESTREL_CASE(QvelWidgetEnumFlags, enumValue, Int32), Shape::Inline, OpcUaType_Int32,
         int32(1), int32(6 | highest), 4,
         [](auto& r) { return V(OpcUa_Int32(r.generate() & 0x80000007u)); }, true},
        {KESTREL_CASE(QvelWidgetValueRank, valueRank, Int32), Shape::Inline, OpcUaType_Int32,
         int32(-1), int32(2), 1, nextInt({-3, -2, -1, 0, 1, 2}), true},
        {KESTREL_MASK_CASE(QvelWidgetWriteMask, attributeWriteMask, UInt32), uint32(1),
         uint32(0x3fffff), 21, nextMask(0x3fffff)},
        {KESTREL_MASK_CASE(QvelWidgetBrowseResultMask, browseResultMask, UInt32), uint32(0x21),
         uint32(0x1e), 6, nextMask(0x3f)},
        {KESTREL_MASK_CASE(QvelWidgetDiagnosticsMask, diagnosticsMask, UInt32), uint32(0x201),
         uint32(0x200), 1, nextMask(0x3ff)},
        {KESTREL_MASK_CASE(QvelWidgetEventNotifierMask, eventNotifierMask, Byte), byte(1),
         byte(0xc), 3, nextByte(0xd)},
        {KESTREL_MASK_CASE(QvelWidgetAccessLevelMask, accessLevelMask, Byte), byte(3), byte(0), 2,
         nextByte(0xf)},
    };
#undef KESTREL_CASE
#undef KESTREL_MASK_CASE
    return cases;
}

inline Editor editorNamed(const QByteArray& name, int flags = 0)
{
    for (const EditorCase& c : editorCases()) {
        if (c.name == name)
            return c.create(flags);
    }
    qFatal("no editor %s", name.constData());
}

/// The controls that are laid out in an editor itself.
template <class T>
QList<T*> controls(const QWidget* editor)
{
    return editor->findChildren<T*>(QString(), Qt::FindDirectChildrenOnly);
}
