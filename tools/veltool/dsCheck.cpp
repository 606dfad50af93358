// veltool ds verify and ds rebuild: damage in a container found, and its index
// made anew.
#include "tools/veltool/dsCommands.h"
#include "tools/veltool/dsContainer.h"
#include "tools/veltool/json.h"
#include "tools/veltool/output.h"

#include "io/Src/Main/container_check.h"

#include <CLI/App.hpp>

#include <chrono>
#include <cstdio>
#include <unistd.h>

namespace veltool {

namespace {

/// A line on a terminal's standard error, from the second second on.
class ProgressLine
{
public:
    ~ProgressLine()
    {
        if (shown_)
            std::fputs("\r\x1b[K", stderr);
    }

    void update(std::int64_t done, std::int64_t total)
    {
        const auto now = Clock::now();
        if (!terminal_ || total <= 0 || now < next_)
            return;
        next_ = now + std::chrono::milliseconds(200);
        shown_ = true;
        std::fprintf(
            stderr, "\r%d%%",
            static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(total)));
    }

private:
    using Clock = std::chrono::steady_clock;

    bool terminal_ = isatty(STDERR_FILENO) == 1;
    bool shown_ = false;
    Clock::time_point next_ = Clock::now() + std::chrono::seconds(1);
};

io_reporter toStandardError()
{
    io_reporter reporter(io_real_env());
    reporter.set_routine(reportMessage);
    return reporter;
}

class VerifyTask : public Task
{
public:
    void addOptions(CLI::App &app) override { app.add_flag("--json", json_, "Print a JSON array"); }

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
        ProgressLine line;
        return verify_container(
            io_real_env(), toStandardError(), file.c_str(), faults,
            [&](std::int64_t done, std::int64_t total) { line.update(done, total); });
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
    int run(const Words &words) override
    {
        rebuild_result result;
        if (const int code =
                rebuild_container(io_real_env(), toStandardError(), words[0].c_str(), result))
            throw ContainerFailure(words[0], code);
        out() << "datasets\t" << std::to_string(result.datasets) << '\n';
        for (const located_dataset &lost : result.lost) {
            out() << "lost\t" << lost.what << '\t' << lost.where << '\t'
                  << std::to_string(lost.when) << '\t' << std::to_string(lost.length) << '\t'
                  << std::to_string(lost.position) << '\n';
        }
        for (const std::string &remark : result.remarks)
            out() << "remark\t" << remark << '\n';
        if (result.dropped_bytes > 0)
            out() << "dropped\t" << std::to_string(result.dropped_bytes) << '\n';
        return statusGood;
    }
};

} // namespace

const Command dsVerifyCommand = {
    .name = "ds verify",
    .words = "FILE",
    .fewest = 1,
    .most = 1,
    .passesOn = false,
    .purpose = "Look at every byte and name the faults",
    .details = "A line for each fault, separated by tabs: byte, code, text. The status is the "
               "code of the first; the file is not changed.",
    .make = makeTask<VerifyTask>,
};

const Command dsRebuildCommand = {
    .name = "ds rebuild",
    .words = "FILE",
    .fewest = 1,
    .most = 1,
    .passesOn = false,
    .purpose = "Scan the file and write its index anew",
    .details = "Says how many datasets there are, which are lost, and how many bytes behind the "
               "last whole one were dropped. A scan that meets damage leaves the file as it is.",
    .make = makeTask<RebuildTask>,
};

} // namespace veltool
