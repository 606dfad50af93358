// veltool upgrade: changes old command data to the current version.
//
// 1. The rules upgrade the data in memory and list the changes.
// 2. New names are put into the text, in place of the old names.
// 3. All other changes of the data are edited into that text.
// 4. The result is read again; it must give the upgraded data.
// 5. The file is replaced; the former file stays as FILE.bak.
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
#include <optional>

namespace veltool {

namespace {

class UpgradeTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--dry-run,-n", dryRun_, "Write nothing; status 1 if a file would change");
        options.flag("--json", json_, "Print an array of objects");
        replacement_.addOptions(options);
    }

    int run(const Words &files) override
    {
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
        const Upgrade upgrade = rules_->upgrade(text, file);

        if (upgrade.changes.empty()) {
            return statusGood;
        }

        veltext::TextEdit names(text);
        std::vector<std::string> listed;
        for (const velparser::UpgradeChange &change : upgrade.changes) {
            listed.push_back(takeName(file, change, &names));
        }
        if (!dryRun_) {
            replacement_.replace(*edited,
                                 editedBytes(veltext::SourceText(names.bytes()), upgrade, file));
        }
        for (const std::string &line : listed) {
            out() << (json_ ? array_.next() : "") << line;
        }
        return dryRun_ ? statusFindings : statusGood;
    }

    /// Renames in the text if the change is a new name. Returns the output for the
    /// change.
    std::string takeName(const std::string &file, const velparser::UpgradeChange &change,
                         veltext::TextEdit *names) const
    {
        const std::size_t line = names->tree().lineOf(change.path);
        const std::string name = newNameIn(change);
        if (!name.empty() && names->tree().find(change.path) != veltext::StatementTree::none) {
            names->rename(change.path, name);
        }
        return json_ ? changeJson(file, line, change) : changeLine(file, line, change);
    }

    /// Edits the remaining changes into the text with the new names.
    static std::string editedBytes(const veltext::SourceText &text, const Upgrade &upgrade,
                                   const std::string &file)
    {
        const veltext::TreeData &wanted = upgrade.result;
        const velHandlePtr handle = newHandle();
        parseText(handle.get(), text, file);
        veltext::TextEdit edit(text);
        veltext::editTowards(veltext::TreeData(handle.get()), wanted, movesIn(upgrade.changes),
                             &edit);

        std::string bytes = edit.bytes();
        const velHandlePtr reread = newHandle();
        parseText(reread.get(), veltext::SourceText(bytes), file);
        if (!veltext::haveSameData(veltext::TreeData(reread.get()), wanted)) {
            throw Failure(file + ": reading the edited text again would give other data; "
                                 "nothing was written");
        }
        return bytes;
    }

    Replacement replacement_;
    bool dryRun_ = false;
    bool json_ = false;
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
               "former file stays as FILE.bak.",
    .make = makeTask<UpgradeTask>,
};

} // namespace veltool
