#pragma once

#include "endpoints.h"
#include "support/hostileserver.h"

#include <Kestrel/UaStackTypeArray>

#include <QtCore/QThread>

#include <atomic>
#include <functional>

/// A server with both discovery services. A service without an answer gives a fault.
class DiscoveryServer
{
public:
    using Servers = std::function<void(UaStackTypeArray<OpcUa_ApplicationDescription>&)>;
    using Endpoints = std::function<void(UaStackTypeArray<OpcUa_EndpointDescription>&)>;

    explicit DiscoveryServer(Servers servers, Endpoints endpoints = {}, bool held = false)
        : m_servers(std::move(servers)), m_endpoints(std::move(endpoints)), m_open(!held),
          m_server([this](ServerPeer& peer) { serve(peer); })
    {
    }
    QString url() const { return QString::fromLatin1(m_server.url()); }
    bool isAsked() const { return m_asked; }
    /// Lets a server that was held answer.
    void release() { m_open = true; }

private:
    void serve(ServerPeer& peer)
    {
        using namespace UaWire;
        const std::optional<Message> request = peer.takeRequest();
        if (!request)
            return;
        m_asked = true;
        while (!m_open) {
            if (!peer.goesOn())
                return;
            QThread::msleep(1);
        }
        QByteArrayView body = request->body;
        const OpcUa_UInt32 type = takeTypeId(body);
        FindServersResponse servers;
        GetEndpointsResponse endpoints;
        ServiceFault fault;
        fault.header.serviceResult = OpcUa_BadServiceUnsupported;
        if (type == FindServersRequest::encodingId && m_servers) {
            m_servers(servers.servers);
            peer.answer(*request, servers);
        } else if (type == GetEndpointsRequest::encodingId && m_endpoints) {
            m_endpoints(endpoints.endpoints);
            peer.answer(*request, endpoints);
        } else {
            peer.answer(*request, fault);
        }
        peer.receive(); // the client closes
    }

    const Servers m_servers;
    const Endpoints m_endpoints;
    std::atomic<bool> m_open;
    std::atomic<bool> m_asked = false;
    HostileServer m_server;
};

inline void addServer(UaStackTypeArray<OpcUa_ApplicationDescription>& servers,
                      const QByteArray& name, OpcUa_ApplicationType type,
                      const QByteArrayList& urls)
{
    servers.resize(servers.length() + 1);
    OpcUa_ApplicationDescription& server = servers[servers.length() - 1];
    assign(server.ApplicationName.Text, name);
    server.ApplicationType = type;
    setDiscoveryUrls(server, urls);
}

inline void addEndpoint(UaStackTypeArray<OpcUa_EndpointDescription>& endpoints,
                        const QByteArray& server, const QByteArray& url)
{
    const Endpoint endpoint(server, url, "Basic256", OpcUa_MessageSecurityMode_Sign);
    endpoints.resize(endpoints.length() + 1);
    checkMemory(
        OpcUa_EndpointDescription_CopyTo(&endpoint.value, &endpoints[endpoints.length() - 1]));
}
