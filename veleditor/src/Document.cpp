// Loading, edits and their signals, validation, saving.
#include "veleditor/src/Document.h"

#include "velparser/api/velparser.h"
#include "veltext/history.h"
#include "veltext/libraryFaults.h"
#include "veltext/textFault.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace velEditor {

namespace {

constexpr unsigned safeModeLevel = 2;

/// By which name the history of a file knows who replaced a version.
constexpr char programName[] = "veleditor";

/// Whether a failure of the edit leaves all as it was, but for the value at its path.
bool failsAsAWhole(const Edit &edit, const CommandData &data)
{
    switch (edit.kind) {
    case Edit::Kind::SetValue:
    case Edit::Kind::DeleteParameter:
        return true;
    case Edit::Kind::AddParameter:
        return data.has(parentPath(edit.path));
    case Edit::Kind::DeleteObject:
    case Edit::Kind::ReplaceObject:
        return !data.has(edit.path);
    case Edit::Kind::AddObject:
        break;
    }
    return false;
}

bool changesNothing(const Edit &done)
{
    return (done.kind == Edit::Kind::SetValue || done.kind == Edit::Kind::ReplaceObject) &&
           done.oldText == done.newText;
}

} // namespace

Document::Document(std::string file, QObject *parent) : QObject(parent), file_(std::move(file)) {}

// --- Loading ----------------------------------------------------------------------

Message Document::readLibraries()
{
    std::vector<velparser::Finding> faults;
    const char *failure = velparser::readLibraries(&faults);
    std::vector<veltext::RuleFault> lines;
    lines.reserve(faults.size());
    for (const velparser::Finding &fault : faults) {
        lines.push_back({fault.path, lineOf(fault)});
    }
    std::string errors = veltext::placedLibraryErrors(failure, lines);
    return errors.empty() ? Message() : Message(std::move(errors));
}

Message Document::load()
{
    if (const char *failure = velparser::loadVELFromFile(file_.c_str(), "vel")) {
        return veltext::explainRefusal(file_, failure);
    }
    loaded_ = FileVersion::read(file_);
    known_ = loaded_;
    encoding_ = encodingOf(loadedText());
    lastEdit_.reset();
    revision_ = ++lastRevision_;
    formerRevision_ = revision_;
    revisionOnDisk_ = revision_;
    isMarked_ = false;
    emit loaded();
    emit reloaded();
    return std::nullopt;
}

const std::string &Document::loadedText() const
{
    static const std::string none;
    return loaded_ != nullptr ? loaded_->bytes() : none;
}

void Document::setSafeMode()
{
    isSafeMode_ = true;
    static_cast<void>(velparser::setValidationLevelH(safeModeLevel));
}

Message Document::switchUnitsChecksOn()
{
    return copied(velparser::setUnitsChecking(1));
}

Message Document::switchBoundsChecksOn()
{
    return copied(velparser::setBoundsChecking(1));
}

// --- Data ---------------------------------------------------------------------------

Message Document::apply(Edit edit, Marking marking)
{
    return make(std::move(edit), marking);
}

Message Document::applyBetween(Edit edit, std::uint64_t from, std::uint64_t to)
{
    const std::optional<State> next =
        revision_ == from ? std::optional(State{to, to != revisionOnDisk_}) : std::nullopt;
    Message failure = make(std::move(edit), Marking::Modified, next);
    lastEdit_.reset();
    return failure;
}

Message Document::rollBack()
{
    if (!lastEdit_) {
        return std::nullopt;
    }
    const Edit last = *std::exchange(lastEdit_, std::nullopt);
    Message failure = make(inverse(last), Marking::Modified, State{formerRevision_, isMarked_});
    lastEdit_.reset();
    return failure;
}

/// Makes a change that leads to the state `next`, or to a new one where that is none.
Message Document::make(Edit edit, Marking marking, std::optional<State> next)
{
    const bool isNew = edit.position == Edit::atEnd;
    const bool failsWhole = failsAsAWhole(edit, data_);
    const std::optional<std::string> former = data_.value(edit.path);
    const Message failure = change(edit);

    const bool isSame =
        failure ? failsWhole && data_.value(edit.path) == former : changesNothing(edit);
    formerRevision_ = revision_;
    if (!isSame) {
        revision_ = next && !failure ? next->revision : ++lastRevision_;
    }
    if (next && !failure) {
        mark(next->isMarked);
    } else if (marking == Marking::Modified) {
        mark(true);
    }
    if (failure) {
        return failure;
    }
    lastEdit_ = edit;
    report(edit, isNew);
    emit applied(edit);
    return std::nullopt;
}

