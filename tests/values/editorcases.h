#pragma once

/// \file
/// Every scalar value editor behind one face, with values to try it on.

#include <Kestrel/QvelDialogWidgetExpandedNodeId>
#include <Kestrel/QvelDialogWidgetLocalizedText>
#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelEditWidgetByteString>
#include <Kestrel/QvelEditWidgetExpandedNodeId>
#include <Kestrel/QvelWidgetEnumFlags>
#include <Kestrel/QvelWidgetGuid>
#include <Kestrel/QvelWidgetValueRank>
#include <Kestrel/QvelWidgetWriteMask>

#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>
#include <QtWidgets/QLineEdit>

#include <climits>

using V = UaVariant;

template <class Setter, class T>
V variantOf(Setter setter, const T& typed)
{
    V value;
    (value.*setter)(typed);
    return value;
}

/// The controls that are laid out in an editor itself.
template <class T>
QList<T*> controls(const QWidget* editor)
{
    return editor->findChildren<T*>(QString(), Qt::FindDirectChildrenOnly);
}

/// An editor, and the names of the change signals that it emits.
class Editor : public QObject
{
    Q_OBJECT
public:
    explicit Editor(QWidget* w) : widget(w)
    {
        const QMetaMethod slot = metaObject()->method(metaObject()->indexOfSlot("note()"));
        for (int i = w->metaObject()->methodOffset(); i < w->metaObject()->methodCount(); ++i) {
            if (w->metaObject()->method(i).methodType() == QMetaMethod::Signal)
                connect(w, w->metaObject()->method(i), this, slot);
        }
    }

    V value(bool* ok) const
    {
        if (auto* line = qobject_cast<QvelWidgetBase*>(widget.get()))
            return line->value(ok);
        if (auto* dialog = qobject_cast<QvelDialogWidgetBase*>(widget.get()))
            return dialog->value(ok);
        return qobject_cast<QvelEditWidgetBase*>(widget.get())->value(ok);
    }
    V value() const { return widget->property("value").value<V>(); }
    void setValue(const V& v) { widget->setProperty("value", QVariant::fromValue(v)); }
    template <class T>
    QList<T*> all() const
    {
        return controls<T>(widget.get());
    }
    QLineEdit* lastLine() const { return all<QLineEdit>().constLast(); }

    std::unique_ptr<QWidget> widget;
    QByteArrayList told;
    V toldValue; ///< the last

private Q_SLOTS:
    void note()
    {
        told << sender()->metaObject()->method(senderSignalIndex()).name();
        toldValue = value(nullptr);
    }
};

/// Two values that differ in `changes` controls or entries, and others that are kept without a
/// loss.
struct Values
{
    V first, second;
    V (*random)(QRandomGenerator&);
};

struct EditorCase
{
    const char* name;
    QWidget* (*create)(int flags);
    Values values;
    int changes = 1;
};

inline const QMap<int, QString>& flagNames()
{
    static const QMap<int, QString> names = {
        {0, "None"}, {1, "Read"}, {2, "Write"}, {4, "Execute"}, {INT_MIN, "Highest"}};
    return names;
}

template <class W>
QWidget* create(int number)
{
    using Flags = decltype(std::declval<W&>().flags());
    if constexpr (std::is_constructible_v<W, QMap<int, QString>, Flags>)
        return new W(flagNames(), Flags(number));
    else
        return new W(Flags(number));
}

inline UaGuid guidOf(const char* text)
{
    return UaGuid(QUuid(text));
}

