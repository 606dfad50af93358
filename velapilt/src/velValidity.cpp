// Flags of nodes, and what a change takes away from the validity above it.
#include "velapilt/src/velHandle_p.h"

#include <new>

void velInvalidateUpward(velHandle *handle, velNode *node)
{
    for (; node != nullptr && handle->subtreeValidCount > 0; node = node->parent) {
        velSetFlags(handle, node, node->flags & ~velFlagSubtreeValid);
    }
}

const char *setValid(velHandle *handle, const char *path, std::int32_t level, bool propagate)
try {
    velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return "setValid: path not found";
    }
    if (level == 1) {
        node->flags |= velFlagValid;
    } else if (level == 2) {
        velSetFlags(handle, node, node->flags | velFlagSubtreeValid);
    } else if (propagate) {
        velInvalidate(handle, node);
    } else {
        node->flags &= ~velFlagValid;
    }
    return nullptr;
} catch (const std::bad_alloc &) {
    return "setValid: path not found";
}

int isLibrary(velHandle *handle, const char *path)
{
    const velNode *node = velFindNode(handle, path);
    if (node == nullptr) {
        return -1;
    }
    return (((node->isParam() ? node->parent : node)->flags & velFlagLibrary) != 0) ? 1 : 0;
}

int isValid(velHandle *handle, const char *path)
{
    const velNode *node = velFindNode(handle, path);
    if (node == nullptr) {
        return -1;
    }
    return ((node->flags & velFlagValid) != 0 ? 1 : 0) +
           ((node->flags & velFlagSubtreeValid) != 0 ? 2 : 0);
}
