// Edits for the steps of a merge, and what the document knows afterwards.
#include "veleditor/src/TakeOver.h"

#include "veleditor/src/DataChange.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/UndoHistory.h"
#include "velparser/api/velparser.h"
#include "veltext/commandText.h"
#include "veltext/error.h"
#include "veltext/textChanges.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace velEditor {

namespace {

using veltext::CommandText;
using veltext::DataMergeStep;

QString translated(const char *text)
{
    return QCoreApplication::translate("velEditor::TakeOver", text);
}

/// What the file holds now. Throws an Error if it cannot be read.
std::shared_ptr<FileVersion> versionOf(const std::string &file)
{
    std::shared_ptr<FileVersion> version = FileVersion::read(file);
    if (version == nullptr) {
        throw veltext::Error(file + ": cannot read the file");
    }
    return version;
}

/// Makes the steps of a merge.
class Merging
{
public:
    explicit Merging(Document &document) : document_(document) {}

    [[nodiscard]] Message make(const DataMergeStep &step)
    {
        const bool staysInPlace =
            step.ours && step.theirs && step.ours->isParameter && step.theirs->isParameter;
        if (staysInPlace) {
            return document_.apply(settingValue(step.path, step.theirs->text));
        }
        if (step.ours) {
            mayHaveMoved_ = true;
            if (Message failure = document_.apply(removal(step))) {
                return failure;
            }
        }
        return step.theirs ? document_.apply(addition(step)) : std::nullopt;
    }

private:
    [[nodiscard]] static Edit removal(const DataMergeStep &step)
    {
        return step.ours->isParameter ? deletingParameter(step.path) : deletingObject(step.path);
    }

    [[nodiscard]] Edit addition(const DataMergeStep &step)
    {
        Edit edit = step.theirs->isParameter ? addingParameter(step.path, step.theirs->text)
                                             : addingObject(step.path, step.theirs->text);
        edit.position = placeOf(step);
        return edit;
    }

    /// After the item that it follows, and after those that were added there before.
    int placeOf(const DataMergeStep &step)
    {
        const std::string object = parentPath(step.path);
        if (object != object_ || step.previous != previous_) {
            object_ = object;
            previous_ = step.previous;
            last_ = step.previous;
            mayHaveMoved_ = true;
        }
        if (mayHaveMoved_) {
            const std::vector<std::string> siblings = document_.data().components(object);
            const auto found = std::find(siblings.begin(), siblings.end(), last_);
            place_ = found != siblings.end() ? static_cast<int>(found - siblings.begin()) : -1;
            mayHaveMoved_ = false;
        }
        last_ = lastComponent(step.path);
        return ++place_;
    }

    Document &document_;
    std::string object_;        ///< of the item that was added last; empty at first
    std::string previous_;      ///< what that item follows
    std::string last_;          ///< that item
    int place_ = -1;            ///< its place
    bool mayHaveMoved_ = false; ///< something was deleted since
};

} // namespace

Message reload(Document &document, UndoHistory &history)
{
    std::shared_ptr<FileVersion> version;
    try {
        version = versionOf(document.file());
    } catch (const veltext::Error &refused) {
        return refused.message();
    }
    if (Message failure = changeTo(document, history, version->bytes(), translated("Reload"))) {
        return failure;
    }
    document.takeOver(std::move(version), true);
    return std::nullopt;
}

FileMerge::FileMerge(const Document &document) : theirs_(versionOf(document.file()))
{
    const CommandText base(document.knownVersion()->bytes(), document.file());
    const CommandText theirs(theirs_->bytes(), document.file());
    for (DataMergeStep &step : veltext::planDataMerge(base, velparser::findLiteHandle(), theirs)) {
        if (step.isConflict) {
            conflicts_.push_back(step);
        }
        steps_.push_back(std::move(step));
    }
}

Message FileMerge::apply(Document &document, UndoHistory &history,
                         const std::vector<bool> &takesTheirs) const
{
    const UndoGroup group(history, translated("Merge"));
    Merging merging(document);
    auto isTaken = takesTheirs.begin();
    for (const DataMergeStep &step : steps_) {
        if (step.isConflict && !*isTaken++) {
            continue;
        }
        if (Message failure = merging.make(step)) {
            return failure;
        }
    }
    static_cast<void>(document.validate());
    const CommandText theirs(theirs_->bytes(), document.file());
    document.takeOver(theirs_, veltext::changesTo(velparser::findLiteHandle(), theirs).empty());
    return std::nullopt;
}

} // namespace velEditor
