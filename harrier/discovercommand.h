#pragma once

#include <QtCore/QStringList>

class QIODevice;
class QvelDiscoveryCBInterface;

/// Exit codes of the commands that need no window.
enum ExitCode { ExitFound = 0, ExitFailure = 1, ExitUsage = 2, ExitNoSession = 3 };

/// Adds each URL to a discovery tree as a user would, fetches everything below, and writes it to
/// `out` as JSON. `timeout` is in milliseconds a service call.
///
/// ExitFound when there is an endpoint, ExitUsage for a URL that is not opc.tcp, otherwise
/// ExitFailure. What fails is reported through the callback's log.
ExitCode discover(const QStringList& urls, int timeout, QvelDiscoveryCBInterface& callback,
                  QIODevice& out);
