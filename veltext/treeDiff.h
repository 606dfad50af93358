// The differences between two trees.
#pragma once

#include "velapilt/src/velapilt.h"
#include "veltext/commandText.h"

#include <functional>
#include <string>

namespace veltext {

/// One object or parameter. Values are null for objects, and on the side that does
/// not have the parameter. The texts are valid as long as the trees.
struct Difference
{
    DifferenceKind kind;
    const std::string &path;
    const char *oldValue;
    const char *newValue;
};

/// A line without its end: "+ PATH = NEW", "- PATH = OLD", "~ PATH = OLD -> NEW";
/// for an object only the sign and the path.
[[nodiscard]] std::string lineOf(const Difference &difference);

/// Called for each difference. The argument is valid during the call only.
using DifferenceVisitor = std::function<void(const Difference &)>;

/// Compares the nodes at `path`, and everything below them, in two trees. The order
/// of siblings does not matter. An object that one side does not have is reported
/// before its contents. Objects come in the order of the old tree; what was added
/// to an object comes after the rest of it. If a parameter became a singleton of
/// the same name, one was removed and the other added. If one node is null, the
/// whole other node is reported.
void compareTrees(velHandle *oldTree, const velNode *oldNode, velHandle *newTree,
                  const velNode *newNode, const std::string &path, const DifferenceVisitor &visit);

/// Whether two trees have the same objects, parameters and values, in any order.
/// A missing value is equal to an empty value.
[[nodiscard]] bool haveSameData(velHandle *a, velHandle *b);

/// The same for two nodes at the same path, with everything below them.
[[nodiscard]] bool haveSameData(velHandle *a, const velNode *nodeOfA, velHandle *b,
                                const velNode *nodeOfB, const std::string &path);

} // namespace veltext
