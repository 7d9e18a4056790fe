#pragma once

#include <QtCore/QObject>

#include <deque>
#include <functional>
#include <mutex>

/// Runs functions on the thread that it lives on, one event each, in the order in which they were
/// posted; those that are left go with it.
///
/// What they hold goes from thread to thread under a lock of its own. Under that of Qt's event
/// queue it did, too, but there ThreadSanitizer, which does not look into Qt, can tell nothing.
class Mailbox : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    ~Mailbox() override;
    /// Any thread.
    void post(std::function<void()> function);

private:
    Q_INVOKABLE void take();

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_functions;
};
