#include "mailbox_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QEvent>
#include <QtCore/QPointer>

#include <iterator>
#include <utility>

namespace {

constexpr qint64 longestTurn = 4; // ms, then other events come first

} // namespace

Mailbox::~Mailbox()
{
    std::deque<std::function<void()>> left; // goes after the lock
    const std::lock_guard<std::mutex> lock(m_mutex);
    left.swap(m_functions);
}

void Mailbox::post(std::function<void()> function)
{
    add([&] { m_functions.push_back(std::move(function)); });
}

void Mailbox::post(std::vector<std::function<void()>> functions)
{
    add([&] { std::move(functions.begin(), functions.end(), std::back_inserter(m_functions)); });
}

template <class Add>
void Mailbox::add(Add add)
{
    bool isFirst;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        add();
        isFirst = !std::exchange(m_isPosted, true);
    }
    if (isFirst)
        wake(); // without the lock, which the thread that wakes up takes first
}

// The event only says that there is something: what it is never passes by way of the event queue,
// outside the lock.
void Mailbox::wake()
{
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

bool Mailbox::event(QEvent* event)
{
    if (event->type() != QEvent::User)
        return QObject::event(event);
    const QPointer<Mailbox> self(this); // a function may delete this
    QElapsedTimer turn;
    turn.start();
    for (bool isFirst = true; self; isFirst = false) {
        std::function<void()> function;
        bool isMore = false;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (isFirst)
                m_isPosted = false;
            if (m_functions.empty())
                break;
            function.swap(m_functions.front());
            m_functions.pop_front();
            // The rest also comes where this one has an event loop of its own.
            isMore = !m_functions.empty() && !std::exchange(m_isPosted, true);
        }
        if (isMore)
            wake();
        function();
        if (turn.elapsed() >= longestTurn)
            break; // the event for the rest is under way
    }
    return true;
}
