#include "completions_p.h"

#include "session/mailbox_p.h"

#include <QtCore/QDeadlineTimer>

#include <atomic>
#include <utility>

namespace {

constexpr int moment = 1;    // ms
constexpr int some = 8;      // are handed out at once
constexpr int patience = 50; // ms, with the host's thread

} // namespace

class Completions::Completion
{
public:
    explicit Completion(std::function<void()> complete) : m_complete(std::move(complete)) {}

    // The first one who calls it runs the function.
    void run()
    {
        if (!m_isTaken.exchange(true))
            std::exchange(m_complete, {})();
    }
    bool isTaken() const { return m_isTaken; }

    QDeadlineTimer deadline;

private:
    std::function<void()> m_complete;
    std::atomic<bool> m_isTaken = false;
};

Completions::Completions(Mailbox& host, QObject* parent)
    : QObject(parent), m_host(host), m_moment(this), m_late(this)
{
    m_moment.setSingleShot(true);
    m_late.setSingleShot(true);
    connect(&m_moment, &QTimer::timeout, this, &Completions::handOut);
    connect(&m_late, &QTimer::timeout, this, &Completions::completeLate);
}

Completions::~Completions()
{
    for (const auto& completion : m_handedOut)
        completion->run();
    for (const auto& completion : m_added)
        completion->run();
}

void Completions::add(std::function<void()> complete)
{
    m_added.push_back(std::make_shared<Completion>(std::move(complete)));
}

void Completions::handOutLater()
{
    if (m_added.size() >= some)
        handOut();
    else if (!m_added.empty() && !m_moment.isActive())
        m_moment.start(moment);
}

void Completions::handOut()
{
    m_moment.stop();
    if (m_added.empty())
        return;
    while (!m_handedOut.empty() && m_handedOut.front()->isTaken())
        m_handedOut.pop_front();
    std::vector<std::function<void()>> functions;
    functions.reserve(m_added.size());
    const QDeadlineTimer deadline(patience);
    for (const auto& completion : m_added) {
        completion->deadline = deadline;
        functions.emplace_back([completion] { completion->run(); });
        m_handedOut.push_back(completion);
    }
    m_added.clear();
    m_host.post(std::move(functions));
    if (!m_late.isActive())
        m_late.start(patience);
}

void Completions::completeLate()
{
    while (!m_handedOut.empty() &&
           (m_handedOut.front()->isTaken() || m_handedOut.front()->deadline.hasExpired())) {
        const auto completion = std::move(m_handedOut.front());
        m_handedOut.pop_front();
        completion->run();
    }
    if (!m_handedOut.empty())
        m_late.start(int(m_handedOut.front()->deadline.remainingTime()) + 1);
}
