#include "platform/threads/uathreadpool.h"
#include "support/warnings.h"

#include <functional>
#include <memory>
#include <stdexcept>

namespace {

std::atomic<int> executed = 0;
std::atomic<int> deleted = 0;

struct Job : UaThreadPoolJob
{
    explicit Job(std::function<void()> function) : work(std::move(function)) {}
    ~Job() override { ++deleted; }
    void execute() override
    {
        ++executed;
        work();
    }
    const std::function<void()> work;
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
        QList<int> order, right;
        UaThreadPool pool(-3, 0); // nonsense gives one thread
        QTest::ignoreMessage(QtWarningMsg, "UaThreadPool: a job ended with an exception: no luck");
        QTest::ignoreMessage(QtWarningMsg, "UaThreadPool: a job ended with an unknown exception");
        pool.addJob(new Job([] { throw std::runtime_error("no luck"); }));
        pool.addJob(new Job([] { throw 1; }));
        pool.addJob(nullptr);
        for (int i = 0; i < 500; right += i++)
            pool.addJob(new Job([&order, i] { order += i; }));
        QTRY_COMPARE(deleted, 502);
        QCOMPARE(order, right);
    }

    void threadsComeAndGo()
    {
        QSemaphore gate;
        std::atomic<int> started = 0, ended = 0;
        const auto count = [&ended](std::nullptr_t) { ++ended; };
        {
            UaThreadPool pool(2, 6);
            for (int i = 0; i < 12; ++i)
                pool.addJob(new Job([&] {
                    thread_local const std::shared_ptr<void> thread((++started, nullptr), count);
                    gate.acquire();
                }));
            QTRY_COMPARE(executed, 6); // all of them are held up
            gate.release(12);
            QTRY_COMPARE(deleted, 12);
            QTRY_COMPARE(ended, 4);
        }
        QCOMPARE(started, 6);
        QTRY_COMPARE(ended, 6); // what is of a thread goes a little later than the thread
    }

    // Those that are interrupted add more, from many threads, which are not executed.
    void endInterruptsAndDropsTheQueue()
    {
        const auto unwanted = [] { qFatal("a queued job was executed"); };
        std::atomic<int> kept = 0;
        UaThreadPool(1, 3); // has nothing to end
        {
            UaThreadPool pool(10, 30);
            for (int i = 0; i < 30; ++i)
                pool.addJob(new Job([&] {
                    while (!QThread::currentThread()->isInterruptionRequested())
                        QThread::msleep(1);
                    const auto data = std::make_shared<int>();
                    pool.addJob(new Job([data, unwanted] { unwanted(); }));
                    kept += int(data.use_count()) - 1; // deleted at once
                }));
            for (int i = 0; i < 1000; ++i)
                pool.addJob(new Job(unwanted));
            QTRY_COMPARE(executed, 30);
            QCOMPARE(deleted, 0);
        }
        QCOMPARE(executed, 30);
        QCOMPARE(deleted, 1060);
        QCOMPARE(kept, 0);
    }
};

QTEST_GUILESS_MAIN(TestUaThreadPool)
#include "tst_uathreadpool.moc"
