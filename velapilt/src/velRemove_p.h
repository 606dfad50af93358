// Removes nodes, and finds the node that has taken the place of a removed one.
//
// A handler may delete a node and make another one at its path, and a node that
// was removed before its children leaves them in the table. What a node is, and
// whose flags pass to it, is decided by the path.
#pragma once

#include "velapilt/src/velHandle_p.h"

/// The slow ways of velNodeNow and velParentNow, by the path as a text.
[[nodiscard]] velNode *velFindNodeNow(velHandle *handle, const velNode *node);
[[nodiscard]] velNode *velFindParentNow(velHandle *handle, const velNode *node);

/// The node that is now at the path of `node`, which may have been removed
/// during the present operation; null for none. Throws bad_alloc.
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
/// Deletes a node and all below it. Null, the message, or the interruption that
/// a handler asked for. Throws bad_alloc.
[[nodiscard]] const char *velDeleteNode(velHandle *handle, velNode *node);
