// Records read from texts, for Perl code that gives only texts.
#include "velparser/api/textRecords_p.h"

#include "common/takeLine.h"

#include <algorithm>

namespace velparser {

namespace {

constexpr std::string_view pathEnd = ": ";
constexpr std::string_view fieldEnd = " = ";

bool isIdentifier(std::string_view word)
{
    const auto isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
    return !word.empty() && isLetter(word[0]) &&
           std::ranges::all_of(word, [&](char c) { return isLetter(c) || c == '-'; });
}

/// Removes the path and its separator from the beginning of the line, and returns the path;
/// empty if there is none.
std::string_view takePath(std::string_view *line)
{
    const std::size_t end = line->starts_with('/') ? line->find(pathEnd) : line->npos;
    if (end == line->npos) {
        return {};
    }
    const std::string_view path = line->substr(0, end);
    line->remove_prefix(end + pathEnd.size());
    return path;
}

} // namespace

Finding findingFromLine(std::string_view line)
{
    Finding finding{.path = std::string(takePath(&line)), .identifier = {}, .text = {}};
    const std::size_t bracket = line.rfind(" [");
    if (line.ends_with(']') && bracket != line.npos) {
        const std::string_view word = line.substr(bracket + 2, line.size() - bracket - 3);
        if (isIdentifier(word)) {
            finding.identifier = word;
            line = line.substr(0, bracket);
        }
    }
    finding.text = line;
    return finding;
}

std::vector<Finding> findingsFromText(std::string_view text)
{
    std::vector<Finding> findings;
    for (const std::string_view line : linesOf(text)) {
        findings.push_back(findingFromLine(line));
    }
    return findings;
}

UpgradeChange changeFromLine(std::string_view line)
{
    UpgradeChange change;
    change.path = takePath(&line);
    change.text = line;
    return change;
}

RuleField fieldFromLine(std::string_view line)
{
    const std::size_t end = line.find(fieldEnd);
    if (end == line.npos) {
        return {.name = std::string(line), .text = {}};
    }
    return {.name = std::string(line.substr(0, end)),
            .text = std::string(line.substr(end + fieldEnd.size()))};
}

std::vector<std::string_view> linesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        lines.push_back(velEditor::takeLine(&text));
    }
    return lines;
}

} // namespace velparser
