#include "uathreadpool.h"

#include <QtCore/QDebug>
#include <QtCore/QThread>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

UaThreadPoolJob::~UaThreadPoolJob() = default;

namespace {

using Job = std::unique_ptr<UaThreadPoolJob>;
using Thread = std::unique_ptr<QThread>;

void executeGuarded(UaThreadPoolJob& job)
{
    try {
        job.execute();
    } catch (const std::exception& e) {
        qWarning("UaThreadPool: a job ended with an exception: %s", e.what());
    } catch (...) {
        qWarning("UaThreadPool: a job ended with an unknown exception");
    }
}

void join(const std::vector<Thread>& threads)
{
    for (const Thread& thread : threads)
        thread->wait();
}

} // namespace

// Not a QThreadPool: that keeps no minimum of threads, and where the system gives no more of them
// it loses jobs and never ends.
class UaThreadPool::Private
{
public:
    Private(int minThreads, int maxThreads)
        : m_max(std::max({1, minThreads, maxThreads})), m_min(std::max(0, minThreads))
    {
    }

    void add(Job job);
    void close();

private:
    void startThread();
    void work();

    const int m_max;
    const int m_min;
    std::mutex m_mutex; // guards all that follows
    std::condition_variable m_jobAdded;
    std::deque<Job> m_queue;
    std::vector<Thread> m_threads; // that take jobs
    std::vector<Thread> m_ended;   // that take no more, yet to be joined
    int m_idle = 0;                // threads that wait for a job
    bool m_closing = false;
};

void UaThreadPool::Private::add(Job job)
{
    std::vector<Thread> ended;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_closing)
            return; // `job` goes after the lock does, as its destructor may do anything
        m_queue.push_back(std::move(job));
        if (m_queue.size() > std::size_t(m_idle) && m_threads.size() < std::size_t(m_max))
            startThread();
        else
            m_jobAdded.notify_one();
        ended.swap(m_ended);
    }
    join(ended);
}

void UaThreadPool::Private::startThread()
{
    Thread thread(QThread::create([this] { work(); }));
    thread->setObjectName(QStringLiteral("UaThreadPool"));
    thread->start();
    // Where the system gives no more threads, those that there are get to the job; Qt has warned.
    if (thread->isRunning() || thread->isFinished())
        m_threads.push_back(std::move(thread));
}

void UaThreadPool::Private::work()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_closing) {
        if (!m_queue.empty()) {
            Job job = std::move(m_queue.front());
            m_queue.pop_front();
            lock.unlock();
            executeGuarded(*job);
            job.reset();
            lock.lock();
        } else if (m_threads.size() > std::size_t(m_min)) {
            const auto self =
                std::find_if(m_threads.begin(), m_threads.end(), [](const Thread& thread) {
                    return thread.get() == QThread::currentThread();
                });
            m_ended.push_back(std::move(*self));
            m_threads.erase(self);
            return;
        } else {
            ++m_idle;
            m_jobAdded.wait(lock);
            --m_idle;
        }
    }
}

void UaThreadPool::Private::close()
{
    std::deque<Job> dropped;
    std::vector<Thread> threads;
    std::vector<Thread> ended;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_closing = true;
        dropped.swap(m_queue);
        threads.swap(m_threads);
        ended.swap(m_ended);
        for (const Thread& thread : threads)
            thread->requestInterruption();
        m_jobAdded.notify_all();
    }
    dropped.clear();
    join(threads);
    join(ended);
    // ThreadSanitizer does not see into QThread::wait(); it does see who had the lock before.
    const std::lock_guard<std::mutex> lock(m_mutex);
}

UaThreadPool::UaThreadPool(int minThreads, int maxThreads)
    : d(std::make_unique<Private>(minThreads, maxThreads))
{
}

UaThreadPool::~UaThreadPool()
{
    d->close();
}

void UaThreadPool::addJob(UaThreadPoolJob* job)
{
    if (job)
        d->add(Job(job));
}
