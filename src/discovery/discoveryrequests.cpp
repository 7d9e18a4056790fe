#include "discoveryrequests_p.h"

#include "discovery/discoverynodes.h"

#include <algorithm>
#include <utility>

quint64 DiscoveryRequests::add(QvelDiscoveryNode* node)
{
    const QMutexLocker lock(&m_mutex);
    m_requests.push_back({++m_lastNumber, node, true});
    return m_lastNumber;
}

void DiscoveryRequests::forget(QvelDiscoveryNode* node)
{
    const QMutexLocker lock(&m_mutex);
    for (Request& request : m_requests) {
        if (request.node == node)
            request.node = nullptr;
    }
}

void DiscoveryRequests::file(quint64 number, const QList<QvelDiscoveryNode*>& children,
                             const QStringList& failure)
{
    const QMutexLocker lock(&m_mutex);
    auto request = std::find_if(m_requests.begin(), m_requests.end(),
                                [number](const auto& each) { return each.number == number; });
    if (number == 0 || request == m_requests.end())
        request = m_requests.insert(m_requests.end(), {0, nullptr, false});
    request->isDone = true;
    request->children = children;
    request->failure = failure;
}

DiscoveryRequests::Delivery DiscoveryRequests::take(QvelDiscoveryNode* node,
                                                    const QList<QvelDiscoveryNode*>& children)
{
    const QMutexLocker lock(&m_mutex);
    const auto filedFor = [&](QvelDiscoveryNode* wanted) {
        return std::find_if(m_requests.begin(), m_requests.end(), [&](const Request& request) {
            return request.isDone && request.node == wanted && request.children == children;
        });
    };
    auto filed = filedFor(node);
    if (filed == m_requests.end())
        filed = filedFor(nullptr); // where nothing was found, one is as good as another
    if (filed != m_requests.end()) {
        const Request request = std::move(*filed);
        m_requests.erase(filed);
        if (request.number)
            return {request.node != nullptr, request.hasBusyCursor, request.failure};
    }
    const auto forestalled =
        std::find_if(m_requests.begin(), m_requests.end(),
                     [node](const Request& request) { return node && request.node == node; });
    if (forestalled == m_requests.end())
        return {false, true};
    forestalled->node = nullptr;
    forestalled->hasBusyCursor = false;
    return {true, true};
}

int DiscoveryRequests::end()
{
    std::vector<Request> requests;
    {
        const QMutexLocker lock(&m_mutex); // not while nodes are deleted, which are forgotten here
        requests.swap(m_requests);
    }
    int cursors = 0;
    for (const Request& request : requests) {
        cursors += request.hasBusyCursor ? 1 : 0;
        qDeleteAll(request.children);
    }
    return cursors;
}
