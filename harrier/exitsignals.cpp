#include "exitsignals.h"

#include <QtCore/QSocketNotifier>

#ifdef Q_OS_UNIX

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int numbers[] = {SIGINT, SIGTERM};

// A signal may come at any instruction: all that it does is to write a byte.
int ends[2] = {-1, -1};

void tell(int number)
{
    std::signal(number, SIG_DFL);
    const char byte = 0;
    static_cast<void>(!write(ends[1], &byte, 1));
}

} // namespace

ExitSignals::ExitSignals(QObject* parent) : QObject(parent)
{
    if (pipe(ends) != 0)
        return;
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
    m_notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        m_notifier->setEnabled(false);
        Q_EMIT received();
    });
    for (const int number : numbers)
        std::signal(number, tell);
}

ExitSignals::~ExitSignals()
{
    for (const int number : numbers)
        std::signal(number, SIG_DFL);
    delete m_notifier;
    for (int& end : ends) {
        close(end);
        end = -1;
    }
}

#else

ExitSignals::ExitSignals(QObject* parent) : QObject(parent) {}
ExitSignals::~ExitSignals() = default;

#endif
