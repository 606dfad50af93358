// Taking nodes out of the tree.
#include "velapilt/src/velHandle_p.h"

#include <algorithm>
#include <new>
#include <string>

namespace {

void freeNode(velHandle *handle, velNode *node)
{
    if (handle->table.hasDetached()) {
        return; // a detached descendant may still spell its path through it
    }
    if (node->isParam() && node->value.text != nullptr) {
        velRelease(handle, node->value.text, node->value.length + std::size_t{1});
    }
    velRelease(handle, node, sizeof(velNode));
}

velNode *parentInTable(velHandle *handle, velNode *node)
{
    if (node->isRoot()) {
        return node;
    }
    if (!handle->table.hasDetached()) {
        return node->parent;
    }
    std::string path = velPathOf(handle, node);
    path.resize(std::max<std::size_t>(path.rfind('/'), 1));
    return handle->table.find(path);
}

/// The sibling in front of `node` in `previous`; false if it is no child.
bool findPrevious(const velNode *parent, const velNode *node, velNode **previous)
{
    *previous = nullptr;
    for (velNode *child = parent->children.first; child != nullptr; child = child->next) {
        if (child == node) {
            return true;
        }
        *previous = child;
    }
    return false;
}

void unlink(velNode *parent, velNode *previous, velNode *node)
{
    (previous == nullptr ? parent->children.first : previous->next) = node->next;
    if (parent->children.last == node) {
        parent->children.last = previous;
    }
    node->next = nullptr;
    --parent->childCount;
}

} // namespace

const char *velRemoveNode(velHandle *handle, velNode *node, velNode *before)
{
    velNode *parent = parentInTable(handle, node);
    if (parent == nullptr) {
        return "velRemoveObjectH: parent not found!";
    }
    if (parent->firstChild() == nullptr) {
        return "velRemoveObjectH: parent has no child list";
    }
    velNode *previous = before;
    if (before == nullptr || before->next != node) {
        if (!findPrevious(parent, node, &previous)) {
            return "velRemoveObjectH: child not in parent's child list";
        }
    }
    if (node->onStack != 0) {
        velUnpin(handle, node);
    }
    const bool hasChildren = node->firstChild() != nullptr;
    if (hasChildren) {
        handle->table.detach(node);
    }
    handle->table.remove(node);
    unlink(parent, previous, node);
    if (node->isParam()) {
        velReport(handle, node, velValueChanged, nullptr, node->value.text);
    } else {
        velReport(handle, node, velObjectDeleted, nullptr, nullptr);
    }
    if (hasChildren) {
        return "velRemoveObjectH: removal of non-empty object, did you mean deleteObj?";
    }
    velSetFlags(handle, node, 0);
    freeNode(handle, node);
    return nullptr;
}

const char *velDeleteNode(velHandle *handle, velNode *node)
{
    // Deepest first and in order, without recursion: a file may nest as deep
    // as it likes.
    velNode *next = node;
    for (;;) {
        while (next->firstChild() != nullptr) {
            next = next->firstChild();
        }
        if (next->isRoot()) {
            return nullptr; // emptied, never removed
        }
        velNode *parent = next->parent;
        const bool isLast = next == node;
        if (const char *error = velRemoveNode(handle, next)) {
            return error;
        }
        if (handle->interrupted != nullptr) {
            return velTakeInterrupt(handle);
        }
        if (isLast || parent->inTable == 0) {
            return nullptr;
        }
        next = parent;
    }
}

const char *velRemoveObjectH(velHandle *handle, const char *path)
try {
    const velOperation operation(handle);
    if (handle->root == nullptr) {
        return "velRemoveObjectH: no database";
    }
    if (path == nullptr) {
        return "velRemoveObjectH: full path failed";
    }
    velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return "velRemoveObjectH: entry not found";
    }
    const char *error = velRemoveNode(handle, node);
    const char *interrupt = velTakeInterrupt(handle);
    return error != nullptr ? error : interrupt;
} catch (const std::bad_alloc &) {
    return "velRemoveObjectH: full path failed";
}

const char *deleteObjH(velHandle *handle, const char *path)
try {
    const velOperation operation(handle);
    velNode *node = velResolve(handle, path);
    return node == nullptr ? "deleteObjH: unable to find parameter" : velDeleteNode(handle, node);
} catch (const std::bad_alloc &) {
    return "deleteObjH: unable to find parameter";
}

const char *deleteParamH(velHandle *handle, const char *path)
try {
    return velResolve(handle, path) == nullptr ? "deleteParamH: unable to find parameter"
                                               : velRemoveObjectH(handle, path);
} catch (const std::bad_alloc &) {
    return "deleteParamH: unable to find parameter";
}
