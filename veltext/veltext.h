// Reads, compares, edits and merges VEL command files, as their authors wrote them.
//
// A program includes this header only, and links `veltext`. Each part has its
// documentation in its own header:
//
//   CommandText    the text and the data of a file               (below)
//   SourceText     bytes, lines, line ends, byte order mark      sourceText.h
//   StatementTree  the lines that state each path                statementTree.h
//   TreeWalk       the data, node by node                        treeWalk.h
//   TextEdit       edits that change only their own lines        textEdit.h
//   storageFault   whether a file can hold a value               valueEdit.h
//   diff, merge    versions of a file, path by path              (below)
//   EditedFile     lock, backup and atomic replacement           replaceFile.h
//   History        the versions that saves have replaced         history.h
//   findFault      the line with the first mistake               textFault.h
//
// Paths are full paths in normal form: "/FLOW/DOMAIN:Duct/Option" is the
// parameter Option of the object Duct, of type DOMAIN, in the singleton FLOW.
//
// Errors. A function that fails throws an Error (error.h), whose message is for
// the user and names the file or path. Arguments and files are then unchanged.
// Without memory, bad_alloc is thrown.
//
// Several threads may use objects that share nothing at the same time.
// docs/veltext.md has a complete program.
#pragma once

#include "veltext/error.h"
#include "veltext/history.h"
#include "veltext/replaceFile.h"
#include "veltext/sourceText.h"
#include "veltext/statementTree.h"
#include "veltext/textEdit.h"
#include "veltext/textFault.h"
#include "veltext/treeDiff.h"
#include "veltext/treeWalk.h"
#include "veltext/valueEdit.h"

#include "velapilt/src/velapilt.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace veltext {

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

    /// A copy of the value; nothing if there is no parameter with a value at the path.
    [[nodiscard]] std::optional<std::string> value(const std::string &path) const;

    /// The node at the path and all nodes below it, parents first; no nodes if the
    /// path does not exist. Must not be used after the end of this object.
    [[nodiscard]] TreeWalk walk(const std::string &path = "/") const;

private:
    SourceText source_;
    velHandlePtr tree_;
};

/// A difference between two files: one object or parameter.
struct Change
{
    DifferenceKind kind; ///< Added, Removed or Changed
    std::string path;
    std::optional<std::string> oldValue; ///< nothing for an object, or if it was added
    std::optional<std::string> newValue; ///< nothing for an object, or if it was removed
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
