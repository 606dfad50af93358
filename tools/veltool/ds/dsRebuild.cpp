// veltool ds rebuild: writes the index of a container again.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"
#include "tools/veltool/ds/dsPrint.h"
#include "tools/veltool/ds/dsProgress.h"

#include "io/Src/Main/container_check.h"

#include <utility>

namespace veltool {

namespace {

class RebuildTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print a JSON object");
    }

    int run(const Words &words) override
    {
        requireFile(words[0]);
        rebuild_result result;
        if (const int code = rebuild(words[0], result)) {
            throw ContainerFailure(words[0], code);
        }
        if (json_) {
            printJson(result);
        } else {
            printLines(result);
        }
        return statusGood;
    }

private:
    static int rebuild(const std::string &file, rebuild_result &result)
    {
        ProgressEnv env;
        return rebuild_container(env, toStandardError(), file.c_str(), result);
    }

    static void printLines(const rebuild_result &result)
    {
        out() << "datasets\t" << std::to_string(result.datasets) << '\n';
        for (const located_dataset &lost : result.lost) {
            out() << "lost\t" << lineOf(lost) << '\n';
        }
        for (const std::string &message : result.messages) {
            out() << "remark\t" << message << '\n';
        }
        if (result.dropped_bytes > 0) {
            out() << "dropped\t" << std::to_string(result.dropped_bytes) << '\n';
        }
    }

    static void printJson(const rebuild_result &result)
    {
        out() << "{\"datasets\":" << std::to_string(result.datasets) << ",\"lost\":[";
        std::string_view before;
        for (const located_dataset &lost : result.lost) {
            out() << std::exchange(before, ",") << jsonOf(lost);
        }
        out() << "],\"remarks\":[";
        before = {};
        for (const std::string &message : result.messages) {
            out() << std::exchange(before, ",") << jsonString(message);
        }
        out() << "],\"dropped\":" << std::to_string(result.dropped_bytes) << "}\n";
    }

    bool json_ = false;
};

} // namespace

const Command dsRebuildCommand = {
    .name = "ds rebuild",
    .words = "FILE",
    .fewest = 1,
    .most = 1,
    .passesOn = false,
    .purpose = "Scan the file and write its index again",
    .details = "Prints how many datasets there are, which are lost, and how many bytes after the "
               "last complete dataset were dropped. If the scan finds damage, the file does not "
               "change.",
    .make = makeTask<RebuildTask>,
};

} // namespace veltool
