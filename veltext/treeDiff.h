// What two trees do not have in common.
#pragma once

#include "velapilt/src/velapilt.h"

#include <functional>
#include <string>

namespace veltext {

/// What happened to the object or parameter between the old tree and the new.
enum class DifferenceKind { Added, Removed, Changed };

/// One object or parameter. Values are null for objects, and on the side that
/// has none; the texts live as long as the trees.
struct Difference
{
    DifferenceKind kind;
    const std::string &path;
    const char *oldValue;
    const char *newValue;
};

/// One line without its end: "+ PATH = NEW", "- PATH = OLD", "~ PATH = OLD -> NEW",
/// of an object the sign and the path.
[[nodiscard]] std::string lineOf(const Difference &difference);

/// Called for each difference; what it receives is valid during the call.
using DifferenceVisitor = std::function<void(const Difference &)>;

/// Compares what stands at `path` and below in two trees, whatever the order
/// of siblings. An object that one side lacks is told of first, then all that
/// is in it. Objects come in the order of the old tree, what was added to one
/// behind the rest of it. A parameter and a singleton of the same name are one
/// removed and one added. Either node may be null: all of the other is told of.
void compareTrees(velHandle *oldTree, const velNode *oldNode, velHandle *newTree,
                  const velNode *newNode, const std::string &path, const DifferenceVisitor &visit);

/// Whether two whole trees hold the same objects, parameters and values, in
/// whatever order. A parameter without a value counts as one with an empty one.
[[nodiscard]] bool haveSameData(velHandle *a, velHandle *b);

/// Two nodes at the same path with all that is below them.
[[nodiscard]] bool haveSameData(velHandle *a, const velNode *nodeOfA, velHandle *b,
                                const velNode *nodeOfB, const std::string &path);

} // namespace veltext
