#pragma once

#include <Kestrel/UaExpandedNodeId>

#include <QtCore/QString>

#include <optional>

/// Reads a NodeId as OPC 10000-6, 5.3.1.10 writes it, `i=85` or `ns=2;s=Pump`, also with the URI of
/// its namespace, `nsu=urn:plant;s=Pump`, in which ";" and "%" are percent-encoded.
std::optional<UaExpandedNodeId> parseNodeId(const QString& text);
