// The same child in two trees.
#pragma once

#include "velapilt/src/velapilt.h"

#include <string>

namespace veltext {

/// Whether both are what the same component of a path names: "TYPE:Name", or a
/// singleton or parameter of the same name.
[[nodiscard]] bool haveSameComponent(const velNodeInfo &a, const velNodeInfo &b);

/// Both parameters, or both objects or singletons.
[[nodiscard]] bool areSameSort(const velNodeInfo &a, const velNodeInfo &b);

/// Finds the children of a node by those of another tree. Asked for them in the
/// order in which they stand it costs a comparison each, else a look-up. The
/// trees must not change meanwhile.
class Counterpart
{
public:
    /// `parent` is null where the other tree has no such node.
    Counterpart(velHandle *tree, const velNode *parent);

    /// The child with the same component, null if there is none. `parentPath`
    /// is the full path of the parent, empty for the root.
    [[nodiscard]] const velNode *find(const velNodeInfo &child, const std::string &parentPath);

private:
    velHandle *tree_;
    const velNode *expected_; ///< the child to be asked for next, if the orders agree
    bool hasParent_;
};

} // namespace veltext
