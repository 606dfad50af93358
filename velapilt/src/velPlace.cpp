// The order of siblings.
#include "velapilt/src/velRemove_p.h"
#include "velapilt/src/velResolve_p.h"

#include <new>

namespace {

/// The link that leads to the node `position` links after `link`, or the last
/// link of the list, which leads to nothing.
velNode **linkAt(velNode **link, std::uint32_t position)
{
    for (; position > 0 && *link != nullptr; --position) {
        link = &(*link)->next;
    }
    return link;
}

/// The link that leads to `node`, or the last link if it is not a child.
velNode **linkTo(velNode *parent, const velNode *node)
{
    velNode **link = &parent->children.first;
    while (*link != nullptr && *link != node) {
        link = &(*link)->next;
    }
    return link;
}

velNode *lastOf(velNode *first)
{
    while (first->next != nullptr) {
        first = first->next;
    }
    return first;
}

} // namespace

const char *velPlaceChild(velHandle *handle, const char *path, std::uint32_t position)
try {
    velNode *node = velResolve(handle, path);
    if (node == nullptr) {
        return "velPlaceChild: path not found";
    }
    if (node->isRoot()) {
        return "velPlaceChild: the root has no siblings";
    }
    velNode *parent = velParentNow(handle, node);
    velNode **former = parent == nullptr ? nullptr : linkTo(parent, node);
    if (former == nullptr || *former == nullptr) {
        return "velPlaceChild: child not in parent's child list";
    }
    *former = node->next;
    velNode **link = linkAt(&parent->children.first, position);
    node->next = *link;
    *link = node;
    parent->children.last = lastOf(node);
    return nullptr;
} catch (const std::bad_alloc &) {
    return "velPlaceChild: path not found";
}
