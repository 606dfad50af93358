// One change of the command data as a plain value, with all that is needed to make it
// and to undo it.
//
// The text of a parameter is its value as the database stores it. The text of an
// object is its block, one statement per line, not indented: "TYPE : Name" or
// "TYPE :", then "Name = value" and nested blocks in stored order, then "END".
#pragma once

#include <string>
#include <vector>

namespace veltext {

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

    /// The place of a new item: after its siblings.
    static constexpr int atEnd = -1;
    static constexpr int unknown = -1;

    Kind kind = Kind::SetValue;

    /// The full path of the parameter or object.
    std::string path;

    /// The text before the change; empty if there was none.
    std::string oldText;

    /// The text after the change; empty if there is none. Text added `atEnd` is in the
    /// form of a command file, and the database reads it like a file; at any other
    /// place the text is stored exactly.
    std::string newText;

    /// The place among the siblings, counted from 0, or `atEnd`. Not used for a change
    /// of a value.
    int position = atEnd;

    /// The lines that open the objects around an item added `atEnd`, as the user sees
    /// them; if empty, the components of the path are used.
    std::vector<std::string> opening = {};

    /// How many of the siblings before `position` are parameters. A file that was saved
    /// and loaded has its parameters before its objects; this number then gives the
    /// place of an edit that was made before. If it is unknown, `position` is the place.
    int parametersBefore = unknown;

    bool operator==(const Edit &) const = default;
};

// --- Edits to apply; Document::apply fills in the former text ---------------------

[[nodiscard]] Edit settingValue(std::string path, std::string value);

/// `value` is in the form of a command file.
[[nodiscard]] Edit addingParameter(std::string path, std::string value,
                                   std::vector<std::string> opening = {});

[[nodiscard]] Edit deletingParameter(std::string path);

/// `block` is in the form of a command file.
[[nodiscard]] Edit addingObject(std::string path, std::string block);

[[nodiscard]] Edit deletingObject(std::string path);

/// The edit that undoes `done`, a complete edit from Document::applied.
[[nodiscard]] Edit inverse(const Edit &done);

/// The position for the item of an edit that has one, among siblings of which each is
/// a parameter (true) or an object. It is that of the edit if as many parameters are
/// before it as there were, or if that is unknown. Otherwise a parameter comes after as many
/// parameters, and an object after as many objects, as before.
[[nodiscard]] int positionAmong(const std::vector<bool> &siblings, const Edit &edit);

} // namespace veltext
