// Removes nodes from the tree.
#include "velapilt/src/velRemove_p.h"

#include "velapilt/src/velHandlers_p.h"
#include "velapilt/src/velOperation_p.h"
#include "velapilt/src/velPathParts.h"
#include "velapilt/src/velPathStack_p.h"
#include "velapilt/src/velResolve_p.h"
#include "velapilt/src/velValidity_p.h"
#include "velapilt/src/velWalk_p.h"

#include <algorithm>
#include <new>
#include <string>

namespace {

void freeNode(velHandle *handle, velNode *node)
{
    if (handle->table.hasDetached()) {
        return; // a detached descendant may still need it for its path
    }
    if (node->isParam() && node->value.text != nullptr) {
        velRelease(handle, node->value.text, node->value.length + std::size_t{1});
    }
    velRelease(handle, node, sizeof(velNode));
}

/// The sibling before `node` in `previous`; false if it is not a child.
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

/// Deletes a node and everything below it, children first and in order.
///
/// Handlers may change the tree meanwhile. Each child that an object has when the
/// walk enters it is visited once, and the node that is at its path then is
/// deleted. So the walk ends, even if handlers create nodes again. An object that
/// still has children after these visits is refused, because it is not empty.
class Deletion
{
public:
    explicit Deletion(velHandle *handle) : handle_(handle) {}

    const char *run(velNode *top)
    {
        enter(top);
        while (walk_.depth() > 0) {
            if (const char *error = step()) {
                return error;
            }
        }
        return nullptr;
    }

private:
    const char *step()
    {
        velNode *listed = walk_.next();
        if (listed == nullptr) {
            return leave();
        }
        velNode *child = velNodeNow(handle_, listed);
        if (child == nullptr) {
            return nullptr;
        }
        if (child->firstChild() == nullptr) {
            return remove(child);
        }
        enter(child);
        return nullptr;
    }

    void enter(velNode *node)
    {
        walk_.enter(node);
        for (velNode *child = node->firstChild(); child != nullptr; child = child->next) {
            walk_.add(child);
        }
    }

    const char *leave()
    {
        velNode *node = velNodeNow(handle_, walk_.leave());
        if (node == nullptr) { // a handler has deleted it
            return walk_.depth() == 0 ? "velRemoveObjectH: entry not found" : nullptr;
        }
        if (node->isRoot()) {
            return nullptr; // the root is emptied, never removed
        }
        return remove(node);
    }

    const char *remove(velNode *node)
    {
        const char *error = velRemoveNode(handle_, node);
        return error != nullptr || handle_->interrupted == nullptr ? error
                                                                   : velTakeInterrupt(handle_);
    }

    velHandle *handle_;
    velListWalk<velNode> walk_;
};

} // namespace

velNode *velFindNodeNow(velHandle *handle, const velNode *node)
{
    return handle->table.find(velPathOf(handle, node));
}

velNode *velFindParentNow(velHandle *handle, const velNode *node)
{
    return handle->table.find(velPathOfParent(velPathOf(handle, node)));
}

const char *velRemoveNode(velHandle *handle, velNode *node, velNode *before)
{
    velNode *parent = node->isRoot() ? node : velParentNow(handle, node);
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
    return Deletion(handle).run(node);
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
