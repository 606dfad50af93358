// veltool upgrade: changes old command data to the current version.
//
// 1. The rules upgrade the data in memory and list the changes.
// 2. Changes that the user does not want are left out, with the changes that
//    depend on them.
// 3. The changes are edited into the text (veltext/keepLayout.h).
// 4. The file is replaced; the previous version stays as FILE.bak.
#include "tools/veltool/support/changeSelection.h"
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/editFile.h"
#include "tools/veltool/support/fileLoop.h"
#include "tools/veltool/support/input.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/replacement.h"
#include "tools/veltool/support/ruleCheck.h"
#include "tools/veltool/support/upgradeChanges.h"

#include <algorithm>
#include <charconv>
#include <numeric>
#include <optional>
#include <set>
#include <string_view>

namespace veltool {

namespace {

using velparser::UpgradeChange;

/// Reads "N[,N...]". Throws a Failure.
void addNumbers(const std::string &text, std::set<std::size_t> *numbers)
{
    for (std::string_view rest = text;;) {
        const std::string_view word = rest.substr(0, rest.find(','));
        std::size_t number = 0;
        const char *end = word.data() + word.size();
        const auto [stop, error] = std::from_chars(word.data(), end, number);
        if (error != std::errc() || stop != end) {
            throw Failure("--except must be numbers separated by commas, not \"" + text + '"');
        }
        numbers->insert(number);
        if (word.size() == rest.size()) {
            return;
        }
        rest.remove_prefix(word.size() + 1);
    }
}

/// Throws a Failure if there is no change with one of these numbers.
void requireChanges(const std::set<std::size_t> &numbers, std::size_t count,
                    const std::string &file)
{
    for (const std::size_t number : numbers) {
        if (number >= 1 && number <= count) {
            continue;
        }
        throw Failure(file + ": there is no change " + std::to_string(number) + "; " +
                      (count == 0   ? "the file is up to date"
                       : count == 1 ? "the only change is 1"
                                    : "the changes are 1 to " + std::to_string(count)));
    }
}

class UpgradeTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--dry-run,-n", dryRun_, "Write nothing; status 1 if a file would change");
        options.texts("--except", "NUMBERS", except_,
                      "Leave out the changes with these numbers, which --dry-run shows");
        options.flag("--json", json_, "Print an array of objects");
        replacement_.addOptions(options);
    }

    int run(const Words &files) override
    {
        for (const std::string &numbers : except_) {
            addNumbers(numbers, &numbers_);
        }
        if (!numbers_.empty() && files.size() > 1) {
            throw Failure("--except needs a single FILE: each file has its own numbers");
        }
        rules_.emplace();
        const int ruleStatus = rules_->reportRuleFaults();
        const int status =
            forEachFile(files, [this](const std::string &file) { return upgrade(file); });
        if (json_) {
            out() << array_.end();
        }
        return std::max(status, ruleStatus);
    }

private:
    int upgrade(const std::string &file)
    {
        std::optional<veltext::EditedFile> edited;
        if (!dryRun_) {
            requireEditable(file);
            edited.emplace(file);
        }
        const veltext::SourceText text = dryRun_ ? readText(file) : readTextToEdit(file);
        const velHandlePtr handle = newHandle();
        parseText(handle.get(), text, file);
        requireShallow(handle.get(), file);
        Upgrade upgrade = rules_->upgrade(text, file);
        std::vector<std::size_t> numbers(upgrade.changes.size());
        std::iota(numbers.begin(), numbers.end(), 1);
        if (!numbers_.empty()) {
            requireChanges(numbers_, upgrade.changes.size(), file);
            numbers = leaveOut(handle.get(), file, &upgrade);
        }
        if (upgrade.changes.empty()) {
            return statusGood;
        }

        const std::vector<std::string> listed = list(file, text, upgrade.changes, numbers);
        if (!dryRun_) {
            replacement_.replace(*edited, editedBytes(text, upgrade, file));
        }
        for (const std::string &line : listed) {
            out() << (json_ ? array_.next() : "") << line;
        }
        return dryRun_ ? statusFindings : statusGood;
    }

    /// Makes the changes that are not left out in the data of the text, and
    /// reports which changes depend on the others. Keeps only the made changes in
    /// `upgrade`, and returns their numbers.
    std::vector<std::size_t> leaveOut(velHandle *data, const std::string &file,
                                      Upgrade *upgrade) const
    {
        ChangeSelection selection = makeChanges(data, upgrade->changes, numbers_);
        for (const Dependence &dependence : selection.dependent) {
            report(file + ": change " + std::to_string(dependence.number) +
                   " is left out too, because it depends on change " +
                   std::to_string(dependence.needed));
        }
        std::vector<UpgradeChange> made;
        for (const std::size_t number : selection.made) {
            made.push_back(std::move(upgrade->changes[number - 1]));
        }
        upgrade->changes = std::move(made);
        upgrade->result = veltext::TreeData(data);
        return std::move(selection.made);
    }

    /// The output for the changes, with the lines of the text.
    std::vector<std::string> list(const std::string &file, const veltext::SourceText &text,
                                  const std::vector<UpgradeChange> &changes,
                                  const std::vector<std::size_t> &numbers) const
    {
        veltext::StatementTree tree(text);
        std::vector<std::string> listed;
        for (std::size_t i = 0; i < changes.size(); ++i) {
            const UpgradeChange &change = changes[i];
            const std::size_t line = tree.lineOf(change.path);
            listed.push_back(json_     ? changeJson(file, line, numbers[i], change)
                             : dryRun_ ? numberedChangeLine(file, line, numbers[i], change)
                                       : changeLine(file, line, change));
            const std::string name = newNameIn(change);
            const veltext::StatementTree::Index node = tree.find(change.path);
            if (!name.empty() && node != veltext::StatementTree::none) {
                tree.rename(node, name);
            }
        }
        return listed;
    }

    static std::string editedBytes(const veltext::SourceText &text, const Upgrade &upgrade,
                                   const std::string &file)
    {
        try {
            return veltext::keepLayout(text, upgrade.result, pathChangesIn(upgrade.changes));
        } catch (const veltext::Error &error) {
            throw Failure(file + ": " + error.message() + "; nothing was written");
        }
    }

    Replacement replacement_;
    bool dryRun_ = false;
    bool json_ = false;
    std::vector<std::string> except_;
    std::set<std::size_t> numbers_; ///< of the changes to leave out
    std::optional<RuleCheck> rules_;
    JsonArray array_;
};

} // namespace

const Command upgradeCommand = {
    .name = "upgrade",
    .words = "FILE...",
    .fewest = 1,
    .most = anyNumber,
    .passesOn = false,
    .purpose = "Upgrade old command data to the current version",
    .details = "Makes the changes that the rules know for later versions, and lists them: "
               "FILE:LINE: PATH: change. Other lines do not change and keep their comments; the "
               "previous version stays as FILE.bak. --dry-run numbers the changes for --except; "
               "what depends on a change that is left out is left out too.",
    .make = makeTask<UpgradeTask>,
};

} // namespace veltool
