// The environment of the code that is measured.
#pragma once

namespace velBench {

/// Names the Perl packages and the libraries that ship with the program, unless the
/// environment does: the bridge and the editor look there.
void completeEnvironment();

} // namespace velBench
