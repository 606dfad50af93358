// veltool set: a new value for a parameter.
#include "tools/veltool/support/editFile.h"

namespace veltool {

namespace {

/// What helps with a path that cannot be set.
std::string advice(velHandle *handle, const std::string &path)
{
    if (havePath(handle, path.c_str()))
        return "name a parameter of the object";
    return "veltool add adds a parameter; veltool tree shows what is there";
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
            if (former && value == former)
                return false;
            if (const char *message = setStringValue(handle, path.c_str(), value.c_str()))
                throw editRefusal(file, path, message, advice(handle, path));
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
    .details = "Changes the lines of the parameter's last statement and no other; the former file "
               "stays as FILE.bak. Refused with status 1, nothing written, if the rules would "
               "find something new, if there is no parameter at PATH, and if no file can hold "
               "VALUE. Waits while another veltool changes FILE.",
    .make = makeTask<SetTask>,
};

} // namespace veltool
