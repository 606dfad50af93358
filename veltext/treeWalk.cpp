// Steps through a tree with its own stack, so that the depth has no limit.
#include "veltext/treeWalk.h"

#include "veltext/statement.h"

namespace veltext {

TreeWalk::TreeWalk(const velHandle *handle, const velNode *start, std::string path)
    : handle_(handle), node_(start), path_(std::move(path))
{
    if (node_ != nullptr) {
        info_ = velDescribe(handle_, node_);
    }
}

void TreeWalk::step()
{
    const velNode *child = velFirstChild(node_);
    if (child == nullptr) {
        skipChildren();
        return;
    }
    // The path of a child of the root is "/" and its component, not "//".
    open_.push_back({node_, path_ == "/" ? 0 : path_.size()});
    enter(child);
}

void TreeWalk::skipChildren()
{
    for (; !open_.empty(); open_.pop_back()) {
        if (const velNode *next = velNextSibling(node_)) {
            enter(next);
            return;
        }
        node_ = open_.back().node;
    }
    node_ = nullptr;
}

void TreeWalk::enter(const velNode *node)
{
    node_ = node;
    info_ = velDescribe(handle_, node);
    path_.resize(open_.back().pathLength);
    path_ += '/';
    path_ += velComponentOf(info_);
}

std::string statementOf(const velNodeInfo &info)
{
    if (info.kind == velParam) {
        return std::string(info.name) + " = " + (info.value != nullptr ? info.value : "");
    }
    return headerText(info.type, info.name != nullptr ? info.name : "");
}

} // namespace veltext