inline UaByteString randomBytes(QRandomGenerator& r)
{
    QByteArray bytes(r.bounded(400) == 0 ? 20'000 : r.bounded(130), Qt::Uninitialized);
    for (char& byte : bytes)
        byte = char(r.bounded(256));
    return UaByteString(bytes);
}

/// Any code points: control characters, line ends, NUL and U+FEFF among them.
inline UaString randomString(QRandomGenerator& r)
{
    QString text;
    for (int left = r.bounded(400) == 0 ? 40'000 : r.bounded(24); left > 0; --left) {
        static constexpr char32_t ends[] = {0x20, 0x7f, 0x250, 0xd800, 0x10000, 0x110000};
        const char32_t c = r.bounded(quint32(ends[r.bounded(6)]));
        text += QChar::fromUcs4(QChar::isSurrogate(c) ? 0xfeff : c);
    }
    return UaString(text.toUtf8());
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
    const int type = r.bounded(4);
    return type == 0   ? UaNodeId(r.generate(), index)
           : type == 1 ? UaNodeId(randomString(r), index)
           : type == 2 ? UaNodeId(randomGuid(r), index)
                       : UaNodeId(randomBytes(r), index);
}

inline const QList<EditorCase>& editorCases()
{
#define VALUES(Type, First, Second, Random)                                                        \
    {                                                                                              \
        variantOf(&V::set##Type, First), variantOf(&V::set##Type, Second),                         \
            [](QRandomGenerator& r) { return variantOf(&V::set##Type, (void(r), Random)); }        \
    }
#define CASE(Class) #Class, create < Class>
    const auto bytes = [](const char* text) { return UaByteString(QByteArray(text)); };
    const Values nodeIds = VALUES(NodeId, UaNodeId(85, 3), UaNodeId(86, 4), randomNodeId(r));
    const Values expandedNodeIds =
        VALUES(ExpandedNodeId, UaExpandedNodeId(UaNodeId(85, 3), "urn:a;b", 1),
               UaExpandedNodeId(UaNodeId(86, 4), "urn:c", 2),
               UaExpandedNodeId(randomNodeId(r), randomString(r), r.generate() & 0x7fffffff));
    const Values names =
        VALUES(QualifiedName, UaQualifiedName("Pump", 1), UaQualifiedName("", 65535),
               UaQualifiedName(randomString(r), OpcUa_UInt16(r.bounded(65536))));
    const Values texts =
        VALUES(LocalizedText, UaLocalizedText("en", "Pump"), UaLocalizedText("", "\xe6\xb0\xb4"),
               UaLocalizedText(randomString(r), randomString(r)));
    const Values byteStrings = VALUES(ByteString, bytes("\x0a\x0b"), bytes("\xff"), randomBytes(r));
    const Values xmlElements = VALUES(XmlElement, bytes("plain"), bytes("<a>\n</a>"),
                                      UaByteString(randomString(r).bytes()));
    static const QList<EditorCase> cases = {
        {CASE(QvelWidgetNodeId), nodeIds, 2},
        {CASE(QvelDialogWidgetNodeId), nodeIds, 2},
        {CASE(QvelDialogWidgetExpandedNodeId), expandedNodeIds, 4},
        {CASE(QvelEditWidgetExpandedNodeId), expandedNodeIds},
        {CASE(QvelWidgetQualifiedName), names, 2},
        {CASE(QvelDialogWidgetQualifiedName), names, 2},
        {CASE(QvelWidgetLocalizedText), texts, 2},
        {CASE(QvelDialogWidgetLocalizedText), texts, 2},
        {CASE(QvelWidgetByteString), byteStrings},
        {CASE(QvelEditWidgetByteString), byteStrings},
        {CASE(QvelWidgetXmlElement), xmlElements},
        {CASE(QvelEditWidgetXmlElement), xmlElements},
        {CASE(QvelEditWidgetString), VALUES(String, "Pump", "Gr\xc3\xbcn", randomString(r))},
        {CASE(QvelWidgetStatusCode), VALUES(StatusCode, 0x80000000u, 0u, r.generate())},
        {CASE(QvelWidgetGuid),
         VALUES(Guid, guidOf("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0"), UaGuid(), randomGuid(r))},
        {CASE(QvelWidgetEnum), VALUES(Int32, 1, INT_MIN, 1 << r.bounded(3))},
        {CASE(QvelWidgetEnumFlags), VALUES(Int32, 1, 6 | INT_MIN, int(r.generate() & 0x80000007u)),
         4},
        {CASE(QvelWidgetValueRank), VALUES(Int32, -1, 2, r.bounded(-3, 3))},
        {CASE(QvelWidgetWriteMask), VALUES(UInt32, 1u, 0x3fffffu, r.generate() & 0x3fffff), 21},
        {CASE(QvelWidgetBrowseResultMask), VALUES(UInt32, 0x21u, 0x1eu, r.generate() & 0x3f), 6},
        {CASE(QvelWidgetDiagnosticsMask), VALUES(UInt32, 0x201u, 0x200u, r.generate() & 0x3ff)},
        {CASE(QvelWidgetEventNotifierMask), VALUES(Byte, 1, 0xc, OpcUa_Byte(r.generate() & 0xd)),
         3},
        {CASE(QvelWidgetAccessLevelMask), VALUES(Byte, 3, 0, OpcUa_Byte(r.generate() & 0xf)), 2},
    };
#undef CASE
#undef VALUES
    return cases;
}

inline QWidget* createNamed(const QByteArray& name, int flags = 0)
{
    for (const EditorCase& c : editorCases()) {
        if (c.name == name)
            return c.create(flags);
    }
    qFatal("no editor %s", name.constData());
}
