// Reads the environment variable of the bridge.
#include "velparser/api/environment_p.h"

#include <cstdlib>

namespace velparser {

const char *packagesOfEnvironment()
{
    return std::getenv("ZOT5_VEL_PARSER");
}

} // namespace velparser
