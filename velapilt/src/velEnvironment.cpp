// Reads the environment variables of the database.
#include "velapilt/src/velEnvironment_p.h"

#include <cstdlib>

const char *velEnvLibraryFolder()
{
    return std::getenv("ZOT5_VEL_LIBSDIR");
}

const char *velEnvLibraryList()
{
    return std::getenv("ZOT5_VEL_LIBS");
}

bool velEnvDebugging()
{
    return std::getenv("ZOT_VELAPI_DEBUG") != nullptr;
}
