#include "platform/com/comserverlist_p.h"
#include "support/comstandin.h"
#include "support/warnings.h"

using namespace comstandin;

namespace {

constexpr HRESULT accessDenied = HRESULT(0x80070005);

/// The servers of a computer, then the calls that failed, the first letters of which tell them.
QString enumerate(const std::u16string& host = {}, ComServerKind kind = ComServerKind::DataAccess,
                  int stopAfter = INT_MAX)
{
    QStringList failures, told;
    const auto failed = [&failures](ComCall call, std::uint32_t result) {
        failures += "ICEG"[int(call)] + QString::number(result, 16);
    };
    const auto stop = [&stopAfter] { return stopAfter-- == 0; };
    for (const ComServer& server : enumerateComServers(host, kind, failed, stop))
        told += QString::fromStdU16String(server.progId);
    return (told + failures).join(' ');
}

} // namespace

class TestComServerList : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }
    void cleanup()
    {
        clear();
        QCOMPARE(initialized, 0);
        QCOMPARE(taskBlocks, 0);
    }

    void kindsAndComputers()
    {
        Computer here{{{dataAccess1, u"Old.Da.1"},
                       {alarms, u"Plant.Ae.1"},
                       {dataAccess2, u"Plant.Da.2"},
                       {{}, u"Not.Opc"},
                       {dataAccess3, u"Wörk.Da.3"}}};
        Computer there{{{dataAccess2, u"There.1"}}};
        computers = {{u"", &here}, {u"plant7", &there}};
        QCOMPARE(enumerate(), QString::fromUtf8("Old.Da.1 Plant.Da.2 Wörk.Da.3"));
        QCOMPARE(enumerate({}, ComServerKind::AlarmsAndEvents), "Plant.Ae.1");
        QCOMPARE(enumerate(u"plant7"), "There.1");
        QCOMPARE(here.contexts, QList<DWORD>({0x17, 0x17}));
        QCOMPARE(there.contexts, QList<DWORD>({0x10}));
        QCOMPARE(here.objects + there.objects, 0);
    }

    void ends()
    {
        Computer computer{{{dataAccess1, u"A"}}, S_OK, accessDenied};
        computers[u""] = &computer;
        QCOMPARE(enumerate(), "A"); // by a failing Next
        computer.endless = true;
        QCOMPARE(enumerate({}, {}, 3), "A A A");
        QCOMPARE(enumerate().count('A'), maxComServers);
        QCOMPARE(computer.objects, 0);
    }

    void failingCalls()
    {
        Computer computer{{{dataAccess2, u"Plant.Da.2"}}};
        computers[u""] = &computer;
        const std::pair<HRESULT*, const char*> calls[] = {
            {&answers.coInitializeEx, "I80070005"},
            {&answers.coCreateInstanceEx, "C80070005"},
            {&answers.interfaceResult, "C80070005"},
            {&computer.enumeration, "E80070005"},
            {&computer.servers[0].details, "G80070005"}};
        for (const auto& [call, told] : calls) {
            *call = accessDenied;
            QCOMPARE(enumerate(), told);
            *call = S_OK;
        }
        QCOMPARE(enumerate(u"plant7"), "C80040154");
        QCOMPARE(computer.objects, 0);
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
        QCOMPARE(enumerate(), "First.1 " + QString::fromStdU16String(longest) +
                                  " Last.1 G80070005 G80004003 G8007000d");
        QCOMPARE(initialized, 1);
        CoUninitialize();
        QCOMPARE(computer.objects, 0);
    }
};

QTEST_GUILESS_MAIN(TestComServerList)
#include "tst_comserverlist.moc"
