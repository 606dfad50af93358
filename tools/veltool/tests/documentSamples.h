// Runs the samples in a document. A block "```vel NAME" or "```perl NAME" is a file.
// In a block "```console", the shell runs each line that begins with "$ "; the lines
// after it are the expected output.
#pragma once

#include <string>

namespace veltool::test {

/// Runs the samples of a document in a new folder, and expects the output in its
/// console blocks. The path of the document starts at the root of the sources.
/// The shell runs the line `setup` before each command. Returns the number of
/// console blocks.
int replaySamples(const std::string &document, const std::string &setup);

} // namespace veltool::test
