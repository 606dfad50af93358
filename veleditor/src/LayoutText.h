// The text of a file with the data of the window, as its author wrote it: what a save
// writes if it keeps comments and layout.
#pragma once

#include "veltext/keepLayout.h"

#include <string>
#include <vector>

namespace velEditor {

class CommandData;

/// The changes of paths that an upgrade of this text makes, for `layoutText`. Reads the
/// rule libraries again, in a session of its own. None if that fails: the text then loses
/// the comments on what has another path.
[[nodiscard]] std::vector<veltext::PathChange> upgradePaths(const std::string &text);

/// The bytes `former`, edited so that they have the data; data of rule libraries that the
/// file states again stays as it is. Throws a veltext::Error that says why there is no
/// such text.
[[nodiscard]] std::string layoutText(const std::string &former, const CommandData &data,
                                     const std::vector<veltext::PathChange> &paths);

} // namespace velEditor
