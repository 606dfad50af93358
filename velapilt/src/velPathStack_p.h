// The current path: the stack whose top it is.
#pragma once

#include "velapilt/src/velHandle_p.h"

/// The current node; null when the current path names none. Throws bad_alloc.
[[nodiscard]] velNode *velFindCurrentNode(velHandle *handle);
/// The same, quickly where the stack points to the node.
[[nodiscard]] inline velNode *velCurrentNode(velHandle *handle)
{
    const bool isKnown = !handle->stack.empty() && handle->stack.back().node != nullptr;
    return isKnown ? handle->stack.back().node : velFindCurrentNode(handle);
}

/// Makes the node's path current, also that of a node which a handler has
/// removed. Throws bad_alloc.
void velPushNode(velHandle *handle, velNode *node);
/// Takes the top entry off; the bottom one stays.
void velPop(velHandle *handle);
/// Puts the node's path as text on every stack entry that points to it. Throws
/// bad_alloc.
void velUnpin(velHandle *handle, velNode *node);
