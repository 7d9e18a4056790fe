#pragma once

#include "../kestrelexport.h"
#include "../platform/types/uaexpandednodeid.h"

#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QString>

#include <optional>

class QMimeData;

/// A node as it is dragged, dropped and pasted: with the URI of its namespace, so that it can be
/// found at the next connection, too.
struct QvelNodeLink
{
    UaExpandedNodeId nodeId;
    QString displayName; ///< empty where nobody knows it, as in pasted text
};
Q_DECLARE_METATYPE(QvelNodeLink)

/// The nodes for a drag or the clipboard, as "application/x-opcua-nodes" and as plain text, a
/// NodeId a line. The caller owns the object.
KESTREL_EXPORT QMimeData* qvelNodeMimeData(const QList<QvelNodeLink>& nodes);
/// Whether qvelNodeLinks() may find any: cheap enough for each move of a drag.
KESTREL_EXPORT bool qvelHasNodeLinks(const QMimeData* data);
/// The nodes of either form; of plain text those lines that are a NodeId. None for null.
KESTREL_EXPORT QList<QvelNodeLink> qvelNodeLinks(const QMimeData* data);

/// Reads a NodeId as OPC 10000-6, 5.3.1.10 and 5.3.1.11 write it: `i=85`, `ns=2;s=Pump`, or with
/// the URI of its namespace, `nsu=urn:plant;s=Pump`, in which ";" and "%" are percent-encoded; each
/// also with `svr=1;` before it. Nothing for any other text.
KESTREL_EXPORT std::optional<UaExpandedNodeId> qvelParseNodeId(const QString& text);
/// The text that qvelParseNodeId() reads.
KESTREL_EXPORT QString qvelNodeIdText(const UaExpandedNodeId& id);
