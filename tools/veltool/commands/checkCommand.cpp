// veltool check: checks command data against the rules.
//
// Each file is parsed without Perl first, to find the line of a syntax error and
// the lines of the findings.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/loadFiles.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/progressLine.h"
#include "tools/veltool/support/ruleCheck.h"
#include "tools/veltool/support/upgradeChanges.h"
#include "tools/veltool/support/workers.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <optional>

namespace veltool {

namespace {

constexpr const char *errorIdentifier = "error";

class CheckTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print an array of objects");
        options.text("--jobs,-j", "N", jobs_, "Check up to N files at the same time", "1");
    }

    int run(const Words &files) override
    {
        requireOneStandardInput(files);
        const std::size_t jobs = jobs_.empty() ? 1 : parseJobs(jobs_);
        rules_.emplace();
        const int ruleStatus = rules_->reportRuleFaults();
        ProgressLine progress;
        std::int64_t done = 0;
        const auto print = [&](const FileResult &result) {
            if (!result.out.empty() || !result.err.empty()) {
                progress.clear();
            }
            printResult(result);
            progress.update(++done, static_cast<std::int64_t>(files.size()), "files");
        };
        const int status = workOnFiles(
            files, jobs, [this](const std::string &file) { return checkOrFail(file); },
            [this](const std::string &file, const veltext::Error &failure) {
                return failedResult(file, failure);
            },
            print);
        if (json_) {
            out() << array_.end();
        }
        return std::max(status, ruleStatus);
    }

private:
    FileResult check(const std::string &file)
    {
        const veltext::SourceText text = readText(file);
        requireSound(text, file);
        FileResult result;
        const Findings found = rules_->findings(text, file);
        result.err = notes(text, file, found.changes);
        std::optional<UpgradedLines> lines; // made for the first finding
        for (const Finding &finding : found.findings) {
            if (!lines) {
                lines.emplace(text, found.changes);
            }
            if (finding.path.empty()) {
                addFailure(file, Failure(file, 0, finding.text), &result);
                continue;
            }
            add(file, lines->lineOf(finding.path), finding, &result.out);
            result.status = std::max(result.status, statusFindings);
        }
        return result;
    }

    /// Throws a Failure if a text has a syntax error or is nested too deep.
    static void requireSound(const veltext::SourceText &text, const std::string &file)
    {
        const velHandlePtr handle = newHandle();
        parseText(handle.get(), text, file);
        requireShallow(handle.get(), file);
    }

    /// Other facts about the file that the user should know, one per line.
    static std::string notes(const veltext::SourceText &text, const std::string &file,
                             const std::vector<velparser::UpgradeChange> &changes)
    {
        std::string lines;
        if (text.hasByteOrderMark()) {
            lines += messageLine(file + ": begins with a byte order mark, which is ignored");
        }
        if (!changes.empty()) {
            lines += messageLine(file + ": was upgraded in memory before the check (" +
                                 std::to_string(changes.size()) +
                                 (changes.size() == 1 ? " change" : " changes") +
                                 "); veltool upgrade --dry-run lists the changes");
        }
        return lines;
    }

    /// Reports a file that cannot be checked; the JSON output has an entry for it.
    void addFailure(const std::string &file, const veltext::Error &failure,
                    FileResult *result) const
    {
        result->err += messageLine(failure.message());
        result->status = statusOf(failure);
        if (json_) {
            add(file, failure.line(),
                {.path = {}, .identifier = errorIdentifier, .text = failure.sentence()},
                &result->out);
        }
    }

    FileResult checkOrFail(const std::string &file)
    {
        try {
            return check(file);
        } catch (const veltext::Error &failure) {
            return failedResult(file, failure);
        } catch (const std::bad_alloc &) {
            return failedResult(file, Failure(file, 0, "memory error"));
        }
    }

    [[nodiscard]] FileResult failedResult(const std::string &file,
                                          const veltext::Error &failure) const
    {
        FileResult result;
        addFailure(file, failure, &result);
        return result;
    }

    void add(const std::string &file, std::size_t line, const Finding &finding,
             std::string *text) const
    {
        if (json_) {
            *text += (text->empty() ? "" : ",\n") + findingJson(file, line, finding);
        } else {
            *text += findingLine(file, line, finding);
        }
    }

    void printResult(const FileResult &result)
    {
        if (json_ && !result.out.empty()) {
            out() << array_.next();
        }
        out() << result.out;
        std::fwrite(result.err.data(), 1, result.err.size(), stderr);
    }

    bool json_ = false;
    std::string jobs_;
    std::optional<RuleCheck> rules_;
    JsonArray array_;
};

} // namespace

const Command checkCommand = {
    .name = "check",
    .words = "FILE...",
    .fewest = 1,
    .most = anyNumber,
    .passesOn = false,
    .purpose = "Check command data against the rules",
    .details =
        "Loads each FILE, upgrades it in memory, checks it with units and bounds, and prints "
        "a line for each finding: FILE:LINE: PATH: sentence [identifier]. Status 1 if there "
        "is a finding. FILE itself does not change.",
    .make = makeTask<CheckTask>,
};

} // namespace veltool
