#pragma once

#include "session/subscription.h"

#include <algorithm>

/// A subscription for a view: a connection may be away for ten minutes before the server forgets
/// it, and a silent one is heard of every five seconds, however often (in milliseconds) it speaks.
inline QvelSubscriptionParameters lastingSubscription(double interval)
{
    constexpr double lifetime = 600'000;
    constexpr double keepAlive = 5000;
    QvelSubscriptionParameters parameters;
    parameters.publishingInterval = interval;
    const double safe = std::max(interval, 1.);
    parameters.maxKeepAliveCount = OpcUa_UInt32(std::max(10., keepAlive / safe));
    parameters.lifetimeCount =
        OpcUa_UInt32(std::max(lifetime / safe, 3. * parameters.maxKeepAliveCount));
    return parameters;
}
