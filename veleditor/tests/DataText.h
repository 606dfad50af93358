// The user data of the bridge as a tree and as text, so that tests can compare what
// is stored, what would be saved, and what a reader makes of that.
#pragma once

#include "velparser/api/velSession.h"

#include <optional>
#include <string>
#include <vector>

namespace velEditor {

/// An object, or a parameter if there is a value.
struct Node
{
    std::string component;
    std::optional<std::string> value;
    std::vector<Node> children;
};

/// A line for each node below this one, two blanks a level.
[[nodiscard]] std::string dump(const Node &node, const std::string &indent = {});

/// The user data in stored order.
[[nodiscard]] Node storedData(velparser::Session &session = velparser::defaultSession());

/// The paths of all parameters, or of all objects, below a node, in stored order.
[[nodiscard]] std::vector<std::string> pathsBelow(const Node &node, bool parameters);

/// The same of the user data.
[[nodiscard]] std::vector<std::string> storedPaths(bool parameters);

/// The lines that a save would write.
[[nodiscard]] std::vector<std::string>
writtenLines(velparser::Session &session = velparser::defaultSession());

/// What another database reads from the text that would be saved.
[[nodiscard]] Node savedData();

/// A session with the rule libraries of the environment that has read these lines.
[[nodiscard]] velparser::Session freshLoad(const std::vector<std::string> &lines);

/// The same with what a file does not keep left out: the order of objects, and
/// how many blanks there are in a value.
[[nodiscard]] Node asSaved(Node node);

/// Takes all user data out of the bridge.
void forgetData();

} // namespace velEditor
