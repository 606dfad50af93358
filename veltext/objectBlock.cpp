// Reads the lines of a block.
#include "veltext/objectBlock.h"

#include <algorithm>

namespace veltext {

namespace {

constexpr std::string_view blockEnd = "END";
constexpr std::string_view assignment = " = ";

} // namespace

std::string componentOfLabel(std::string_view label)
{
    const std::size_t end = label.find(" :");
    std::string component(label.substr(0, end));
    if (end != std::string_view::npos && end + 2 < label.size()) {
        component.append(":").append(label.substr(end + 3));
    }
    return component;
}

void readBlock(const std::string &parent, std::string_view block, const BlockVisitor &visit)
{
    std::string path = parent == "/" ? std::string() : parent;
    while (!block.empty()) {
        const std::size_t size = std::min(block.find('\n'), block.size());
        const std::string_view line = block.substr(0, size);
        block.remove_prefix(std::min(size + 1, block.size()));
        const std::size_t equals = line.find(assignment);
        if (line == blockEnd) {
            path.erase(std::min(path.rfind('/'), path.size()));
        } else if (equals != std::string_view::npos) {
            const std::string below = path + '/' + std::string(line.substr(0, equals));
            if (!visit({below, true, std::string(line.substr(equals + assignment.size()))})) {
                return;
            }
        } else {
            path += '/' + componentOfLabel(line);
            if (!visit({path, false, {}})) {
                return;
            }
        }
    }
}

} // namespace veltext
