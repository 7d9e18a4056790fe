#include <Kestrel/QvelEnumInfo>

#include <QtTest/QtTest>

class EditorBasesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void enumTexts()
    {
        const QMap<int, QString> flags = {{0, "None"}, {1, "A"}, {2, "B"}, {4, "C"}};
        struct Row
        {
            int kind;
            QMap<int, QString> names;
            int value;
            const char* text;
        };
        for (const Row& row : {Row{0, flags, 1, "1"},
                               {3, flags, 1, "1"}, // a kind that there is none of
                               {1, {{1, "A"}}, 1, "1 (A)"},
                               {1, {{1, "A"}}, 2, "2"},
                               {1, {{-3, "%1 low"}}, -3, "-3 (%1 low)"},
                               {2, flags, 5, "5 (A | C)"},
                               {2, flags, 0, "0 (None)"},
                               {2, flags, 8, "8"}, // a bit without a name is not "None"
                               {2, flags, -1, "-1 (A | B | C)"},
                               {2, {{1, "A"}}, 0, "0"},
                               {2, {{3, "AB"}}, 1, "1 (AB)"}, // any common bit
                               {2, {{INT_MIN, "H"}, {1, "A"}}, INT_MIN, "-2147483648 (H)"}}) {
            QvelEnumInfo info;
            info.kind = row.kind;
            info.values = row.names;
            QCOMPARE(info.toString(row.value), QString(row.text));
        }
    }
};

QTEST_APPLESS_MAIN(EditorBasesTest)
#include "tst_editorbases.moc"
