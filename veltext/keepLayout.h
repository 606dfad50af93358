// The text of a file with other data, as its author wrote it.
//
// What `veltool upgrade` does to a file and what the editor saves if it keeps comments
// and layout is the same: only the lines of items that differ change.
#pragma once

#include "veltext/sourceText.h"
#include "veltext/treeData.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace veltext {

/// An item that has another path than before. Each path is the one that the item has
/// after all earlier changes.
struct PathChange
{
    enum class Kind {
        Renamed, ///< an object or parameter, at the same place in the text
        Moved,   ///< a parameter, to another object
    };

    Kind kind = Kind::Renamed;
    std::string path;
    std::string newPath;
};

/// The moved parameters of some changes: the path in the text with the new names, by
/// the final path. A parameter may move twice, and it or an object above it may be
/// renamed later.
[[nodiscard]] Moves movesIn(const std::vector<PathChange> &changes);

/// The deepest nesting of objects for which there is such a text: the sizes of all paths
/// together grow with the square of the depth.
inline constexpr std::int32_t deepestKept = 10'000;

/// Whether an object of the text that `wanted` does not have stays as it is.
using StaysAsItIs = std::function<bool(const std::string &path)>;

/// The bytes of `text`, edited so that their data is `wanted`: renamed items keep their
/// lines, and moved parameters their comments. The result was read again and has that
/// data, in any order, and what stays as it is. Throws an Error that says why there is no
/// such text: `text` is not VEL, a file cannot hold a value, or the result would have
/// other data.
[[nodiscard]] std::string keepLayout(const SourceText &text, TreeData wanted,
                                     const std::vector<PathChange> &changes = {},
                                     const StaysAsItIs &stays = nullptr);

} // namespace veltext
