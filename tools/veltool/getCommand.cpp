// veltool get: one value.
#include "tools/veltool/command.h"
#include "tools/veltool/commandData.h"
#include "tools/veltool/output.h"

namespace veltool {

namespace {

class GetTask : public Task
{
public:
    int run(const Words &words) override
    {
        const velHandlePtr handle = loadFile(words[0]);
        const char *path = words[1].c_str();
        std::optional<std::string> value;
        require(getStringValue(handle.get(), path, &value), words[0]);
        if (isObject(handle.get(), path))
            throw Failure(words[0] + ": " + words[1] + " is an object; veltool tree shows it");
        out() << value.value_or("") << '\n';
        return statusGood;
    }
};

} // namespace

const Command getCommand = {
    .name = "get",
    .words = "FILE PATH",
    .fewest = 2,
    .most = 2,
    .passesOn = false,
    .purpose = "Print the value of a parameter",
    .details = "The value stands on one line, as the database holds it: joined and without its "
               "remark.",
    .make = makeTask<GetTask>,
};

} // namespace veltool
