#pragma once

#include "sessionarguments.h"

#include <functional>

class QFileDevice;

/// Connects, runs the commands in their order, writes their results to `out`, a JSON object a line,
/// and closes the session; SIGINT and SIGTERM end it earlier. `storeFolder` holds the certificates
/// where the arguments name no folder.
///
/// ExitFound when every status was Good, ExitFailure when one was not or something was not done,
/// ExitNoSession when no session came about. The log tells why.
int runSession(const SessionArguments& arguments, const QString& storeFolder, QFileDevice& out,
               const std::function<void(const QString&)>& log);
