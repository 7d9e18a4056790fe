#pragma once

#include "platform/types/uaexpandednodeid.h"

#include <QtCore/QString>

#include <optional>

/// Reads what UaExpandedNodeId::toFullString() writes; nothing for any other text.
std::optional<UaExpandedNodeId> nodeIdOfText(const QString& text);
