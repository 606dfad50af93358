#include "velparser/api/velContainer_p.h"

namespace velparser {

namespace {

/// "Not available": no container is read by this build of the bridge.
constexpr int containersNotRead = 22;

} // namespace

int load_vel_from_def(const char *, AV *)
{
    return containersNotRead;
}

} // namespace velparser
