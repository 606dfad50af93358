// veltool check: what the rules find in command data.
//
// Each file is parsed natively first: that finds the line of a text that cannot
// be parsed, and gives the lines of the findings.
#include "tools/veltool/command.h"
#include "tools/veltool/commandData.h"
#include "tools/veltool/json.h"
#include "tools/veltool/loadFiles.h"
#include "tools/veltool/output.h"
#include "tools/veltool/progressLine.h"
#include "tools/veltool/ruleCheck.h"
#include "tools/veltool/statementTree.h"
#include "tools/veltool/workers.h"

#include <CLI/App.hpp>

#include <algorithm>
#include <cstdio>
#include <optional>

namespace veltool {

namespace {

class CheckTask : public Task
{
public:
    void addOptions(CLI::App &app) override
    {
        app.add_flag("--json", json_, "Print an array of objects");
        app.add_option("--jobs,-j", jobs_, "Check up to N files at the same time")
            ->type_name("N")
            ->default_str("1");
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
            if (!result.out.empty() || !result.err.empty())
                progress.clear();
            printResult(result);
            progress.update(++done, static_cast<std::int64_t>(files.size()), "files");
        };
        const int status = workOnFiles(
            files, jobs, [this](const std::string &file) { return check(file); }, print);
        if (json_)
            out() << array_.end();
        return std::max(status, ruleStatus);
    }

private:
    FileResult check(const std::string &file)
    {
        const SourceText text = readText(file);
        parseText(newHandle().get(), text, file);
        FileResult result;
        std::optional<StatementTree> lines; // made for the first finding
        for (const Finding &finding : rules_->findings(text, file)) {
            if (!lines)
                lines.emplace(text);
            if (finding.path.empty()) {
                result.err += messageLine(file + ": " + finding.message);
                result.status = statusFailed;
                continue;
            }
            add(file, lines->lineOf(finding.path), finding, &result.out);
            result.status = std::max(result.status, statusFindings);
        }
        return result;
    }

    void add(const std::string &file, std::size_t line, const Finding &finding,
             std::string *text) const
    {
        if (json_)
            *text += (text->empty() ? "" : ",\n") + findingJson(file, line, finding);
        else
            *text += findingLine(file, line, finding);
    }

    void printResult(const FileResult &result)
    {
        if (json_ && !result.out.empty())
            out() << array_.next();
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
    .purpose = "Hold command data against the rules",
    .details = "Loads each FILE, brings it up to the current version in memory, validates it with "
               "units and bounds, and prints a line for each finding: FILE:LINE: PATH: sentence "
               "[identifier]. Status 1 when there is one. FILE itself is not changed.",
    .make = makeTask<CheckTask>,
};

} // namespace veltool
