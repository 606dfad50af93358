// Sets the environment of the code that is measured.
#include "bench/velbench/surroundings.h"

#include "tools/veltool/support/programPlace.h"

#include <cstdlib>

namespace velBench {

void completeEnvironment()
{
    for (const auto &[name, value] : veltool::variablesOf(veltool::findPlaces())) {
        setenv(name.c_str(), value.c_str(), 0);
    }
}

} // namespace velBench
