// Turns the steps of a merge plan into values.
#include "veltext/dataMerge.h"

#include "veltext/mergePlan.h"
#include "veltext/treeWalk.h"

#include <cstddef>

namespace veltext {

namespace {

constexpr char blockEnd[] = "END\n";

/// The statement that opens an object, as in the block of an edit.
std::string labelOf(const velNodeInfo &info)
{
    std::string label = std::string(info.type) + " :";
    return info.name != nullptr ? label + ' ' + info.name : label;
}

std::string blockOf(const velHandle *tree, const velNode *node, const std::string &path)
{
    std::string block;
    std::size_t open = 0;
    const auto closeDownTo = [&](std::size_t depth) {
        for (; open > depth; --open) {
            block += blockEnd;
        }
    };
    for (TreeWalk walk(tree, node, path); walk.node() != nullptr; walk.step()) {
        closeDownTo(walk.depth());
        const bool isParameter = walk.info().kind == velParam;
        block.append(isParameter ? statementOf(walk.info()) : labelOf(walk.info())) += '\n';
        open += isParameter ? 0 : 1;
    }
    closeDownTo(0);
    return block;
}

std::optional<MergeItem> itemOf(const velHandle *tree, const velNode *node, const std::string &path)
{
    if (node == nullptr) {
        return std::nullopt;
    }
    const velNodeInfo info = velDescribe(tree, node);
    if (info.kind != velParam) {
        return MergeItem{false, blockOf(tree, node, path)};
    }
    return MergeItem{true, info.value != nullptr ? info.value : ""};
}

} // namespace

std::vector<DataMergeStep> planDataMerge(const CommandText &base, velHandle *ours,
                                         const CommandText &theirs)
{
    std::vector<DataMergeStep> result;
    for (const MergeStep &step : planMerge({base.tree(), ours, theirs.tree()})) {
        const velNode *previous = step.previous;
        result.push_back(
            {step.path, step.kind == StepKind::Conflict, itemOf(ours, step.ours, step.path),
             itemOf(theirs.tree(), step.theirs, step.path),
             previous != nullptr ? velComponentOf(velDescribe(ours, previous)) : std::string()});
    }
    return result;
}

} // namespace veltext
