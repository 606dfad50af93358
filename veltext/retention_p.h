// Which versions of a file are kept, and which are removed.
#pragma once

#include "veltext/historyIndex_p.h"

#include <cstdint>
#include <vector>

namespace veltext {

/// Removes the entries that are not kept any longer. `entries` are in the order in which they
/// were kept; `now` is in seconds since 1970.
void expireVersions(std::vector<HistoryEntry> *entries, std::int64_t now);

} // namespace veltext
