#pragma once

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <deque>
#include <functional>
#include <memory>
#include <vector>

class Mailbox;

/// Completes the calls of a host from another thread, in order: on the host's thread, which wakes
/// up once for all that are handed out together; or, where that thread does not come to it, because
/// it waits for one of them, on this one.
class Completions : public QObject
{
    Q_OBJECT
public:
    Completions(Mailbox& host, QObject* parent);
    /// Completes, here, what is not completed.
    ~Completions() override;

    void add(std::function<void()> complete);
    void handOut();
    /// Hands out when there are some more, or in a moment.
    void handOutLater();

private:
    class Completion;
    void completeLate();

    Mailbox& m_host;
    std::vector<std::shared_ptr<Completion>> m_added;
    std::deque<std::shared_ptr<Completion>> m_handedOut;
    QTimer m_moment;
    QTimer m_late;
};
