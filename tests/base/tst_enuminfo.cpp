#include <Kestrel/QvelEnumInfo>

#include "support/warnings.h"

#include <QtTest/QtTest>

using Names = QMap<int, QString>;

class EnumInfoTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void texts_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<Names>("names");
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("text");
        const Names flags = {{0, "None"}, {1, "A"}, {2, "B"}, {4, "C"}};
        QTest::newRow("default") << 0 << Names() << 7 << "7";
        QTest::newRow("names without a kind") << 0 << flags << 1 << "1";
        QTest::newRow("unknown kind") << 3 << flags << 1 << "1";
        QTest::newRow("member") << 1 << Names{{1, "A"}} << 1 << "1 (A)";
        QTest::newRow("no member") << 1 << Names{{1, "A"}} << 2 << "2";
        QTest::newRow("negative member") << 1 << Names{{-3, "%1 low"}} << -3 << "-3 (%1 low)";
        QTest::newRow("flags") << 2 << flags << 5 << "5 (A | C)";
        QTest::newRow("no flag") << 2 << flags << 0 << "0 (None)";
        QTest::newRow("no flag, no name") << 2 << Names{{1, "A"}} << 0 << "0";
        QTest::newRow("unnamed flag with a name for none") << 2 << flags << 8 << "8";
        QTest::newRow("unnamed flag") << 2 << Names{{1, "A"}} << 8 << "8";
        QTest::newRow("any common bit") << 2 << Names{{3, "AB"}} << 1 << "1 (AB)";
        QTest::newRow("negative flags") << 2 << flags << -1 << "-1 (A | B | C)";
        QTest::newRow("highest bit")
            << 2 << Names{{INT_MIN, "H"}, {1, "A"}} << INT_MIN << "-2147483648 (H)";
    }
    void texts()
    {
        QFETCH(int, kind);
        QFETCH(Names, names);
        QvelEnumInfo info;
        info.kind = kind;
        info.values = names;
        QFETCH(int, value);
        QTEST(info.toString(value), "text");
    }
};

QTEST_GUILESS_MAIN(EnumInfoTest)
#include "tst_enuminfo.moc"
