// Reads the environment variables of the viewer.
#include "help/viewer/Environment.h"

namespace velHelp::environment {

QString testHelpFolder()
{
    return qEnvironmentVariable("KOA_TEST_HELP_DIR");
}

QString helpFolder()
{
    return qEnvironmentVariable("ZOT_HELP_DIR");
}

QString rootFolder()
{
    return qEnvironmentVariable("ZOT5ROOT");
}

bool isDebugged()
{
    return qEnvironmentVariableIsSet("KOA_DEBUG_HELP");
}

} // namespace velHelp::environment
