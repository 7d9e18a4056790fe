#pragma once

#include <QtCore/QObject>

#include <deque>
#include <functional>
#include <mutex>
#include <vector>

/// Runs functions on the thread that it lives on, in the order in which they were posted, several
/// in one event, but never for long; those that are left go with it.
///
/// What they hold goes from thread to thread under a lock of its own. Under that of Qt's event
/// queue it did, too, but there ThreadSanitizer, which does not look into Qt, can tell nothing.
class Mailbox : public QObject
{
public:
    using QObject::QObject;
    ~Mailbox() override;
    /// Any thread.
    void post(std::function<void()> function);
    void post(std::vector<std::function<void()>> functions);

    bool event(QEvent* event) override;

private:
    template <class Add>
    void add(Add add);
    void wake();

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_functions;
    bool m_isPosted = false; // an event is under way
};
