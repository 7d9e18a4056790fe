// The ways in which a value travels: binary, JSON and QVariant.

#include "support/warnings.h"

#include <Kestrel/OpcUaStatusCodes>
#include <Kestrel/UaDataValue>
#include <Kestrel/UaEncodingLimits>
#include <Kestrel/UaExtensionObject>
#include <Kestrel/UaGuid>
#include <Kestrel/UaNodeId>
#include <Kestrel/UaString>
#include <Kestrel/UaVariant>

#include <QtCore/QRandomGenerator>
#include <QtCore/QUuid>

#include <memory>

class tst_ValueEncodings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void examples_data();
    void examples();
    void nonReversible_data();
    void nonReversible();
    void randomValues();
    void badBinary_data();
    void badBinary();
    void badJson_data();
    void badJson();
    void limits();
    void qtValues_data();
    void qtValues();
    void dataValue();
};

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

// Written down from OPC 10000-6, 5.2 and 5.4, and read in both directions.
void tst_ValueEncodings::examples_data()
{
    QTest::addColumn<QByteArray>("binary");
    QTest::addColumn<QByteArray>("json");
    const auto row = [](const char* name, const char* hex, const char* json) {
        QTest::newRow(name) << bytes(hex) << QByteArray(json);
    };
    row("null", "00", "null");
    row("Boolean", "01 01", R"({"Type":1,"Body":true})");
    row("SByte", "02 80", R"({"Type":2,"Body":-128})");
    row("Byte", "03 ff", R"({"Type":3,"Body":255})");
    row("Int16", "04 0080", R"({"Type":4,"Body":-32768})");
    row("UInt16", "05 ffff", R"({"Type":5,"Body":65535})");
    row("Int32", "06 fbffffff", R"({"Type":6,"Body":-5})");
    row("UInt32", "07 ffffffff", R"({"Type":7,"Body":4294967295})");
    row("Int64", "08 0000000000000080", R"({"Type":8,"Body":"-9223372036854775808"})");
    row("UInt64", "09 ffffffffffffffff", R"({"Type":9,"Body":"18446744073709551615"})");
    row("Float", "0a cdcccc3d", R"({"Type":10,"Body":0.1})");
    row("Float infinity", "0a 000080ff", R"({"Type":10,"Body":"-Infinity"})");
    row("Double", "0b 9a9999999999b93f", R"({"Type":11,"Body":0.1})");
    row("Double NaN", "0b 000000000000f87f", R"({"Type":11,"Body":"NaN"})");
    row("String", "0c 06000000 e6b0b4426f79",
        "{\"Type\":12,\"Body\":\"\xe6\xb0\xb4"
        "Boy\"}");
    row("escapes", "0c 05000000 22 5c 0a 1f 2f", R"({"Type":12,"Body":"\"\\\u000a\u001f/"})");
    row("null String", "0c ffffffff", R"({"Type":12,"Body":null})");
    row("empty String", "0c 00000000", R"({"Type":12,"Body":""})");
    row("DateTime", "0d 00803ed5deb19d01", R"({"Type":13,"Body":"1970-01-01T00:00:00Z"})");
    row("last DateTime", "0d ffffffffffffff7f", R"({"Type":13,"Body":"9999-12-31T23:59:59Z"})");
    row("Guid", "0e 912b9672 75fa e64a 8d28 b404dc7daf63",
        R"({"Type":14,"Body":"72962b91-fa75-4ae6-8d28-b404dc7daf63"})");
    row("ByteString", "0f 03000000 000102", R"({"Type":15,"Body":"AAEC"})");
    row("null ByteString", "0f ffffffff", R"({"Type":15,"Body":null})");
    row("XmlElement", "10 04000000 3c612f3e", R"({"Type":16,"Body":"<a/>"})");
    row("two-byte NodeId", "11 00 72", R"({"Type":17,"Body":{"Id":114}})");
    row("four-byte NodeId", "11 01 05 0104", R"({"Type":17,"Body":{"Id":1025,"Namespace":5}})");
    row("numeric NodeId", "11 02 0001 00000100",
        R"({"Type":17,"Body":{"Id":65536,"Namespace":256}})");
    row("String NodeId", "11 03 0100 06000000 486f74e6b0b4",
        "{\"Type\":17,\"Body\":{\"IdType\":1,\"Id\":\"Hot\xe6\xb0\xb4\",\"Namespace\":1}}");
    row("Guid NodeId", "11 04 0200 912b9672 75fa e64a 8d28 b404dc7daf63",
        R"({"Type":17,"Body":{"IdType":2,"Id":"72962b91-fa75-4ae6-8d28-b404dc7daf63",)"
        R"("Namespace":2}})");
    row("opaque NodeId", "11 05 0000 02000000 abcd",
        R"({"Type":17,"Body":{"IdType":3,"Id":"q80="}})");
    row("ExpandedNodeId", "12 c0 55 05000000 75726e3a78 07000000",
        R"({"Type":18,"Body":{"Id":85,"Namespace":"urn:x","ServerUri":7}})");
    row("StatusCode", "13 00003480", R"({"Type":19,"Body":2150891520})");
    row("Good", "13 00000000", R"({"Type":19})");
    row("QualifiedName", "14 0200 01000000 71", R"({"Type":20,"Body":{"Name":"q","Uri":2}})");
    row("LocalizedText", "15 03 02000000 6465 01000000 74",
        R"({"Type":21,"Body":{"Locale":"de","Text":"t"}})");
    row("ExtensionObject", "16 01 02 8913 01 03000000 010203",
        R"({"Type":22,"Body":{"TypeId":{"Id":5001,"Namespace":2},"Encoding":1,"Body":"AQID"}})");
    row("XML ExtensionObject", "16 00 00 02 04000000 3c612f3e",
        R"({"Type":22,"Body":{"TypeId":{"Id":0},"Encoding":2,"Body":"<a/>"}})");
    row("no body", "16 00 00 00", R"({"Type":22,"Body":{"TypeId":{"Id":0}}})");
    row("DataValue", "17 3f 0601000000 00000080 00803ed5deb19d01 0100 00803ed5deb19d01 0f27",
        R"({"Type":23,"Body":{"Value":{"Type":6,"Body":1},"Status":2147483648,)"
        R"("SourceTimestamp":"1970-01-01T00:00:00Z","SourcePicoseconds":1,)"
        R"("ServerTimestamp":"1970-01-01T00:00:00Z","ServerPicoseconds":9999}})");
    row("empty DataValue", "17 00", R"({"Type":23,"Body":{}})");
    row("DiagnosticInfo", "19 75 01000000 02000000 02000000 6869 00000180 01 05000000",
        R"({"Type":25,"Body":{"SymbolicId":1,"LocalizedText":2,"AdditionalInfo":"hi",)"
        R"("InnerStatusCode":2147549184,"InnerDiagnosticInfo":{"SymbolicId":5}}})");
    row("array", "86 02000000 01000000 02000000", R"({"Type":6,"Body":[1,2]})");
    row("empty array", "8b 00000000", R"({"Type":11,"Body":[]})");
    row("Booleans", "81 03000000 01 00 01", R"({"Type":1,"Body":[true,false,true]})");
    row("StatusCodes", "93 02000000 00000000 00000080", R"({"Type":19,"Body":[null,2147483648]})");
    row("matrix",
        "c6 06000000 010000000200000003000000040000000500000006000000 "
        "02000000 02000000 03000000",
        R"({"Type":6,"Body":[1,2,3,4,5,6],"Dimensions":[2,3]})");
    row("empty matrix", "c6 00000000 02000000 00000000 ffffffff",
        R"({"Type":6,"Body":[],"Dimensions":[0,4294967295]})");
    row("Variants", "98 02000000 0101 8601000000 07000000",
        R"({"Type":24,"Body":[{"Type":1,"Body":true},{"Type":6,"Body":[7]}]})");
    row("DataValues", "97 02000000 01 0b 000000000000f03f 00",
        R"({"Type":23,"Body":[{"Value":{"Type":11,"Body":1}},{}]})");
}

