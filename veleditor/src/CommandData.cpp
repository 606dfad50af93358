// Paths and blocks of the command data, and the calls of the bridge that change it.
#include "veleditor/src/CommandData.h"

#include "common/takeLine.h"
#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velPathParts.h"
#include "veleditor/src/ComponentLabel.h"
#include "veleditor/src/StoredValue.h"
#include "veleditor/src/ValueText.h"
#include "velparser/api/velparser.h"
#include "veltext/objectBlock.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

namespace velEditor {

namespace {

constexpr std::string_view blockEnd = "END";
constexpr std::string_view assignment = " = ";

bool isParam(const velChildInfo &child)
{
    return std::string_view(child.className) == "Param";
}

/// None if the object is not there.
std::vector<velChildInfo> childrenOf(const std::string &path)
{
    std::vector<velChildInfo> children;
    static_cast<void>(velparser::getChildList(path.c_str(), &children, nullptr));
    return children;
}

std::vector<std::string> linesOf(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        lines.emplace_back(takeLine(&text));
    }
    return lines;
}

/// The lines that open the object at a path and all around it.
std::vector<std::string> openingLines(const std::string &path)
{
    std::vector<std::string> lines;
    for (std::size_t start = 1; start < path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        lines.push_back(labelOf(path.substr(start, end - start)));
        start = end + 1;
    }
    return lines;
}

/// Reads lines of command text in the blocks that `lines` open.
Message readInto(std::vector<std::string> lines, const std::vector<std::string> &content)
{
    const std::size_t opened = lines.size();
    lines.insert(lines.end(), content.begin(), content.end());
    lines.insert(lines.end(), opened, std::string(blockEnd));

    std::vector<const char *> texts;
    texts.reserve(lines.size());
    for (const std::string &line : lines) {
        texts.push_back(line.c_str());
    }
    return copied(velparser::loadVELData(texts.data(), static_cast<std::int32_t>(texts.size())));
}

/// Makes what one line of a block states.
Message put(const veltext::BlockStatement &statement)
{
    const char *path = statement.path.c_str();
    return copied(statement.isParameter ? velparser::createParam(path, statement.value.c_str())
                                        : velparser::createObject(path));
}

Message place(const std::string &path, int position)
{
    return copied(velparser::placeChild(path.c_str(), static_cast<std::uint32_t>(position)));
}

} // namespace

std::string parentPath(const std::string &path)
{
    return velPathOfParent(path);
}

std::string lastComponent(const std::string &path)
{
    return velLastOfPath(path);
}

std::string childPath(const std::string &object, const std::string &component)
{
    return velPathOfChild(object, component);
}

// --- What is there --------------------------------------------------------------

bool CommandData::has(const std::string &path) const
{
    return velparser::isVELLibrary(path.c_str()) >= 0;
}

std::optional<std::string> CommandData::value(const std::string &path) const
{
    return storedValue(path);
}

std::vector<CommandData::Child> CommandData::children(const std::string &path) const
{
    std::vector<Child> children;
    for (const velChildInfo &child : childrenOf(path)) {
        std::string component = velComponentOf(child);
        const bool isLibrary = velparser::isVELLibrary(childPath(path, component).c_str()) == 1;
        children.push_back({std::move(component), isParam(child), isLibrary});
    }
    return children;
}

std::vector<std::string> CommandData::components(const std::string &path) const
{
    std::vector<std::string> components;
    for (const velChildInfo &child : childrenOf(path)) {
        components.push_back(velComponentOf(child));
    }
    return components;
}

std::vector<bool> CommandData::areParameters(const std::string &path) const
{
    std::vector<bool> are;
    for (const velChildInfo &child : childrenOf(path)) {
        are.push_back(isParam(child));
    }
    return are;
}

CommandData::Place CommandData::placeOf(const std::string &path, bool isParameter) const
{
    const std::string component = lastComponent(path);
    Place place{0, 0};
    for (const velChildInfo &child : childrenOf(parentPath(path))) {
        if (isParam(child) == isParameter && velComponentOf(child) == component) {
            return place;
        }
        ++place.position;
        place.parametersBefore += isParam(child) ? 1 : 0;
    }
    return {-1, 0};
}

std::string CommandData::topmostAbsent(const std::string &path) const
{
    for (std::size_t start = 1; start < path.size();) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        std::string object = path.substr(0, end);
        if (!has(object)) {
            return object;
        }
        start = end + 1;
    }
    return {};
}

// The walk keeps its own stack, so that no depth of nesting is too deep for it.
std::string CommandData::block(const std::string &path) const
{
    struct Level
    {
        std::string path;
        std::vector<velChildInfo> children;
        std::size_t next = 0;
    };
    std::string text = labelOf(lastComponent(path)) + '\n';
    std::vector<Level> levels{{path, childrenOf(path)}};
    while (!levels.empty()) {
        Level &level = levels.back();
        if (level.next == level.children.size()) {
            text.append(blockEnd).append("\n");
            levels.pop_back();
            continue;
        }
        const velChildInfo &child = level.children[level.next++];
        const std::string component = velComponentOf(child);
        const std::string below = childPath(level.path, component);
        if (isParam(child)) {
            text.append(component).append(assignment).append(value(below).value_or("")) += '\n';
        } else {
            text.append(labelOf(component)) += '\n';
            levels.push_back({below, childrenOf(below)});
        }
    }
    return text;
}

std::string CommandData::formatted() const
{
    velStringList lines;
    static_cast<void>(velparser::getFormattedVEL("/", velUsualWidth, &lines));
    std::string text;
    for (const char *line : lines) {
        text.append(line).append("\n");
    }
    return text;
}

// --- Changes ----------------------------------------------------------------------

Message CommandData::readParameter(const std::string &path, const std::string &value,
                                   std::vector<std::string> opening)
{
    if (opening.empty()) {
        opening = openingLines(parentPath(path));
    }
    return readInto(std::move(opening), {parameterLine(lastComponent(path), value)});
}

Message CommandData::readObject(const std::string &path, const std::string &block,
                                std::vector<std::string> opening)
{
    if (opening.empty()) {
        opening = openingLines(parentPath(path));
    }
    return readInto(std::move(opening), linesOf(block));
}

Message CommandData::setValue(const std::string &path, const std::string &value)
{
    return copied(velparser::setStringValue(path.c_str(), value.c_str()));
}

Message CommandData::putParameter(const std::string &path, const std::string &value, int position)
{
    if (Message failure = copied(velparser::createParam(path.c_str(), value.c_str()))) {
        return failure;
    }
    return place(path, position);
}

Message CommandData::putObject(const std::string &path, const std::string &block, int position)
{
    Message failure;
    veltext::readBlock(parentPath(path), block, [&](const veltext::BlockStatement &statement) {
        failure = put(statement);
        return !failure;
    });
    return failure ? failure : place(path, position);
}

Message CommandData::deleteParameter(const std::string &path)
{
    return copied(velparser::deleteParam(path.c_str()));
}

Message CommandData::deleteObject(const std::string &path)
{
    return copied(velparser::deleteObj(path.c_str()));
}

} // namespace velEditor
