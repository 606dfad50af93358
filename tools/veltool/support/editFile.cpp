// Makes an edit in data and text, compares both, checks the rules, replaces the file.
#include "tools/veltool/support/editFile.h"

#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/input.h"
#include "tools/veltool/support/json.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/ruleCheck.h"
#include "tools/veltool/support/upgradeChanges.h"
#include "veltext/treeDiff.h"
#include "veltext/valueEdit.h"

namespace veltool {

void EditTask::addOptions(Options &options)
{
    options.flag("--force", force_, "Write even if there are new findings");
    options.flag("--json", json_, "Print new findings as an array of objects");
    replacement_.addOptions(options);
}

int EditTask::editFile(const std::string &file, const FileChange &change) const
{
    requireEditable(file);
    const veltext::EditedFile edited(file);
    const veltext::SourceText text = readTextToEdit(file);
    const velHandlePtr handle = newHandle();
    parseText(handle.get(), text, file);
    requireShallow(handle.get(), file);
    if (!change.changeTree(handle.get())) {
        out() << (json_ ? JsonArray().end() : "");
        return statusGood;
    }
    veltext::TextEdit edit(text);
    change.changeText(&edit);

    const veltext::SourceText changed(edit.bytes());
    const velHandlePtr reread = newHandle();
    parseText(reread.get(), changed, file);
    if (!veltext::haveSameData(handle.get(), reread.get())) {
        throw Failure(file + ": reading the edited text again would give other data; "
                             "nothing was written");
    }
    if (printNewFindings(file, text, changed) && !force_) {
        out().flush(); // the findings come first
        report(file + ": not written because of new findings; use --force to write it anyway");
        return statusFindings;
    }
    replacement_.replace(edited, changed.bytes());
    return statusGood;
}

bool EditTask::printNewFindings(const std::string &file, const veltext::SourceText &before,
                                const veltext::SourceText &after) const
{
    RuleCheck rules;
    static_cast<void>(rules.reportRuleFaults());
    const Findings now = rules.findings(after, file);
    if (now.findings.empty()) {
        out() << (json_ ? JsonArray().end() : "");
        return false;
    }
    const std::vector<Finding> fresh =
        newFindings(rules.findings(before, file).findings, now.findings);
    const UpgradedLines lines(after, now.changes);
    JsonArray array;
    for (const Finding &finding : fresh) {
        if (finding.path.empty()) {
            throw Failure(file, 0, finding.text + "; nothing was written");
        }
        const std::size_t line = lines.lineOf(finding.path);
        if (json_) {
            out() << array.next() << findingJson(file, line, finding);
        } else {
            out() << findingLine(file, line, finding);
        }
    }
    if (json_) {
        out() << array.end();
    }
    return !fresh.empty();
}

void requireStorable(const std::string &file, const std::string &path, const std::string &value)
{
    if (const std::string fault = veltext::storageFault(value); !fault.empty()) {
        throw editRefusal(file, path, fault);
    }
}

veltext::SourceText readTextToEdit(const std::string &file)
{
    std::string bytes = readInput(file);
    if (kindOf(bytes) == FileKind::Container) {
        throw containerRefusal(file);
    }
    return veltext::SourceText(std::move(bytes));
}

} // namespace veltool
