#pragma once

/// The most entries that an array in the settings store may have. A real server announces a few
/// URLs and token policies, and a user keeps a few dozen servers; the bound stops a damaged store.
inline constexpr int maxStoredEntries = 1000;