void tst_ValueEncodings::examples()
{
    QFETCH(QByteArray, binary);
    QFETCH(QByteArray, json);
    const UaVariant value = fromBytes(binary);
    QCOMPARE(value.toBinary().toHex(), binary.toHex());
    QCOMPARE(value.toJson(), json);
    UaVariant read(OpcUa_Int32(99));
    QCOMPARE(read.fromJson(json), OpcUa_Good);
    QCOMPARE(read.toBinary().toHex(), binary.toHex());
    QVERIFY(UaVariant(*value).toBinary() == binary); // a deep copy
    for (qsizetype size = 0; size < binary.size(); ++size) {
        // A block of its own, so that a sanitizer sees what reads beyond it.
        const auto cut = std::make_unique<char[]>(std::size_t(size));
        std::copy_n(binary.data(), size, cut.get());
        UaVariant kept(OpcUa_Int32(99));
        QCOMPARE(kept.fromBinary(QByteArrayView(cut.get(), size)), OpcUa_BadDecodingError);
        QCOMPARE(kept.toInt32(), 99);
    }
}

void tst_ValueEncodings::nonReversible_data()
{
    QTest::addColumn<QByteArray>("binary");
    QTest::addColumn<QByteArray>("json");
    const auto row = [](const char* name, const char* hex, const char* json) {
        QTest::newRow(name) << bytes(hex) << QByteArray(json);
    };
    row("number", "06 fbffffff", "-5");
    row("text", "15 03 02000000 6465 01000000 74", R"("t")");
    row("status", "13 00003480", R"({"Code":2150891520,"Symbol":"BadNodeIdUnknown"})");
    row("body", "16 01 02 8913 01 03000000 010203", R"("AQID")");
    row("matrix",
        "c6 06000000 010000000200000003000000040000000500000006000000 "
        "02000000 02000000 03000000",
        "[[1,2,3],[4,5,6]]");
    row("empty matrix", "c6 00000000 02000000 00000000 ffffffff", "[]");
    row("matrix without anything", "c6 00000000 00000000", "[]");
    row("Variants", "98 02000000 0101 8601000000 07000000", "[true,[7]]");
}

