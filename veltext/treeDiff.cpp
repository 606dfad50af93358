// Compares two trees in one pass.
#include "veltext/treeDiff.h"

#include "veltext/counterpart.h"
#include "veltext/treeWalk.h"

#include <cstring>
#include <vector>

namespace veltext {

namespace {

/// The beginning of the paths of the children: empty for the root.
std::string prefixOf(const std::string &path)
{
    return path == "/" ? std::string() : path;
}

const char *text(const char *value)
{
    return value != nullptr ? value : "";
}

/// Walks through both trees. It has its own stack, so the depth has no limit.
class Comparison
{
public:
    Comparison(velHandle *oldTree, velHandle *newTree, const std::string &path,
               const DifferenceVisitor &visit)
        : old_(oldTree), new_(newTree), path_(prefixOf(path)), visit_(visit)
    {
    }

    void run(const velNode *oldNode, const velNode *newNode)
    {
        compare(oldNode, velDescribe(old_, oldNode), newNode, velDescribe(new_, newNode));
        while (!open_.empty()) {
            Level &level = open_.back();
            path_.resize(level.pathLength);
            if (const velNode *child = level.next) {
                level.next = velNextSibling(child);
                compareChild(level, child);
            } else {
                if (level.matched < velChildCount(level.newNode)) {
                    reportAdded(level);
                }
                open_.pop_back();
            }
        }
    }

    /// Reports a node that only one side has, with everything below it.
    void report(DifferenceKind kind, velHandle *tree, const velNode *node, const std::string &path)
    {
        for (TreeWalk walk(tree, node, path); walk.node() != nullptr; walk.step()) {
            const char *value = walk.info().kind == velParam ? text(walk.info().value) : nullptr;
            const bool isOld = kind == DifferenceKind::Removed;
            visit_({kind, walk.path(), isOld ? value : nullptr, isOld ? nullptr : value});
        }
    }

private:
    /// An object that both sides have.
    struct Level
    {
        const velNode *oldNode;
        const velNode *newNode;
        const velNode *next; ///< the next old child
        Counterpart inNew;
        std::uint32_t matched; ///< how many new children have an old one
        std::size_t pathLength;
    };

    void compareChild(Level &level, const velNode *child)
    {
        const velNodeInfo info = velDescribe(old_, child);
        const velNode *other = level.inNew.find(info, path_);
        level.matched += other != nullptr ? 1 : 0;
        if (other != nullptr) {
            compare(child, info, other, velDescribe(new_, other));
        } else {
            report(DifferenceKind::Removed, old_, child, path_ + '/' + velComponentOf(info));
        }
    }

    /// `path_` is the path of the parent; the root has no component.
    void compare(const velNode *oldNode, const velNodeInfo &oldInfo, const velNode *newNode,
                 const velNodeInfo &newInfo)
    {
        if (oldInfo.kind == velParam && newInfo.kind == velParam) {
            const char *oldValue = text(oldInfo.value);
            const char *newValue = text(newInfo.value);
            if (std::strcmp(oldValue, newValue) != 0) {
                visit_({DifferenceKind::Changed, pathOf(oldInfo), oldValue, newValue});
            }
        } else if (!areSameSort(oldInfo, newInfo)) {
            const std::string path = pathOf(oldInfo);
            report(DifferenceKind::Removed, old_, oldNode, path);
            report(DifferenceKind::Added, new_, newNode, path);
        } else {
            pathOf(oldInfo);
            open_.push_back({oldNode, newNode, velFirstChild(oldNode), Counterpart(new_, newNode),
                             0, path_.size()});
        }
    }

    void reportAdded(const Level &level)
    {
        Counterpart inOld(old_, level.oldNode);
        for (const velNode *child = velFirstChild(level.newNode); child != nullptr;
             child = velNextSibling(child)) {
            const velNodeInfo info = velDescribe(new_, child);
            if (inOld.find(info, path_) == nullptr) {
                report(DifferenceKind::Added, new_, child, path_ + '/' + velComponentOf(info));
            }
        }
    }

    const std::string &pathOf(const velNodeInfo &child)
    {
        if (!startIsOpen_) {
            startIsOpen_ = true; // `path_` is already the path of the start
        } else {
            path_.append(1, '/').append(velComponentOf(child));
        }
        return path_;
    }

    velHandle *old_;
    velHandle *new_;
    std::string path_; ///< path of the current object, or of its child during a report
    const DifferenceVisitor &visit_;
    bool startIsOpen_ = false;
    std::vector<Level> open_;
};

char signOf(DifferenceKind kind)
{
    return kind == DifferenceKind::Added ? '+' : kind == DifferenceKind::Removed ? '-' : '~';
}

} // namespace

std::string lineOf(const Difference &difference)
{
    std::string line = signOf(difference.kind) + (' ' + difference.path);
    if (difference.oldValue != nullptr) {
        line.append(" = ").append(difference.oldValue);
    }
    if (difference.newValue != nullptr) {
        line.append(difference.oldValue != nullptr ? " -> " : " = ").append(difference.newValue);
    }
    return line;
}

void compareTrees(velHandle *oldTree, const velNode *oldNode, velHandle *newTree,
                  const velNode *newNode, const std::string &path, const DifferenceVisitor &visit)
{
    Comparison comparison(oldTree, newTree, path, visit);
    if (oldNode != nullptr && newNode != nullptr) {
        comparison.run(oldNode, newNode);
    } else if (oldNode != nullptr) {
        comparison.report(DifferenceKind::Removed, oldTree, oldNode, path);
    } else if (newNode != nullptr) {
        comparison.report(DifferenceKind::Added, newTree, newNode, path);
    }
}

bool haveSameData(velHandle *a, velHandle *b)
{
    return haveSameData(a, velFindNode(a, "/"), b, velFindNode(b, "/"), "/");
}

bool haveSameData(velHandle *a, const velNode *nodeOfA, velHandle *b, const velNode *nodeOfB,
                  const std::string &path)
{
    bool isSame = true;
    compareTrees(a, nodeOfA, b, nodeOfB, path, [&](const Difference &) { isSame = false; });
    return isSame;
}

} // namespace veltext
