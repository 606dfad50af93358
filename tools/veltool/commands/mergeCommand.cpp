// veltool merge: merges two versions of a file by path, in the text of OURS.
#include "tools/veltool/support/command.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/loadFiles.h"
#include "tools/veltool/support/output.h"
#include "tools/veltool/support/replacement.h"
#include "veltext/fileLock.h"
#include "veltext/mergeText.h"
#include "veltext/veltext.h"

#include <filesystem>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

namespace veltool {

namespace {

constexpr int longestMarker = 1000;

bool isRegularFile(const std::string &file)
{
    std::error_code error;
    return std::filesystem::is_regular_file(file, error);
}

class MergeTask : public Task
{
public:
    void addOptions(Options &options) override
    {
        options.text("-o,--output", "OUT", output_, "Write to OUT, which may be OURS");
        options.text("--name", "NAME", name_, "Name of the file in messages, instead of OURS");
        options.number("--marker-size", "N", markerSize_, 1, longestMarker,
                       "Length of conflict markers; 7 without this option");
        replacement_.addOptions(options);
    }

    int run(const Words &words) override
    {
        requireOneStandardInput(words);
        name_ = name_.empty() ? words[1] : name_;
        if (!output_.empty() && kindOfFile(output_) == FileKind::Container) {
            throw containerRefusal(output_);
        }
        // OUT may be one of the three files: it must not change before it is replaced.
        std::optional<veltext::FileLock> lock;
        if (isRegularFile(output_)) {
            lock.emplace(output_);
        }
        veltext::SourceText sources[] = {readText(words[0]), readText(words[1]),
                                         readText(words[2])};
        std::vector<veltext::CommandText> texts;
        for (std::size_t i = 0; i < std::size(sources); ++i) {
            texts.emplace_back(std::move(sources[i]), words[i]);
            requireShallow(texts[i].tree(), words[i]);
        }
        return finish(veltext::merge(texts[0], std::move(texts[1]), texts[2],
                                     static_cast<std::size_t>(markerSize_)));
    }

private:
    int finish(const veltext::Merge &merge) const
    {
        write(merge.bytes);
        if (merge.isOneConflict) {
            report(name_ +
                   ": cannot be merged statement by statement; the whole file is one conflict");
            return statusFindings;
        }
        for (const veltext::MergeConflict &conflict : merge.conflicts) {
            report(name_ + ": " + conflict.path + ": " + conflict.reason);
        }
        reportLostComments(merge.lostComments);
        return merge.conflicts.empty() ? statusGood : statusFindings;
    }

    void reportLostComments(std::size_t count) const
    {
        if (count == 1) {
            report(name_ + ": 1 comment of THEIRS is not in the result");
        } else if (count > 1) {
            report(name_ + ": " + std::to_string(count) +
                   " comments of THEIRS are not in the result");
        }
    }

    void write(const std::string &bytes) const
    {
        if (output_.empty()) {
            out() << bytes;
        } else {
            replacement_.write(output_, bytes);
        }
    }

    Replacement replacement_;
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
    .details = "A three-way merge by path: puts the changes from BASE to THEIRS into the text of "
               "OURS, which does not change otherwise. Different changes of the same path are put "
               "between conflict markers, and the status is 1. Prints the result, or writes it to "
               "OUT.",
    .make = makeTask<MergeTask>,
};

} // namespace veltool