Message Document::upgrade()
{
    return copied(velparser::updateSolverVEL());
}

void Document::announceUpgrade(const std::string &changes)
{
    emit upgraded(changes);
}

void Document::reportMade(const std::vector<Edit> &edits, std::uint64_t from)
{
    const std::uint64_t now = revision_;
    lastEdit_.reset();
    revision_ = from;
    for (std::size_t i = 0; i < edits.size(); ++i) {
        formerRevision_ = revision_;
        revision_ = i + 1 < edits.size() ? nextRevision() : now;
        emit applied(edits[i]);
    }
}

/// Makes the change and completes the edit.
Message Document::change(Edit &edit)
{
    switch (edit.kind) {
    case Edit::Kind::SetValue:
        edit.oldText = data_.value(edit.path).value_or("");
        return data_.setValue(edit.path, edit.newText);
    case Edit::Kind::AddParameter:
        return addParameter(edit);
    case Edit::Kind::AddObject:
        return addObject(edit);
    case Edit::Kind::DeleteParameter:
    case Edit::Kind::DeleteObject:
        return remove(edit);
    case Edit::Kind::ReplaceObject:
        break;
    }
    return replaceObject(edit);
}

// If a command file states a parameter again, the parameter gets the new value and
// keeps its place.
Message Document::addParameter(Edit &edit)
{
    if (edit.position != Edit::atEnd) {
        fitIn(edit);
        return data_.putParameter(edit.path, edit.newText, edit.position);
    }
    const std::string absent = data_.topmostAbsent(parentPath(edit.path));
    const std::optional<std::string> former = data_.value(edit.path);
    if (Message failure = data_.readParameter(edit.path, edit.newText, edit.opening)) {
        return failure;
    }
    const std::string stored = data_.value(edit.path).value_or("");
    if (!absent.empty()) {
        edit = added(Edit::Kind::AddObject, absent, data_.block(absent));
    } else if (former) {
        edit = Edit{Edit::Kind::SetValue, edit.path, *former, stored};
    } else {
        edit = added(Edit::Kind::AddParameter, edit.path, stored);
    }
    return std::nullopt;
}

Message Document::addObject(Edit &edit)
{
    if (edit.position != Edit::atEnd) {
        fitIn(edit);
        return data_.putObject(edit.path, edit.newText, edit.position);
    }
    const std::string absent = data_.topmostAbsent(edit.path);
    const std::string former = absent.empty() ? data_.block(edit.path) : std::string();
    if (Message failure = data_.readObject(edit.path, edit.newText, edit.opening)) {
        return failure;
    }
    if (absent.empty()) {
        edit = added(Edit::Kind::ReplaceObject, edit.path, data_.block(edit.path));
        edit.oldText = former;
    } else {
        edit = added(Edit::Kind::AddObject, absent, data_.block(absent));
    }
    return std::nullopt;
}

Message Document::remove(Edit &edit)
{
    const bool isParameter = edit.kind == Edit::Kind::DeleteParameter;
    edit.newText.clear();
    noteItsPlace(edit, isParameter);
    edit.oldText = isParameter ? data_.value(edit.path).value_or("") : data_.block(edit.path);
    return isParameter ? data_.deleteParameter(edit.path) : data_.deleteObject(edit.path);
}

Message Document::replaceObject(Edit &edit)
{
    noteItsPlace(edit, false);
    edit.oldText = data_.block(edit.path);
    if (Message failure = data_.deleteObject(edit.path)) {
        return failure;
    }
    return data_.putObject(edit.path, edit.newText, edit.position);
}

/// The complete edit that has put this text there.
Edit Document::added(Edit::Kind kind, const std::string &path, const std::string &text) const
{
    Edit edit{kind, path, {}, text};
    noteItsPlace(edit, kind == Edit::Kind::AddParameter);
    return edit;
}

