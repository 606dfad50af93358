// Checks, upgrades and explains command data by the rules, through the bridge.
#include "tools/veltool/support/ruleCheck.h"

#include "common/takeLine.h"
#include "tools/veltool/support/commandData.h"
#include "tools/veltool/support/environment.h"
#include "tools/veltool/support/failure.h"
#include "velapilt/src/velapilt.h"
#include "velparser/api/velparser.h"
#include "veltext/libraryFaults.h"

#include <algorithm>

namespace veltool {

namespace {

/// The places of packages and libraries. Throws a Failure if there are no Perl
/// packages.
Places requirePlaces()
{
    Places places = findPlaces();
    if (!places.packages) {
        throw Failure(std::string("cannot find the Perl packages; set ") + environment::packages +
                      " to their folder");
    }
    return places;
}

/// Reads the libraries of the session and returns the mistakes in rules. Throws a
/// Failure if the libraries cannot be read.
std::vector<Finding> readLibrariesInto(velparser::Session &session, const Places &places)
{
    std::vector<Finding> faults;
    const char *failure = velparser::startVELParser(*places.packages);
    if (failure == nullptr) {
        failure = velparser::readLibraries(session, &faults);
    }
    if (failure != nullptr) {
        std::vector<veltext::RuleFault> lines;
        for (const Finding &fault : faults) {
            lines.push_back({fault.path, lineOf(fault)});
        }
        throw Failure(veltext::placedLibraryErrors(failure, lines, libraryFiles(places)));
    }
    if (findLiteHandle(session) == nullptr) {
        throw Failure("the Perl packages have created no command database; check ZOT5_VEL_PARSER");
    }
    return faults;
}

void loadLibrary(velparser::Session &session, const velStringList &lines)
{
    require(loadLibraryData(findLiteHandle(session), lines.data(),
                            static_cast<std::int32_t>(lines.size())));
}

std::vector<velparser::UpgradeChange> upgradeLoadedData(velparser::Session &session,
                                                        const std::string &file)
{
    std::vector<velparser::UpgradeChange> changes;
    if (const char *failure = velparser::upgrade(session, &changes)) {
        std::string_view text = failure;
        throw Failure(file + ": " + std::string(velEditor::takeLine(&text)));
    }
    return changes;
}

std::vector<Finding> validateLoadedData(velparser::Session &session)
{
    std::vector<Finding> findings;
    const char *failure = velparser::validate(session, "/", &findings);
    for (std::string_view rest = failure != nullptr ? failure : ""; !rest.empty();) {
        findings.push_back(
            {.path = {}, .identifier = {}, .text = std::string(velEditor::takeLine(&rest))});
    }
    return findings;
}

} // namespace

RuleCheck::RuleCheck()
    : places_(requirePlaces()), session_({.libraries = librariesOf(places_)}),
      faults_(readLibrariesInto(session_, places_))
{
    require(velparser::setUnitsChecking(session_, 1));
    require(velparser::setBoundsChecking(session_, 1));
    require(velparser::keepLibraries(session_));
    const veltext::TreeData all(findLiteHandle(session_));
    for (const veltext::TreeData::Item &item : all.items()) {
        libraryPaths_.insert(item.path);
    }
}

void RuleCheck::load(const veltext::SourceText &text, const std::string &file)
{
    require(velparser::clearData(session_));
    const velStringList lines = text.parsedLines().takeStrings();
    const auto count = static_cast<std::int32_t>(lines.size());
    if (const char *message = velparser::loadVELData(session_, lines.data(), count)) {
        throwParseFailure(text, file, message, Libraries::Read);
    }
}

int RuleCheck::reportRuleFaults() const
{
    if (faults_.empty()) {
        return statusGood;
    }
    const veltext::LibraryTexts libraries = veltext::readLibraryTexts(libraryFiles(places_));
    for (const Finding &fault : faults_) {
        report(libraries.placed({.path = fault.path, .line = lineOf(fault)}));
    }
    return statusFindings;
}

Findings RuleCheck::findings(const veltext::SourceText &text, const std::string &file)
{
    load(text, file);
    std::vector<velparser::UpgradeChange> changes = upgradeLoadedData(session_, file);
    return {.findings = validateLoadedData(session_), .changes = std::move(changes)};
}

Upgrade RuleCheck::upgrade(const veltext::SourceText &text, const std::string &file)
{
    load(text, file);
    Upgrade upgrade{.changes = upgradeLoadedData(session_, file), .result = {}};
    const velHandlePtr own = newHandle();
    parseText(own.get(), text, file);
    const veltext::TreeData upgraded(findLiteHandle(session_));
    for (const veltext::TreeData::Item &item : upgraded.items()) {
        if (!libraryPaths_.contains(item.path) ||
            velFindNode(own.get(), item.path.c_str()) != nullptr) {
            upgrade.result.add(item);
        }
    }
    return upgrade;
}

std::vector<velparser::RuleField> RuleCheck::explain(const veltext::SourceText &text,
                                                     const std::string &file,
                                                     const std::string &path)
{
    load(text, file);
    std::vector<velparser::RuleField> fields;
    require(velparser::explainItem(session_, path.c_str(), &fields), file);
    return fields;
}

std::vector<Finding> findRuleFaults(const std::vector<veltext::SourceText> &libraries)
{
    const Places places = requirePlaces();
    // Reading libraries also reports mistakes in rules that are already loaded.
    // So the session starts without library files, and reads libraries again
    // after these are loaded.
    velparser::Session session({.libraries = velparser::LibraryNames{}});
    static_cast<void>(readLibrariesInto(session, places));
    for (const veltext::SourceText &library : libraries) {
        loadLibrary(session, library.parsedLines().takeStrings());
    }
    return readLibrariesInto(session, places);
}

} // namespace veltool
