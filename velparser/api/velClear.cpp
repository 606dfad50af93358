// Deletes all data of a session except that of its libraries.
#include "velapilt/src/velComponentText.h"
#include "velparser/api/velHandlers_p.h"
#include "velparser/api/velInstance_p.h"
#include "velparser/api/velparser.h"

namespace velparser {

namespace {

bool isParameter(const velChildInfo &child)
{
    return std::string_view(child.className) == "Param";
}

std::string pathOf(const velChildInfo &child)
{
    return '/' + velComponentOf(child);
}

const char *loadKept(velHandle *handle, const velInstance *instance, const std::string &path)
{
    const auto object = std::ranges::find(instance->kept, path, &LibraryObject::path);
    if (object == instance->kept.end()) {
        return nullptr;
    }
    return loadLibraryData(handle, object->lines.data(),
                           static_cast<std::int32_t>(object->lines.size()));
}

/// If data states an object of the libraries again, the object becomes user data, and the
/// data of the libraries in it cannot be separated from the rest. So such an object is
/// deleted and created again.
const char *clearChild(velHandle *handle, const velInstance *instance, const velChildInfo &child)
{
    const std::string path = pathOf(child);
    if (isParameter(child)) {
        return deleteParamH(handle, path.c_str());
    }
    if (isLibrary(handle, path.c_str()) == 1) {
        return nullptr;
    }
    const char *error = deleteObjH(handle, path.c_str());
    return error != nullptr ? error : loadKept(handle, instance, path);
}

const char *clearTopLevel(velHandle *handle, const velInstance *instance)
{
    // If the text ended in a continued line, an empty line ends the statement. A
    // syntax error in it does not matter.
    static_cast<void>(parseVELLineH(handle, "", 0));
    setVELStateH(handle, 0);
    std::vector<velChildInfo> children;
    if (const char *error = ::getChildList(handle, "/", &children, nullptr)) {
        return error;
    }
    for (const velChildInfo &child : children) {
        if (const char *error = clearChild(handle, instance, child)) {
            return error;
        }
    }
    return nullptr;
}

} // namespace

const char *keepLibraries(Session &session)
{
    return withDatabase(
        session, "keepLibraries: error finding Lite API handle",
        [&](velHandle *handle) -> const char * {
            std::vector<velChildInfo> children;
            if (const char *error = ::getChildList(handle, "/", &children, nullptr)) {
                return error;
            }
            std::vector<LibraryObject> kept;
            for (const velChildInfo &child : children) {
                if (isParameter(child)) {
                    continue;
                }
                LibraryObject &object = kept.emplace_back(LibraryObject{pathOf(child), {}});
                if (const char *error =
                        getObjectVELH(handle, object.path.c_str(), &object.lines, true)) {
                    return error;
                }
            }
            session.instance()->kept = std::move(kept);
            return nullptr;
        });
}

const char *clearData(Session &session)
{
    return withDatabase(session, "clearData: error finding Lite API handle",
                        [&](velHandle *handle) {
                            return runWithHandlers(
                                session, [&] { return clearTopLevel(handle, session.instance()); });
                        });
}

} // namespace velparser
