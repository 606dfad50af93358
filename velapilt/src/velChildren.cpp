#include "velapilt/src/velHandle_p.h"

#include "velapilt/src/velHash.h"

#include <algorithm>
#include <new>

namespace {

std::string textOf(const velHandle *handle, std::uint32_t word)
{
    return std::string(handle->words.view(word));
}

std::string typeOf(const velHandle *handle, const velNode *node)
{
    return node->isParam() ? "String" : textOf(handle, node->type);
}

/// What a node is called among its siblings: of a Singleton its type.
std::uint32_t nameOf(const velNode *node)
{
    return node->name == velWords::none ? node->type : node->name;
}

std::vector<velChildInfo> describeChildren(const velHandle *handle, const velNode *parent)
{
    std::vector<velChildInfo> children;
    children.reserve(parent->childCount);
    for (const velNode *child = parent->firstChild(); child != nullptr; child = child->next) {
        children.push_back(
            {textOf(handle, nameOf(child)), velKindWord(child->kind()), typeOf(handle, child)});
    }
    return children;
}

/// Groups by label, the last that appeared first; the newest member first.
std::vector<velGroupInfo> groupChildren(const velHandle *handle, const velNode *parent)
{
    std::vector<velGroupInfo> groups;
    velHashTable places(1); // label → number of its group, from 1
    std::int32_t position = 0;
    for (const velNode *child = parent->firstChild(); child != nullptr; child = child->next) {
        const velKind kind = child->kind();
        const std::string type = typeOf(handle, child);
        const std::string label = std::string(velKindWord(kind)) + ":" + type;
        auto number = reinterpret_cast<std::uintptr_t>(places.lookup(label));
        if (number == 0) {
            groups.push_back({kind == velParam ? "Parameter" : velKindWord(kind), type, {}});
            number = groups.size();
            if (places.insert(label, reinterpret_cast<void *>(number)) == 0) {
                throw std::bad_alloc();
            }
        }
        groups[number - 1].indices.push_back(position++);
    }
    for (velGroupInfo &group : groups) {
        std::reverse(group.indices.begin(), group.indices.end());
    }
    std::reverse(groups.begin(), groups.end());
    return groups;
}

/// The paths of the objects below `path` for which `matches` holds, parents
/// first, without recursion.
template <typename Matches>
const char *search(velHandle *handle, const char *path, std::uint32_t include,
                   std::uint32_t exclude, velStringList *list, Matches matches)
{
    const velNode *top = velResolve(handle, path);
    if (top == nullptr) {
        return "getPartialVELH: object does not exist";
    }
    velArray found(velArrayKind::Strings);
    const velNode *node = top;
    bool goDown = true;
    for (;;) {
        if (goDown && node->firstChild() != nullptr) {
            node = node->firstChild();
        } else {
            while (node != top && node->next == nullptr) {
                node = node->parent;
            }
            if (node == top) {
                break;
            }
            node = node->next;
        }
        const bool isLeftOut = node->isParam() || (include != 0 && (node->flags & include) == 0) ||
                               (exclude != 0 && (node->flags & exclude) != 0);
        goDown = !isLeftOut;
        if (!isLeftOut && matches(node) && found.addString(velPathOf(handle, node)) == 0) {
            throw std::bad_alloc();
        }
    }
    *list = found.takeStrings();
    return nullptr;
}

} // namespace

const char *getChildList(velHandle *handle, const char *path, std::vector<velChildInfo> *children,
                         std::vector<velGroupInfo> *groups)
try {
    const velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return "getChildList: unable to find the requested path";
    }
    std::vector<velGroupInfo> newGroups;
    if (groups != nullptr) {
        newGroups = groupChildren(handle, node);
    }
    if (children != nullptr) {
        *children = describeChildren(handle, node);
    }
    if (groups != nullptr) {
        *groups = std::move(newGroups);
    }
    return nullptr;
} catch (const std::bad_alloc &) {
    return "getChildList: unable to allocate permanent memory context";
}

const char *getChildObjectList(velHandle *handle, const char *path, bool wantObjects,
                               bool wantParams, velStringList *list)
try {
    const velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return velSetError(handle, "getChildObjectList: path \"%s\" does not exist",
                           path == nullptr ? "" : velFullPath(handle, path).c_str());
    }
    velArray array(velArrayKind::Strings);
    const velWords &words = handle->words;
    std::string component;
    for (const velNode *child = node->firstChild(); child != nullptr; child = child->next) {
        if (!(child->isParam() ? wantParams : wantObjects)) {
            continue;
        }
        component = words.view(child->type);
        if (!child->isParam() && child->name != velWords::none) {
            component += ':';
        }
        component += words.view(child->name);
        if (array.addString(component) == 0) {
            return "getChildObjectList: error allocating return array";
        }
    }
    *list = array.count() == 0 ? velStringList() : array.takeStrings();
    return nullptr;
} catch (const std::bad_alloc &) {
    return "getChildObjectList: error allocating return array";
}

const char *getChildObjectList(velHandle *handle, const char *path, velStringList *list)
{
    return getChildObjectList(handle, path, true, false, list);
}

const char *getChildParamList(velHandle *handle, const char *path, velStringList *list)
{
    return getChildObjectList(handle, path, false, true, list);
}

const char *getObjectsByNameH(velHandle *handle, const char *path, const char *name,
                              std::uint32_t include, std::uint32_t exclude, velStringList *list)
try {
    const std::uint32_t word = handle->words.find(name);
    return search(handle, path, include, exclude, list, [word](const velNode *node) {
        return word != velWords::none && nameOf(node) == word;
    });
} catch (const std::bad_alloc &) {
    return "getObjectsByNameH: error allocating return array";
}

const char *getObjectsByTypeH(velHandle *handle, const char *path, const char *type,
                              std::uint32_t include, std::uint32_t exclude, velStringList *list)
try {
    const std::uint32_t word = handle->words.find(type);
    return search(handle, path, include, exclude, list, [word](const velNode *node) {
        return word != velWords::none && node->type == word;
    });
} catch (const std::bad_alloc &) {
    return "getObjectsByTypeH: error allocating return array";
}
