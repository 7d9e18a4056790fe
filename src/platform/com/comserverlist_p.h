#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace comsurface {

/// A registered OPC Classic server.
struct ComServer
{
    std::u16string progId;
};

/// What a server must implement to be listed: one of the OPC specifications, in any version.
enum class ComServerKind { DataAccess, AlarmsAndEvents };

enum class ComCall { CoInitializeEx, CoCreateInstanceEx, EnumClassesOfCategories, GetClassDetails };

/// Takes the HRESULT of a call that failed.
using ComFailure = std::function<void(ComCall call, std::uint32_t result)>;

/// No computer has more servers than this: the rest of what an endless enumeration offers is left.
constexpr int maxComServers = 4096;
/// Longest ProgID in UTF-16 units. (The registry takes 39; a longer one counts as a failed
/// GetClassDetails, 0x8007000D.)
constexpr std::size_t maxProgIdLength = 1024;

/// Asks the OPC server list of a computer, the local one for an empty host, for its servers.
///
/// Blocks for as long as COM takes, on any thread that has not been initialised as a
/// single-threaded apartment; COM is initialised for the call alone. `stop` is asked before each
/// class; once it says true, what has been found until then is returned. A failed GetClassDetails
/// costs one server, every other failure ends the enumeration.
std::vector<ComServer> enumerateComServers(const std::u16string& host, ComServerKind kind,
                                           const ComFailure& onFailure,
                                           const std::function<bool()>& stop);

} // namespace comsurface
