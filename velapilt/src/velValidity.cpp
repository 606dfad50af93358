// Sets flags of nodes; after a change, removes the validity of the nodes above.
#include "velapilt/src/velValidity_p.h"

#include "velapilt/src/velPathParts.h"
#include "velapilt/src/velRemove_p.h"
#include "velapilt/src/velResolve_p.h"

#include <algorithm>
#include <new>
#include <string>

void velInvalidateUpward(velHandle *handle, velNode *node)
{
    for (; node != nullptr && handle->subtreeValidCount > 0; node = node->parent) {
        velSetFlags(handle, node, node->flags & ~velFlagSubtreeValid);
    }
}

void velInvalidateByPath(velHandle *handle, const velNode *node)
{
    std::string path = velPathOf(handle, node);
    bool onlyParams = node->isParam(); // whether all nodes up to here are parameters
    while (path.size() > 1) {
        path = velPathOfParent(path);
        velNode *up = handle->table.find(path);
        if (up == nullptr) {
            onlyParams = false; // it was deleted, but its children were not
            continue;
        }
        velSetFlags(handle, up, up->flags & ~(onlyParams ? velFlagValid : velFlagSubtreeValid));
        onlyParams = onlyParams && up->isParam();
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
try {
    const velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return -1;
    }
    if (node->isParam()) {
        node = velParentNow(handle, node);
    }
    return node != nullptr && (node->flags & velFlagLibrary) != 0 ? 1 : 0;
} catch (const std::bad_alloc &) {
    return -1;
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
