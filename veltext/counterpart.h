// Pairs the children of an object with those of the same object in another tree.
#pragma once

#include "velapilt/src/velapilt.h"

#include <string>

namespace veltext {

/// Whether both have the same path component: "TYPE:Name" for an object, the
/// type of a singleton, the name of a parameter.
[[nodiscard]] bool haveSameComponent(const velNodeInfo &a, const velNodeInfo &b);

/// Whether both are parameters, or neither is.
[[nodiscard]] bool areSameSort(const velNodeInfo &a, const velNodeInfo &b);

/// Finds the children of a node by those of another tree. Where both trees have
/// the same order, each child costs one comparison, otherwise one look-up. The trees
/// must not change during the life of the object.
class Counterpart
{
public:
    /// `parent` is null if the other tree does not have the node.
    Counterpart(velHandle *tree, const velNode *parent);

    /// The child with the same component, null if there is none. `parentPath`
    /// is the full path of the parent, empty for the root.
    [[nodiscard]] const velNode *find(const velNodeInfo &child, const std::string &parentPath);

private:
    velHandle *tree_;
    const velNode *expected_; ///< the next child, if the orders agree
    bool hasParent_;
};

} // namespace veltext
