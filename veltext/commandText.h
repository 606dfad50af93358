// The text and the data of command files, compared and merged path by path.
//
// This header does not include the database, so that programs that reach the data in
// another way can use it, too.
#pragma once

#include "veltext/sourceText.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct velHandle;

namespace veltext {

class TreeWalk;

/// The text and the data of a command file. Both are owned and never change: an
/// edit gives bytes, from which you make a new CommandText.
class CommandText
{
public:
    /// Does not read the rule libraries. Throws an Error with `name` and the line
    /// if the bytes are not VEL.
    explicit CommandText(SourceText source, const std::string &name = "text");
    explicit CommandText(std::string bytes, const std::string &name = "text")
        : CommandText(SourceText(std::move(bytes)), name)
    {
    }

    /// Reads a file of any kind. Also throws an Error if the file cannot be read.
    [[nodiscard]] static CommandText read(const std::string &file);

    /// Valid as long as this object. A TextEdit of it must not live longer.
    [[nodiscard]] const SourceText &source() const { return source_; }

    /// The data, for the functions of the database (velapilt.h). This object owns
    /// it; do not change it.
    [[nodiscard]] velHandle *tree() const { return tree_.get(); }

    /// How many levels its objects nest.
    [[nodiscard]] std::int32_t levels() const;

    /// A copy of the value; nothing if there is no parameter with a value at the path.
    [[nodiscard]] std::optional<std::string> value(const std::string &path) const;

    /// The node at the path and all nodes below it, parents first; no nodes if the
    /// path does not exist. Must not be used after the end of this object.
    [[nodiscard]] TreeWalk walk(const std::string &path = "/") const;

private:
    struct Release
    {
        void operator()(velHandle *tree) const;
    };

    SourceText source_;
    std::unique_ptr<velHandle, Release> tree_;
};

/// What happened to an object or parameter from the old data to the new data.
enum class DifferenceKind { Added, Removed, Changed };

/// A difference between two files: one object or parameter.
struct Change
{
    DifferenceKind kind; ///< Added, Removed or Changed
    std::string path;
    std::optional<std::string> oldValue; ///< nothing for an object, or if it was added
    std::optional<std::string> newValue; ///< nothing for an object, or if it was removed

    bool operator==(const Change &) const = default;
};

/// The differences from `before` to `after`, in the order of compareTrees
/// (treeDiff.h). The order in the files does not matter.
[[nodiscard]] std::vector<Change> diff(const CommandText &before, const CommandText &after);

/// A path that both sides of a merge changed in different ways.
struct MergeConflict
{
    std::string path;
    std::string reason; ///< such as "changed on both sides"
};

/// The result of a merge.
struct Merge
{
    std::string bytes; ///< OURS with the changes of THEIRS; conflicts are marked
    std::vector<MergeConflict> conflicts;
    /// The whole file is one conflict, because a merge statement by statement would
    /// give wrong data. `conflicts` is empty then.
    bool isOneConflict = false;
    std::size_t lostComments = 0; ///< how many comments of THEIRS are not in the result
};

/// Puts the changes from BASE to THEIRS into the text of OURS; other lines of OURS
/// do not change. Conflicts are between markers of `markerSize` characters. The
/// result was read again and checked, with each side of the conflicts. OURS is
/// taken by value because its data is changed for this check.
[[nodiscard]] Merge merge(const CommandText &base, CommandText ours, const CommandText &theirs,
                          std::size_t markerSize = 7);

} // namespace veltext
