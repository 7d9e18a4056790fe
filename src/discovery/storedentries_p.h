#pragma once

#include <algorithm>

/// \file
/// How many entries of a list are read from a settings store, whose counts may be damaged.

/// What one reading of a store may still take, all its lists and those in their records together.
struct StoredEntries
{
    int left = 1'000'000;
};

/// The entries to read of a list of `count`, or -1 where they are more than `budget` has left.
///
/// A count of up to 1,000 is taken as it is. A larger one has to be borne out: the list then ends
/// with the last entry that has a key in the store, as `isThere(index)` tells, behind which 1,000
/// have none.
template <class IsThere>
int entriesToRead(int count, StoredEntries& budget, IsThere isThere)
{
    constexpr int trusted = 1000;
    int entries = std::max(count, 0);
    if (count > trusted) {
        entries = 0;
        for (int i = 0; i < count && i - entries < trusted && entries <= budget.left; ++i) {
            if (isThere(i))
                entries = i + 1;
        }
    }
    if (entries > budget.left)
        return -1;
    budget.left -= entries;
    return entries;
}