/// Takes the place of an item that exists.
void Document::noteItsPlace(Edit &edit, bool isParameter) const
{
    const CommandData::Place place = data_.placeOf(edit.path, isParameter);
    edit.position = place.position;
    edit.parametersBefore = place.parametersBefore;
}

/// Takes the place that a new item gets among the siblings that are there.
void Document::fitIn(Edit &edit) const
{
    const std::vector<bool> siblings = data_.areParameters(parentPath(edit.path));
    edit.position = positionAmong(siblings, edit);
    edit.parametersBefore =
        static_cast<int>(std::count(siblings.begin(), siblings.begin() + edit.position, true));
}

void Document::report(const Edit &done, bool isNew)
{
    const int place = isNew ? Edit::atEnd : done.position;
    switch (done.kind) {
    case Edit::Kind::SetValue:
        emit valueChanged(done.path, done.newText);
        break;
    case Edit::Kind::AddParameter:
        emit parameterAdded(done.path, place);
        break;
    case Edit::Kind::DeleteParameter:
        emit parameterRemoved(done.path);
        break;
    case Edit::Kind::AddObject:
        emit objectAdded(done.path, place);
        break;
    case Edit::Kind::DeleteObject:
        emit objectRemoved(done.path);
        break;
    case Edit::Kind::ReplaceObject:
        if (done.oldText != done.newText) {
            emit reloaded();
        }
        break;
    }
}

// --- Unsaved changes ------------------------------------------------------------------

void Document::mark(bool modified)
{
    if (!modified && !isMarked_) {
        return;
    }
    isMarked_ = modified;
    emit modifiedMarked(modified);
}

void Document::setModified()
{
    revision_ = ++lastRevision_;
    mark(true);
}

void Document::clearModified()
{
    revisionOnDisk_ = revision_;
    isMarked_ = false;
    emit modifiedMarked(false);
}

void Document::takeOver(std::shared_ptr<FileVersion> version, bool isData)
{
    loaded_ = std::move(version);
    known_ = loaded_;
    encoding_ = encodingOf(loadedText());
    if (isData) {
        clearModified();
    } else {
        revisionOnDisk_ = nextRevision();
        mark(true);
    }
    emit versionKnown();
}

// --- Validation -------------------------------------------------------------------------

Message Document::validate()
{
    return reportFindings("/", velparser::validateVELDataH());
}

Message Document::validateObject(const std::string &path)
{
    return reportFindings(path, velparser::validateVELObjectH(path.c_str()));
}

Message Document::validateParameter(const std::string &path)
{
    return reportFindings(path, velparser::validateParameter(path.c_str()));
}

Message Document::reportFindings(const std::string &path, const char *findings)
{
    Message message = copied(findings);
    emit validated(path, message);
    return message;
}

// --- Saving ---------------------------------------------------------------------------

SaveResult Document::save(const std::string &target)
{
    return write(target, false);
}

SaveResult Document::saveAgain()
{
    const bool isKnown =
        known_ != nullptr && known_->compare(file_).match == FileVersion::Match::Same;
    return write(file_, isKnown);
}

SaveResult Document::write(const std::string &target, bool keepsBackup)
{
    const bool isOwn = target == file_;
    SaveContent content{.keepsBackup = keepsBackup};
    if (isOwn) {
        keepVersion();
        content.text = makeText_ ? makeText_() : std::nullopt;
    }
    SaveResult result = writeCommandFile(file_, target, content);
    if (result.outcome == SaveOutcome::Written) {
        if (isOwn && known_ != nullptr) {
            known_ = std::make_shared<FileVersion>(std::exchange(result.written, {}));
            emit versionKnown();
        }
        clearModified();
        emit saved(target);
    }
    return result;
}

void Document::keepVersion()
{
    const bool isUnseen =
        known_ != nullptr && known_->compare(file_).match == FileVersion::Match::Other;
    const std::string fault = veltext::History(file_).keep(programName);
    emit versionKept(isUnseen, fault.empty() ? Message() : Message(fault));
}

void Document::close()
{
    emit closed();
}

} // namespace velEditor