void tst_ValueEncodings::nonReversible()
{
    QFETCH(QByteArray, binary);
    QTEST(fromBytes(binary).toJson(UaJsonForm::NonReversible), "json");
}

// Encodings of any type and shape, by the same rules as the examples.
static QByteArray randomVariant(QRandomGenerator& random, int depth);

static void append(QByteArray& out, quint64 value, int size)
{
    out.append(QByteArray::fromRawData(reinterpret_cast<const char*>(&value), size));
}

static QByteArray randomText(QRandomGenerator& random)
{
    const QByteArray text = QByteArray("a\xc3\xa4\"\n ").repeated(int(random.bounded(3)));
    QByteArray out;
    append(out, quint64(text.size()), 4);
    return out + text;
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
    } else if (type == OpcUaType_StatusCode) {
        append(out, random.generate() | 1, 4);
    } else if (type == OpcUaType_NodeId || type == OpcUaType_ExpandedNodeId) {
        out = random.bounded(2) ? bytes("0003") : bytes("030700") + randomText(random);
    } else if (type == OpcUaType_QualifiedName) {
        append(out, random.bounded(1u << 16), 2);
        out += randomText(random);
    } else if (type == OpcUaType_LocalizedText) {
        out = '\x03' + randomText(random) + randomText(random);
    } else if (type == OpcUaType_ExtensionObject) {
        out = bytes("000501") + randomText(random);
    } else if (type == OpcUaType_DataValue) {
        out = '\x05' + randomVariant(random, depth - 1);
        if (out[1] == 0)
            out = bytes("04");
        append(out, (random.generate64() >> 3) + 1, 8);
    } else if (type == OpcUaType_Variant) {
        out = randomVariant(random, depth - 1);
    } else if (type == OpcUaType_DiagnosticInfo) {
        out = '\x10' + randomText(random);
    } else {
        out = randomText(random);
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

void tst_ValueEncodings::randomValues()
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

void tst_ValueEncodings::badBinary_data()
{
    QTest::addColumn<QByteArray>("binary");
    const auto row = [](const char* name, const char* hex) { QTest::newRow(name) << bytes(hex); };
    row("unknown type", "20");
    row("array of nothing", "80 01000000");
    row("dimensions without array", "46 01000000 01000000");
    row("negative length", "86 feffffff");
    row("length beyond the end", "86 ffffff7f 01000000");
    row("matrix that lacks elements", "c6 01000000 07000000 02000000 01000000 02000000");
    row("matrix with too large lengths", "c6 01000000 07000000 02000000 00000080 00000080");
    row("matrix without lengths", "c6 01000000 07000000 ffffffff");
    row("NodeId with flags", "11 80 01");
    row("unknown NodeId", "11 06 00");
    row("unknown LocalizedText", "15 04");
    row("unknown body", "16 00 00 03 00000000");
    row("something behind", "01 01 00");
}

void tst_ValueEncodings::badBinary()
{
    QFETCH(QByteArray, binary);
    UaVariant value(OpcUa_Int32(99));
    QCOMPARE(value.fromBinary(binary), OpcUa_BadDecodingError);
    QCOMPARE(value.toInt32(), 99);
}

void tst_ValueEncodings::badJson_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<OpcUa_StatusCode>("status");
    const auto row = [](const char* json, OpcUa_StatusCode status = OpcUa_BadDecodingError) {
        QTest::newRow(json) << QByteArray(json) << status;
    };
    row("");
    row("{");
    row("1,2");
    row("7");
    row(R"({"Type":26,"Body":1})");
    row(R"({"Type":6,"Body":"x"})");
    row(R"({"Type":6,"Body":1.5})");
    row(R"({"Type":6})");
    row(R"({"Type":3,"Body":256})", OpcUa_BadOutOfRange);
    row(R"({"Type":2,"Body":-129})", OpcUa_BadOutOfRange);
    row(R"({"Type":9,"Body":"18446744073709551616"})", OpcUa_BadOutOfRange);
    row(R"({"Type":8,"Body":1e300})", OpcUa_BadOutOfRange);
    row(R"({"Type":10,"Body":1e39})", OpcUa_BadOutOfRange);
    row(R"({"Type":11,"Body":"inf"})");
    row(R"({"Type":13,"Body":"today"})");
    row(R"({"Type":15,"Body":"A*=="})");
    row(R"({"Type":22,"Body":{"TypeId":{"Id":7},"Encoding":3}})");
    row(R"({"Type":17,"Body":{"IdType":4,"Id":1}})");
    row(R"({"Type":22,"Body":{"TypeId":{"Id":1},"Body":{"a":1}}})");
    row(R"({"Type":6,"Body":[1,2,3],"Dimensions":[2,2]})");
    row(R"({"Type":6,"Body":[1],"Dimensions":[]})");
    row(R"({"Type":6,"Body":1,"Dimensions":[1]})");
}

