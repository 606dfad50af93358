// veltool add: a new parameter in an object.
#include "tools/veltool/editFile.h"
#include "tools/veltool/valueEdit.h"

namespace veltool {

namespace {

/// What helps with a path that is taken already.
const char *hint(velHandle *handle, const std::string &path)
{
    return isObject(handle, path.c_str()) ? "" : "; veltool set gives it another value";
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
            if (havePath(handle, path.c_str()))
                throw Refusal(file + ": " + path + " exists already" + hint(handle, path));
            if (const char *message = velCreateParam(handle, path.c_str(), value.c_str()))
                throw Refusal(file + ": " + message);
            requireStorable(value);
            return true;
        };
        return editFile(file,
                        {changeTree, [&](TextEdit *edit) { edit->addParameter(path, value); }});
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
    .details = "Writes a line behind the last parameter of the object's last block; no other line "
               "changes, and the former file stays as FILE.bak. Refused with status 1, nothing "
               "written, when the rules would find something new, for a parameter that is there "
               "already, an object that is not, and a value that no file holds.",
    .make = makeTask<AddTask>,
};

} // namespace veltool
