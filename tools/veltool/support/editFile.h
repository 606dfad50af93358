// Edits one file and checks the rules: the common part of set, add and delete.
//
// 1. The database makes the change, or refuses it.
// 2. The text is edited; only the changed characters or lines are different.
// 3. The edited text is read again; it must give the data that the database has.
// 4. The rules check the result; there must be no new findings.
// 5. The file is replaced; the previous version stays as FILE.bak.
//
// The file is locked from step 1 to 5; other programs that edit it wait.
#pragma once

#include "tools/veltool/support/command.h"
#include "tools/veltool/support/replacement.h"
#include "velapilt/src/velapilt.h"
#include "veltext/textEdit.h"

#include <functional>

namespace veltool {

/// A change of a file, as one function for its data and one for its text.
struct FileChange
{
    /// Changes the data of the file; false if there is nothing to do. Throws a
    /// Refusal.
    std::function<bool(velHandle *handle)> changeTree;
    std::function<void(veltext::TextEdit *edit)> changeText;
};

/// The base of the editing commands, with their options.
class EditTask : public Task
{
public:
    void addOptions(Options &options) override;

protected:
    /// Makes the change and returns the status. Prints the new findings that the
    /// change causes; if there are any, only --force makes the change.
    [[nodiscard]] int editFile(const std::string &file, const FileChange &change) const;

private:
    [[nodiscard]] bool printNewFindings(const std::string &file, const veltext::SourceText &before,
                                        const veltext::SourceText &after) const;

    Replacement replacement_;
    bool force_ = false;
    bool json_ = false;
};

/// Throws a Refusal if no line of a file can hold the value.
void requireStorable(const std::string &file, const std::string &path, const std::string &value);

/// The text of a file to edit. Throws a Refusal for a def or res file: users edit
/// its command data with extract and embed.
[[nodiscard]] veltext::SourceText readTextToEdit(const std::string &file);

} // namespace veltool
