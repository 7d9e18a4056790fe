#include "platform/threads/uathreadpool.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QSemaphore>
#include <QtCore/QThread>
#include <QtTest/QtTest>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

/// Counts what becomes of the jobs of a test.
struct Fate
{
    std::atomic<int> executed = 0;
    std::atomic<int> deleted = 0;
};

class Job : public UaThreadPoolJob
{
public:
    explicit Job(Fate& fate, std::function<void()> work = {})
        : m_fate(fate), m_work(std::move(work))
    {
    }
    ~Job() override { ++m_fate.deleted; }
    void execute() override
    {
        ++m_fate.executed;
        if (m_work)
            m_work();
    }

private:
    Fate& m_fate;
    std::function<void()> m_work;
};

void waitForInterruption()
{
    while (!QThread::currentThread()->isInterruptionRequested())
        QThread::msleep(1);
}

} // namespace

class TestUaThreadPool : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(".?")); }

    void oneThreadKeepsTheOrder()
    {
        Fate fate;
        QList<int> order;
        UaThreadPool pool(1, 1);
        for (int i = 0; i < 500; ++i)
            pool.addJob(new Job(fate, [&order, i] { order.append(i); }));
        QTRY_COMPARE(fate.deleted, 500);
        for (int i = 0; i < 500; ++i)
            QCOMPARE(order.at(i), i);
    }

    void threadsAtOnce_data()
    {
        QTest::addColumn<int>("min");
        QTest::addColumn<int>("max");
        QTest::addColumn<int>("expected");
        QTest::newRow("discovery") << 10 << 30 << 30;
        QTest::newRow("one") << 1 << 1 << 1;
        QTest::newRow("none kept") << 0 << 4 << 4;
        QTest::newRow("nonsense gives one thread") << -3 << 0 << 1;
        QTest::newRow("the minimum wins") << 5 << 2 << 5;
    }
    void threadsAtOnce()
    {
        QFETCH(int, min);
        QFETCH(int, max);
        QFETCH(int, expected);
        Fate fate;
        QSemaphore gate;
        UaThreadPool pool(min, max);
        // All the threads must be held up by the gate, or no further job would be executed.
        for (int i = 0; i < 2 * expected; ++i)
            pool.addJob(new Job(fate, [&gate] { gate.acquire(); }));
        QTRY_COMPARE(fate.executed, expected);
        QTest::qWait(20);
        QCOMPARE(fate.executed, expected);
        gate.release(2 * expected);
        QTRY_COMPARE(fate.deleted, 2 * expected);
    }

    void minimumIsKeptAndTheRestEnds()
    {
        Fate fate;
        QSemaphore gate;
        std::atomic<int> started = 0;
        std::atomic<int> ended = 0;
        const auto work = [&] {
            thread_local bool known = false;
            if (!std::exchange(known, true)) {
                ++started;
                QThread* self = QThread::currentThread();
                connect(
                    self, &QThread::finished, self, [&ended] { ++ended; }, Qt::DirectConnection);
            }
        };
        auto pool = std::make_unique<UaThreadPool>(2, 6);
        for (int i = 0; i < 6; ++i)
            pool->addJob(new Job(fate, [&] {
                work();
                gate.acquire();
            }));
        QTRY_COMPARE(fate.executed, 6);
        gate.release(6);
        QTRY_COMPARE(ended, 4);
        QCOMPARE(started, 6);

        // One at a time, so a kept thread takes each; should both be just about to wait, another is
        // started and ends again.
        for (int i = 0; i < 20; ++i) {
            pool->addJob(new Job(fate, work));
            QTRY_COMPARE(fate.deleted, 7 + i);
        }
        QTRY_COMPARE(started - ended, 2);
        QVERIFY(started < 26);

        pool.reset();
        QCOMPARE(ended, started);
    }

    // Jobs that are added by those that are interrupted are not executed either.
    void destructionDropsTheQueueAndInterrupts()
    {
        Fate fate;
        {
            UaThreadPool pool(10, 30);
            const auto unwanted = [] { qFatal("a queued job was executed"); };
            for (int i = 0; i < 30; ++i)
                pool.addJob(new Job(fate, [&] {
                    waitForInterruption();
                    pool.addJob(new Job(fate, unwanted));
                }));
            for (int i = 0; i < 1000; ++i)
                pool.addJob(new Job(fate, unwanted));
            QTRY_COMPARE(fate.executed, 30);
            QCOMPARE(fate.deleted, 0);
        }
        QCOMPARE(fate.executed, 30);
        QCOMPARE(fate.deleted, 1060);
    }

    void jobsFromManyThreadsAndJobs()
    {
        Fate fate;
        UaThreadPool pool(2, 8);
        std::vector<std::unique_ptr<QThread>> sources;
        for (int i = 0; i < 4; ++i) {
            sources.emplace_back(QThread::create([&] {
                for (int j = 0; j < 500; ++j)
                    pool.addJob(new Job(fate, [&] { pool.addJob(new Job(fate)); }));
            }));
            sources.back()->start();
        }
        for (const auto& source : sources)
            source->wait();
        QTRY_COMPARE(fate.deleted, 4000);
        QCOMPARE(fate.executed, 4000);
        // Pools that go at once.
        for (int i = 0; i < 200; ++i) {
            UaThreadPool brief(1, 3);
            for (int j = 0; j < i % 5; ++j)
                brief.addJob(new Job(fate));
        }
        QCOMPARE(fate.deleted, 4400);
    }

    void exceptionEndsTheJobAlone()
    {
        Fate fate;
        UaThreadPool pool(1, 1);
        QTest::ignoreMessage(QtWarningMsg, "UaThreadPool: a job ended with an exception: no luck");
        QTest::ignoreMessage(QtWarningMsg, "UaThreadPool: a job ended with an unknown exception");
        pool.addJob(new Job(fate, [] { throw std::runtime_error("no luck"); }));
        pool.addJob(new Job(fate, [] { throw 1; }));
        pool.addJob(nullptr);
        pool.addJob(new Job(fate));
        QTRY_COMPARE(fate.deleted, 3);
        QCOMPARE(fate.executed, 3);
    }
};

QTEST_GUILESS_MAIN(TestUaThreadPool)
#include "tst_uathreadpool.moc"
