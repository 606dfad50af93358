// Editing one file with the rules watching: what set, add and delete share.
//
// 1. The database makes the change, or refuses it.
// 2. The text is edited, nothing but what the change is about.
// 3. The edited text, read again, gives the tree that the database now holds.
// 4. The rules find nothing in it that they did not find before.
// 5. The file is replaced, the former one stays as FILE.bak.
//
// Other programs that edit the file wait from before 1 to after 5.
#pragma once

#include "tools/veltool/support/command.h"
#include "velapilt/src/velapilt.h"
#include "veltext/textEdit.h"

#include <functional>

namespace veltool {

/// A change, told to the database and to the text.
struct FileChange
{
    /// Changes the tree, which holds the file's data; false when there is
    /// nothing to do. Throws a Refusal.
    std::function<bool(velHandle *handle)> changeTree;
    std::function<void(veltext::TextEdit *edit)> changeText;
};

/// The options of the editing commands.
class EditTask : public Task
{
public:
    void addOptions(Options &options) override;

protected:
    /// Gives the status. Findings that the change would bring are printed; it is
    /// then made with --force only.
    [[nodiscard]] int editFile(const std::string &file, const FileChange &change) const;

private:
    [[nodiscard]] bool printNewFindings(const std::string &file, const veltext::SourceText &before,
                                        const veltext::SourceText &after) const;

    bool force_ = false;
    bool json_ = false;
};

/// Throws a Refusal if no line of a file can hold the value.
void requireStorable(const std::string &file, const std::string &path, const std::string &value);

/// The bytes of a file that is to be edited as a text. Throws a Refusal for a
/// def or res file, which are edited by way of extract and embed.
[[nodiscard]] veltext::SourceText readTextToEdit(const std::string &file);

} // namespace veltool
