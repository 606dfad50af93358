// veltool recover: the changes that a crash of the editor has left unsaved.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/differences.h"
#include "tools/veltool/support/editFile.h"
#include "tools/veltool/support/input.h"
#include "tools/veltool/support/replacement.h"
#include "veltext/commandText.h"
#include "veltext/journalFile.h"
#include "veltext/recovery.h"

#include <cerrno>
#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

namespace veltool {

namespace {

bool exists(const std::string &file)
{
    std::error_code error;
    return std::filesystem::exists(file, error);
}

std::string textOr(const std::optional<std::string> &value, const char *other)
{
    return value ? *value : other;
}

/// The file with the changes of all its journals.
struct Recovered
{
    std::optional<std::string> before; ///< the bytes of the file; nothing if it is gone
    std::string bytes;
    bool hasChanges = false;
    bool isComplete = true; ///< no conflicts, no faults
};

class RecoverTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.flag("--dry-run", dryRun_, "Show what would change, and change nothing");
        options.text("-o,--output", "OUT", output_, "Write to OUT, and leave FILE as it is");
        options.flag("--discard", discard_, "Forget the unsaved changes");
        options.flag("--json", json_, "With --dry-run: print an array of objects");
        replacement_.addOptions(options);
        options.atMostOneOf({"--dry-run", "--output", "--discard"});
        options.atMostOneOf({"--json", "--output"});
        options.atMostOneOf({"--json", "--discard"});
    }

    int run(const Words &words) override
    {
        const std::string &file = words[0];
        if (file == standardInput) {
            throw Failure("standard input has no unsaved changes; name a file");
        }
        if (json_ && !dryRun_) {
            throw Failure("--json needs --dry-run");
        }
        const std::string folder = veltext::journalFolder();
        // Before the journals that are left belong to this process.
        const bool isInUse = reportUsers(file, folder);
        std::vector<std::string> faults;
        left_ = veltext::leftJournals(folder, file, &faults);
        for (const std::string &fault : faults) {
            report(fault);
        }
        if (discard_) {
            return discard();
        }
        if (left_.empty()) {
            return nothing(file, isInUse);
        }
        return dryRun_ ? show(file) : recoverInto(file);
    }

private:
    /// The editors that run keep their own journals.
    static bool reportUsers(const std::string &file, const std::string &folder)
    {
        const std::vector<veltext::Journal> journals = veltext::journalsInUse(folder, file);
        for (const veltext::Journal &journal : journals) {
            report(file + ": process " + std::to_string(journal.head.process) + " on " +
                   journal.head.host + " is editing the file; its changes are left alone");
        }
        return !journals.empty();
    }

    [[nodiscard]] int nothing(const std::string &file, bool isInUse) const
    {
        if (!exists(file)) {
            throw systemError(file, ENOENT);
        }
        if (!dryRun_ && !isInUse) {
            report(file + ": there are no unsaved changes");
        }
        if (json_) {
            static_cast<void>(printDifferences(newHandle().get(), newHandle().get(), true));
        }
        return dryRun_ ? statusGood : statusFindings;
    }

    int discard()
    {
        for (veltext::LeftJournal &left : left_) {
            left.file.remove();
        }
        return left_.empty() ? statusFindings : statusGood;
    }

    /// The changes of the oldest journal are made first.
    [[nodiscard]] Recovered recovered(const std::string &file) const
    {
        Recovered result;
        if (exists(file)) {
            result.before = readTextToEdit(file).bytes();
        }
        std::optional<std::string> text = result.before;
        for (auto left = left_.rbegin(); left != left_.rend(); ++left) {
            const veltext::Recovery recovery = veltext::recover(left->journal, text, file);
            reportRest(file, recovery);
            text = recovery.bytes;
            result.isComplete =
                result.isComplete && recovery.conflicts.empty() && recovery.faults.empty();
            result.hasChanges =
                result.hasChanges || recovery.hasChanges || !recovery.conflicts.empty();
        }
        result.bytes = *text;
        result.hasChanges = result.hasChanges || !result.before;
        return result;
    }

    static void reportRest(const std::string &file, const veltext::Recovery &recovery)
    {
        for (const std::string &fault : recovery.faults) {
            report(file + ": unsaved changes: " + fault);
        }
        for (const veltext::RecoveryConflict &conflict : recovery.conflicts) {
            report(file + ": " + conflict.path + ": has changed in the file too, which keeps \"" +
                   textOr(conflict.kept, "") + "\"; the unsaved value is \"" +
                   textOr(conflict.inJournal, "") + '"');
        }
    }

    [[nodiscard]] int show(const std::string &file) const
    {
        const Recovered result = recovered(file);
        const veltext::CommandText before(result.before.value_or(""), file);
        const veltext::CommandText after(result.bytes, file);
        requireShallow(after.tree(), file);
        static_cast<void>(printDifferences(before.tree(), after.tree(), json_));
        return result.hasChanges || !result.isComplete ? statusFindings : statusGood;
    }

    int recoverInto(const std::string &file)
    {
        std::optional<veltext::EditedFile> edited;
        if (output_.empty() && exists(file)) {
            edited.emplace(file);
        }
        const Recovered result = recovered(file);
        if (!output_.empty()) {
            replacement_.write(output_, result.bytes);
        } else if (!edited) {
            veltext::writeFile(file, result.bytes);
        } else if (result.bytes != *result.before) {
            replacement_.replace(*edited, result.bytes);
        }
        if (output_.empty() && result.isComplete) {
            static_cast<void>(discard());
        }
        if (!result.isComplete) {
            report(file + ": not everything was recovered; the unsaved changes are kept until you "
                          "use --discard");
        }
        return result.isComplete && result.hasChanges ? statusGood : statusFindings;
    }

    Replacement replacement_;
    std::string output_;
    bool dryRun_ = false;
    bool discard_ = false;
    bool json_ = false;
    std::vector<veltext::LeftJournal> left_; ///< the last one first
};

} // namespace

const Command recoverCommand = {
    .name = "recover",
    .words = "FILE",
    .fewest = 1,
    .most = 1,
    .passesOn = false,
    .purpose = "Recover changes that a crash of the editor left unsaved",
    .details = "Puts the changes into FILE. If FILE has changed since, they are merged by path; "
               "what has changed in FILE too stays as it is in FILE. The status is 0 when this is "
               "done and 1 when there is nothing to recover or not everything could be recovered. "
               "With --dry-run it is 1 when there is something to recover, and 0 when there is "
               "not. Changes in an editor that still runs are left alone.",
    .make = makeTask<RecoverTask>,
};

} // namespace veltool
