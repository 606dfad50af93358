// VEL command files, as their authors wrote them.
//
// This one header is all that a program includes; it links `veltext`. What it
// offers, each part documented in a header of its own:
//
//   CommandText    a file read: its text and the data in it      (below)
//   SourceText     bytes, lines, line ends, byte order mark      sourceText.h
//   StatementTree  which statement of the text states what       statementTree.h
//   TreeWalk       the data, node by node                        treeWalk.h
//   TextEdit       edits that touch only their own lines         textEdit.h
//   storageFault   what a value may be                           valueEdit.h
//   diff, merge    versions of a file, path by path              (below)
//   EditedFile     one lock, one backup, one atomic replacement  replaceFile.h
//   findFault      the line at which a text is wrong             textFault.h
//
// Paths are full ones in normal form: "/FLOW/DOMAIN:Duct/Option" is the
// parameter Option of the object Duct, of type DOMAIN, in the singleton FLOW.
//
// Errors. What cannot be done throws an Error (error.h), whose message is for
// the user and names the file or path; arguments and files are then as before.
// Where memory runs out, bad_alloc is thrown.
//
// Objects that share nothing may be used by several threads at the same time.
// docs/veltext.md has a complete program.
#pragma once

#include "veltext/error.h"
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

/// A command file that has been read. It owns its text and its data, and both
/// stay as they are: an edit gives bytes, of which another one is made.
class CommandText
{
public:
    /// The rule libraries are not read. Throws an Error that begins with `name`
    /// and the line at fault if the bytes are not VEL.
    explicit CommandText(SourceText source, const std::string &name = "text");
    explicit CommandText(std::string bytes, const std::string &name = "text")
        : CommandText(SourceText(std::move(bytes)), name)
    {
    }

    /// Reads a file of any kind. Throws an Error also if it cannot be read.
    [[nodiscard]] static CommandText read(const std::string &file);

    /// Lives as long as this object. A TextEdit of it must not live longer.
    [[nodiscard]] const SourceText &source() const { return source_; }

    /// The data, for the functions of the database (velapilt.h). Owned by this
    /// object, and not to be changed.
    [[nodiscard]] velHandle *tree() const { return tree_.get(); }

    /// A copy of the value; nothing where no parameter with a value is.
    [[nodiscard]] std::optional<std::string> value(const std::string &path) const;

    /// The node at the path and all below it, parents first. Not to be used
    /// after this object; without any node for a path that is not there.
    [[nodiscard]] TreeWalk walk(const std::string &path = "/") const;

private:
    SourceText source_;
    velHandlePtr tree_;
};

/// One object or parameter that two files do not have in common.
struct Change
{
    DifferenceKind kind; ///< Added, Removed or Changed
    std::string path;
    std::optional<std::string> oldValue; ///< nothing for an object, or without an old one
    std::optional<std::string> newValue; ///< likewise
};

/// What `after` has and `before` has not, and the other way round, whatever the
/// order in the files: in the order of compareTrees (treeDiff.h).
[[nodiscard]] std::vector<Change> diff(const CommandText &before, const CommandText &after);

/// A path at which a merge found two different changes.
struct MergeConflict
{
    std::string path;
    std::string reason; ///< a part of a sentence: "changed on both sides"
};

/// What a merge gives.
struct Merge
{
    std::string bytes; ///< OURS with what THEIRS changed; conflicts are marked
    std::vector<MergeConflict> conflicts;
    /// All of the file is one conflict: statement by statement, the result would
    /// not hold what it must. `conflicts` is then empty.
    bool isOneConflict = false;
    std::size_t lostRemarks = 0; ///< comments of THEIRS that the result has not
};

/// Takes what THEIRS changed since BASE into the text of OURS, which stays as
/// it is elsewhere. Conflicts are between lines of `markerSize` signs. The
/// result has been read again, with each side of the conflicts. OURS is used up:
/// its data becomes that of the result, to compare with.
[[nodiscard]] Merge merge(const CommandText &base, CommandText ours, const CommandText &theirs,
                          std::size_t markerSize = 7);

} // namespace veltext
