#include "tools/veltool/support/finding.h"

#include "tools/veltool/support/json.h"

#include <algorithm>
#include <sstream>

namespace veltool {

Finding parseFinding(const std::string &line)
{
    Finding finding{.path = {}, .message = line, .id = {}};
    const std::size_t colon = line.find(": ");
    if (line.starts_with('/') && colon != std::string::npos) {
        finding.path = line.substr(0, colon);
        finding.message = line.substr(colon + 2);
    }
    const std::string &message = finding.message;
    const std::size_t bracket = message.rfind(" [");
    if (message.ends_with(']') && bracket != std::string::npos) {
        finding.id = message.substr(bracket + 2, message.size() - bracket - 3);
        finding.message.resize(bracket);
    }
    return finding;
}

std::vector<Finding> parseFindings(const char *text)
{
    std::vector<Finding> findings;
    std::istringstream stream(text ? text : "");
    for (std::string line; std::getline(stream, line);)
        findings.push_back(parseFinding(line));
    return findings;
}

std::vector<Finding> newFindings(std::vector<Finding> before, const std::vector<Finding> &after)
{
    std::vector<Finding> fresh;
    for (const Finding &finding : after) {
        const auto known = std::find(before.begin(), before.end(), finding);
        if (known == before.end())
            fresh.push_back(finding);
        else
            before.erase(known);
    }
    return fresh;
}

std::string findingLine(std::string_view file, std::size_t line, const Finding &finding)
{
    std::string text = std::string(file) + ':' + std::to_string(line) + ": ";
    text += finding.path + ": " + finding.message;
    if (!finding.id.empty())
        text += " [" + finding.id + ']';
    return text + '\n';
}

std::string findingJson(std::string_view file, std::size_t line, const Finding &finding)
{
    return '{' + jsonMember("file", file) + ',' + jsonMember("line", line) + ',' +
           jsonMember("path", finding.path) + ',' + jsonMember("message", finding.message) + ',' +
           jsonMember("id", finding.id) + '}';
}

} // namespace veltool
