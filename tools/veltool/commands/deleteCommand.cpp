// veltool delete: deletes a parameter, or an object with everything in it.
#include "tools/veltool/support/editFile.h"

namespace veltool {

namespace {

class DeleteTask : public EditTask
{
public:
    int run(const Words &words) override
    {
        const std::string &file = words[0];
        std::string path;
        const auto changeTree = [&](velHandle *handle) {
            path = velFullPath(handle, words[1].c_str());
            if (path == "/") {
                throw editRefusal(file, path, "the root cannot be deleted");
            }
            const char *message = isObject(handle, path.c_str())
                                      ? deleteObjH(handle, path.c_str())
                                      : deleteParamH(handle, path.c_str());
            if (message != nullptr) {
                throw editRefusal(file, path, message, "veltool tree lists the existing paths");
            }
            return true;
        };
        return editFile(file, {changeTree, [&](veltext::TextEdit *edit) { edit->remove(path); }});
    }
};

} // namespace

const Command deleteCommand = {
    .name = "delete",
    .words = "FILE PATH",
    .fewest = 2,
    .most = 2,
    .passesOn = false,
    .purpose = "Delete a parameter or an object",
    .details =
        "Removes all lines that state the parameter, or all blocks of the object, with their "
        "comments; no other line changes, and the previous version stays as FILE.bak. Writes "
        "nothing and ends with status 1 if there would be new findings, or if PATH does "
        "not exist.",
    .make = makeTask<DeleteTask>,
};

} // namespace veltool
