#pragma once

#include "platform/stack/opcuastatuscodes.h"

#include <QtCore/QObject>
#include <QtNetwork/QHostAddress>

#include <functional>
#include <memory>

namespace UaWire {

struct HostAddresses
{
    OpcUa_StatusCode status = OpcUa_BadCommunicationError; // no such host
    QList<QHostAddress> addresses;                         ///< the one to try first stands first
};

/// Asks the system for the addresses of hosts.
///
/// Each name is looked up on a thread of its own, which nobody waits for: a name server that does
/// not answer holds up neither another look-up nor the end of the process. All that ask for a name
/// while it is looked up share the answer. When too many threads are stuck, further look-ups fail.
/// Any thread.
class HostResolver
{
public:
    /// Blocks until it knows the addresses of a name. Called on any thread, several at a time,
    /// possibly after the resolver's end.
    using Function = std::function<HostAddresses(const QString& name)>;
    static constexpr int maxThreads = 64;

    explicit HostResolver(Function lookUp, int mostThreads = maxThreads);
    ~HostResolver();
    /// The one that asks the operating system.
    static HostResolver& system();

private:
    friend class HostLookup;
    struct State;
    std::shared_ptr<State> m_state; // shared with the threads
};

/// One question to a resolver, for one thread with an event loop. Deleting it abandons it.
class HostLookup : public QObject
{
    Q_OBJECT
public:
    /// Asks. An address and "localhost" need no look-up, and are not asked for.
    HostLookup(const QString& host, HostResolver& resolver, QObject* parent = nullptr);
    ~HostLookup() override;

    /// After finished(): BadCommunicationError where the host has no address,
    /// BadResourceUnavailable where too many look-ups are stuck.
    HostAddresses result() const;

Q_SIGNALS:
    /// Once, by way of the event loop.
    void finished();

private:
    friend class HostResolver;
    void finish(const HostAddresses& result);

    const std::shared_ptr<HostResolver::State> m_state;
    const QString m_name; // by which those that ask for the same host meet
    HostAddresses m_result;
};

} // namespace UaWire
