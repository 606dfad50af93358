// The command data of a document: queries, and the changes that a document makes. All
// calls go through the bridge.
//
// A change returns the database's message on failure, nothing on success. After a
// failure part of the change may have been made.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velEditor {

/// The message of a failed call, in the bytes of the bridge; nothing for success.
using Message = std::optional<std::string>;

/// The message of a call of the bridge, which the next call may overwrite.
[[nodiscard]] inline Message copied(const char *message)
{
    return message != nullptr ? Message(message) : std::nullopt;
}

class CommandData
{
public:
    /// A parameter or object.
    struct Child
    {
        std::string component;
        bool isParameter;
        bool isLibrary; ///< from a rule library
    };

    // --- Queries ------------------------------------------------------------

    /// Whether there is an object or parameter at a path.
    [[nodiscard]] bool has(const std::string &path) const;

    /// The value of a parameter; none if there is no such parameter.
    [[nodiscard]] std::optional<std::string> value(const std::string &path) const;

    /// The children of an object, in stored order; none if the object does not exist.
    [[nodiscard]] std::vector<Child> children(const std::string &path) const;

    /// The path components of an object's children, in stored order; empty if the
    /// object does not exist.
    [[nodiscard]] std::vector<std::string> components(const std::string &path) const;

    /// Which of an object's children are parameters, in stored order.
    [[nodiscard]] std::vector<bool> areParameters(const std::string &path) const;

    /// The place of a parameter or object among its siblings.
    struct Place
    {
        int position;         ///< from 0; −1 if it does not exist
        int parametersBefore; ///< how many of the siblings before it are parameters
    };
    [[nodiscard]] Place placeOf(const std::string &path, bool isParameter) const;

    /// The topmost of an object and the objects around it that does not exist; empty
    /// if all exist.
    [[nodiscard]] std::string topmostAbsent(const std::string &path) const;

    /// The text of an object and everything below it; see Edit.h for the form.
    [[nodiscard]] std::string block(const std::string &path) const;

    /// All user data as a save writes it; empty if there is none, or without memory.
    [[nodiscard]] std::string formatted() const;

    // --- Reading text in the form of a command file ---------------------------
    // `opening` has the lines that open the objects around the new item; if it is
    // empty, the components of the path are used.

    [[nodiscard]] Message readParameter(const std::string &path, const std::string &value,
                                        std::vector<std::string> opening = {});
    [[nodiscard]] Message readObject(const std::string &path, const std::string &block,
                                     std::vector<std::string> opening = {});

    // --- Exact changes --------------------------------------------------------

    [[nodiscard]] Message setValue(const std::string &path, const std::string &value);

    /// Make a new parameter or object at a place among its siblings.
    [[nodiscard]] Message putParameter(const std::string &path, const std::string &value,
                                       int position);
    [[nodiscard]] Message putObject(const std::string &path, const std::string &block,
                                    int position);

    [[nodiscard]] Message deleteParameter(const std::string &path);
    [[nodiscard]] Message deleteObject(const std::string &path);
};

/// The path of the parent of the item at a path; "/" at the top.
[[nodiscard]] std::string parentPath(const std::string &path);

/// The part of a path after its last '/'.
[[nodiscard]] std::string lastComponent(const std::string &path);

/// The path of a child of the object at a path.
[[nodiscard]] std::string childPath(const std::string &object, const std::string &component);

} // namespace velEditor
