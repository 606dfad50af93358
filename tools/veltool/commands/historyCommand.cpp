// veltool history: the versions of a file that saves have replaced.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/differences.h"
#include "tools/veltool/support/input.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/replacement.h"
#include "veltext/history.h"
#include "veltext/historyChanges.h"

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <limits>
#include <optional>

namespace veltool {

namespace {

constexpr std::int32_t anyVersion = std::numeric_limits<std::int32_t>::max();

/// Local time for people, UTC for programs.
enum class TimeForm { Local, Utc };

std::string timeText(std::int64_t seconds, TimeForm form)
{
    const std::time_t time = seconds;
    std::tm parts = {};
    const bool isLocal = form == TimeForm::Local;
    if ((isLocal ? localtime_r(&time, &parts) : gmtime_r(&time, &parts)) == nullptr) {
        return std::to_string(seconds);
    }
    constexpr std::size_t room = 64;
    char text[room];
    const std::size_t size =
        std::strftime(text, room, isLocal ? "%Y-%m-%d %H:%M:%S" : "%Y-%m-%dT%H:%M:%SZ", &parts);
    return {text, size};
}

bool exists(const std::string &file)
{
    std::error_code error;
    return std::filesystem::exists(file, error);
}

class HistoryTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print an array of objects");
        options.number("--show", "N", show_, 1, anyVersion, "Print version N");
        options.number("--diff", "N", diff_, 1, anyVersion,
                       "Show what differs between version N and FILE");
        options.number("--restore", "N", restore_, 1, anyVersion,
                       "Replace FILE by version N, and keep the replaced version");
        replacement_.addOptions(options);
        options.atMostOneOf({"--show", "--diff", "--restore"});
        options.atMostOneOf({"--show", "--json"});
        options.atMostOneOf({"--restore", "--json"});
    }

    int run(const Words &words) override
    {
        const std::string &file = words[0];
        if (file == standardInput) {
            throw Failure("standard input has no history; name a file");
        }
        if (restore_ != 0) {
            return restore(file);
        }
        const veltext::History history(file);
        const veltext::VersionList list = readList(file, history);
        if (show_ != 0) {
            out() << bytesOf(file, history, list, show_);
            return statusGood;
        }
        if (diff_ != 0) {
            return printDiff(file, bytesOf(file, history, list, diff_));
        }
        printList(file, history, list.versions);
        return list.faults.empty() ? statusGood : statusFindings;
    }

private:
    static veltext::VersionList readList(const std::string &file, const veltext::History &history)
    {
        veltext::VersionList list = history.list();
        for (const std::string &fault : list.faults) {
            report(fault);
        }
        if (list.versions.empty() && !exists(file)) {
            throw systemError(file, ENOENT);
        }
        return list;
    }

    static std::string bytesOf(const std::string &file, const veltext::History &history,
                               const veltext::VersionList &list, std::int32_t number)
    {
        const std::size_t count = list.versions.size();
        if (static_cast<std::size_t>(number) > count) {
            throw Refusal(
                file + ": the history has no version " + std::to_string(number) +
                (count == 0 ? "; it is empty" : "; the oldest is " + std::to_string(count)));
        }
        return history.read(list.versions[static_cast<std::size_t>(number) - 1]);
    }

    [[nodiscard]] int printDiff(const std::string &file, const std::string &bytes) const
    {
        const std::string name = file + " (version " + std::to_string(diff_) + ')';
        const velHandlePtr before = newHandle();
        parseText(before.get(), veltext::SourceText(bytes), name);
        requireShallow(before.get(), name);
        const velHandlePtr after = loadFile(file);
        requireShallow(after.get(), file);
        return printDifferences(before.get(), after.get(), json_);
    }

    /// Other programs that edit the file wait until it is replaced.
    [[nodiscard]] int restore(const std::string &file) const
    {
        const veltext::History history(file);
        std::optional<veltext::EditedFile> edited;
        if (exists(file)) {
            edited.emplace(file);
        }
        const std::string bytes = bytesOf(file, history, readList(file, history), restore_);
        if (!edited) {
            veltext::writeFile(file, bytes);
        } else if (readInput(file) != bytes) {
            replacement_.replace(*edited, bytes);
        }
        return statusGood;
    }

    void printList(const std::string &file, const veltext::History &history,
                   const std::vector<veltext::Version> &versions) const
    {
        std::string current;
        if (exists(file)) {
            current = readInput(file);
        }
        const std::vector<std::optional<std::size_t>> changes =
            countChanges(history, versions, exists(file) ? &current : nullptr);
        JsonArray array;
        for (std::size_t i = 0; i < versions.size(); ++i) {
            if (json_) {
                out() << array.next() << versionJson(i + 1, versions[i], changes[i]);
            } else {
                out() << versionLine(i + 1, versions[i], changes[i]);
            }
        }
        if (json_) {
            out() << array.end();
        }
    }

    static std::string versionLine(std::size_t number, const veltext::Version &version,
                                   std::optional<std::size_t> changes)
    {
        return std::to_string(number) + '\t' + timeText(version.time, TimeForm::Local) + '\t' +
               std::to_string(version.size) + '\t' + (changes ? std::to_string(*changes) : "?") +
               '\t' + version.program + '\n';
    }

    static std::string versionJson(std::size_t number, const veltext::Version &version,
                                   std::optional<std::size_t> changes)
    {
        return '{' + jsonMember("n", number) + ',' +
               jsonMember("time", timeText(version.time, TimeForm::Utc)) + ',' +
               jsonMember("size", version.size) + ',' +
               (changes ? jsonMember("changes", *changes) : R"("changes":null)") + ',' +
               jsonMember("program", version.program) + '}';
    }

    Replacement replacement_;
    bool json_ = false;
    std::int32_t show_ = 0; ///< 0 for none, like the other numbers
    std::int32_t diff_ = 0;
    std::int32_t restore_ = 0;
};

} // namespace

const Command historyCommand = {
    .name = "history",
    .words = "FILE",
    .fewest = 1,
    .most = 1,
    .passesOn = false,
    .purpose = "Show and restore earlier versions of a file",
    .details = "Commands that replace FILE, and the editor, keep the version that they replace. "
               "Lists these versions, newest first: number, time, size, changes, program. "
               "The changes are the number of objects and parameters that differ in the "
               "version after it. --diff has status 1 if anything differs; a version N that "
               "does not exist is status 1 too.",
    .make = makeTask<HistoryTask>,
};

} // namespace veltool
