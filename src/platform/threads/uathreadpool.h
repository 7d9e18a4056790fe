#pragma once

#include "../../kestrelexport.h"

#include <memory>

/// A piece of work for a UaThreadPool.
class KESTREL_EXPORT UaThreadPoolJob
{
public:
    virtual ~UaThreadPoolJob();
    /// Called once, on a thread of the pool. Long work ends early when
    /// QThread::currentThread()->isInterruptionRequested(). An exception ends the job and is
    /// reported as a warning; the thread goes on with the next job.
    virtual void execute() = 0;
};

/// Threads that work off a queue of jobs in the order of their arrival.
class KESTREL_EXPORT UaThreadPool
{
public:
    /// Keeps `minThreads` threads once they were needed, and starts up to `maxThreads` (at least
    /// one; no fewer than `minThreads`). A thread above the minimum ends when the queue is empty.
    UaThreadPool(int minThreads, int maxThreads);
    /// Deletes what is queued without executing it, interrupts what runs and waits for it. Not to
    /// be called by a job of this pool.
    ~UaThreadPool();
    UaThreadPool(const UaThreadPool&) = delete;
    UaThreadPool& operator=(const UaThreadPool&) = delete;

    /// Takes the job over; the pool deletes it after its execution, or at once when a job adds it
    /// while the pool is being destroyed. Null is ignored. Any thread.
    void addJob(UaThreadPoolJob* job);

private:
    class Private;
    std::unique_ptr<Private> d;
};
