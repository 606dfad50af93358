// Formats findings and changes as lines and JSON, and compares findings.
#include "tools/veltool/support/finding.h"

#include "tools/veltool/support/json.h"
#include "veltext/error.h"

#include <algorithm>

namespace veltool {

namespace {

std::string placedLine(std::string_view file, std::size_t line, const std::string &text)
{
    return veltext::findingPlace(file, line) + text + '\n';
}

bool isSameLine(const Finding &one, const Finding &other)
{
    return one.path == other.path && one.text == other.text && one.identifier == other.identifier;
}

/// The common JSON members of findings and changes, with the opening brace.
std::string placedMembers(std::string_view file, std::size_t line, const std::string &path,
                          const std::string &message)
{
    return '{' + jsonMember("file", file) + ',' + jsonMember("line", line) + ',' +
           jsonMember("path", path) + ',' + jsonMember("message", message);
}

} // namespace

std::vector<Finding> newFindings(std::vector<Finding> before, const std::vector<Finding> &after)
{
    std::vector<Finding> fresh;
    for (const Finding &finding : after) {
        const auto known = std::ranges::find_if(
            before, [&](const Finding &each) { return isSameLine(each, finding); });
        if (known == before.end()) {
            fresh.push_back(finding);
        } else {
            before.erase(known);
        }
    }
    return fresh;
}

std::string findingLine(std::string_view file, std::size_t line, const Finding &finding)
{
    return placedLine(file, line, lineOf(finding));
}

std::string changeLine(std::string_view file, std::size_t line,
                       const velparser::UpgradeChange &change)
{
    return placedLine(file, line, lineOf(change));
}

std::string numberedChangeLine(std::string_view file, std::size_t line, std::size_t number,
                               const velparser::UpgradeChange &change)
{
    return placedLine(file, line, '[' + std::to_string(number) + "] " + lineOf(change));
}

std::string findingJson(std::string_view file, std::size_t line, const Finding &finding)
{
    return placedMembers(file, line, finding.path, finding.text) + ',' +
           jsonMember("id", finding.identifier) + '}';
}

std::string changeJson(std::string_view file, std::size_t line, std::size_t number,
                       const velparser::UpgradeChange &change)
{
    return placedMembers(file, line, change.path, change.text) + ',' +
           jsonMember("number", number) + '}';
}

} // namespace veltool
