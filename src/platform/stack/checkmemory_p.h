#pragma once

#include "platform/stack/opcuatypes.h"

#include <QtCore/QtGlobal>

/// For a copy whose failure cannot be told: without memory, it ends as Qt's own containers do.
inline void checkMemory(OpcUa_StatusCode status)
{
    if (OpcUa_IsNotGood(status))
        qBadAlloc();
}
