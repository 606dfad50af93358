// veltool rules: checks rule libraries, for their authors.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/commandLine.h"
#include "tools/veltool/support/fileLoop.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/programPlace.h"
#include "tools/veltool/support/ruleCheck.h"
#include "veltext/libraryFaults.h"
#include "veltext/sourceText.h"

namespace veltool {

namespace {

/// The files of the libraries that the environment names, or that ship with veltool.
Words namedLibraries()
{
    // Throws if the environment is wrong, with the same message as other commands.
    static_cast<void>(newHandle(Libraries::Read));
    return libraryFiles(findPlaces());
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
        const Words files = words.empty() ? namedLibraries() : words;
        int status = forEachFile(files, [this](const std::string &file) { return load(file); });
        JsonArray array;
        for (const Finding &fault : findRuleFaults(libraries_)) {
            const auto [file, line] = places_.placeOf(fault.path);
            if (json_) {
                out() << array.next() << findingJson(file, line, fault);
            } else {
                out() << findingLine(file, line, fault);
            }
            status = std::max(status, statusFindings);
        }
        if (json_) {
            out() << array.end();
        }
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
    .purpose = "Check rule libraries for mistakes",
    .details =
        "Reads the LIBRARY files together, in this order, or without any the libraries of the "
        "environment. Prints a line for each mistake: FILE:LINE: PATH: sentence [bad-rule]. "
        "Status 1 if there is one.",
    .make = makeTask<RulesCheckTask>,
};

constexpr const Command *subCommands[] = {&rulesCheckCommand};

class RulesTask : public Task
{
public:
    int run(const Words &words) override
    {
        const Command &command = requireCommand(subCommands, "rules", words[0]);
        return runCommand(command, Words(words.begin() + 1, words.end()));
    }
};

} // namespace

const Command rulesCommand = {
    .name = "rules",
    .words = "check [LIBRARY...]",
    .fewest = 1,
    .most = anyNumber,
    .passesOn = true,
    .purpose = "Check rule libraries for mistakes",
    .details = "veltool rules check --help shows arguments and options.",
    .make = makeTask<RulesTask>,
};

} // namespace veltool
