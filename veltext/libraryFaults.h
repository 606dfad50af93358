// Finds file and line of the mistakes in rule libraries.
//
// The database and the rules report mistakes with a path or with the name of a
// library, but without a line. These functions add the line.
#pragma once

#include "veltext/statementTree.h"

#include <string>
#include <utility>
#include <vector>

namespace veltext {

/// A mistake in a rule, and the line of text that reports it.
struct RuleFault
{
    std::string path;
    std::string line;
};

/// The texts of libraries that were read together, and the lines of their paths.
class LibraryTexts
{
public:
    /// `file` is the name that `placeOf` gives. The text is not kept.
    void add(const std::string &file, const SourceText &text);

    /// File and line of the last statement of the path, or of the nearest object
    /// above it, in the last library that has one. Line 0 if no library has one.
    [[nodiscard]] std::pair<std::string, std::size_t> placeOf(std::string path) const;
    /// "FILE:LINE: " and the line that reports the mistake.
    [[nodiscard]] std::string placed(const RuleFault &fault) const;

private:
    std::vector<std::string> files_;
    std::vector<StatementTree> trees_;
};

/// These library files, without those that cannot be read.
[[nodiscard]] LibraryTexts readLibraryTexts(const std::vector<std::string> &files);

/// The complete message after these library files were read.
/// `failure` says why one of them cannot be read, or is null; `faults` are the
/// mistakes in rules. The message has file and line of each mistake, and a hint
/// if the list of library names is wrong.
[[nodiscard]] std::string placedLibraryErrors(const char *failure,
                                              const std::vector<RuleFault> &faults,
                                              const std::vector<std::string> &files);
/// The same for the libraries that the environment names.
[[nodiscard]] std::string placedLibraryErrors(const char *failure,
                                              const std::vector<RuleFault> &faults);

} // namespace veltext
