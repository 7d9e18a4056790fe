#include "mailbox_p.h"

Mailbox::~Mailbox()
{
    std::deque<std::function<void()>> left; // goes after the lock
    const std::lock_guard<std::mutex> lock(m_mutex);
    left.swap(m_functions);
}

void Mailbox::post(std::function<void()> function)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_functions.push_back(std::move(function));
    }
    // By its name: a functor would be written here and read there, past the lock.
    QMetaObject::invokeMethod(this, "take", Qt::QueuedConnection);
}

void Mailbox::take()
{
    std::function<void()> function;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        function.swap(m_functions.front());
        m_functions.pop_front();
    }
    function(); // which may delete this
}
