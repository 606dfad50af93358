// The samples in a document, read and run: a block "```vel NAME" or "```perl
// NAME" is a file, in a block "```console" each "$ " line is run by the shell and
// the lines after it are what it prints.
#pragma once

#include <string>

namespace veltool::test {

/// Runs the samples of a document, given from the root of the sources, in a new
/// folder, and expects of each console block that it is what a user sees.
/// `setup` is a line of the shell that comes before each command. Gives how
/// many console blocks there were.
int replaySamples(const std::string &document, const std::string &setup);

} // namespace veltool::test
