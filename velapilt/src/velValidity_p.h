// The flags of a node, and the marks of validity that a change removes from the nodes above.
#pragma once

#include "velapilt/src/velHandle_p.h"

#include <cstdint>

/// Sets the flags of a node. Only this function changes velFlagSubtreeValid, because it
/// counts the nodes with this flag.
inline void velSetFlags(velHandle *handle, velNode *node, std::uint32_t flags)
{
    if (((flags ^ node->flags) & velFlagSubtreeValid) != 0) {
        handle->subtreeValidCount += (flags & velFlagSubtreeValid) != 0 ? 1 : -1;
    }
    node->flags = flags;
}

/// Removes velFlagSubtreeValid from a node and all nodes above it.
void velInvalidateUpward(velHandle *handle, velNode *node);
/// The same as velInvalidate, by the paths of the nodes above. Throws bad_alloc.
void velInvalidateByPath(velHandle *handle, const velNode *node);

/// Removes the valid mark of the node and, for a Parameter, that of its owner. Removes the
/// mark of a valid subtree from all nodes above. Throws bad_alloc.
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
