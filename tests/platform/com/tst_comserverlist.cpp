#include "platform/com/comserverlist_p.h"
#include "support/comstandin.h"
#include "support/warnings.h"

#include <QtTest/QtTest>

using namespace comsurface;
using namespace comstandin;

namespace {

constexpr HRESULT accessDenied = HRESULT(0x80070005);
constexpr HRESULT serverUnavailable = HRESULT(0x800706BA);

struct Answer
{
    QStringList progIds;
    QStringList failures;
};

Answer enumerate(
    const std::u16string& host = {}, ComServerKind kind = ComServerKind::DataAccess,
    const std::function<bool()>& stop = [] { return false; })
{
    Answer answer;
    const auto failed = [&answer](ComCall call, std::uint32_t result) {
        static const char* const names[] = {"CoInitializeEx", "CoCreateInstanceEx",
                                            "EnumClassesOfCategories", "GetClassDetails"};
        answer.failures.append(
            QStringLiteral("%1 %2").arg(QLatin1String(names[int(call)])).arg(result, 8, 16));
    };
    for (const ComServer& server : enumerateComServers(host, kind, failed, stop))
        answer.progIds.append(QString::fromStdU16String(server.progId));
    return answer;
}

} // namespace

class TestComServerList : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }
    void cleanup()
    {
        comstandin::clear();
        QCOMPARE(initialized, 0);
        QCOMPARE(taskBlocks, 0);
    }

    void kindsAndComputers()
    {
        Computer here{{{dataAccess1, u"Old.Da.1"},
                       {alarms, u"Plant.Ae.1"},
                       {dataAccess2, u"Plant.Da.2"},
                       {IID_IOPCEnumGUID, u"Not.Opc"},
                       {dataAccess3, u"Wörk.Da.3"}}};
        Computer there{{{dataAccess2, u"There.1"}}};
        computers = {{u"", &here}, {u"plant7", &there}};
        const Answer da = enumerate();
        const Answer ae = enumerate({}, ComServerKind::AlarmsAndEvents);
        const Answer remote = enumerate(u"plant7");
        QCOMPARE(da.progIds,
                 QStringList({"Old.Da.1", "Plant.Da.2", QString::fromUtf8("Wörk.Da.3")}));
        QCOMPARE(ae.progIds, QStringList("Plant.Ae.1"));
        QCOMPARE(remote.progIds, QStringList("There.1"));
        QCOMPARE(da.failures + ae.failures + remote.failures, QStringList());
        QCOMPARE(here.contexts, QList<DWORD>({0x17, 0x17}));
        QCOMPARE(there.contexts, QList<DWORD>({0x10}));
        QCOMPARE(here.objects + there.objects, 0);
    }

    void ends_data()
    {
        QTest::addColumn<HRESULT>("lastNext");
        QTest::addColumn<bool>("endless");
        QTest::addColumn<int>("stopAfter");
        QTest::addColumn<int>("count");
        QTest::newRow("by a failing Next") << serverUnavailable << false << INT_MAX << 1;
        QTest::newRow("by the limit") << S_FALSE << true << INT_MAX << int(maxComServers);
        QTest::newRow("by the caller") << S_FALSE << true << 3 << 3;
    }
    void ends()
    {
        QFETCH(HRESULT, lastNext);
        QFETCH(bool, endless);
        QFETCH(int, stopAfter);
        Computer computer{{{dataAccess1, u"Again.1"}}, S_OK, lastNext, endless};
        computers[u""] = &computer;
        int asked = 0;
        const Answer answer = enumerate({}, ComServerKind::DataAccess,
                                        [&asked, stopAfter] { return ++asked > stopAfter; });
        QTEST(int(answer.progIds.size()), "count");
        QCOMPARE(computer.objects, 0);
    }

    void failingCalls()
    {
        Computer computer{{{dataAccess2, u"Plant.Da.2"}}};
        const auto failures = [&](const Answers& failing, const std::u16string& host = {}) {
            computers[u""] = &computer;
            answers = failing;
            const Answer answer = enumerate(host);
            return answer.progIds.isEmpty() && computer.objects == 0 ? answer.failures.join(u',')
                                                                     : QStringLiteral("servers");
        };
        QCOMPARE(failures({HRESULT(0x80010106), S_OK, S_OK}), "CoInitializeEx 80010106");
        QCOMPARE(failures({S_OK, accessDenied, S_OK}), "CoCreateInstanceEx 80070005");
        QCOMPARE(failures({S_OK, S_OK, E_NOINTERFACE}), "CoCreateInstanceEx 80004002");
        QCOMPARE(failures({}, u"plant7"), "CoCreateInstanceEx 80040154");
        computer.enumeration = accessDenied;
        QCOMPARE(failures({}), "EnumClassesOfCategories 80070005");
        computer.creation = serverUnavailable; // it has gone
        QCOMPARE(failures({}), "CoCreateInstanceEx 800706ba");
    }

    void failedDetailsCostOneServer()
    {
        const std::u16string longest(maxProgIdLength, u'a');
        Computer computer{{{dataAccess1, u"First.1"},
                           {dataAccess1, u"", accessDenied},
                           {dataAccess1, std::nullopt},
                           {dataAccess1, longest + u'a'},
                           {dataAccess1, longest},
                           {dataAccess1, u"Last.1"}}};
        computers[u""] = &computer;
        QCOMPARE(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK); // as a host may have done
        const Answer answer = enumerate();
        QCOMPARE(initialized, 1);
        CoUninitialize();
        QCOMPARE(answer.progIds,
                 QStringList({"First.1", QString::fromStdU16String(longest), "Last.1"}));
        QCOMPARE(answer.failures,
                 QStringList({"GetClassDetails 80070005", "GetClassDetails 80004003",
                              "GetClassDetails 8007000d"}));
        QCOMPARE(computer.objects, 0);
    }
};

QTEST_GUILESS_MAIN(TestComServerList)
#include "tst_comserverlist.moc"
