// The text of an object in an edit (edit.h), line by line.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace veltext {

/// What a line of a block states: a parameter with its value, or an object.
struct BlockStatement
{
    std::string path;
    bool isParameter;
    std::string value; ///< empty for an object
};

/// Called for each statement. False ends the reading.
using BlockVisitor = std::function<bool(const BlockStatement &)>;

/// Visits what a block states, an object before its contents, with the paths that it
/// has as a child of the object at `parent`.
void readBlock(const std::string &parent, std::string_view block, const BlockVisitor &visit);

/// The component of what a line opens: "TYPE:Name" for "TYPE : Name", "TYPE" for the
/// singleton "TYPE :".
[[nodiscard]] std::string componentOfLabel(std::string_view label);

} // namespace veltext
