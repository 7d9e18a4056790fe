#pragma once

/// \file
/// Every scalar value editor behind one face, with values to try it on.

#include "support/values.h"

#include <Kestrel/QvelDialogWidgetExpandedNodeId>
#include <Kestrel/QvelDialogWidgetLocalizedText>
#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelEditWidgetByteString>
#include <Kestrel/QvelEditWidgetExpandedNodeId>
#include <Kestrel/QvelWidgetEnumFlags>
#include <Kestrel/QvelWidgetGuid>
#include <Kestrel/QvelWidgetValueRank>
#include <Kestrel/QvelWidgetWriteMask>

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

#include <climits>

/// An editor, the names of the change signals that it emits, and how often the focus leaves it.
class Editor : public QObject
{
    Q_OBJECT
public:
    explicit Editor(QWidget* w) : widget(w)
    {
        w->installEventFilter(this);
        const QMetaMethod slot = metaObject()->method(metaObject()->indexOfSlot("note()"));
        for (int i = w->metaObject()->methodOffset(); i < w->metaObject()->methodCount(); ++i)
            if (w->metaObject()->method(i).methodType() == QMetaMethod::Signal)
                connect(w, w->metaObject()->method(i), this, slot);
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
    /// The controls that are laid out in the editor itself.
    template <class T>
    QList<T*> all() const
    {
        return widget->findChildren<T*>(QString(), Qt::FindDirectChildrenOnly);
    }
    QLineEdit* lastLine() const { return all<QLineEdit>().constLast(); }

    std::unique_ptr<QWidget> widget;
    QByteArrayList told;
    V toldValue; ///< the last
    int focusOuts = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        focusOuts += event->type() == QEvent::FocusOut;
        return false;
    }

private Q_SLOTS:
    void note()
    {
        told << sender()->metaObject()->method(senderSignalIndex()).name();
        toldValue = value(nullptr);
    }
};

struct EditorCase
{
    const char* name;
    QWidget* (*create)(int flags);
    V first, second;                ///< they differ in `changes` controls or entries
    V (*random)(QRandomGenerator&); ///< a value that is kept without a loss
    int changes = 1;
};

template <class W>
QWidget* create(int number)
{
    using Flags = decltype(std::declval<W&>().flags());
    const QMap<int, QString> names = {
        {0, "zero"}, {1, "one"}, {2, "two"}, {4, "four"}, {INT_MIN, "least"}};
    if constexpr (std::is_constructible_v<W, QMap<int, QString>, Flags>)
        return new W(names, Flags(number));
    else
        return new W(Flags(number));
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

template <class... Editors>
void add(QList<EditorCase>& cases, const V& first, const V& second, V (*random)(QRandomGenerator&),
         int changes = 1)
{
    (cases.append(
         {Editors::staticMetaObject.className(), create<Editors>, first, second, random, changes}),
     ...);
}

inline const QList<EditorCase>& editorCases()
{
    static QList<EditorCase> cases;
    if (!cases.isEmpty())
        return cases;
    using R = QRandomGenerator;
    add<QvelWidgetNodeId, QvelDialogWidgetNodeId>(
        cases, V(UaNodeId(85, 3)), V(UaNodeId(86, 4)), [](R& r) { return V(randomNodeId(r)); }, 2);
    const V expanded(UaExpandedNodeId(UaNodeId(85, 3), "urn:a;b", 1));
    const V other(UaExpandedNodeId(UaNodeId(86, 4), "urn:c", 2));
    const auto randomExpanded = [](R& r) {
        return V(UaExpandedNodeId(randomNodeId(r), randomString(r), r.generate() & 0x7fffffff));
    };
    add<QvelDialogWidgetExpandedNodeId>(cases, expanded, other, randomExpanded, 4);
    add<QvelEditWidgetExpandedNodeId>(cases, expanded, other, randomExpanded);
    add<QvelWidgetQualifiedName, QvelDialogWidgetQualifiedName>(
        cases, V(UaQualifiedName("Pump", 1)), V(UaQualifiedName("", 65535)),
        [](R& r) { return V(UaQualifiedName(randomString(r), OpcUa_UInt16(r.bounded(65536)))); },
        2);
    add<QvelWidgetLocalizedText, QvelDialogWidgetLocalizedText>(
        cases, V(UaLocalizedText("en", "Pump")), V(UaLocalizedText("", "\xe6\xb0\xb4")),
        [](R& r) { return V(UaLocalizedText(randomString(r), randomString(r))); }, 2);
    add<QvelWidgetByteString, QvelEditWidgetByteString>(
        cases, V(UaByteString(QByteArray("\x0a\x0b"))), V(UaByteString(QByteArray("\xff"))),
        [](R& r) { return V(randomBytes(r)); });
    add<QvelWidgetXmlElement, QvelEditWidgetXmlElement>(
        cases, xmlElement("plain"), xmlElement("<a>\n</a>"),
        [](R& r) { return xmlElement(randomString(r).bytes()); });
    add<QvelEditWidgetString>(cases, V("Pump"), V("Gr\xc3\xbcn"),
                              [](R& r) { return V(randomString(r)); });
    add<QvelWidgetStatusCode>(cases, V(UaStatusCode(0x80000000u)), V(UaStatusCode(0u)),
                              [](R& r) { return V(UaStatusCode(r.generate())); });
    add<QvelWidgetGuid>(cases, V(UaGuid(QUuid("{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}"))),
                        V(UaGuid()), [](R& r) { return V(randomGuid(r)); });
    add<QvelWidgetEnum>(cases, V(1), V(INT_MIN), [](R& r) { return V(1 << r.bounded(3)); });
    add<QvelWidgetEnumFlags>(
        cases, V(1), V(6 | INT_MIN), [](R& r) { return V(int(r.generate() & 0x80000007u)); }, 4);
    add<QvelWidgetValueRank>(cases, V(-1), V(2), [](R& r) { return V(r.bounded(-3, 3)); });
    add<QvelWidgetWriteMask>(
        cases, V(1u), V(0x3fffffu), [](R& r) { return V(r.generate() & 0x3fffff); }, 21);
    add<QvelWidgetBrowseResultMask>(
        cases, V(0x21u), V(0x1eu), [](R& r) { return V(r.generate() & 0x3f); }, 6);
    add<QvelWidgetDiagnosticsMask>(cases, V(0x201u), V(0x200u),
                                   [](R& r) { return V(r.generate() & 0x3ff); });
    using Byte = OpcUa_Byte;
    add<QvelWidgetEventNotifierMask>(
        cases, V(Byte(1)), V(Byte(0xc)), [](R& r) { return V(Byte(r.generate() & 0xd)); }, 3);
    add<QvelWidgetAccessLevelMask>(
        cases, V(Byte(3)), V(Byte(0)), [](R& r) { return V(Byte(r.generate() & 0xf)); }, 2);
    return cases;
}

inline QWidget* createNamed(const QByteArray& name, int flags = 0)
{
    for (const EditorCase& c : editorCases())
        if (c.name == name)
            return c.create(flags);
    qFatal("no editor %s", name.constData());
}
