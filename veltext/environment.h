// The environment variables that the text engine reads, all of them here.
// docs/environment.md explains them.
#pragma once

#include <string>

namespace veltext::environment {

/// XDG_STATE_HOME, otherwise .local/state in HOME; empty if neither is an absolute
/// path.
[[nodiscard]] std::string stateHome();

} // namespace veltext::environment
