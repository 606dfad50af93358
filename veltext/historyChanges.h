// Counts the changes from each version of a file to the next one.
#pragma once

#include "veltext/history.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace veltext {

/// For each version (newest first, as History::list gives them): the number of objects and
/// parameters, by path, that differ in the next newer version. The first version is compared
/// with `current`, the contents of the file, which are null if there is no file. Nothing if
/// one of the two is damaged, is not VEL, or nests deeper than 10,000 levels. Reads all
/// contents, but has only two of them in memory at a time.
[[nodiscard]] std::vector<std::optional<std::size_t>>
countChanges(const History &history, const std::vector<Version> &versions,
             const std::string *current);

} // namespace veltext
