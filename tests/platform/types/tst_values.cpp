// Values: their texts, their elements, and the storage that they share.

#include "platform/stack/opcuastatuscodes.h"
#include "support/values.h"
#include "support/warnings.h"

#include <limits>
#include <numeric>

namespace {

using Lengths = std::vector<OpcUa_UInt32>;
using I64 = std::numeric_limits<qint64>;

constexpr quint32 seed = 20240229;
constexpr qint64 ticksPerSecond = 10'000'000;
const char guidText[] = "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}";

const UaGuid guid(QUuid::fromString(QLatin1String(guidText)));

// The numbers from 0 on, as an array or a matrix.
V upTo(int count, const Lengths& lengths = {})
{
    QList<OpcUa_Int32> n(count);
    std::iota(n.begin(), n.end(), 0);
    V value;
    return (lengths.empty() ? value.setInt32Array(n) : value.setInt32Matrix(n, lengths)) ? value
                                                                                         : V();
}

UaExtensionObject object(OpcUa_UInt32 type, QByteArray body)
{
    OpcUa_ExtensionObject stack = {};
    stack.TypeId.NodeId.Identifier.Numeric = type;
    stack.Body = {OpcUa_Int32(body.size()), reinterpret_cast<OpcUa_Byte*>(body.data())};
    return UaExtensionObject(stack);
}

// Two values of each type up to ByteString, by their texts.
const char* const sampleTexts[] = {
    "true|-128|255|-32768|65535|-1|4294967295|-9223372036854775808|18446744073709551615|"
    "0.1|-1e+300|a\nb|1601-01-01T00:00:01.5Z|{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}|0aff",
    "false|127|0|1|1|1|1|1|1|-0.5|0.5|a\nc|1600-12-31T23:59:59.9999999Z|"
    "{00000000-0000-0000-0000-000000000000}|0a"};

V sample(int type, int which)
{
    static const V others[][2] = {
        {xmlElement("<a/>"), xmlElement("<b/>")},
        {V(UaNodeId("Pump", 2)), V(UaNodeId("Pump", 3))},
        {V(UaExpandedNodeId(UaNodeId(85), "urn:a", 1)), V(UaExpandedNodeId(UaNodeId(85), "", 1))},
        {V(UaStatusCode(0x80340000u)), V(UaStatusCode())},
        {V(UaQualifiedName("Pump", 2)), V(UaQualifiedName("Valve", 2))},
        {V(UaLocalizedText("de", "Tor")), V(UaLocalizedText("en", "Tor"))},
        {V(object(42, "abc")), V(object(42, "abd"))},
        {V(), V()},
        {upTo(2), V("x")}};
    if (type > OpcUaType_ByteString)
        return others[type - OpcUaType_XmlElement][which];
    V value{QByteArray(sampleTexts[which]).split('|')[type - 1].constData()};
    return OpcUa_IsGood(value.changeType(OpcUa_BuiltInType(type))) ? value : V();
}

template <class Value, class Stack>
void checkType(OpcUa_BuiltInType type, bool (V::*setArray)(const UaArrayView<Value, Stack>&),
               bool (V::*setMatrix)(const UaArrayView<Value, Stack>&, const V::Dimensions&),
               QList<Value> (V::*toArray)() const, QList<Value> (V::*toMatrix)() const)
{
    const V first = sample(type, 0), second = sample(type, 1);
    V pair;
    pair.setEmptyArray(type);
    QVERIFY(pair.resize(2) && pair.setElement(0, first) && pair.setElement(1, second));
    QVERIFY(type == OpcUaType_Variant || first.type() == type);
    QVERIFY(first != second && pair.elementAt(0) == first && pair.elementAt(1) == second);
    const QList<Value> values = (pair.*toArray)();
    V built, matrix;
    QVERIFY((built.*setArray)(values) && built == pair && values.size() == 2);
    Stack stack[2];
    std::memcpy(static_cast<void*>(stack), (*pair).Value.Array.Elements, sizeof stack);
    QVERIFY((matrix.*setMatrix)(stack, {2, 1}));
    QVERIFY((matrix.*setMatrix)(stack, UaStackTypeArray<OpcUa_Int32>{1, 2}));
    QCOMPARE(matrix.toString(), UaString('{' + pair.toString().bytes() + '}'));
    QVERIFY((built.*setArray)((matrix.*toMatrix)()) && built == pair);
    QVERIFY((matrix.*toArray)().isEmpty() && (pair.*toMatrix)().isEmpty());
    const V before = matrix;
    for (const Lengths& bad : {Lengths{}, {3}, {0}, {65536, 65536}, {0x80000001u, 2}})
        QVERIFY(!(matrix.*setMatrix)(values, bad) && matrix == before);
    const OpcUa_Int32 negative[] = {-1, -2};
    QVERIFY(!(matrix.*setMatrix)(values, negative) && matrix == before);
    QVERIFY((built.*setArray)({}) && built.type() == type && built.arraySize() == 0);
    QVERIFY((built.*setMatrix)({}, {0}) && built.arrayType() == OpcUa_VariantArrayType_Matrix);
}

} // namespace

class ValuesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void dateTimes()
    {
        QRandomGenerator random(seed);
        QList<qint64> all = {0, 1, -1, I64::min(), I64::max(), I64::min() + 1, -ticksPerSecond};
        for (int i = 0; i < 5000; ++i) {
            const auto any = qint64(random.generate64());
            all << any << (any >> random.bounded(64)) << any / ticksPerSecond * ticksPerSecond;
        }
        const QDateTime origin(QDate(1601, 1, 1), QTime(0, 0), Qt::UTC);
        for (qint64 ticks : all) {
            const UaDateTime time(ticks);
            bool ok = false;
            QCOMPARE(UaDateTime::fromString(time.toString(), &ok).ticks(), ticks);
            QVERIFY2(ok, time.toString().toUtf8());
            const QDateTime qt = time.toQDateTime();
            QCOMPARE(qt.isValid(), ticks != 0);
            const UaDateTime back(qt);
            QVERIFY(!ticks || ticks < I64::min() + 10'000 ||
                    (back <= time && ticks - back.ticks() < 10'000));
            // The text against an implementation that knows nothing of ours.
            if (ticks > 0 && qt.date().year() < 10'000)
                QCOMPARE(time.toString().toQString().left(19),
                         origin.addMSecs(ticks / 10'000).toString(Qt::ISODate).left(19));
        }
        const QDateTime local(QDate(2024, 2, 29), QTime(12, 0), Qt::OffsetFromUTC, 3600);
        QCOMPARE(UaDateTime(local).toString().toUtf8(), "2024-02-29T11:00:00Z");
        QCOMPARE(UaDateTime(origin.addYears(40'000)).ticks(), I64::max());
        const auto days = [](const char* from, const char* to) {
            return UaDateTime::fromString(from).daysTo(UaDateTime::fromString(to));
        };
        QCOMPARE(days("2024-02-28T12:00", "2024-02-29T11:59"), 0);
        QCOMPARE(days("1600-12-31T12:00", "1601-01-01T11:00"), 0);
        QCOMPARE(UaDateTime(I64::max()).daysTo(UaDateTime(I64::min())), -21350398);
    }

    // A type and texts: "text>read" is one of that type, "text!" one out of its range.
    void parsing()
    {
        const char* const all[] = {
            "1|TRUE>true|0>false|1>true|yes|2",
            "2|127>127|-128>-128|1.0|128!|-129!",
            "3|+7>7|255>255|-1|256!",
            "6|-0>0|12 |+-1|0x10|+|2147483648!",
            "9|18446744073709551615>18446744073709551615|18446744073709551616!",
            "10|0.1>0.1|1f|1e39!",
            "11|-1.5e300>-1.5e+300|0,1|1e999!",
            "14|{0F1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}>{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}|"
            "0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0>{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}|"
            "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0|0g1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0|"
            "0f1e2d3c-4b5-a6978-8796-a5b4c3d2e1f0",
            "15|00fF>00ff|00 ff|0",
            "17|i=85",
            "13|2024-02-29T13:14:15.1234567Z>2024-02-29T13:14:15.1234567Z|x|2023-02-29|"
            "2024-02-29>2024-02-29T00:00:00Z| 2024-02-29 13:14 >2024-02-29T13:14:00Z|"
            "2024-02-29T13:14:15,12345678z>2024-02-29T13:14:15.1234567Z|2024-02-29T24:00:00Z|"
            "2024-02-29T00:30:00+01:00>2024-02-28T23:30:00Z|2024-02-29T13:60:00Z|0000-01-01|"
            "2024-02-29T00:30:00-0100>2024-02-29T01:30:00Z|2024-02-29T13:14:60Z|-99999-01-01|"
            "-27627-04-19T00:00:00Z>-27627-04-19T00:00:00Z|30828-09-14T02:48:05.4775808Z|"
            "30828-09-14T02:48:05.4775807Z>30828-09-14T02:48:05.4775807Z|2024-02-29T13:14:15.Z|"
            "2024-02-29T00:00:00+24:00|2024-02-29T00:00:00+01:60|"
            "\xd9\xa2\xd9\xa0\xd9\xa2\xd9\xa4-02-29"};
        for (const char* row : all) {
            const QStringList texts = QString::fromUtf8(row).split(u'|');
            const auto type = OpcUa_BuiltInType(texts[0].toInt());
            for (const QString& text : texts.mid(1)) {
                const Case here(text.toUtf8());
                const bool good = text.contains(u'>'), inRange = !text.endsWith(u'!');
                const V before{UaString(text.section(u'>', 0, 0).remove(u'!'))};
                V value = before;
                const OpcUa_StatusCode bad = inRange ? OpcUa_BadTypeMismatch : OpcUa_BadOutOfRange;
                QCOMPARE(value.changeType(type, true), good ? OpcUa_Good : bad);
                QVERIFY(good ? value.elementAt(0).type() == type : value == before);
                QVERIFY(!good ||
                        value.elementAt(0).toString().toQString() == text.section(u'>', 1));
            }
        }
    }

    void texts()
    {
        const auto row = [](const V& value, const QByteArray& bare, const QByteArray& full = {}) {
            QCOMPARE(value.toString().bytes(), bare);
            QCOMPARE(value.toFullString().bytes(), full.isNull() ? bare : full);
        };
        int type = 0;
        for (const QByteArray& text : QByteArray(sampleTexts[0]).split('|'))
            row(sample(++type, 0), text);
        row(sample(OpcUaType_XmlElement, 0), "<a/>");
        row(V(), "");
        row(V(std::numeric_limits<double>::quiet_NaN()), "nan");
        row(V(UaNodeId(4294967295u, 1)), "4294967295", "ns=1;i=4294967295");
        row(V(UaNodeId(guid, 3)), guidText, "ns=3;g=0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0");
        row(V(UaNodeId(UaByteString(QByteArray("\0\xff", 2)), 0)), "00ff", "b=AP8=");
        row(V(UaExpandedNodeId(UaNodeId(85, 3), "", 1)), "85", "svr=1;ns=3;i=85");
        row(V(UaExpandedNodeId(UaNodeId("x", 3), "urn:a", 0)), "x", "nsu=urn:a;s=x");
        row(V(UaExpandedNodeId(UaNodeId("s;%", 0), "urn:a;b%3Bc", 4294967295u)), "s;%",
            "svr=4294967295;nsu=urn:a%3Bb%253Bc;s=s;%");
        row(V(UaQualifiedName("Pump", 2)), "2:Pump");
        row(V(UaQualifiedName("a:b", 0)), "a:b");
        row(V(UaLocalizedText("de", "Tor")), "Tor", "de:Tor");
        row(V(object(42, "abc")), "i=42 (3 bytes)");
        for (OpcUa_StatusCode info : {0u, 0x480u}) // the info bits do not count
            row(V(UaStatusCode(0x80340000u | info)), "BadNodeIdUnknown");
        row(V(UaStatusCode(0x002d0000u)), "GoodSubscriptionTransferred");
        row(V(UaStatusCode(0x00010000u)), "0x00010000");
        row(upTo(6, {2, 3}), "{{0, 1, 2}, {3, 4, 5}}");
        row(upTo(0, {0, 3}), "{}");
        row(upTo(4, {2, 1, 2}), "{{{0, 1}}, {{2, 3}}}");
        const V number(-1);
        const OpcUa_DataValue bad = {*number, 0, 0, OpcUa_BadTimeout, 0, 0};
        V value;
        QVERIFY(value.setDataValueArray({bad}) && V(*value) == value);
        row(value, "{-1 (BadTimeout)}");
        QVERIFY(value.setVariantArray({upTo(2), V("x"), V()}));
        row(value, "{{0, 1}, x, }");
    }
    void longTexts()
    {
        constexpr int count = 100'000;
        static const QRegularExpression pattern("^\\{+0\\}?, \\{?1.*, \\{?(\\d+)\\}?, \\{?"
                                                "\\.\\.\\. (\\d+) more\\}+$");
        for (const Lengths& shape : {Lengths(), {100, 1000}, {count, 1}, {1, count}}) {
            const QString text = upTo(count, shape).toString().toQString();
            const auto match = pattern.match(text);
            QVERIFY2(match.hasMatch() && text.size() < 260, qPrintable(text));
            QCOMPARE(match.captured(1).toInt() + 1 + match.captured(2).toInt(), count);
            QCOMPARE(text.count(u'{'), text.count(u'}'));
        }
        // An element alone can be longer than a line; it is not cut inside a character.
        const UaString element("x" + QByteArray("\xe6\xb0\xb4").repeated(1'000'000));
        V value;
        QVERIFY(value.setStringArray({element, element}));
        const QString text = value.toString().toQString();
        QVERIFY(text.size() < 260 && text.endsWith("... 1 more}"));
        QVERIFY(!text.contains(QChar::ReplacementCharacter));
    }

    void qtTexts()
    {
        const QStringList all = {
            QString(),     "",      "\u00e9\ufeff", "\U0001f600", QChar(0xfeff) + QString("a"),
            QChar(0xfeff), QChar(0)};
        for (const QString& text : all) {
            const UaString own(text);
            QVERIFY(own.toQString() == text && own.isNull() == text.isNull());
            OpcUa_String stack = {};
            QCOMPARE(own.copyTo(&stack), OpcUa_Good);
            QVERIFY(UaString(&stack) == own && UaString(&stack).isNull() == text.isNull());
            QVERIFY(!stack.Data || !stack.Data[stack.Length]);
            OpcUa_String_Clear(&stack);
        }
        QVERIFY(UaString() == UaString(""));
        const auto compare = [](QByteArray a, QByteArray b, OpcUa_Int32 length, bool ignoreCase) {
            const OpcUa_String x = {OpcUa_Int32(a.size()), a.data()};
            const OpcUa_String y = {OpcUa_Int32(b.size()), b.isNull() ? nullptr : b.data()};
            return OpcUa_String_StrnCmp(&x, &y, length, ignoreCase);
        };
        QCOMPARE(compare("abd", "abc", 2, false), 0);
        QVERIFY(compare("abc", "abd", -1, false) < 0 && compare("abc", "ab", -1, false) > 0);
        QVERIFY(compare("aBc", "abC", -1, false) != 0 && !compare("aBc", "abC", -1, true));
        QCOMPARE(compare("", {}, -1, false), 0);
    }

    void elements()
    {
        QRandomGenerator random(seed);
        for (int round = 0; round < 220; ++round) {
            const auto type = OpcUa_BuiltInType(1 + round % 22);
            const bool isMatrix = random.bounded(2);
            V value, nulls;
            isMatrix ? value.setEmptyMatrix(type) : value.setEmptyArray(type);
            nulls.setEmptyArray(type);
            QVERIFY(nulls.resize(1));
            QList<V> model;
            for (int step = 0; step < 40; ++step) {
                const V before = value;
                const QList<V> old = model;
                const auto count = random.bounded(8u), index = random.bounded(10u);
                if (index % 3 == 0) {
                    const Lengths lengths = {count, index / 3};
                    QCOMPARE(isMatrix ? value.setDimensions(lengths) : value.resize(count), true);
                    model.resize(isMatrix ? count * (index / 3) : count);
                    for (qsizetype i = old.size(); i < model.size(); ++i)
                        model[i] = nulls.elementAt(0);
                } else {
                    const V scalar = sample(count ? type : 1 + random.bounded(22), count % 2);
                    const bool fits = scalar.type() == type && index < model.size();
                    QCOMPARE(value.setElement(OpcUa_Int32(index), scalar), fits);
                    if (fits)
                        model[index] = scalar;
                }
                QVERIFY(!value.setElement(-1, sample(type, 0)) && !value.setElement(0, upTo(1)));
                QVERIFY(!(isMatrix ? value.resize(1) : value.setDimensions({1})));
                QCOMPARE(value.arraySize(), model.size());
                QCOMPARE(before.arraySize(), old.size()); // a copy does not see what happens here
                for (int i = -1; i < 28; ++i)
                    QVERIFY(value.elementAt(i) == model.value(i) &&
                            before.elementAt(i) == old.value(i));
                QVERIFY(V(*value) == value);
            }
        }
        V matrix = upTo(6, {2, 3}), scalar(1), array = upTo(3);
        QVERIFY(!scalar.resize(2) && !array.resize((std::size_t(1) << 28) + 1));
        for (const Lengths& bad : {Lengths{65536, 65536}, {0x80000000u}, {1u << 30}, {3, ~0u / 2}})
            QVERIFY(!matrix.setDimensions(bad) && matrix == upTo(6, {2, 3}));
        QVERIFY(matrix.setDimensions({3, 2}) && matrix == upTo(6, {3, 2}));
        QVERIFY(matrix != upTo(6, {2, 3}) && matrix != upTo(6) && matrix != upTo(6, {3, 2, 1}));
        QVERIFY(matrix.setDimensions({~0u, 0, ~0u}) && matrix.arraySize() == 0);
        QVERIFY(matrix.setDimensions({}) && matrix.arraySize() == 1);
        QCOMPARE(V::elementCount({3, 0x7fffffffu}), -1);
    }

    void everyType()
    {
#define CHECK(Name, Type, Value, Stack)                                                            \
    checkType<Value, Stack>(OpcUaType_##Type, &V::set##Name##Array, &V::set##Name##Matrix,         \
                            &V::to##Name##Array, &V::to##Name##Matrix);                            \
    if (QTest::currentTestFailed())                                                                \
        QFAIL(#Name);
        KESTREL_VARIANT_TYPES(CHECK)
#undef CHECK
        V bytes;
        QVERIFY(bytes.setByteArray(UaByteArray("a\xff", 2)));
        QCOMPARE(bytes.toByteArray(), (QList<OpcUa_Byte>{'a', 255}));
        // A scalar of another type, or an array, has no value.
        QVERIFY(V(1u).toInt32() == 0 && upTo(1).toInt32() == 0 && V("x").toByteString().isNull());
        static_assert(!std::is_convertible_v<V, bool> && !std::is_constructible_v<bool, V> &&
                      !std::is_constructible_v<V, int*> && !std::is_convertible_v<int, V>);
    }

    void sharing()
    {
        const auto storage = [](const V& v) { return (*v).Value.Array.Elements; };
        const V original = upTo(3);
        V copy = original;
        QCOMPARE(storage(copy), storage(original));
        static_cast<OpcUa_Int32*>(copy.detach()->Value.Array.Elements)[1] = 77;
        QVERIFY(original == upTo(3) && copy.elementAt(1) == V(77));
        const void* before = storage(copy);
        QVERIFY(copy.detach() && storage(copy) == before); // the only holder keeps its storage
        // Bytes stay where they are until they are written.
        V value;
        const UaByteString bytes(QByteArray(1000, 'x'));
        for (bool isXml : {false, true}) {
            isXml ? value.setXmlElement(bytes) : value.setByteString(bytes);
            const auto get = [&] { return isXml ? value.toXmlElement() : value.toByteString(); };
            QCOMPARE(static_cast<const OpcUa_Byte*>((*value).Value.ByteString.Data), bytes.data());
            const UaByteString back = get();
            QCOMPARE(back.data(), bytes.data());
            value.detach()->Value.ByteString.Data[0] = 'y';
            QCOMPARE(bytes.bytes(), QByteArray(1000, 'x'));
            QVERIFY(back == bytes && get().bytes().startsWith("yx"));
        }
        value.setXmlElement(value.toXmlElement());
        QVERIFY(value.toXmlElement().bytes().startsWith("yx"));
    }

    void nesting()
    {
        V value("core");
        int depth = 0;
        for (V outer; depth < 1000 && outer.setVariantArray({value}); ++depth)
            value = outer;
        QVERIFY2(depth >= 99 && depth <= 101, qPrintable(QString::number(depth)));
        V around = value;
        QVERIFY(!around.setElement(0, value) && around == value);
        QVERIFY(value.detach() && V(*value) == value);
        QVERIFY(value.toString().toQString().contains("{core}"));
        V inner = value;
        while (inner.arrayType() == OpcUa_VariantArrayType_Array)
            inner = inner.elementAt(0);
        QVERIFY(inner == V("core"));
    }

    // Structures that no sound sender makes.
    void unsound()
    {
        OpcUa_Variant counted = {};
        counted.Datatype = OpcUaType_String;
        counted.ArrayType = OpcUa_VariantArrayType_Array;
        counted.Value.Array.Length = 1000;
        QVERIFY(V(counted).type() == OpcUaType_String && V(counted).arraySize() == 0);
        OpcUa_UInt32 huge[] = {65536, 65536, 65536, 65536};
        OpcUa_Variant matrix = counted;
        matrix.ArrayType = OpcUa_VariantArrayType_Matrix;
        matrix.Value.Matrix = {4, huge, huge};
        QVERIFY((*V(matrix)).Value.Matrix.NoOfDimensions == 4 && V(matrix).arraySize() == 0);
        matrix.Value.Matrix = {3, nullptr, nullptr};
        QVERIFY(OpcUa_Variant_Equal(&matrix, &matrix));
        OpcUa_String url = {};
        OpcUa_ApplicationDescription full = {}, empty = {};
        full.NoOfDiscoveryUrls = empty.NoOfDiscoveryUrls = 1;
        full.DiscoveryUrls = &url;
        const auto equal = OpcUa_ApplicationDescription_Equal;
        QVERIFY(!equal(&full, &empty) && !equal(&empty, &full) && equal(&empty, &empty));
    }

    void stackTypeArray()
    {
        OpcUa_String a = {1, const_cast<char*>("a")}, b = {1, const_cast<char*>("b")};
        UaStackTypeArray<OpcUa_String> texts = {a, b, b};
        QVERIFY(texts[0].Data != a.Data && UaString(&texts[2]) == UaString("b"));
        QVERIFY(texts.resize(1) && texts.resize(4)); // the leak checker sees what this drops
        QVERIFY(UaString(&texts[0]) == UaString("a") && !texts[1].Data && !texts[3].Data);
        QVERIFY(!texts.resize(0x7fffffffu) && !texts.create(0x7fffffffu));
        UaStackTypeArray<OpcUa_String> other = std::move(texts);
        QVERIFY(other.length() == 4 && other.create(2) && other.length() == 2);
        QVERIFY(!other[0].Data && !other[1].Data);
    }
};

QTEST_GUILESS_MAIN(ValuesTest)
#include "tst_values.moc"
