#include "hostlookup_p.h"

#include <QtCore/QUrl>

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

#ifdef Q_OS_WIN
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netdb.h>
#endif

namespace UaWire {

namespace {

// A host with more addresses is asked for by its first ones.
constexpr qsizetype maxAddresses = 32;

HostAddresses systemLookUp(const QString& name)
{
    HostAddresses result;
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* first = nullptr;
    if (getaddrinfo(name.toLatin1().constData(), nullptr, &hints, &first) != 0)
        return result;
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> list(first, &freeaddrinfo);
    for (const addrinfo* info = first; info && result.addresses.size() < maxAddresses;
         info = info->ai_next) {
        const QHostAddress address(info->ai_addr);
        if (!address.isNull() && !result.addresses.contains(address))
            result.addresses.append(address);
    }
    if (!result.addresses.isEmpty())
        result.status = OpcUa_Good;
    return result;
}

// As the name system wants it: international names by their ASCII form.
QString asciiName(const QString& host)
{
    const bool isAscii =
        std::all_of(host.begin(), host.end(), [](QChar c) { return c.unicode() < 0x80; });
    return isAscii ? host.toLower() : QString::fromLatin1(QUrl::toAce(host));
}

// What needs no look-up: addresses, names that are none, and this computer (RFC 6761, 6.3).
std::optional<HostAddresses> known(const QString& host, const QString& name)
{
    const QHostAddress address(host);
    if (!address.isNull())
        return HostAddresses{OpcUa_Good, {address}};
    if (name == QLatin1String("localhost") || name == QLatin1String("localhost."))
        return HostAddresses{
            OpcUa_Good,
            {QHostAddress(QHostAddress::LocalHostIPv6), QHostAddress(QHostAddress::LocalHost)}};
    if (name.isEmpty() || name.contains(QChar::Null))
        return HostAddresses();
    return {};
}

} // namespace

struct HostResolver::State
{
    const Function lookUp;
    const std::size_t maxThreads;
    std::mutex mutex; // guards what follows, and the results of those that wait
    std::map<QString, std::vector<HostLookup*>> waiting; // by the names being looked up

    State(Function function, int mostThreads)
        : lookUp(std::move(function)), maxThreads(std::size_t(mostThreads))
    {
    }
    void run(const QString& name);
};

void HostResolver::State::run(const QString& name)
{
    const HostAddresses result = lookUp(name);
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = waiting.find(name);
    for (HostLookup* lookup : found->second)
        lookup->finish(result);
    waiting.erase(found);
}

HostResolver::HostResolver(Function lookUp, int mostThreads)
    : m_state(std::make_shared<State>(std::move(lookUp), mostThreads))
{
}

HostResolver::~HostResolver() = default;

HostResolver& HostResolver::system()
{
    static HostResolver instance(&systemLookUp);
    return instance;
}

HostLookup::HostLookup(const QString& host, HostResolver& resolver, QObject* parent)
    : QObject(parent), m_state(resolver.m_state), m_name(asciiName(host))
{
    if (const std::optional<HostAddresses> result = known(host, m_name)) {
        finish(*result);
        return;
    }
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    if (const auto asked = m_state->waiting.find(m_name); asked != m_state->waiting.end()) {
        asked->second.push_back(this);
        return;
    }
    try {
        if (m_state->waiting.size() >= m_state->maxThreads)
            throw std::system_error(EAGAIN, std::generic_category());
        std::thread([state = m_state, name = m_name] { state->run(name); }).detach();
        m_state->waiting[m_name].push_back(this);
    } catch (const std::system_error&) {
        finish({OpcUa_BadResourceUnavailable, {}});
    }
}

HostLookup::~HostLookup()
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    if (const auto asked = m_state->waiting.find(m_name); asked != m_state->waiting.end()) {
        std::vector<HostLookup*>& waiting = asked->second;
        waiting.erase(std::remove(waiting.begin(), waiting.end(), this), waiting.end());
    }
}

HostAddresses HostLookup::result() const
{
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_result;
}

// On any thread.
void HostLookup::finish(const HostAddresses& result)
{
    m_result = result;
    QMetaObject::invokeMethod(this, "finished", Qt::QueuedConnection);
}

} // namespace UaWire