void tst_ValueEncodings::badJson()
{
    QFETCH(QByteArray, json);
    QFETCH(OpcUa_StatusCode, status);
    UaVariant value(OpcUa_Int32(99));
    QCOMPARE(value.fromJson(json), status);
    QCOMPARE(value.toInt32(), 99);
}

void tst_ValueEncodings::limits()
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
    UaEncodingLimits limits;
    limits.arrayLength = 2;
    limits.stringLength = 4;
    QCOMPARE(value.fromBinary(array, limits), OpcUa_Good);
    limits.stringLength = 3;
    QCOMPARE(value.fromBinary(array, limits), OpcUa_BadEncodingLimitsExceeded);
    limits.stringLength = 4;
    limits.arrayLength = 1;
    QCOMPARE(value.fromBinary(array, limits), OpcUa_BadEncodingLimitsExceeded);
    limits.arrayLength = 2;
    limits.memory = 100; // each text counts 32 bytes more than its own
    QCOMPARE(value.fromBinary(array, limits), OpcUa_BadEncodingLimitsExceeded);

    QByteArray large("\x8b\0\0\x80\0", 5); // 64 MB of Double
    large.resize(5 + (64 << 20));
    QCOMPARE(value.fromBinary(large), OpcUa_Good);
    QCOMPARE(value.arraySize(), 8 << 20);
}

