// veltool set: changes the value of a parameter.
#include "tools/veltool/support/editFile.h"

namespace veltool {

namespace {

/// What the user can do about a path that cannot be set.
std::string advice(velHandle *handle, const std::string &path)
{
    if (havePath(handle, path.c_str())) {
        return "PATH must be a parameter";
    }
    return "use veltool add for a new parameter; veltool tree lists the existing paths";
}

class SetTask : public EditTask
{
public:
    int run(const Words &words) override
    {
        const std::string &file = words[0];
        const std::string &value = words[2];
        std::string path;
        const auto changeTree = [&](velHandle *handle) {
            path = velFullPath(handle, words[1].c_str());
            const char *former = velFindValue(handle, path.c_str());
            if (former != nullptr && value == former) {
                return false;
            }
            if (const char *message = setStringValue(handle, path.c_str(), value.c_str())) {
                throw editRefusal(file, path, message, advice(handle, path));
            }
            requireStorable(file, path, value);
            return true;
        };
        return editFile(
            file, {changeTree, [&](veltext::TextEdit *edit) { edit->setValue(path, value); }});
    }
};

} // namespace

const Command setCommand = {
    .name = "set",
    .words = "FILE PATH VALUE",
    .fewest = 3,
    .most = 3,
    .passesOn = false,
    .purpose = "Give a parameter a new value",
    .details =
        "Changes only the lines of the parameter's last statement; the previous version stays as "
        "FILE.bak. Writes nothing and ends with status 1 if there would be new findings, if "
        "there is no parameter at PATH, or if a file cannot contain VALUE. Waits while another "
        "veltool changes FILE.",
    .make = makeTask<SetTask>,
};

} // namespace veltool
