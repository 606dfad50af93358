// Writes and reads the records of undo steps.
#include "veleditor/src/UndoFile.h"

#include "veltext/editRecord.h"
#include "veltext/error.h"
#include "veltext/fields.h"
#include "veltext/folder.h"
#include "veltext/readFile.h"
#include "veltext/record.h"
#include "veltext/stateFolder.h"
#include "veltext/temporaryFile.h"

#include <QCryptographicHash>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include <unistd.h>

namespace velEditor {

namespace {

constexpr char headKind = 'U';
constexpr char doneKind = 'd';
constexpr char undoneKind = 'r';
constexpr char endKind = 'E';

constexpr std::uint32_t formatNumber = 1;
constexpr mode_t ownerOnly = 0600;

std::string digestOf(std::string_view text)
{
    const QByteArrayView bytes(text.data(), static_cast<qsizetype>(text.size()));
    return QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex().toStdString();
}

std::string headOf(const std::string &commandFile, std::string_view text)
{
    std::string body;
    veltext::putNumber(&body, formatNumber);
    veltext::putText(&body, commandFile);
    veltext::putLongNumber(&body, text.size());
    veltext::putText(&body, digestOf(text));
    return body;
}

/// Whether the head of a file is about this text. Nothing if it is from a later version
/// of the program, or has no meaning.
std::optional<bool> isAbout(std::string_view text, std::string_view head)
{
    veltext::FieldReader fields(head);
    const bool isKnown = fields.number() == formatNumber;
    static_cast<void>(fields.text()); // for people
    const std::uint64_t size = fields.longNumber();
    const std::string digest = fields.text();
    if (!isKnown || !fields.isAtEnd()) {
        return std::nullopt;
    }
    return size == text.size() && digest == digestOf(text);
}

std::string stepBody(std::uint32_t number, const UndoStep &step)
{
    std::string body;
    veltext::putNumber(&body, number);
    veltext::putText(&body, step.name.toStdString());
    veltext::putNumber(&body, static_cast<std::uint32_t>(step.edits.size()));
    for (const Edit &edit : step.edits) {
        veltext::putEdit(&body, edit);
    }
    return body;
}

void addSteps(std::string &bytes, char kind, const std::vector<UndoStep> &steps)
{
    std::uint32_t number = 0;
    for (const UndoStep &step : steps) {
        bytes += veltext::recordOf(kind, stepBody(number++, step));
    }
}

/// Adds the step of a record to those before it. Nothing happens after a step that is
/// missing: the next one would begin in a state that is not known.
void takeStep(std::string_view body, std::vector<UndoStep> &steps)
{
    veltext::FieldReader fields(body);
    const bool isNext = fields.number() == steps.size();
    UndoStep step{QString::fromStdString(fields.text())};
    for (std::uint32_t left = fields.number(); left > 0 && fields.isGood(); --left) {
        step.edits.push_back(veltext::takeEdit(&fields));
    }
    if (isNext && fields.isAtEnd() && !step.edits.empty()) {
        steps.push_back(std::move(step));
    }
}

/// Removes what programs have left that were killed while they wrote.
void removeLeftovers(const std::string &folder)
{
    namespace fs = std::filesystem;
    const fs::file_time_type old = fs::file_time_type::clock::now() - std::chrono::hours(24);
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code unknown;
        const fs::file_time_type written = entry->last_write_time(unknown);
        if (entry->path().filename().string().starts_with(".veltool-") && !unknown &&
            written < old) {
            fs::remove(entry->path(), unknown);
        }
    }
}

} // namespace

std::string undoBytes(const std::string &commandFile, std::string_view text, const UndoSteps &steps)
{
    std::string bytes = veltext::recordOf(headKind, headOf(commandFile, text));
    addSteps(bytes, doneKind, steps.done);
    addSteps(bytes, undoneKind, steps.undone);
    std::string end;
    veltext::putLongNumber(&end, steps.done.size() + steps.undone.size());
    return bytes + veltext::recordOf(endKind, end);
}

KeptUndo undoOf(std::string_view bytes, std::string_view text)
{
    KeptUndo kept;
    std::optional<std::uint64_t> count;
    veltext::RecordReader records(bytes);
    const std::optional<veltext::Record> head = records.next();
    const std::optional<bool> isOurs =
        head && head->kind == headKind ? isAbout(text, head->body) : std::nullopt;
    if (!isOurs) {
        kept.fault = "its beginning is damaged, or from a later version of the program";
    }
    if (!isOurs.value_or(false)) {
        return kept;
    }
    while (const std::optional<veltext::Record> record = records.next()) {
        if (record->kind == doneKind) {
            takeStep(record->body, kept.steps.done);
        } else if (record->kind == undoneKind) {
            takeStep(record->body, kept.steps.undone);
        } else if (record->kind == endKind) {
            count = veltext::FieldReader(record->body).longNumber();
        }
    }
    if (count != kept.steps.done.size() + kept.steps.undone.size()) {
        kept.fault = "a part of it is damaged";
    }
    return kept;
}

UndoFile::UndoFile(const std::string &commandFile)
    : commandFile_(veltext::canonicalPath(commandFile)), name_(veltext::stateFolder("undo"))
{
    if (!name_.empty()) {
        name_ += '/' + veltext::stateNameOf(commandFile_);
    }
}

KeptUndo UndoFile::read(std::string_view text) const
{
    std::error_code unknown;
    if (name_.empty() || !std::filesystem::exists(name_, unknown)) {
        return {};
    }
    KeptUndo kept = undoOf(veltext::readBytes(name_), text);
    if (!kept.fault.empty()) {
        kept.fault = name_ + ": " + kept.fault;
    }
    return kept;
}

void UndoFile::write(std::string_view text, const UndoSteps &steps) const
{
    if (steps.isEmpty()) {
        if (!name_.empty() && ::unlink(name_.c_str()) != 0 && errno != ENOENT) {
            throw veltext::systemError(name_, errno);
        }
        return;
    }
    if (name_.empty()) {
        throw veltext::Error("neither XDG_STATE_HOME nor HOME names a folder");
    }
    veltext::makePrivateFolder(veltext::folderOf(name_));
    removeLeftovers(veltext::folderOf(name_));
    veltext::TemporaryFile temporary(name_, name_);
    temporary.fill(undoBytes(commandFile_, text, steps), ownerOnly);
    temporary.rename(name_);
}

} // namespace velEditor
