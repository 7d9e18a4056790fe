#include "platform/threads/uathreadpool.h"
#include "support/warnings.h"

#include <QtCore/QSemaphore>
#include <QtCore/QThread>
#include <QtTest/QtTest>

#include <functional>
#include <stdexcept>
#include <thread>

namespace {

std::atomic<int> executed = 0;
std::atomic<int> deleted = 0;

class Job : public UaThreadPoolJob
{
public:
    explicit Job(std::function<void()> work = [] {}) : m_work(std::move(work)) {}
    ~Job() override { ++deleted; }
    void execute() override
    {
        ++executed;
        m_work();
    }

private:
    const std::function<void()> m_work;
};

} // namespace

class TestUaThreadPool : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        executed = deleted = 0;
    }

    void keepsTheOrderAndSurvivesExceptions()
    {
        QList<int> order;
        UaThreadPool pool(-3, 0); // nonsense gives one thread
        QTest::ignoreMessage(QtWarningMsg, "UaThreadPool: a job ended with an exception: no luck");
        QTest::ignoreMessage(QtWarningMsg, "UaThreadPool: a job ended with an unknown exception");
        pool.addJob(new Job([] { throw std::runtime_error("no luck"); }));
        pool.addJob(new Job([] { throw 1; }));
        pool.addJob(nullptr);
        for (int i = 0; i < 500; ++i)
            pool.addJob(new Job([&order, i] { order.append(i); }));
        QTRY_COMPARE(deleted, 502);
        for (int i = 0; i < 500; ++i)
            QCOMPARE(order.at(i), i);
    }

    void threadsComeAndGo()
    {
        QSemaphore gate;
        std::atomic<int> started = 0, ended = 0;
        {
            UaThreadPool pool(2, 6);
            for (int i = 0; i < 12; ++i)
                pool.addJob(new Job([&] {
                    thread_local bool isKnown = false;
                    QThread* const thread = QThread::currentThread();
                    if (!std::exchange(isKnown, true) && ++started)
                        connect(
                            thread, &QThread::finished, thread, [&] { ++ended; },
                            Qt::DirectConnection);
                    gate.acquire();
                }));
            QTRY_COMPARE(executed, 6); // all of them are held up
            QTest::qWait(20);
            QCOMPARE(executed, 6);
            gate.release(12);
            QTRY_COMPARE(deleted, 12);
            QTRY_COMPARE(ended, started - 2);
        }
        QCOMPARE(ended, started);
    }

    // Jobs come from many threads. Those that are interrupted add more, which are not executed.
    void endInterruptsAndDropsTheQueue()
    {
        const auto unwanted = [] { qFatal("a queued job was executed"); };
        UaThreadPool(1, 3); // has nothing to end
        {
            UaThreadPool pool(10, 30);
            std::vector<std::thread> sources;
            for (int i = 0; i < 30; ++i)
                sources.emplace_back([&] {
                    pool.addJob(new Job([&] {
                        while (!QThread::currentThread()->isInterruptionRequested())
                            QThread::msleep(1);
                        pool.addJob(new Job(unwanted));
                    }));
                });
            for (std::thread& source : sources)
                source.join();
            for (int i = 0; i < 1000; ++i)
                pool.addJob(new Job(unwanted));
            QTRY_COMPARE(executed, 30);
            QCOMPARE(deleted, 0);
        }
        QCOMPARE(executed, 30);
        QCOMPARE(deleted, 1060);
    }
};

QTEST_GUILESS_MAIN(TestUaThreadPool)
#include "tst_uathreadpool.moc"
