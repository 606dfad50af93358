// veltool merge: three-way, by path, in OURS as its author wrote it.
//
// 1. What is the same byte for byte needs no reading.
// 2. The trees say what is to be done and what is in conflict.
// 3. The text of OURS is edited, nothing else.
// 4. Read anew, with each side in place of the conflicts, it gives the trees
//    that are wanted; else all of the file is one conflict.
// 5. The result is written.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/loadFiles.h"
#include "tools/veltool/support/output.h"
#include "veltext/fileLock.h"
#include "veltext/mergeText.h"
#include "veltext/replaceFile.h"
#include "veltext/treeDiff.h"

#include <filesystem>
#include <iterator>
#include <optional>

namespace veltool {

namespace {

constexpr int longestMarker = 1000;

/// Why a step is a conflict.
std::string reason(const veltext::MergeStep &step)
{
    if (!step.theirs)
        return "changed in ours, deleted in theirs";
    if (!step.ours)
        return "deleted in ours, changed in theirs";
    return step.base ? "changed on both sides" : "added on both sides, not the same";
}

bool isRegularFile(const std::string &file)
{
    std::error_code error;
    return std::filesystem::is_regular_file(file, error);
}

/// Whether the text parses, and holds what the tree does.
bool holds(const veltext::SourceText &text, velHandle *tree)
{
    const velHandlePtr handle = newHandle();
    const velArray lines = text.parsedLines();
    return !parseVELData(handle.get(), &lines, 0) && veltext::haveSameData(handle.get(), tree);
}

class MergeTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.text("-o,--output", "OUT", output_, "Write to OUT, which may be OURS");
        options.text("--name", "NAME", name_, "What messages call the file, instead of OURS");
        options.number("--marker-size", "N", markerSize_, 1, longestMarker,
                       "Length of conflict markers (7)");
    }

    int run(const Words &words) override
    {
        requireOneStandardInput(words);
        name_ = name_.empty() ? words[1] : name_;
        if (!output_.empty() && kindOfFile(output_) == FileKind::Container)
            throw containerRefusal(output_);
        // OUT may be one of the three: then nobody may change it until it is replaced.
        std::optional<veltext::FileLock> lock;
        if (isRegularFile(output_))
            lock.emplace(output_);
        const veltext::SourceText base = readText(words[0]);
        const veltext::SourceText ours = readText(words[1]);
        const veltext::SourceText theirs = readText(words[2]);
        velHandlePtr trees[] = {newHandle(), newHandle(), newHandle()};
        const veltext::SourceText *const texts[] = {&base, &ours, &theirs};
        for (std::size_t i = 0; i < std::size(trees); ++i) {
            parseText(trees[i].get(), *texts[i], words[i]);
            requireShallow(trees[i].get(), words[i]);
        }
        return merge({base, ours, theirs}, {trees[0].get(), trees[1].get(), trees[2].get()});
    }

private:
    int merge(const veltext::MergeTexts &texts, const veltext::MergeTrees &trees)
    {
        const std::string &base = texts.base.bytes();
        const std::string &ours = texts.ours.bytes();
        const std::string &theirs = texts.theirs.bytes();
        if (ours == base || theirs == base || ours == theirs) {
            write(ours == base ? theirs : ours);
            return statusGood;
        }
        const std::vector<veltext::MergeStep> steps = veltext::planMerge(trees);
        const veltext::MergedText merged(texts, trees, steps);
        const std::vector<Conflict> conflicts = conflictsOf(steps);
        const veltext::SourceText result(merged.render(veltext::Resolution::Marked, markerSize_));
        if (!isAsWanted(merged, trees, steps)) {
            write(veltext::wholeConflict(texts.ours, texts.theirs, markerSize_));
            report(name_ + ": cannot be merged statement by statement; all of it is in conflict");
            return statusFindings;
        }
        write(result.bytes());
        for (const Conflict &conflict : conflicts)
            report(name_ + ": " + conflict.path + ": " + conflict.reason);
        if (const std::size_t lost = veltext::countLostRemarks(texts.base, texts.theirs, result))
            report(name_ +
                   ": remarks of theirs that are not in the result: " + std::to_string(lost));
        return conflicts.empty() ? statusGood : statusFindings;
    }

    struct Conflict
    {
        std::string path;
        std::string reason;
    };

    static std::vector<Conflict> conflictsOf(const std::vector<veltext::MergeStep> &steps)
    {
        std::vector<Conflict> conflicts;
        for (const veltext::MergeStep &step : steps) {
            if (step.kind == veltext::StepKind::Conflict)
                conflicts.push_back({step.path, reason(step)});
        }
        return conflicts;
    }

    /// Changes the tree of OURS: first by what is clear, then by what is not.
    static bool isAsWanted(const veltext::MergedText &merged, const veltext::MergeTrees &trees,
                           const std::vector<veltext::MergeStep> &steps)
    {
        if (steps.empty())
            return true;
        take(steps, veltext::StepKind::Take, trees);
        if (!holds(veltext::SourceText(merged.render(veltext::Resolution::Ours)), trees.ours))
            return false;
        return !take(steps, veltext::StepKind::Conflict, trees) ||
               holds(veltext::SourceText(merged.render(veltext::Resolution::Theirs)), trees.ours);
    }

    /// Gives whether there is any step of this kind.
    static bool take(const std::vector<veltext::MergeStep> &steps, veltext::StepKind kind,
                     const veltext::MergeTrees &trees)
    {
        bool isAny = false;
        for (const veltext::MergeStep &step : steps) {
            if (step.kind != kind)
                continue;
            veltext::takeTheirs(trees, step.path);
            isAny = true;
        }
        return isAny;
    }

    void write(const std::string &bytes) const
    {
        if (output_.empty())
            out() << bytes;
        else
            veltext::writeFile(output_, bytes);
    }

    std::string output_;
    std::string name_;
    int markerSize_ = veltext::usualMarkerSize;
};

} // namespace

const Command mergeCommand = {
    .name = "merge",
    .words = "BASE OURS THEIRS",
    .fewest = 3,
    .most = 3,
    .passesOn = false,
    .purpose = "Merge two changed versions of a file",
    .details = "Three-way, by path: what THEIRS changed since BASE is put into the text of OURS, "
               "which otherwise stays as it is. What both changed differently stands between "
               "conflict markers, and the status is 1. Prints the result, or writes it to OUT.",
    .make = makeTask<MergeTask>,
};

} // namespace veltool
