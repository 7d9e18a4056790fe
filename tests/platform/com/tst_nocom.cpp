#include "platform/com/comserverlist_p.h"

#include <QtTest/QtTest>

// What the library itself says where there is no COM.
class TestNoCom : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void noClassIsRegistered()
    {
        QList<quint32> failures;
        const auto failed = [&](comsurface::ComCall call, std::uint32_t code) {
            failures << quint32(call) << code;
        };
        for (const char16_t* host : {u"", u"plant7"})
            QVERIFY(
                comsurface::enumerateComServers(host, {}, failed, [] { return false; }).empty());
        QCOMPARE(failures, QList<quint32>({1, 0x80040154, 1, 0x80040154})); // CoCreateInstanceEx
    }
};

QTEST_GUILESS_MAIN(TestNoCom)
#include "tst_nocom.moc"
