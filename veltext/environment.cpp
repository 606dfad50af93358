// Reads the environment variables of the text engine.
#include "veltext/environment.h"

#include <cstdlib>

namespace veltext::environment {

std::string stateHome()
{
    if (const char *given = std::getenv("XDG_STATE_HOME"); given != nullptr && *given == '/') {
        return given;
    }
    if (const char *home = std::getenv("HOME"); home != nullptr && *home == '/') {
        return std::string(home) + "/.local/state";
    }
    return {};
}

} // namespace veltext::environment
