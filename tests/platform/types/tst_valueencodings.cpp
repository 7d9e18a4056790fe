// The ways in which a value travels: binary, JSON and QVariant.

#include "platform/stack/opcuastatuscodes.h"
#include "platform/types/uadatavalue.h"
#include "support/values.h"
#include "support/warnings.h"

static QByteArray bytes(const char* hex)
{
    return QByteArray::fromHex(hex);
}

static UaVariant fromBytes(const QByteArray& binary)
{
    UaVariant value;
    if (OpcUa_IsNotGood(value.fromBinary(binary)))
        qWarning("does not decode"); // fails the test
    return value;
}

// Written down from OPC 10000-6, 5.2 and 5.4.
struct Example
{
    const char *name, *hex, *body; // in JSON
    const char* nonReversible = nullptr;
};

static const Example examplesOfTypes[] = {
    {"null", "00", ""},
    {"Boolean", "01 01", "true"},
    {"SByte", "02 80", "-128"},
    {"Byte", "03 ff", "255"},
    {"Int16", "04 0080", "-32768"},
    {"UInt16", "05 ffff", "65535"},
    {"Int32", "06 fbffffff", "-5", "-5"},
    {"UInt32", "07 ffffffff", "4294967295"},
    {"Int64", "08 0000000000000080", R"("-9223372036854775808")"},
    {"UInt64", "09 ffffffffffffffff", R"("18446744073709551615")"},
    {"Float", "0a cdcccc3d", "0.1"},
    {"Float infinity", "0a 000080ff", R"("-Infinity")"},
    {"Double", "0b 9a9999999999b93f", "0.1"},
    {"Double NaN", "0b 000000000000f87f", R"("NaN")"},
    {"String", "0c 06000000 e6b0b4426f79",
     "\"\xe6\xb0\xb4"
     "Boy\""},
    {"escapes", "0c 05000000 22 5c 0a 1f 2f", "\"\\\"\\\\\\u000a\\u001f/\""},
    {"null String", "0c ffffffff", "null"},
    {"empty String", "0c 00000000", R"("")"},
    {"DateTime", "0d 00803ed5deb19d01", R"("1970-01-01T00:00:00Z")"},
    {"last DateTime", "0d ffffffffffffff7f", R"("9999-12-31T23:59:59Z")"},
    {"Guid", "0e 912b9672 75fa e64a 8d28 b404dc7daf63",
     R"("72962b91-fa75-4ae6-8d28-b404dc7daf63")"},
    {"ByteString", "0f 03000000 000102", R"("AAEC")"},
    {"null ByteString", "0f ffffffff", "null"},
    {"XmlElement", "10 04000000 3c612f3e", R"("<a/>")"},
    {"two-byte NodeId", "11 00 72", R"({"Id":114})"},
    {"four-byte NodeId", "11 01 05 0104", R"({"Id":1025,"Namespace":5})"},
    {"numeric NodeId", "11 02 0001 00000100", R"({"Id":65536,"Namespace":256})"},
    {"String NodeId", "11 03 0100 06000000 486f74e6b0b4",
     "{\"IdType\":1,\"Id\":\"Hot\xe6\xb0\xb4\",\"Namespace\":1}"},
    {"Guid NodeId", "11 04 0200 912b9672 75fa e64a 8d28 b404dc7daf63",
     R"({"IdType":2,"Id":"72962b91-fa75-4ae6-8d28-b404dc7daf63",)"
     R"("Namespace":2})"},
    {"opaque NodeId", "11 05 0000 02000000 abcd", R"({"IdType":3,"Id":"q80="})"},
    {"ExpandedNodeId", "12 c0 55 05000000 75726e3a78 07000000",
     R"({"Id":85,"Namespace":"urn:x","ServerUri":7})"},
    {"StatusCode", "13 00003480", "2150891520",
     R"({"Code":2150891520,"Symbol":"BadNodeIdUnknown"})"},
    {"Good", "13 00000000", ""},
    {"QualifiedName", "14 0200 01000000 71", R"({"Name":"q","Uri":2})"},
    {"LocalizedText", "15 03 02000000 6465 01000000 74", R"({"Locale":"de","Text":"t"})", R"("t")"},
    {"ExtensionObject", "16 01 02 8913 01 03000000 010203",
     R"({"TypeId":{"Id":5001,"Namespace":2},"Encoding":1,"Body":"AQID"})", R"("AQID")"},
    {"XML ExtensionObject", "16 00 00 02 04000000 3c612f3e",
     R"({"TypeId":{"Id":0},"Encoding":2,"Body":"<a/>"})"},
    {"no body", "16 00 00 00", R"({"TypeId":{"Id":0}})"},
    {"DataValue", "17 3f 0601000000 00000080 00803ed5deb19d01 0100 00803ed5deb19d01 0f27",
     R"({"Value":{"Type":6,"Body":1},"Status":2147483648,)"
     R"("SourceTimestamp":"1970-01-01T00:00:00Z","SourcePicoseconds":1,)"
     R"("ServerTimestamp":"1970-01-01T00:00:00Z","ServerPicoseconds":9999})"},
    {"empty DataValue", "17 00", "{}"},
    {"DiagnosticInfo", "19 75 01000000 02000000 02000000 6869 00000180 01 05000000",
     R"({"SymbolicId":1,"LocalizedText":2,"AdditionalInfo":"hi",)"
     R"("InnerStatusCode":2147549184,"InnerDiagnosticInfo":{"SymbolicId":5}})"},
    {"array", "86 02000000 01000000 02000000", "[1,2]"},
    {"empty array", "8b 00000000", "[]"},
    {"Booleans", "81 03000000 01 00 01", "[true,false,true]"},
    {"StatusCodes", "93 02000000 00000000 00000080", "[null,2147483648]"},
    {"matrix",
     "c6 06000000 010000000200000003000000040000000500000006000000 "
     "02000000 02000000 03000000",
     R"([1,2,3,4,5,6],"Dimensions":[2,3])", "[[1,2,3],[4,5,6]]"},
    {"empty matrix", "c6 00000000 02000000 00000000 ffffffff", R"([],"Dimensions":[0,4294967295])",
     "[]"},
    {"Variants", "98 02000000 0101 8601000000 07000000",
     R"([{"Type":1,"Body":true},{"Type":6,"Body":[7]}])", "[true,[7]]"},
    {"DataValues", "97 02000000 01 0b 000000000000f03f 00",
     R"([{"Value":{"Type":11,"Body":1}},{}])"}};

