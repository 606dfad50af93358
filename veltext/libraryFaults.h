// Where the mistakes in rule libraries are.
//
// The reading of libraries reports what is wrong with a path, or with the name
// of a library, but without a line. The programs ask here for the place.
#pragma once

#include "veltext/statementTree.h"

#include <string>
#include <utility>
#include <vector>

namespace veltext {

/// Libraries that were read together, and where they state what.
class LibraryTexts
{
public:
    /// `file` is what the place will name; the text need not live on.
    void add(const std::string &file, const SourceText &text);

    /// File and line of the last statement of the path, or else of the nearest
    /// object above it: in the last library that has one. Line 0 if none has.
    [[nodiscard]] std::pair<std::string, std::size_t> placeOf(std::string path) const;

private:
    std::vector<std::string> files_;
    std::vector<StatementTree> trees_;
};

/// The libraries that the environment names, as far as they can be read.
[[nodiscard]] LibraryTexts readLibraryTexts();

/// Something that is wrong with a rule, and the line that reports it.
struct RuleFault
{
    std::string path;
    std::string line;
};

/// What the reading of the libraries that the environment names has reported: why
/// one of them cannot be read (`failure`, or null), and what is wrong with rules; with
/// file and line of each mistake, and a hint where the list of names is at fault.
[[nodiscard]] std::string placedLibraryErrors(const char *failure,
                                              const std::vector<RuleFault> &faults);

} // namespace veltext
