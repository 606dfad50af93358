// The undo steps of a command file on the disk, for when the file is opened again.
//
//     $XDG_STATE_HOME/veleditor/undo/NAME of the file
//
// The steps belong to one text of the command file: with any other text they mean
// nothing. docs/undo.md describes the bytes.
#pragma once

#include "veleditor/src/UndoSteps.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace velEditor {

/// What was kept with a text.
struct KeptUndo
{
    UndoSteps steps;
    std::string fault; ///< a sentence about what is damaged; empty if nothing is
};

class UndoFile
{
public:
    /// For `UndoHistory::stepsAround`.
    static constexpr std::size_t mostBytes = 50'000'000;

    /// In the folder that the environment names. The command file is known by where
    /// links lead now.
    explicit UndoFile(const std::string &commandFile);

    /// The steps that were kept with this text of the command file; none if they were
    /// kept with another one. If the file is damaged, those next to the text that are
    /// intact. Throws a veltext::Error if it cannot be read.
    [[nodiscard]] KeptUndo read(std::string_view text) const;

    /// Replaces what was kept, in one step. Without steps, removes the file. Throws a
    /// veltext::Error; what was kept is then unchanged.
    void write(std::string_view text, const UndoSteps &steps) const;

    /// Empty if the environment names no place.
    [[nodiscard]] const std::string &name() const { return name_; }

private:
    std::string commandFile_; ///< canonical
    std::string name_;
};

/// The bytes of such a file, and what is intact of them for this text.
[[nodiscard]] std::string undoBytes(const std::string &commandFile, std::string_view text,
                                    const UndoSteps &steps);
[[nodiscard]] KeptUndo undoOf(std::string_view bytes, std::string_view text);

} // namespace velEditor
