#pragma once

#include "platform/types/uadatetime.h"

/// The clock that validity is judged by: UaDateTime::now(), unless a test sets another one. Both on
/// the user-interface thread only.
UaDateTime certificateNow();
void setCertificateClock(UaDateTime (*clock)());
