// The environment of the code that is measured.
#pragma once

namespace velBench {

/// Names the Perl packages and the libraries that ship with the program if the
/// environment does not name any: the bridge and the editor look there.
void completeEnvironment();

} // namespace velBench
