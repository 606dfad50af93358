// Removes nodes, and finds the node that has taken the place of a removed one.
//
// A handler may delete a node and make another one with the same path. If a node is removed
// before its children, they stay in the table. In both cases the path decides which node is
// meant, and which flags it inherits.
#pragma once

#include "velapilt/src/velHandle_p.h"

/// The slow forms of velNodeNow and velParentNow, which compare the path as text.
[[nodiscard]] velNode *velFindNodeNow(velHandle *handle, const velNode *node);
[[nodiscard]] velNode *velFindParentNow(velHandle *handle, const velNode *node);

/// The node that now has the path of `node`, which may have been removed during the current
/// operation; null if there is none. Throws bad_alloc.
[[nodiscard]] inline velNode *velNodeNow(velHandle *handle, velNode *node)
{
    return node->inTable != 0 || node->isPending != 0 ? node : velFindNodeNow(handle, node);
}

/// The node at the path of the parent of `node`, which is in the table; null
/// for none, and for the root. Throws bad_alloc.
[[nodiscard]] inline velNode *velParentNow(velHandle *handle, const velNode *node)
{
    return node->isRoot() || !handle->table.hasDetached() ? node->parent
                                                          : velFindParentNow(handle, node);
}

/// Unlinks a node; `before` may name the sibling before it. Null or the
/// message. Throws bad_alloc.
[[nodiscard]] const char *velRemoveNode(velHandle *handle, velNode *node,
                                        velNode *before = nullptr);
/// Deletes a node and everything below it. Null, the message, or the interruption that a
/// handler has requested. Throws bad_alloc.
[[nodiscard]] const char *velDeleteNode(velHandle *handle, velNode *node);
