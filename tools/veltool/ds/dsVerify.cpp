// veltool ds verify: finds damage in a container.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"
#include "tools/veltool/ds/dsProgress.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"

#include "io/Src/Main/container_check.h"

namespace veltool {

namespace {

class VerifyTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print a JSON array");
    }

    int run(const Words &words) override
    {
        const ReadableFile file(words[0]);
        std::vector<container_fault> faults;
        if (const int code = verify(file.path(), faults)) {
            throw ContainerFailure(words[0], code);
        }
        print(faults);
        return faults.empty() ? statusGood : faults.front().code;
    }

private:
    static int verify(const std::string &file, std::vector<container_fault> &faults)
    {
        ProgressEnv env;
        return verify_container(env, toStandardError(), file.c_str(), faults);
    }

    void print(const std::vector<container_fault> &faults) const
    {
        JsonArray array;
        for (const container_fault &fault : faults) {
            const std::string position = std::to_string(fault.position);
            const std::string code = std::to_string(fault.code);
            if (json_) {
                out() << array.next() << "{\"position\":" << position << ",\"code\":" << code << ','
                      << jsonMember("text", fault.text) << '}';
            } else {
                out() << position << '\t' << code << '\t' << fault.text << '\n';
            }
        }
        if (json_) {
            out() << array.end();
        }
    }

    bool json_ = false;
};

} // namespace

const Command dsVerifyCommand = {
    .name = "ds verify",
    .words = "FILE",
    .fewest = 1,
    .most = 1,
    .passesOn = false,
    .purpose = "Check every byte and list the damage",
    .details =
        "Prints a line for each fault, separated by tabs: byte, code, text. The status is the "
        "code of the first fault. The file does not change.",
    .make = makeTask<VerifyTask>,
};

} // namespace veltool
