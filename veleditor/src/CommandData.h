// The command data of a document: what the database holds, and the changes that
// a document makes to it. All of it goes through the bridge.
//
// A change gives what the database says of a failure, and nothing for success.
// After a failure part of the change may have been made.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace velEditor {

/// What a call said that did not succeed, in bytes as the bridge gave it.
using Message = std::optional<std::string>;

/// The message of a call of the bridge, which the next call may overwrite.
[[nodiscard]] inline Message copied(const char *message)
{
    return message != nullptr ? Message(message) : std::nullopt;
}

class CommandData
{
public:
    // --- What is there ------------------------------------------------------

    /// Whether there is an object or parameter at a path.
    [[nodiscard]] bool has(const std::string &path) const;

    /// The value of a parameter; none where there is none.
    [[nodiscard]] std::optional<std::string> value(const std::string &path) const;

    /// What the children of an object add to its path, in stored order; none where
    /// it is not there.
    [[nodiscard]] std::vector<std::string> components(const std::string &path) const;

    /// The place of a parameter or object among its siblings; −1 where there is
    /// none.
    [[nodiscard]] int position(const std::string &path, bool isParameter) const;

    /// An object and all below it; see Edit.h for the form.
    [[nodiscard]] std::string block(const std::string &path) const;

    // --- Text as a command file has it, read into the data --------------------
    // `opening` has the lines that open the objects around; none: as the path
    // has them.

    [[nodiscard]] Message readParameter(const std::string &path, const std::string &value,
                                        std::vector<std::string> opening = {});
    [[nodiscard]] Message readObject(const std::string &path, const std::string &block,
                                     std::vector<std::string> opening = {});

    // --- Exact changes --------------------------------------------------------

    [[nodiscard]] Message setValue(const std::string &path, const std::string &value);

    /// Make what is not there, at a place among its siblings.
    [[nodiscard]] Message putParameter(const std::string &path, const std::string &value,
                                       int position);
    [[nodiscard]] Message putObject(const std::string &path, const std::string &block,
                                    int position);

    [[nodiscard]] Message deleteParameter(const std::string &path);
    [[nodiscard]] Message deleteObject(const std::string &path);
};

/// The path of what holds the item at a path; "/" at the top.
[[nodiscard]] std::string parentPath(const std::string &path);

/// What a path has after its last '/'.
[[nodiscard]] std::string lastComponent(const std::string &path);

/// The path of a child of the object at a path.
[[nodiscard]] std::string childPath(const std::string &object, const std::string &component);

} // namespace velEditor