// Encodings of any type and shape.
static QByteArray randomVariant(QRandomGenerator& random, int depth);

static void append(QByteArray& out, quint64 value, int size)
{
    out.append(QByteArray::fromRawData(reinterpret_cast<const char*>(&value), size));
}

static QByteArray randomElement(QRandomGenerator& random, int type, int depth)
{
    static const int sizes[] = {0, 0, 1, 1, 2, 2, 4, 4, 8, 8, 0, 0, 0, 0, 16};
    QByteArray out;
    if (type == OpcUaType_Boolean) {
        append(out, random.bounded(2u), 1);
    } else if (type == OpcUaType_Float) {
        const float number = float(random.bounded(1e6)) / 7;
        out.append(reinterpret_cast<const char*>(&number), sizeof number);
    } else if (type == OpcUaType_Double) {
        const double number = random.bounded(1e18) / 7;
        out.append(reinterpret_cast<const char*>(&number), sizeof number);
    } else if (type == OpcUaType_DateTime) {
        append(out, random.generate64() >> 3, 8);
    } else if (type <= OpcUaType_Guid && sizes[type]) {
        for (int i = 0; i < sizes[type]; ++i)
            append(out, random.generate(), 1);
    } else if (type == OpcUaType_DataValue) {
        out = '\x05' + randomVariant(random, depth - 1);
        if (out[1] == 0)
            out = bytes("04");
        append(out, (random.generate64() >> 3) + 1, 8);
    } else if (type == OpcUaType_Variant) {
        out = randomVariant(random, depth - 1);
    } else {
        static QMap<int, QByteArrayList> known; // those of each type
        if (known.isEmpty())
            for (const Example& example : examplesOfTypes)
                known[OpcUa_Byte(bytes(example.hex)[0])].append(bytes(example.hex).mid(1));
        out = known[type].at(random.bounded(known[type].size()));
    }
    return out;
}

