#pragma once

#include "../../kestrelexport.h"
#include "../types/uastatuscode.h"
#include "../types/uastring.h"

#include <QtCore/QList>

/// One entry found by a UaNetworkBrowser.
class KESTREL_EXPORT UaNetworkBrowseResult
{
public:
    enum NetworkNodeType { Network = 0, Domain = 1, Computer = 2, Root = 3 };

    UaNetworkBrowseResult() = default;
    UaNetworkBrowseResult(const UaString& name, NetworkNodeType type) : m_name(name), m_type(type)
    {
    }
    const UaString& name() const { return m_name; }
    NetworkNodeType type() const { return m_type; }

private:
    UaString m_name;
    NetworkNodeType m_type = Network;
};

/// Finds the computers of the local network that announce OPC UA servers.
///
/// On Linux: every host that announces `_opcua-tcp._tcp` by DNS-SD (OPC 10000-12, annex C), asked
/// of the Avahi daemon over the system D-Bus. A computer is named "host", or "host:port" for each
/// port other than 4840 that it announces, so that "opc.tcp://" and the name lead to the server.
/// Stateless; any thread, several at a time; no event loop needed and none run.
class KESTREL_EXPORT UaNetworkBrowser
{
public:
    /// Milliseconds that browse() may take.
    static constexpr int browseTimeout = 5000;
    /// Services that are looked at; what is announced beyond that is left.
    static constexpr int maxServices = 500;

    /// Replaces `results` by the computers, each name once, sorted by host and port. The name of a
    /// network is not needed on Linux: any name gives all computers.
    ///
    /// Good, with no results where nothing announces. When the time is up: Good with what there is,
    /// BadTimeout if the bus or the daemon has told nothing. BadConnectionRejected where there is
    /// no bus or no daemon to ask, BadCommunicationError where the daemon fails, BadShutdown when
    /// the thread is interrupted, BadNotSupported on other systems; then there are no results.
    UaStatus browse(const UaString& name, QList<UaNetworkBrowseResult>& results);
};
