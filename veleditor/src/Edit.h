// One change of the command data, as a plain value: what is needed to make it
// and to take it back.
//
// Texts. Of a parameter it is the value, as the database stores it. Of an object
// it is its block, a statement a line and not indented: "TYPE : Name" or
// "TYPE :", then "Name = value" and blocks like it in stored order, then "END".
#pragma once

#include <string>
#include <vector>

namespace velEditor {

struct Edit
{
    enum class Kind {
        SetValue,
        AddParameter,
        DeleteParameter,
        AddObject,
        DeleteObject, ///< with all below it
        ReplaceObject,
    };

    /// The place of something new: after its siblings.
    static constexpr int atEnd = -1;

    Kind kind = Kind::SetValue;

    /// The full path of the parameter or object.
    std::string path;

    /// The text before the change; empty where there was nothing.
    std::string oldText;

    /// The text after it; empty where there is nothing. With `atEnd` the text of
    /// what is added is as a command file has it, and the database reads it as
    /// it reads a file; at any other place it is stored exactly.
    std::string newText;

    /// The place among the siblings, counted from 0, or `atEnd`. A change of a
    /// value has none.
    int position = atEnd;

    /// The lines that open the objects around what is added `atEnd`, where they
    /// are worded as the user sees them; none: as the path has them.
    std::vector<std::string> opening = {};

    bool operator==(const Edit &) const = default;
};

// --- Edits to apply. What was there before is found by Document::apply. -----------

[[nodiscard]] Edit settingValue(std::string path, std::string value);

/// `value` as a command file has it.
[[nodiscard]] Edit addingParameter(std::string path, std::string value,
                                   std::vector<std::string> opening = {});

[[nodiscard]] Edit deletingParameter(std::string path);

/// `block` as a command file has it.
[[nodiscard]] Edit addingObject(std::string path, std::string block);

[[nodiscard]] Edit deletingObject(std::string path);

/// The edit that takes `done` back, which is complete: Document::applied gave it.
[[nodiscard]] Edit inverse(const Edit &done);

} // namespace velEditor
