// veltool rules: for those who write rule libraries.
#include "tools/veltool/command.h"
#include "tools/veltool/commandData.h"
#include "tools/veltool/commandLine.h"
#include "tools/veltool/fileLoop.h"
#include "tools/veltool/json.h"
#include "tools/veltool/output.h"
#include "tools/veltool/ruleCheck.h"
#include "tools/veltool/statementTree.h"

#include <CLI/App.hpp>

#include <cstdlib>

namespace veltool {

namespace {

/// The files of the libraries that the environment names. Each name ends at a
/// ';'; one ':' or ';' before it is passed over.
Words environmentLibraries()
{
    // Says what is wrong with the environment as every reader of libraries does.
    (void)newHandle(Libraries::Read);
    const char *folder = std::getenv("ZOT5_VEL_LIBSDIR");
    const char *names = std::getenv("ZOT5_VEL_LIBS");
    Words files;
    std::string_view rest = names ? names : "";
    while (!rest.empty()) {
        if (rest.front() == ':' || rest.front() == ';')
            rest.remove_prefix(1);
        const std::string_view name = rest.substr(0, rest.find(';'));
        if (!name.empty())
            files.push_back(std::string(folder ? folder : ".") + '/' + std::string(name));
        rest.remove_prefix(name.size());
    }
    return files;
}

class RulesCheckTask : public Task
{
public:
    void addOptions(CLI::App &app) override
    {
        app.add_flag("--json", json_, "Print an array of objects");
    }

    int run(const Words &words) override
    {
        const Words files = words.empty() ? environmentLibraries() : words;
        int status = forEachFile(files, [this](const std::string &file) { return load(file); });
        JsonArray array;
        for (const Finding &fault : findRuleFaults(libraries_)) {
            const auto &[file, line] = place(fault.path);
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
        SourceText text = readText(file);
        parseText(newHandle().get(), text, file);
        trees_.emplace_back(text);
        libraries_.push_back(std::move(text));
        names_.push_back(file);
        return statusGood;
    }

    /// The library that states the path, or what is nearest above it, last.
    [[nodiscard]] std::pair<std::string, std::size_t> place(const std::string &path) const
    {
        for (std::string at = path; !at.empty(); at.resize(at.rfind('/'))) {
            for (std::size_t i = trees_.size(); i-- > 0;) {
                if (const StatementTree::Stated *stated = trees_[i].lastOf(at))
                    return {names_[i], stated->lines.first + 1};
            }
        }
        return {names_.empty() ? std::string() : names_.back(), 0};
    }

    bool json_ = false;
    Words names_;
    std::vector<SourceText> libraries_;
    std::vector<StatementTree> trees_;
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
