#include "tools/veltool/libraryPart.h"

#include "tools/veltool/failure.h"

#include <algorithm>

namespace veltool {

namespace {

velStringList namesIn(velHandle *handle, const std::string &path, bool objects)
{
    velStringList names;
    require(getChildObjectList(handle, path.c_str(), objects, !objects, &names), path);
    return names;
}

bool isUsers(velHandle *handle, const std::string &path)
{
    return isLibrary(handle, path.c_str()) == 0;
}

} // namespace

LibraryPart::LibraryPart(velHandle *handle)
{
    if (!havePath(handle, "/"))
        return;
    for (const char *name : namesIn(handle, "/", true))
        paths_.push_back(std::string("/") + name);
}

bool LibraryPart::isRestatedIn(velHandle *handle) const
{
    return std::ranges::any_of(paths_,
                               [&](const std::string &path) { return isUsers(handle, path); });
}

void LibraryPart::dropFrom(velHandle *handle, velHandle *own) const
{
    std::vector<std::string> open = paths_;
    while (!open.empty()) {
        const std::string path = std::move(open.back());
        open.pop_back();
        if (isUsers(handle, path)) {
            for (const char *name : namesIn(handle, path, false)) {
                const std::string parameter = makeChildPath(path.c_str(), name);
                if (!havePath(own, parameter.c_str()))
                    require(deleteParamH(handle, parameter.c_str()), parameter);
            }
        }
        for (const char *name : namesIn(handle, path, true))
            open.push_back(makeChildPath(path.c_str(), name));
    }
}

} // namespace veltool