void tst_ValueEncodings::qtValues_data()
{
    QTest::addColumn<QByteArray>("binary");
    QTest::addColumn<QVariant>("qt");
    const auto row = [](const char* name, const char* hex, const QVariant& qt) {
        QTest::newRow(name) << bytes(hex) << qt;
    };
    row("null", "00", QVariant());
    row("Boolean", "01 01", true);
    row("SByte", "02 80", QVariant::fromValue(qint8(-128)));
    row("UInt64", "09 ffffffffffffffff", ~quint64(0));
    row("String", "0c 02000000 c3a4", QString(QChar(0xe4)));
    row("DateTime", "0d 10a73ed5deb19d01", QDateTime::fromMSecsSinceEpoch(1, Qt::UTC));
    row("Guid", "0e 912b9672 75fa e64a 8d28 b404dc7daf63",
        QUuid("72962b91-fa75-4ae6-8d28-b404dc7daf63"));
    row("ByteString", "0f 03000000 000102", bytes("000102"));
    row("NodeId", "11 00 72", QVariant::fromValue(UaNodeId(114)));
    row("array", "86 02000000 01000000 02000000", QVariant::fromValue(QList<int>{1, 2}));
    row("empty array", "8b 00000000", QVariant::fromValue(QList<double>()));
    row("Strings", "8c 01000000 00000000", QStringList{""});
    row("matrix", "c6 04000000 01000000020000000300000004000000 02000000 02000000 02000000",
        QVariantList{QVariant::fromValue(QList<int>{1, 2}), QVariant::fromValue(QList<int>{3, 4})});
}

void tst_ValueEncodings::qtValues()
{
    QFETCH(QByteArray, binary);
    QFETCH(QVariant, qt);
    QCOMPARE(fromBytes(binary).toQVariant(), qt);
    UaVariant value(OpcUa_Int32(99));
    QCOMPARE(value.fromQVariant(qt), OpcUa_Good);
    QCOMPARE(value.toBinary().toHex(), binary.toHex());
}

void tst_ValueEncodings::dataValue()
{
    UaVariant value(OpcUa_Int32(99));
    QCOMPARE(value.fromQVariant(QVariantList{1, 2}), OpcUa_Good);
    QCOMPARE(value, fromBytes(bytes("86 02000000 01000000 02000000")));
    QCOMPARE(value.fromQVariant(QVariantList{1, "x"}), OpcUa_Good);
    QCOMPARE(value, fromBytes(bytes("98 02000000 0601000000 0c 01000000 78")));
    QCOMPARE(value.fromQVariant(QVariant::fromValue(this)), OpcUa_BadTypeMismatch);
    QCOMPARE(value.arraySize(), 2);

    OpcUa_DataValue stack = {};
    stack.Status = OpcUa_Bad;
    stack.SourceTimestamp = 5;
    stack.ServerTimestamp = 6;
    stack.SourcePicoseconds = 7;
    stack.ServerPicoseconds = 8;
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

QTEST_GUILESS_MAIN(tst_ValueEncodings)
#include "tst_valueencodings.moc"
