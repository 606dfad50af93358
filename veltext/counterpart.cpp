// Finds the same child in another tree: as the next sibling if the orders agree, otherwise by its
// path.
#include "veltext/counterpart.h"

#include "veltext/treeWalk.h"

#include <cstring>

namespace veltext {

namespace {

bool isNamedObject(const velNodeInfo &info)
{
    return info.kind == velObject && info.name != nullptr;
}

/// The path component of a singleton or parameter, which is a single word.
const char *singleWord(const velNodeInfo &info)
{
    return info.kind == velParam ? info.name : info.type;
}

} // namespace

bool haveSameComponent(const velNodeInfo &a, const velNodeInfo &b)
{
    if (isNamedObject(a) != isNamedObject(b)) {
        return false;
    }
    if (isNamedObject(a)) {
        return std::strcmp(a.name, b.name) == 0 && std::strcmp(a.type, b.type) == 0;
    }
    return std::strcmp(singleWord(a), singleWord(b)) == 0;
}

bool areSameSort(const velNodeInfo &a, const velNodeInfo &b)
{
    return (a.kind == velParam) == (b.kind == velParam);
}

Counterpart::Counterpart(velHandle *tree, const velNode *parent)
    : tree_(tree), expected_(parent != nullptr ? velFirstChild(parent) : nullptr),
      hasParent_(parent != nullptr)
{
}

const velNode *Counterpart::find(const velNodeInfo &child, const std::string &parentPath)
{
    if (!hasParent_) {
        return nullptr;
    }
    const velNode *found = expected_;
    if (found == nullptr || !haveSameComponent(velDescribe(tree_, found), child)) {
        found = velFindNode(tree_, (parentPath + '/' + velComponentOf(child)).c_str());
    }
    if (found != nullptr) {
        expected_ = velNextSibling(found);
    }
    return found;
}

} // namespace veltext
