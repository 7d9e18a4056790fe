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
/// of the Avahi daemon over the system D-Bus. Stateless; any thread, several at a time.
class KESTREL_EXPORT UaNetworkBrowser
{
public:
    /// Blocks for a few seconds at most, and ends early when its thread is interrupted.
    /// Good, with no results where nothing announces; Bad, with no results, where there is no
    /// daemon to ask. The name of a network is not needed on Linux: any name gives all computers.
    UaStatus browse(const UaString& name, QList<UaNetworkBrowseResult>& results);
};
