// The stack of current paths, and the nodes that a caller's paths name.
#include "velapilt/src/velPathStack_p.h"

#include "velapilt/src/velPath.h"
#include "velapilt/src/velResolve_p.h"

#include <cstring>
#include <new>

namespace {

/// The stack with at least its bottom entry. Throws bad_alloc.
std::vector<velPathEntry> &stackOf(velHandle *handle)
{
    if (handle->stack.empty()) {
        handle->stack.push_back({nullptr, "/"});
    }
    return handle->stack;
}

/// Whether there is a stack now; false without memory.
bool hasStack(velHandle *handle)
try {
    stackOf(handle);
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

/// Like velResolve, but returns false without memory.
bool resolve(velHandle *handle, const char *path, velNode **node)
try {
    *node = velResolve(handle, path);
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

void point(velPathEntry &entry, velNode *node)
{
    node->onStack = 1;
    entry.node = node;
    entry.text.clear();
}

void point(velHandle *handle, velPathEntry &entry, const char *fullPath)
{
    if (velNode *node = handle->table.find(fullPath); node != nullptr) {
        point(entry, node);
        return;
    }
    entry.text = fullPath;
    entry.node = nullptr;
}

} // namespace

velNode *velFindCurrentNode(velHandle *handle)
{
    const velPathEntry &top = stackOf(handle).back();
    return top.node != nullptr ? top.node : handle->table.find(top.text);
}

void velPushNode(velHandle *handle, velNode *node)
{
    velPathEntry entry;
    if (node->inTable != 0) {
        point(entry, node);
    } else { // a handler has removed it again
        entry.text = velPathOf(handle, node);
    }
    stackOf(handle).push_back(std::move(entry));
}

void velPop(velHandle *handle)
{
    if (handle->stack.size() > 1) {
        handle->stack.pop_back();
    }
}

void velUnpin(velHandle *handle, velNode *node)
{
    for (velPathEntry &entry : handle->stack) {
        if (entry.node == node) {
            entry.text = velPathOf(handle, node);
            entry.node = nullptr;
        }
    }
    node->onStack = 0;
}

std::string velPathOf(const velHandle *handle, const velNode *node)
{
    std::string path;
    handle->table.appendPath(node, path);
    return path;
}

velNode *velResolve(velHandle *handle, const char *path)
{
    if (path == nullptr) {
        return nullptr;
    }
    // Keys are in normal form, so a text that is a key does not need resolving.
    if (*path == '/') {
        if (velNode *node = handle->table.find(path); node != nullptr) {
            return node;
        }
    }
    const std::string full = velFullPath(handle, path);
    return full == path ? nullptr : handle->table.find(full);
}

const velNode *velFindNode(velHandle *handle, const char *path)
try {
    return velResolve(handle, path);
} catch (const std::bad_alloc &) {
    return nullptr;
}

const velNode *velFindFullPath(velHandle *handle, const char *fullPath)
try {
    return handle->table.find(fullPath);
} catch (const std::bad_alloc &) {
    return nullptr;
}

const char *getCurrentPath(velHandle *handle)
try {
    const velPathEntry &top = stackOf(handle).back();
    if (top.node == nullptr) {
        return top.text.c_str();
    }
    handle->currentPath.clear();
    handle->table.appendPath(top.node, handle->currentPath);
    return handle->currentPath.c_str();
} catch (const std::bad_alloc &) {
    return "";
}

const char *pushPath(velHandle *handle, const char *path)
try {
    if (!hasStack(handle)) {
        return "pushPath: unable to initialize dirstack";
    }
    if (path == nullptr) {
        return "pushPath: path provided is non-existent";
    }
    velNode *node = nullptr;
    if (!resolve(handle, path, &node)) {
        return "pushPath: unable to create a full path";
    }
    if (node == nullptr) {
        return "pushPath: path is not found";
    }
    velPushNode(handle, node);
    return nullptr;
} catch (const std::bad_alloc &) {
    return "pushPath unable to allocate new path";
}

const char *velPushPath(velHandle *handle, const char *fullPath)
try {
    if (!hasStack(handle)) {
        return "velPushPath: unable to initialize dirstack";
    }
    velPathEntry entry;
    point(handle, entry, fullPath);
    handle->stack.push_back(std::move(entry));
    return nullptr;
} catch (const std::bad_alloc &) {
    return "pushPath unable to allocate new path";
}

const char *popPath(velHandle *handle)
{
    if (!hasStack(handle)) {
        return "popPath unable to initialize dirstack";
    }
    velPop(handle);
    return nullptr;
}

const char *changePath(velHandle *handle, const char *path)
{
    if (!hasStack(handle)) {
        return "changePath: unable to initialize dirstack";
    }
    if (path == nullptr) {
        return "changePath: path provided is non-existent";
    }
    velNode *node = nullptr;
    if (!resolve(handle, path, &node)) {
        return "changePath: unable to create a full path";
    }
    if (node == nullptr) {
        return "changePath: path is not found";
    }
    point(handle->stack.back(), node);
    return nullptr;
}

const char *velChangePath(velHandle *handle, const char *fullPath)
try {
    const std::string copy(fullPath); // it may be the text that is replaced
    point(handle, stackOf(handle).back(), copy.c_str());
    return nullptr;
} catch (const std::bad_alloc &) {
    return "velChangePath: unable to initialize dirstack";
}

void velCleanPathStack(velHandle *handle)
{
    handle->stack.clear();
}
