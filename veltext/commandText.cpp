// Reads command files and compares them, with results that own their texts.
#include "veltext/commandText.h"

#include "velapilt/src/velapilt.h"
#include "veltext/error.h"
#include "veltext/readFile.h"
#include "veltext/textFault.h"
#include "veltext/treeDiff.h"
#include "veltext/treeWalk.h"

#include <new>

namespace veltext {

void CommandText::Release::operator()(velHandle *tree) const
{
    velHandleDeleter()(tree);
}

CommandText::CommandText(SourceText source, const std::string &name)
    : source_(std::move(source)), tree_(velCreateHandle())
{
    if (!tree_) {
        throw std::bad_alloc();
    }
    const velArray lines = source_.parsedLines();
    const char *message = parseVELData(tree_.get(), &lines, 0);
    if (message == nullptr) {
        return;
    }
    const velHandlePtr other(velCreateHandle());
    const std::optional<TextFault> fault = other ? findFault(source_, other.get()) : std::nullopt;
    throw Error(name, fault ? fault->line : 0, fault ? fault->message : message);
}

CommandText CommandText::read(const std::string &file)
{
    return CommandText(readBytes(file), file);
}

std::int32_t CommandText::levels() const
{
    return velDeepestBlock(tree());
}

std::optional<std::string> CommandText::value(const std::string &path) const
{
    const char *value = velFindValue(tree_.get(), path.c_str());
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

TreeWalk CommandText::walk(const std::string &path) const
{
    return {tree_.get(), velFindNode(tree_.get(), path.c_str()), path};
}

std::vector<Change> diff(const CommandText &before, const CommandText &after)
{
    const auto owned = [](const char *value) {
        return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
    };
    std::vector<Change> changes;
    compareTrees(before.tree(), velFindNode(before.tree(), "/"), after.tree(),
                 velFindNode(after.tree(), "/"), "/", [&](const Difference &found) {
                     changes.push_back(
                         {found.kind, found.path, owned(found.oldValue), owned(found.newValue)});
                 });
    return changes;
}

} // namespace veltext
