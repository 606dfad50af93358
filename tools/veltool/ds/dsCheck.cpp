// veltool ds verify and ds rebuild: find damage in a container, and write its index
// again.
#include "tools/veltool/ds/dsCommands.h"
#include "tools/veltool/ds/dsContainer.h"
#include "tools/veltool/ds/dsProgress.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"

#include "io/Src/Main/container_check.h"

#include <utility>

namespace veltool {

namespace {

io_reporter toStandardError()
{
    io_reporter reporter(io_real_env());
    reporter.set_routine(reportMessage);
    return reporter;
}

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
        if (const int code = verify(file.path(), faults))
            throw ContainerFailure(words[0], code);
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
            if (json_)
                out() << array.next() << "{\"position\":" << position << ",\"code\":" << code << ','
                      << jsonMember("text", fault.text) << '}';
            else
                out() << position << '\t' << code << '\t' << fault.text << '\n';
        }
        if (json_)
            out() << array.end();
    }

    bool json_ = false;
};

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
        if (const int code = rebuild(words[0], result))
            throw ContainerFailure(words[0], code);
        if (json_)
            printJson(result);
        else
            printLines(result);
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
            out() << "lost\t" << lost.what << '\t' << lost.where << '\t'
                  << std::to_string(lost.when) << '\t' << std::to_string(lost.length) << '\t'
                  << std::to_string(lost.position) << '\n';
        }
        for (const std::string &message : result.messages)
            out() << "remark\t" << message << '\n';
        if (result.dropped_bytes > 0)
            out() << "dropped\t" << std::to_string(result.dropped_bytes) << '\n';
    }

    static void printJson(const rebuild_result &result)
    {
        out() << "{\"datasets\":" << std::to_string(result.datasets) << ",\"lost\":[";
        std::string_view before;
        for (const located_dataset &lost : result.lost) {
            out() << std::exchange(before, ",") << '{' << jsonMember("what", lost.what) << ','
                  << jsonMember("where", lost.where) << ",\"when\":" << std::to_string(lost.when)
                  << ",\"length\":" << std::to_string(lost.length)
                  << ",\"position\":" << std::to_string(lost.position) << '}';
        }
        out() << "],\"remarks\":[";
        before = {};
        for (const std::string &message : result.messages)
            out() << std::exchange(before, ",") << jsonString(message);
        out() << "],\"dropped\":" << std::to_string(result.dropped_bytes) << "}\n";
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