static QByteArray randomVariant(QRandomGenerator& random, int depth)
{
    const int type = int(random.bounded(depth > 0 ? 26 : OpcUaType_ExtensionObject));
    const int shape = type ? int(random.bounded(3)) : 0;
    QByteArray out;
    append(out, quint64(type) | (shape > 0 ? 0x80 : 0) | (shape > 1 ? 0x40 : 0), 1);
    if (shape == 0)
        return type ? out + randomElement(random, type, depth) : out;
    const quint32 rows = random.bounded(4u);
    const quint32 columns = shape > 1 ? random.bounded(4u) : 1;
    append(out, rows * columns, 4);
    for (quint32 i = 0; i < rows * columns; ++i)
        out += randomElement(random, type, depth);
    if (shape > 1) {
        append(out, 2, 4);
        append(out, rows, 4);
        append(out, columns, 4);
    }
    return out;
}

class tst_ValueEncodings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    // Read in both directions.
    void examples()
    {
        for (const auto& [name, hex, body, nonReversible] : examplesOfTypes) {
            const Case here(name);
            const QByteArray binary = bytes(hex), type = QByteArray::number(binary[0] & 0x3f);
            const QByteArray rest = *body ? QByteArray(",\"Body\":") + body : QByteArray();
            const QByteArray json = type == "0" ? "null" : "{\"Type\":" + type + rest + '}';
            const UaVariant value = fromBytes(binary);
            QCOMPARE(value.toBinary().toHex(), binary.toHex());
            QCOMPARE(value.toJson(), json);
            if (nonReversible)
                QCOMPARE(value.toJson(UaJsonForm::NonReversible), nonReversible);
            UaVariant read(OpcUa_Int32(99));
            QCOMPARE(read.fromJson(json), OpcUa_Good);
            QCOMPARE(read.toBinary().toHex(), binary.toHex());
            QVERIFY(UaVariant(*value).toBinary() == binary); // a deep copy
            for (qsizetype size = 0; size < binary.size(); ++size) {
                // A block of its own, so that a sanitizer sees what reads beyond it.
                const std::vector<char> cut(binary.begin(), binary.begin() + size);
                UaVariant kept(OpcUa_Int32(99));
                QCOMPARE(kept.fromBinary({cut.data(), size}), OpcUa_BadDecodingError);
                QCOMPARE(kept.toInt32(), 99);
            }
        }
        QCOMPARE(fromBytes(bytes("c6 00000000 00000000")).toJson(UaJsonForm::NonReversible), "[]");
    }

    void randomValues()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        for (int i = 0; i < 3000; ++i) {
            const QByteArray binary = randomVariant(random, 2);
            const QByteArray where = "seed " + QByteArray::number(seed) + ' ' + binary.toHex();
            UaVariant value;
            QVERIFY2(OpcUa_IsGood(value.fromBinary(binary)), where);
            QVERIFY2(value.toBinary() == binary, where);
            UaVariant read;
            QVERIFY2(OpcUa_IsGood(read.fromJson(value.toJson())), where + value.toJson());
            QVERIFY2(read == value, where + read.toJson());
            // A matrix without elements loses its lengths, a time what is below a millisecond.
            UaVariant fromQt;
            QVERIFY2(OpcUa_IsGood(fromQt.fromQVariant(value.toQVariant())), where);
            if (value.type() != OpcUaType_DateTime && (value.arraySize() > 0 || !value.arrayType()))
                QVERIFY2(fromQt == value, where + fromQt.toJson());
            value.toJson(UaJsonForm::NonReversible);
            QByteArray broken = binary;
            broken[qsizetype(random.bounded(quint32(broken.size())))] = char(random.generate());
            read.fromBinary(broken);
        }
    }

    void badBinary()
    {
        const char* const rows[][2] = {
            {"unknown type", "20"},
            {"array of nothing", "80 01000000"},
            {"dimensions without array", "46 01000000 01000000"},
            {"negative length", "86 feffffff"},
            {"length beyond the end", "86 ffffff7f 01000000"},
            {"matrix that lacks elements", "c6 01000000 07000000 02000000 01000000 02000000"},
            {"matrix with too large lengths", "c6 01000000 07000000 02000000 00000080 00000080"},
            {"matrix without lengths", "c6 01000000 07000000 ffffffff"},
            {"NodeId with flags", "11 80 01"},
            {"unknown NodeId", "11 06 00"},
            {"unknown LocalizedText", "15 04"},
            {"unknown body", "16 00 00 03 00000000"},
            {"something behind", "01 01 00"}};
        for (const auto& [what, hex] : rows) {
            UaVariant value(OpcUa_Int32(99));
            QVERIFY2(value.fromBinary(bytes(hex)) == OpcUa_BadDecodingError, what);
            QCOMPARE(value.toInt32(), 99);
        }
    }

    void badJson()
    {
        const QByteArray unreadable = // the first is empty
            R"( { 1,2 7 {"Type":26,"Body":1} {"Type":6,"Body":"x"} {"Type":6,"Body":1.5} )"
            R"({"Type":6} {"Type":11,"Body":"inf"} {"Type":13,"Body":"today"} )"
            R"({"Type":15,"Body":"A*=="} {"Type":22,"Body":{"TypeId":{"Id":7},"Encoding":3}} )"
            R"({"Type":17,"Body":{"IdType":4,"Id":1}} )"
            R"({"Type":22,"Body":{"TypeId":{"Id":1},"Body":{"a":1}}} )"
            R"({"Type":6,"Body":[1,2,3],"Dimensions":[2,2]} )"
            R"({"Type":6,"Body":[1],"Dimensions":[]} {"Type":6,"Body":1,"Dimensions":[1]})";
        const QByteArray outOfRange =
            R"({"Type":3,"Body":256} {"Type":2,"Body":-129} )"
            R"({"Type":9,"Body":"18446744073709551616"} {"Type":8,"Body":1e300} )"
            R"({"Type":10,"Body":1e39})";
        UaVariant value(OpcUa_Int32(99));
        for (const QByteArray& json : unreadable.split(' '))
            QVERIFY2(value.fromJson(json) == OpcUa_BadDecodingError, json);
        for (const QByteArray& json : outOfRange.split(' '))
            QVERIFY2(value.fromJson(json) == OpcUa_BadOutOfRange, json);
        QCOMPARE(value.toInt32(), 99);
    }

    void limits()
    {
        UaVariant value;
        const QByteArray nested = QByteArray("\x98\1\0\0\0", 5);
        const QByteArray inJson = R"({"Type":24,"Body":[)";
        QCOMPARE(value.fromBinary(nested.repeated(99) + bytes("0101")), OpcUa_Good);
        QCOMPARE(value.fromBinary(nested.repeated(100) + bytes("0101")),
                 OpcUa_BadEncodingLimitsExceeded);
        QCOMPARE(value.fromBinary(QByteArray("\x18").repeated(1000000)),
                 OpcUa_BadEncodingLimitsExceeded);
        QCOMPARE(value.fromJson(inJson.repeated(100) + "null" + QByteArray("]}").repeated(100)),
                 OpcUa_Good);
        QCOMPARE(value.fromJson(inJson.repeated(102) + "null" + QByteArray("]}").repeated(102)),
                 OpcUa_BadEncodingLimitsExceeded);
        QVERIFY(OpcUa_IsBad(value.fromJson(QByteArray("[").repeated(1000000))));

        const QByteArray array = bytes("8c 02000000 0400000061626364 00000000");
        const auto decode = [&](int arrayLength, int stringLength, std::size_t memory) {
            return value.fromBinary(array, {1000, stringLength, arrayLength, 100, memory});
        };
        QCOMPARE(decode(2, 4, 1000), OpcUa_Good);
        QCOMPARE(decode(2, 3, 1000), OpcUa_BadEncodingLimitsExceeded);
        QCOMPARE(decode(1, 4, 1000), OpcUa_BadEncodingLimitsExceeded);
        // Each text counts 32 bytes more than its own.
        QCOMPARE(decode(2, 4, 100), OpcUa_BadEncodingLimitsExceeded);

        QByteArray large("\x8b\0\0\x80\0", 5); // 64 MB of Double
        large.resize(5 + (64 << 20));
        QCOMPARE(value.fromBinary(large), OpcUa_Good);
        QCOMPARE(value.arraySize(), 8 << 20);
    }

    void qtValues()
    {
        const std::tuple<const char*, const char*, QVariant> rows[] = {
            {"null", "00", QVariant()},
            {"Boolean", "01 01", true},
            {"SByte", "02 80", QVariant::fromValue(qint8(-128))},
            {"UInt64", "09 ffffffffffffffff", ~quint64(0)},
            {"String", "0c 02000000 c3a4", QString(QChar(0xe4))},
            {"DateTime", "0d 10a73ed5deb19d01", QDateTime::fromMSecsSinceEpoch(1, Qt::UTC)},
            {"Guid", "0e 912b9672 75fa e64a 8d28 b404dc7daf63",
             QUuid("72962b91-fa75-4ae6-8d28-b404dc7daf63")},
            {"ByteString", "0f 03000000 000102", bytes("000102")},
            {"NodeId", "11 00 72", QVariant::fromValue(UaNodeId(114))},
            {"array", "86 02000000 01000000 02000000", QVariant::fromValue(QList<int>{1, 2})},
            {"empty array", "8b 00000000", QVariant::fromValue(QList<double>())},
            {"Strings", "8c 01000000 00000000", QStringList{""}},
            {"matrix", "c6 04000000 01000000020000000300000004000000 02000000 02000000 02000000",
             QVariantList{QVariant::fromValue(QList<int>{1, 2}),
                          QVariant::fromValue(QList<int>{3, 4})}}};
        for (const auto& [name, hex, qt] : rows) {
            const Case here(name);
            QCOMPARE(fromBytes(bytes(hex)).toQVariant(), qt);
            UaVariant value(OpcUa_Int32(99));
            QCOMPARE(value.fromQVariant(qt), OpcUa_Good);
            QCOMPARE(value.toBinary().toHex(), bytes(hex).toHex());
        }
    }

    void dataValue()
    {
        UaVariant value(OpcUa_Int32(99));
        QCOMPARE(value.fromQVariant(QVariantList{1, 2}), OpcUa_Good);
        QCOMPARE(value, fromBytes(bytes("86 02000000 01000000 02000000")));
        QCOMPARE(value.fromQVariant(QVariantList{1, "x"}), OpcUa_Good);
        QCOMPARE(value, fromBytes(bytes("98 02000000 0601000000 0c 01000000 78")));
        QCOMPARE(value.fromQVariant(QVariant::fromValue(this)), OpcUa_BadTypeMismatch);
        QCOMPARE(value.arraySize(), 2);

        OpcUa_DataValue stack = {{}, 5, 6, OpcUa_Bad, 7, 8};
        UaDataValue copy(stack);
        QCOMPARE(copy.status().code(), OpcUa_Bad);
        QCOMPARE(copy.sourceTimestamp().ticks(), 5);
        QCOMPARE(copy.serverTimestamp().ticks(), 6);
        QCOMPARE(copy.sourcePicoseconds(), 7);
        QCOMPARE(copy.serverPicoseconds(), 8);
        UaDataValue other;
        other.attach(&stack);
        QCOMPARE(stack.Status, OpcUa_Good);
        QVERIFY(copy == other);
        other.setServerTimestamp(other.serverTimestamp(), 9);
        QVERIFY(copy != other);
    }
};

QTEST_GUILESS_MAIN(tst_ValueEncodings)
#include "tst_valueencodings.moc"
