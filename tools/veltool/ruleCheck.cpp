#include "tools/veltool/ruleCheck.h"

#include "tools/veltool/failure.h"
#include "velapilt/src/velapilt.h"
#include "velparser/api/velparser.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace veltool {

namespace {

/// Takes the user's data out of the instance; library data stays.
void dropUserData()
{
    std::vector<velChildInfo> children;
    require(velparser::getChildList("/", &children, nullptr));
    velHandle *handle = velparser::findLiteHandle();
    for (const velChildInfo &child : children) {
        const bool named = std::string_view(child.className) == "Object";
        const std::string path = '/' + (named ? child.type + ':' + child.name : child.name);
        if (std::string_view(child.className) == "Param")
            require(deleteParamH(handle, path.c_str()));
        else if (isLibrary(handle, path.c_str()) != 1)
            require(deleteObjH(handle, path.c_str()));
    }
}

} // namespace

Finding parseFinding(const std::string &line)
{
    Finding finding{.path = {}, .message = line, .id = {}};
    const std::size_t colon = line.find(": ");
    if (line.starts_with('/') && colon != std::string::npos) {
        finding.path = line.substr(0, colon);
        finding.message = line.substr(colon + 2);
    }
    const std::size_t bracket = line.rfind('[');
    if (line.ends_with(']') && bracket != std::string::npos)
        finding.id = line.substr(bracket + 1, line.size() - bracket - 2);
    return finding;
}

RuleCheck::RuleCheck()
{
    if (!std::getenv("ZOT5_VEL_PARSER"))
        throw Failure("the Perl side was not found; set ZOT5_VEL_PARSER to its folder");
    require(velparser::readVELLibraries());
    if (!velparser::findLiteHandle())
        throw Failure("the Perl side has no command database");
    require(velparser::setUnitsChecking(1));
    require(velparser::setBoundsChecking(1));
}

std::vector<Finding> RuleCheck::findings(const SourceText &text)
{
    dropUserData();
    const velStringList lines = text.parsedLines().takeStrings();
    require(velparser::loadVELData(lines.data(), static_cast<std::int32_t>(lines.size())));
    // What was changed is no matter here: the findings are those of the result.
    (void)velparser::updateSolverVEL();

    std::vector<Finding> findings;
    const char *said = velparser::validateVELDataH();
    std::istringstream stream(said ? said : "");
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

} // namespace veltool
