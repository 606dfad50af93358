// The children of a node as lists and as groups, and searches below a node.
#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velError_p.h"
#include "velapilt/src/velHandle_p.h"
#include "velapilt/src/velHash.h"
#include "velapilt/src/velResolve_p.h"
#include "velapilt/src/velWalk_p.h"

#include <algorithm>
#include <memory>
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

/// The name of a node among its siblings. A Singleton has only its type.
std::uint32_t nameOf(const velNode *node)
{
    return node->name == velWords::none ? node->type : node->name;
}

/// Runs `work`; false if there is not enough memory.
template <typename Work>
bool hasMemory(Work work)
{
    try {
        work();
        return true;
    } catch (const std::bad_alloc &) {
        return false;
    }
}

/// What getChildList returns.
struct ChildList
{
    std::vector<velChildInfo> children;
    std::vector<velGroupInfo> groups;
};

/// A group while its members are collected.
struct Group
{
    velKind kind;
    std::string type;
    std::vector<std::int32_t> members; ///< in the order of the children
};

const char *describeChildren(const velHandle *handle, const velNode *parent, ChildList *list)
{
    const auto describe = [&] {
        list->children.reserve(parent->childCount);
        for (const velNode *child = parent->firstChild(); child != nullptr; child = child->next) {
            list->children.push_back(
                {textOf(handle, nameOf(child)), velKindWord(child->kind()), typeOf(handle, child)});
        }
    };
    return hasMemory(describe) ? nullptr : "getChildList: unable to allocate childrenAry";
}

/// Groups the children by kind and type, in the order of the groups' first
/// members.
const char *gatherGroups(const velHandle *handle, const velNode *parent, velHashTable *places,
                         std::vector<Group> *groups)
{
    std::int32_t position = 0;
    for (const velNode *child = parent->firstChild(); child != nullptr; child = child->next) {
        const velKind kind = child->kind();
        std::string label;
        std::uintptr_t number = 0; // the group's number, from 1
        const auto findGroup = [&] {
            std::string type = typeOf(handle, child);
            label.append(velKindWord(kind)).append(":").append(type);
            number = reinterpret_cast<std::uintptr_t>(places->lookup(label));
            if (number == 0) {
                groups->push_back({kind, std::move(type), {}});
            }
        };
        if (!hasMemory(findGroup)) {
            return "getChildList: unable to allocate groupInfoPtr structure";
        }
        if (number == 0) {
            number = groups->size();
            if (places->insert(label, reinterpret_cast<void *>(number)) == 0) {
                return "getChildList: unable to find childInfo in group hash table";
            }
        }
        if (!hasMemory([&] { (*groups)[number - 1].members.push_back(position++); })) {
            return "getChildList: unable to allocate groupInfoChild structure";
        }
    }
    return nullptr;
}

/// Like gatherGroups, but with the order of the groups and of their members
/// reversed.
const char *groupChildren(const velHandle *handle, const velNode *parent, ChildList *list)
{
    const std::unique_ptr<std::vector<Group>> gathered(new (std::nothrow) std::vector<Group>);
    if (gathered == nullptr) {
        return "getChildList: unable to allocate temporary memory context";
    }
    std::unique_ptr<velHashTable> places;
    if (!hasMemory([&] { places = std::make_unique<velHashTable>(1); })) {
        return "getChildList: unable to allocate lookup table";
    }
    if (const char *error = gatherGroups(handle, parent, places.get(), gathered.get())) {
        return error;
    }
    const auto makeGroups = [&] {
        list->groups.reserve(gathered->size());
        for (auto group = gathered->rbegin(); group != gathered->rend(); ++group) {
            std::reverse(group->members.begin(), group->members.end());
            list->groups.push_back(
                {group->kind == velParam ? "Parameter" : velKindWord(group->kind),
                 std::move(group->type), std::move(group->members)});
        }
    };
    return hasMemory(makeGroups) ? nullptr : "getChildList: unable to allocate velGroupInfo array";
}

/// The paths of the objects below `path` for which `matches` is true, parents
/// first.
template <typename Matches>
const char *search(velHandle *handle, const char *path, std::uint32_t include,
                   std::uint32_t exclude, velStringList *list, Matches matches)
{
    const velNode *top = velResolve(handle, path);
    if (top == nullptr) {
        return "getPartialVELH: object does not exist";
    }
    velArray found(velArrayKind::Strings);
    velVisitBelow(top, [&](const velNode *node) {
        const bool isLeftOut = node->isParam() || (include != 0 && (node->flags & include) == 0) ||
                               (exclude != 0 && (node->flags & exclude) != 0);
        if (!isLeftOut && matches(node) && found.addString(velPathOf(handle, node)) == 0) {
            throw std::bad_alloc();
        }
        return !isLeftOut;
    });
    *list = found.takeStrings();
    return nullptr;
}

} // namespace

const char *getChildList(velHandle *handle, const char *path, std::vector<velChildInfo> *children,
                         std::vector<velGroupInfo> *groups)
{
    const velNode *node = velFindNode(handle, path);
    if (node == nullptr) {
        return "getChildList: unable to find the requested path";
    }
    const std::unique_ptr<ChildList> list(new (std::nothrow) ChildList);
    if (list == nullptr) {
        return "getChildList: unable to allocate permanent memory context";
    }
    if (children != nullptr) {
        if (const char *error = describeChildren(handle, node, list.get())) {
            return error;
        }
    }
    if (groups != nullptr) {
        if (const char *error = groupChildren(handle, node, list.get())) {
            return error;
        }
        *groups = std::move(list->groups);
    }
    if (children != nullptr) {
        *children = std::move(list->children);
    }
    return nullptr;
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
        component.clear();
        velAppendComponent(&component, words.view(child->type), words.view(child->name));
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
