// The flags of a node, and what a change takes away from the validity above it.
#pragma once

#include "velapilt/src/velHandle_p.h"

#include <cstdint>

/// Gives a node its flags. Every change of velFlagSubtreeValid goes this way,
/// for such nodes are counted.
inline void velSetFlags(velHandle *handle, velNode *node, std::uint32_t flags)
{
    if (((flags ^ node->flags) & velFlagSubtreeValid) != 0) {
        handle->subtreeValidCount += (flags & velFlagSubtreeValid) != 0 ? 1 : -1;
    }
    node->flags = flags;
}

/// Takes velFlagSubtreeValid from a node and all above it.
void velInvalidateUpward(velHandle *handle, velNode *node);
/// velInvalidate, by the paths of the nodes above. Throws bad_alloc.
void velInvalidateByPath(velHandle *handle, const velNode *node);

/// Takes the node's mark away, of a Parameter its owner's as well, and from
/// everything above those that of a valid subtree. Throws bad_alloc.
inline void velInvalidate(velHandle *handle, velNode *node)
{
    node->flags &= ~velFlagValid;
    if (handle->table.hasDetached()) {
        velInvalidateByPath(handle, node);
        return;
    }
    velNode *up = node->parent;
    if (up != nullptr && node->isParam()) {
        up->flags &= ~velFlagValid;
        up = up->parent;
    }
    if (handle->subtreeValidCount > 0) {
        velInvalidateUpward(handle, up);
    }
}
