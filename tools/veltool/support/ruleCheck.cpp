#include "tools/veltool/support/ruleCheck.h"

#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/failure.h"
#include "velapilt/src/velComponentText.h"
#include "velapilt/src/velapilt.h"
#include "velparser/api/velparser.h"
#include "veltext/libraryFaults.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace veltool {

namespace {

constexpr const char *faultIdentifier = "bad-rule";

void requirePerlSide()
{
    if (!std::getenv("ZOT5_VEL_PARSER"))
        throw Failure("the Perl side was not found; set ZOT5_VEL_PARSER to its folder");
}

/// The faults of the rules that the reading of libraries tells; what else it
/// tells is a failure.
std::vector<Finding> readLibrariesOnce()
{
    const char *errors = velparser::readVELLibraries();
    std::vector<Finding> faults = parseFindings(errors);
    for (const Finding &fault : faults) {
        if (fault.id != faultIdentifier)
            throw Failure(veltext::placedLibraryErrors(errors));
    }
    if (!velparser::findLiteHandle())
        throw Failure("the Perl side has no command database");
    return faults;
}

void loadLibrary(const velStringList &lines)
{
    require(loadLibraryData(velparser::findLiteHandle(), lines.data(),
                            static_cast<std::int32_t>(lines.size())));
}

std::vector<velChildInfo> topLevel()
{
    std::vector<velChildInfo> children;
    require(velparser::getChildList("/", &children, nullptr));
    return children;
}

bool isParameter(const velChildInfo &child)
{
    return std::string_view(child.className) == "Param";
}

std::string pathOf(const velChildInfo &child)
{
    return '/' + velComponentOf(child);
}

/// The changes that an upgrade tells, each of them beginning with a path.
std::vector<std::string> upgradeLoadedData(const std::string &file)
{
    const char *told = velparser::updateSolverVEL();
    std::vector<std::string> changes;
    std::istringstream stream(told ? told : "");
    for (std::string line; std::getline(stream, line);) {
        if (!line.starts_with('/'))
            throw Failure(line.insert(0, file + ": "));
        changes.push_back(line);
    }
    return changes;
}

} // namespace

RuleCheck::RuleCheck()
{
    requirePerlSide();
    faults_ = readLibrariesOnce();
    require(velparser::setUnitsChecking(1));
    require(velparser::setBoundsChecking(1));
    keepLibraries();
}

void RuleCheck::keepLibraries()
{
    for (const velChildInfo &child : topLevel()) {
        if (isParameter(child))
            continue;
        LibraryObject &object = libraries_.emplace_back();
        object.path = pathOf(child);
        require(
            getObjectVELH(velparser::findLiteHandle(), object.path.c_str(), &object.lines, true));
    }
    const veltext::TreeData all(velparser::findLiteHandle());
    for (const veltext::TreeData::Item &item : all.items())
        libraryPaths_.insert(item.path);
}

/// A text that states an object of the libraries again makes it the user's,
/// and what the libraries say in it cannot be told from what the text says:
/// such an object is made anew.
void RuleCheck::dropUserData() const
{
    velHandle *handle = velparser::findLiteHandle();
    // A text that ends in a continued line leaves that to the next; an empty
    // one ends it, whatever comes of it.
    (void)parseVELLineH(handle, "", 0);
    setVELStateH(handle, 0);
    for (const velChildInfo &child : topLevel()) {
        const std::string path = pathOf(child);
        if (isParameter(child)) {
            require(velparser::deleteParam(path.c_str()));
            continue;
        }
        if (isLibrary(handle, path.c_str()) == 1)
            continue;
        require(velparser::deleteObj(path.c_str()));
        const auto object =
            std::find_if(libraries_.begin(), libraries_.end(),
                         [&](const LibraryObject &each) { return each.path == path; });
        if (object != libraries_.end())
            loadLibrary(object->lines);
    }
}

void RuleCheck::load(const veltext::SourceText &text, const std::string &file) const
{
    dropUserData();
    const velStringList lines = text.parsedLines().takeStrings();
    const auto count = static_cast<std::int32_t>(lines.size());
    if (const char *message = velparser::loadVELData(lines.data(), count))
        throwParseFailure(text, file, message, Libraries::Read);
}

int RuleCheck::reportRuleFaults() const
{
    if (faults_.empty())
        return statusGood;
    const veltext::LibraryTexts libraries = veltext::readLibraryTexts();
    for (const Finding &fault : faults_) {
        const auto [file, line] = libraries.placeOf(fault.path);
        report(file + ':' + std::to_string(line) + ": " + fault.path + ": " + fault.message + " [" +
               fault.id + ']');
    }
    return statusFindings;
}

Findings RuleCheck::findings(const veltext::SourceText &text, const std::string &file)
{
    load(text, file);
    std::vector<std::string> changes = upgradeLoadedData(file);
    return {.findings = parseFindings(velparser::validateVELDataH()),
            .changes = std::move(changes)};
}

Upgrade RuleCheck::upgrade(const veltext::SourceText &text, const std::string &file)
{
    load(text, file);
    Upgrade upgrade{.changes = upgradeLoadedData(file), .result = {}};
    const velHandlePtr own = newHandle();
    parseText(own.get(), text, file);
    const veltext::TreeData upgraded(velparser::findLiteHandle());
    for (const veltext::TreeData::Item &item : upgraded.items()) {
        if (!libraryPaths_.contains(item.path) || velFindNode(own.get(), item.path.c_str()))
            upgrade.result.add(item);
    }
    return upgrade;
}

std::vector<RuleField> RuleCheck::explain(const veltext::SourceText &text, const std::string &file,
                                          const std::string &path)
{
    load(text, file);
    velStringList lines;
    require(velparser::explainItem(path.c_str(), &lines), file);
    std::vector<RuleField> fields;
    for (const std::string_view line : lines) {
        const std::size_t equals = std::min(line.find(" = "), line.size());
        fields.push_back({std::string(line.substr(0, equals)),
                          std::string(line.substr(std::min(equals + 3, line.size())))});
    }
    return fields;
}

std::vector<Finding> findRuleFaults(const std::vector<veltext::SourceText> &libraries)
{
    requirePerlSide();
    // The reading of libraries also tells the faults of what is there already.
    setenv("ZOT5_VEL_LIBS", "", 1);
    setenv("ZOT5_VEL_LIBSDIR", ".", 1);
    (void)readLibrariesOnce();
    for (const veltext::SourceText &library : libraries)
        loadLibrary(library.parsedLines().takeStrings());
    return readLibrariesOnce();
}

} // namespace veltool
