// veltool rules: for those who write rule libraries.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/commandLine.h"
#include "tools/veltool/support/fileLoop.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/ruleCheck.h"
#include "veltext/libraryFaults.h"
#include "veltext/sourceText.h"

namespace veltool {

namespace {

/// The files of the libraries that the environment names.
Words environmentLibraries()
{
    // Reports what is wrong with the environment as every reader of libraries does.
    (void)newHandle(Libraries::Read);
    return velLibraryFiles();
}

class RulesCheckTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--json", json_, "Print an array of objects");
    }

    int run(const Words &words) override
    {
        const Words files = words.empty() ? environmentLibraries() : words;
        int status = forEachFile(files, [this](const std::string &file) { return load(file); });
        JsonArray array;
        for (const Finding &fault : findRuleFaults(libraries_)) {
            const auto [file, line] = places_.placeOf(fault.path);
            if (json_)
                out() << array.next() << findingJson(file, line, fault);
            else
                out() << findingLine(file, line, fault);
            status = std::max(status, statusFindings);
        }
        if (json_)
            out() << array.end();
        return status;
    }

private:
    int load(const std::string &file)
    {
        veltext::SourceText text = readText(file);
        parseText(newHandle().get(), text, file);
        places_.add(file, text);
        libraries_.push_back(std::move(text));
        return statusGood;
    }

    bool json_ = false;
    std::vector<veltext::SourceText> libraries_;
    veltext::LibraryTexts places_;
};

constexpr Command rulesCheckCommand = {
    .name = "rules check",
    .words = "[LIBRARY...]",
    .fewest = 0,
    .most = anyNumber,
    .passesOn = false,
    .purpose = "Show what is wrong with rule libraries",
    .details = "Reads the LIBRARY files together, in this order, or those that the environment "
               "names, and prints a line for each fault: FILE:LINE: PATH: sentence [bad-rule]. "
               "Status 1 when there is one.",
    .make = makeTask<RulesCheckTask>,
};

class RulesTask : public Task
{
public:
    int run(const Words &words) override
    {
        if (words[0] != "check")
            throw Failure("unknown command \"rules " + words[0] + "\"; see veltool rules --help");
        return runCommand(rulesCheckCommand, Words(words.begin() + 1, words.end()));
    }
};

} // namespace

const Command rulesCommand = {
    .name = "rules",
    .words = "check [LIBRARY...]",
    .fewest = 1,
    .most = anyNumber,
    .passesOn = true,
    .purpose = "Show what is wrong with rule libraries",
    .details = "veltool rules check --help shows words and options.",
    .make = makeTask<RulesTask>,
};

} // namespace veltool
