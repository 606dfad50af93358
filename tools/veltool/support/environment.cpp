// Reads the environment variables of veltool.
#include "tools/veltool/support/environment.h"

#include <cstdlib>

namespace veltool::environment {

std::optional<std::string> valueOf(const char *variable)
{
    const char *value = std::getenv(variable);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::string settingsFolder()
{
    if (const auto given = valueOf("XDG_CONFIG_HOME"); given && !given->empty()) {
        return *given;
    }
    const auto home = valueOf("HOME");
    return home && !home->empty() ? *home + "/.config" : std::string();
}

} // namespace veltool::environment
