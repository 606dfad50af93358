// The measurements of velbench, grouped by the library that they need.
#pragma once

#include "bench/velbench/measure.h"

#include <string>
#include <vector>

namespace velBench {

using Arguments = std::vector<std::string>;

/// One measurement. It throws a Failure if it cannot be done.
struct Call
{
    const char *name;
    const char *arguments; ///< as in the usage message
    std::size_t fewest;    ///< the least number of arguments
    std::size_t most;
    const char *purpose;
    Result (*run)(const Arguments &arguments);
};

Result velParse(const Arguments &arguments);
Result velFormat(const Arguments &arguments);
Result velLookup(const Arguments &arguments);

Result dsWriteRaw(const Arguments &arguments);
Result dsReadRaw(const Arguments &arguments);
Result dsWriteZ5(const Arguments &arguments);
Result dsReadZ5(const Arguments &arguments);
Result dsAppend(const Arguments &arguments);
Result dsOpen(const Arguments &arguments);
Result dsLocate(const Arguments &arguments);

Result perlCall(const Arguments &arguments);
Result perlMethod(const Arguments &arguments);

Result rulesCold(const Arguments &arguments);
Result rulesValidate(const Arguments &arguments);
Result rulesEdit(const Arguments &arguments);

Result editorOpen(const Arguments &arguments);
Result editorEdit(const Arguments &arguments);
Result editorFind(const Arguments &arguments);
Result editorFindNext(const Arguments &arguments);
Result editorScroll(const Arguments &arguments);
Result editorMemory(const Arguments &arguments);

/// The number of parameters in a VEL file, counted without the Perl side.
[[nodiscard]] std::uint64_t countParameters(const std::string &file);

/// The argument with which this program starts itself as the editor.
inline constexpr const char *editorChild = "editor.child";

/// Runs the editor with the file. When the tree has been painted, prints the time
/// and ends the process.
int runEditorChild(int count, char **words);

} // namespace velBench
