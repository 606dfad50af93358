// Compares three trees level by level and decides for each path what a merge does.
#include "veltext/mergePlan.h"

#include "veltext/counterpart.h"
#include "veltext/error.h"
#include "veltext/treeDiff.h"
#include "veltext/treeWalk.h"

#include <cstring>
#include <deque>

namespace veltext {

namespace {

/// A node of one of the trees; `node` is null if that tree does not have it.
struct Side
{
    velHandle *tree;
    const velNode *node;

    [[nodiscard]] bool isObject() const
    {
        return node != nullptr && velDescribe(tree, node).kind != velParam;
    }
};

bool areSame(const Side &a, const Side &b, const std::string &path)
{
    if (a.node == nullptr || b.node == nullptr) {
        return a.node == nullptr && b.node == nullptr;
    }
    return haveSameData(a.tree, a.node, b.tree, b.node, path);
}

/// Whether the later side has a node that the earlier does not have, or another
/// value.
bool hasNews(const Side &former, const Side &later, const std::string &path)
{
    bool isNew = false;
    compareTrees(
        former.tree, former.node, later.tree, later.node, path,
        [&](const Difference &found) { isNew = isNew || found.kind != DifferenceKind::Removed; });
    return isNew;
}

class Planner
{
public:
    explicit Planner(const MergeTrees &trees) : trees_(trees)
    {
        levels_.push_back({velFindNode(trees.base, "/"), velFindNode(trees.ours, "/"),
                           velFindNode(trees.theirs, "/"), ""});
    }

    std::vector<MergeStep> run()
    {
        while (!levels_.empty()) {
            const Level level = std::move(levels_.front());
            levels_.pop_front();
            planChildrenOfTheirs(level);
            planChildrenOfOursAlone(level);
        }
        return std::move(steps_);
    }

private:
    /// An object that both OURS and THEIRS have.
    struct Level
    {
        const velNode *base; ///< null if BASE does not have the object
        const velNode *ours;
        const velNode *theirs;
        std::string path; ///< empty for the root
    };

    void planChildrenOfTheirs(const Level &level)
    {
        Counterpart inBase(trees_.base, level.base);
        Counterpart inOurs(trees_.ours, level.ours);
        const velNode *previous = nullptr;
        for (const velNode *theirs = velFirstChild(level.theirs); theirs != nullptr;
             theirs = velNextSibling(theirs)) {
            const velNodeInfo info = velDescribe(trees_.theirs, theirs);
            const velNode *ours = inOurs.find(info, level.path);
            plan(level, info, {inBase.find(info, level.path), ours, theirs}, previous);
            previous = ours != nullptr ? ours : previous;
        }
    }

    void planChildrenOfOursAlone(const Level &level)
    {
        Counterpart inBase(trees_.base, level.base);
        Counterpart inTheirs(trees_.theirs, level.theirs);
        for (const velNode *ours = velFirstChild(level.ours); ours != nullptr;
             ours = velNextSibling(ours)) {
            const velNodeInfo info = velDescribe(trees_.ours, ours);
            if (inTheirs.find(info, level.path) == nullptr) {
                plan(level, info, {inBase.find(info, level.path), ours, nullptr}, nullptr);
            }
        }
    }

    struct Three
    {
        const velNode *base;
        const velNode *ours;
        const velNode *theirs;
    };

    void plan(const Level &level, const velNodeInfo &info, const Three &child,
              const velNode *previous)
    {
        const Side base{trees_.base, child.base};
        const Side ours{trees_.ours, child.ours};
        const Side theirs{trees_.theirs, child.theirs};
        // A shortcut: in a large file most parameters are unchanged.
        if (isSameParam(ours, theirs)) {
            return;
        }
        std::string path = level.path + '/' + velComponentOf(info);
        if (ours.isObject() && theirs.isObject()) {
            const velNode *common = base.isObject() ? base.node : nullptr;
            levels_.push_back({common, ours.node, theirs.node, std::move(path)});
            return;
        }
        if (areSame(ours, theirs, path) || areSame(base, theirs, path)) {
            return;
        }
        // OURS deleted the whole object, and THEIRS deleted only parts of it:
        // OURS is right.
        if (ours.node == nullptr && !hasNews(base, theirs, path)) {
            return;
        }
        const bool isClear =
            theirs.node != nullptr ? areSame(base, ours, path) : !hasNews(base, ours, path);
        const StepKind kind = isClear ? StepKind::Take : StepKind::Conflict;
        steps_.push_back(
            {kind, std::move(path), child.base, child.ours, child.theirs, level.ours, previous});
    }

    static bool isSameParam(const Side &a, const Side &b)
    {
        if (a.node == nullptr || b.node == nullptr) {
            return false;
        }
        const char *valueOfA = velDescribe(a.tree, a.node).value;
        const char *valueOfB = velDescribe(b.tree, b.node).value;
        return valueOfA != nullptr && valueOfB != nullptr && std::strcmp(valueOfA, valueOfB) == 0;
    }

    const MergeTrees &trees_;
    std::deque<Level> levels_; ///< levels that are not compared yet
    std::vector<MergeStep> steps_;
};

} // namespace

std::vector<MergeStep> planMerge(const MergeTrees &trees)
{
    return Planner(trees).run();
}

void takeTheirs(const MergeTrees &trees, const std::string &path)
{
    const velNode *theirs = velFindNode(trees.theirs, path.c_str());
    const velKind oursKind = velKindOf(trees.ours, path.c_str());
    const velKind theirsKind = velKindOf(trees.theirs, path.c_str());
    if (oursKind != velNone && oursKind != theirsKind) {
        require(deleteObjH(trees.ours, path.c_str()));
    }
    for (TreeWalk walk(trees.theirs, theirs, path); walk.node() != nullptr; walk.step()) {
        const char *where = walk.path().c_str();
        const velNodeInfo &info = walk.info();
        require(info.kind == velParam
                    ? velCreateParam(trees.ours, where, info.value != nullptr ? info.value : "")
                    : velCreateObject(trees.ours, where, false));
    }
}

} // namespace veltext
