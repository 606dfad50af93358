// veltool merge: three-way, by path, in OURS as its author wrote it.
//
// 1. What is the same byte for byte needs no reading.
// 2. The trees say what is to be done and what is in conflict.
// 3. The text of OURS is edited, nothing else.
// 4. Read anew, with each side in place of the conflicts, it gives the trees
//    that are wanted; else all of the file is one conflict.
// 5. The result is written.
#include "tools/veltool/command.h"
#include "tools/veltool/commandData.h"
#include "tools/veltool/fileLock.h"
#include "tools/veltool/loadFiles.h"
#include "tools/veltool/mergeText.h"
#include "tools/veltool/output.h"
#include "tools/veltool/replaceFile.h"
#include "tools/veltool/treeDiff.h"

#include <CLI/App.hpp>
#include <CLI/Validators.hpp>

#include <filesystem>
#include <iterator>
#include <optional>

namespace veltool {

namespace {

constexpr int longestMarker = 1000;

/// Why a step is a conflict.
std::string reason(const MergeStep &step)
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
bool holds(const SourceText &text, velHandle *tree)
{
    const velHandlePtr handle = newHandle();
    const velArray lines = text.parsedLines();
    return !parseVELData(handle.get(), &lines, 0) && haveSameData(handle.get(), tree);
}

class MergeTask : public Task
{
public:
    void addOptions(CLI::App &app) override
    {
        app.add_option("-o,--output", output_, "Write to OUT, which may be OURS")->type_name("OUT");
        app.add_option("--name", name_, "What messages call the file, instead of OURS")
            ->type_name("NAME");
        app.add_option("--marker-size", markerSize_, "Length of conflict markers (7)")
            ->type_name("N")
            ->check(CLI::Range(1, longestMarker).description(""));
    }

    int run(const Words &words) override
    {
        requireOneStandardInput(words);
        name_ = name_.empty() ? words[1] : name_;
        if (!output_.empty() && kindOfFile(output_) == FileKind::Container)
            throw containerRefusal(output_);
        // OUT may be one of the three: then nobody may change it until it is replaced.
        std::optional<FileLock> lock;
        if (isRegularFile(output_))
            lock.emplace(output_);
        const SourceText base = readText(words[0]);
        const SourceText ours = readText(words[1]);
        const SourceText theirs = readText(words[2]);
        velHandlePtr trees[] = {newHandle(), newHandle(), newHandle()};
        const SourceText *const texts[] = {&base, &ours, &theirs};
        for (std::size_t i = 0; i < std::size(trees); ++i) {
            parseText(trees[i].get(), *texts[i], words[i]);
            requireShallow(trees[i].get(), words[i]);
        }
        return merge({base, ours, theirs}, {trees[0].get(), trees[1].get(), trees[2].get()});
    }

private:
    int merge(const MergeTexts &texts, const MergeTrees &trees)
    {
        const std::string &base = texts.base.bytes();
        const std::string &ours = texts.ours.bytes();
        const std::string &theirs = texts.theirs.bytes();
        if (ours == base || theirs == base || ours == theirs) {
            write(ours == base ? theirs : ours);
            return statusGood;
        }
        const std::vector<MergeStep> steps = planMerge(trees);
        const MergedText merged(texts, trees, steps);
        const std::vector<Conflict> conflicts = conflictsOf(steps);
        const SourceText result(merged.render(Resolution::Marked, markerSize_));
        if (!isAsWanted(merged, trees, steps)) {
            write(wholeConflict(texts.ours, texts.theirs, markerSize_));
            report(name_ + ": cannot be merged statement by statement; all of it is in conflict");
            return statusFindings;
        }
        write(result.bytes());
        for (const Conflict &conflict : conflicts)
            report(name_ + ": " + conflict.path + ": " + conflict.reason);
        if (const std::size_t lost = countLostRemarks(texts.base, texts.theirs, result))
            report(name_ +
                   ": remarks of theirs that are not in the result: " + std::to_string(lost));
        return conflicts.empty() ? statusGood : statusFindings;
    }

    struct Conflict
    {
        std::string path;
        std::string reason;
    };

    static std::vector<Conflict> conflictsOf(const std::vector<MergeStep> &steps)
    {
        std::vector<Conflict> conflicts;
        for (const MergeStep &step : steps) {
            if (step.kind == StepKind::Conflict)
                conflicts.push_back({step.path, reason(step)});
        }
        return conflicts;
    }

    /// Changes the tree of OURS: first by what is clear, then by what is not.
    static bool isAsWanted(const MergedText &merged, const MergeTrees &trees,
                           const std::vector<MergeStep> &steps)
    {
        if (steps.empty())
            return true;
        take(steps, StepKind::Take, trees);
        if (!holds(SourceText(merged.render(Resolution::Ours)), trees.ours))
            return false;
        return !take(steps, StepKind::Conflict, trees) ||
               holds(SourceText(merged.render(Resolution::Theirs)), trees.ours);
    }

    /// Gives whether there is any step of this kind.
    static bool take(const std::vector<MergeStep> &steps, StepKind kind, const MergeTrees &trees)
    {
        bool isAny = false;
        for (const MergeStep &step : steps) {
            if (step.kind != kind)
                continue;
            takeTheirs(trees, step.path);
            isAny = true;
        }
        return isAny;
    }

    void write(const std::string &bytes) const
    {
        if (output_.empty())
            out() << bytes;
        else
            writeFile(output_, bytes);
    }

    std::string output_;
    std::string name_;
    int markerSize_ = usualMarkerSize;
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
