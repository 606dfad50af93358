// The name of this computer.
#pragma once

#include <string>

#include <unistd.h>

namespace veltext {

/// "unknown" if the system does not say it.
[[nodiscard]] inline std::string hostName()
{
    constexpr std::size_t longestName = 256;
    char name[longestName] = {};
    return gethostname(name, sizeof name - 1) == 0 ? name : "unknown";
}

} // namespace veltext
