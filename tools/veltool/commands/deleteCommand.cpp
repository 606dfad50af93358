// veltool delete: a parameter, or an object with all below it.
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
            if (path == "/")
                throw editRefusal(file, path, "this is all that the file holds");
            const char *message = isObject(handle, path.c_str())
                                      ? deleteObjH(handle, path.c_str())
                                      : deleteParamH(handle, path.c_str());
            if (message)
                throw editRefusal(file, path, message, "veltool tree shows what is there");
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
    .details = "Takes out all lines that state the parameter, or all blocks that open the object, "
               "with the remarks on them; no other line changes, and the former file stays as "
               "FILE.bak. Refused with status 1, nothing written, when the rules would find "
               "something new, and for what is not there.",
    .make = makeTask<DeleteTask>,
};

} // namespace veltool
