// The current path, which is the top of a stack.
#pragma once

#include "velapilt/src/velHandle_p.h"

/// The current node; null if the current path names none. Throws bad_alloc.
[[nodiscard]] velNode *velFindCurrentNode(velHandle *handle);
/// The same, but fast if the stack points to the node.
[[nodiscard]] inline velNode *velCurrentNode(velHandle *handle)
{
    const bool isKnown = !handle->stack.empty() && handle->stack.back().node != nullptr;
    return isKnown ? handle->stack.back().node : velFindCurrentNode(handle);
}

/// Makes the node's path current, even if a handler has removed the node. Throws bad_alloc.
void velPushNode(velHandle *handle, velNode *node);
/// Removes the top entry; the bottom one stays.
void velPop(velHandle *handle);
/// Replaces every stack entry that points to the node by the text of its path. Throws
/// bad_alloc.
void velUnpin(velHandle *handle, velNode *node);
