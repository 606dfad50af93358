// veltool add: adds a parameter to an object.
#include "tools/veltool/support/editFile.h"

namespace veltool {

namespace {

/// What the user can do about a path that already exists.
const char *advice(velHandle *handle, const std::string &path)
{
    return isObject(handle, path.c_str()) ? "" : "use veltool set to change its value";
}

class AddTask : public EditTask
{
public:
    int run(const Words &words) override
    {
        const std::string &file = words[0];
        const std::string &value = words[2];
        std::string path;
        const auto changeTree = [&](velHandle *handle) {
            path = velFullPath(handle, words[1].c_str());
            if (havePath(handle, path.c_str())) {
                throw editRefusal(file, path, "already exists", advice(handle, path));
            }
            if (const char *message = velCreateParam(handle, path.c_str(), value.c_str())) {
                throw editRefusal(file, path, message,
                                  "PATH must be a new parameter in an existing object");
            }
            requireStorable(file, path, value);
            return true;
        };
        return editFile(
            file, {changeTree, [&](veltext::TextEdit *edit) { edit->addParameter(path, value); }});
    }
};

} // namespace

const Command addCommand = {
    .name = "add",
    .words = "FILE PATH VALUE",
    .fewest = 3,
    .most = 3,
    .passesOn = false,
    .purpose = "Add a parameter to an object",
    .details = "Writes a line after the last parameter of the object's last block; no other line "
               "changes, and the previous version stays as FILE.bak. Writes nothing and ends with "
               "status 1 if there would be new findings, if the parameter exists, if its object "
               "does not exist, or if a file cannot contain VALUE.",
    .make = makeTask<AddTask>,
};

} // namespace veltool
