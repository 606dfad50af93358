// How many changes lead from each version of a file to the next one.
#pragma once

#include "veltext/history.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace veltext {

/// For each version (newest first, as History::list gives them), the number of objects
/// and parameters that differ, by path, between it and the version after it; for the
/// first, between it and `current`, which is what the file holds, or null if there is no
/// file. Nothing where one of the two is damaged, is not VEL, or nests deeper than
/// 10,000 levels. Reads all contents, of which it holds two at a time.
[[nodiscard]] std::vector<std::optional<std::size_t>>
countChanges(const History &history, const std::vector<Version> &versions,
             const std::string *current);

} // namespace veltext
