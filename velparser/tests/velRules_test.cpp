// The bridge with the packages and libraries that ship: what the programs get from the rules.
#include "velparser/api/velparser.h"

#include "velapilt/src/velapilt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <sstream>

namespace {

using Lines = std::vector<std::string>;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool isInstrumented = true;
#else
constexpr bool isInstrumented = false;
#endif

std::string said(const char *message)
{
    return message != nullptr ? message : "";
}

Lines linesOf(const std::string &text)
{
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// An example of the folder that the variable names.
std::string example(const char *variable, const std::string &name)
{
    const char *folder = std::getenv(variable);
    return std::string(folder != nullptr ? folder : ".") + "/examples/" + name;
}

std::vector<const char *> pointers(const Lines &lines)
{
    std::vector<const char *> result;
    result.reserve(lines.size());
    for (const std::string &line : lines) {
        result.push_back(line.c_str());
    }
    return result;
}

std::string load(const Lines &lines)
{
    const std::vector<const char *> texts = pointers(lines);
    return said(velparser::loadVELData(texts.data(), static_cast<std::int32_t>(texts.size())));
}

Lines findings()
{
    return linesOf(said(velparser::validateVELDataH()));
}

/// Seconds of the processor that the work takes.
double processorTime(const std::function<void()> &work)
{
    const std::clock_t begin = std::clock();
    work();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

/// The instance lasts as long as the program, so each test deletes its data.
class VelRules : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_EQ(said(velparser::readVELLibraries()), "");
        ASSERT_EQ(said(velparser::setUnitsChecking(1)), "");
        ASSERT_EQ(said(velparser::setBoundsChecking(1)), "");
    }

    void TearDown() override
    {
        std::vector<velChildInfo> children;
        ASSERT_EQ(said(velparser::getChildList("/", &children, nullptr)), "");
        for (const velChildInfo &child : children) {
            const bool isNamed = std::string_view(child.className) == "Object";
            const std::string path = '/' + (isNamed ? child.type + ':' + child.name : child.name);
            if (velparser::isVELLibrary(path.c_str()) == 0) {
                EXPECT_EQ(said(velparser::deleteObj(path.c_str())), "");
            }
        }
    }
};

TEST_F(VelRules, MistakesGoAwayOneByOne)
{
    ASSERT_EQ(
        said(velparser::loadVELFromFile(example("VEL_SOURCE_DIR", "mistakes.vel").c_str(), "vel")),
        "");
    const auto set = [](const char *path, const char *value) {
        return said(velparser::setStringValue(path, value));
    };
    const std::vector<std::function<std::string()>> remedies = {
        [&] { return set("/FLOW/DOMAIN:Tee/Location", "tee volume"); },
        [&] { return set("/FLOW/DOMAIN:Tee/Reference Pressure", "1 [bar]"); },
        [&] { return set("/FLOW/DOMAIN:Tee/TURBULENCE/Model", "Two Equations"); },
        [&] { return set("/FLOW/DOMAIN:Tee/HEAT/Viscous Heating", "No"); },
        [] {
            return load({"FLOW:", "DOMAIN: Tee", "BOUNDARY: Hot", "Location = hot in", "END", "END",
                         "END"});
        },
        [&] {
            return set("/FLOW/DOMAIN:Tee/BOUNDARY:Hot/THROUGHFLOW/Normal Speed", "2 * (Hot Speed)");
        },
        [&] {
            return set("/FLOW/DOMAIN:Tee/BOUNDARY:Hot/INFLOW TEMPERATURE/Temperature", "80 [C]");
        },
        [&] {
            return set("/FLOW/DOMAIN:Tee/BOUNDARY:Cold/THROUGHFLOW/Mass Flow Rate", "1 [kg s^-1]");
        },
        [] {
            return load({"FLOW:", "DOMAIN: Tee", "BOUNDARY: Out",
                         "THROUGHFLOW:", "Given = Static Pressure", "Relative Pressure = 0 [Pa]",
                         "END", "END", "END", "END"});
        },
        [] { return said(velparser::deleteParam("/FLOW/DOMAIN:Tee/BOUNDARY:Wall/Movng Frame")); },
        [&] { return set("/FLOW/STOPPING/Largest Number of Iterations", "100"); },
        [] { return said(velparser::deleteObj("/FLOW/STOPPING/PROBE:Outlet Centre")); },
    };
    Lines before = findings();
    ASSERT_EQ(before.size(), remedies.size()) << "a dozen";
    for (const auto &fix : remedies) {
        EXPECT_EQ(fix(), "");
        const Lines after = findings();
        EXPECT_EQ(after.size() + 1, before.size());
        for (const std::string &finding : after) {
            EXPECT_NE(std::find(before.begin(), before.end(), finding), before.end()) << finding;
        }
        before = after;
    }
    EXPECT_EQ(before, Lines());
}

TEST_F(VelRules, AnOldSetUpIsUpgradedOnce)
{
    ASSERT_EQ(said(velparser::loadVELFromFile(example("VEL_SOURCE_DIR", "old-version.vel").c_str(),
                                              "vel")),
              "");
    const Lines changes = linesOf(said(velparser::updateSolverVEL()));
    ASSERT_GT(changes.size(), 20U);
    EXPECT_EQ(changes.back(), "/LANGUAGE/Version: changed from 1.0 to 3.0");
    EXPECT_EQ(findings(), Lines());

    velStringList saved;
    ASSERT_EQ(said(velparser::getFormattedVEL("/", 79, &saved)), "");
    TearDown();
    ASSERT_EQ(load(Lines(saved.begin(), saved.end())), "");
    EXPECT_EQ(said(velparser::updateSolverVEL()), "");
    EXPECT_EQ(findings(), Lines());
}

/// The examples that ship, and those that the build makes.
std::vector<std::string> examples()
{
    std::vector<std::string> files;
    for (const char *variable : {"VEL_SOURCE_DIR", "VEL_BUILD_DIR"}) {
        for (const auto &entry : std::filesystem::directory_iterator(example(variable, ""))) {
            if (entry.path().extension() == ".vel") {
                files.push_back(entry.path());
            }
        }
    }
    return files;
}

template <class Record>
Lines composed(const std::vector<Record> &records)
{
    Lines lines;
    for (const Record &record : records) {
        lines.push_back(lineOf(record));
    }
    return lines;
}

// Records and texts say the same, for all examples that ship.
TEST_F(VelRules, RecordsReadAsTheTextsDo)
{
    const std::vector<std::string> files = examples();
    EXPECT_GE(files.size(), 7U);
    std::size_t changed = 0;
    std::size_t found = 0;
    for (const std::string &file : files) {
        ASSERT_EQ(said(velparser::loadVELFromFile(file.c_str(), "vel")), "");
        const Lines changesAsText = linesOf(said(velparser::updateSolverVEL()));
        const Lines findingsAsText = findings();
        TearDown();
        ASSERT_EQ(said(velparser::loadVELFromFile(file.c_str(), "vel")), "");
        std::vector<velparser::UpgradeChange> changes;
        std::vector<velparser::Finding> records;
        EXPECT_EQ(said(velparser::upgrade(&changes)), "");
        EXPECT_EQ(said(velparser::validate("/", &records)), "");
        EXPECT_EQ(composed(changes), changesAsText) << file;
        EXPECT_EQ(composed(records), findingsAsText) << file;
        for (const velparser::Finding &finding : records) {
            EXPECT_FALSE(finding.path.empty() || finding.identifier.empty()) << lineOf(finding);
        }
        changed += changes.size();
        found += records.size();
        TearDown();
    }
    EXPECT_GT(changed, 20U);
    EXPECT_GE(found, 12U);
}

TEST_F(VelRules, AFieldIsOneWhateverItsTextHolds)
{
    std::vector<velparser::RuleField> fields;
    ASSERT_EQ(said(velparser::explainItem("/FLOW/DOMAIN:Duct/Kind", &fields)), "");
    ASSERT_FALSE(fields.empty());
    EXPECT_EQ(fields.front().name, "Description");
    EXPECT_TRUE(fields.front().inTip);
    EXPECT_EQ(fields.back().name, "Presence");
    EXPECT_FALSE(fields.back().inTip);
}

TEST_F(VelRules, AnEditOfTwentyThousandLinesIsCheckedAtOnce)
{
    const std::string file = example("VEL_BUILD_DIR", "large.vel");
    const char *path = "/FLOW/DOMAIN:Room 7/BOUNDARY:Supply 7/THROUGHFLOW/Mass Flow Rate";
    ASSERT_EQ(said(velparser::loadVELFromFile(file.c_str(), "vel")), "");
    const double cold = processorTime([] { EXPECT_EQ(findings(), Lines()); });
    double again = cold;
    for (const char *value : {"0.04 [kg s^-1]", "0.05 [kg s^-1]", "0.06 [kg s^-1]"}) {
        again = std::min(again, processorTime([&] {
                             EXPECT_EQ(said(velparser::setStringValue(path, value)), "");
                             EXPECT_EQ(findings(), Lines());
                         }));
    }
    EXPECT_EQ(said(velparser::setStringValue(path, "-1 [kg s^-1]")), "");
    EXPECT_EQ(findings().size(), 1U);
    if (!isInstrumented) {
        EXPECT_LT(cold, 1.0);
        EXPECT_LT(again, 0.01);
    }
}

TEST_F(VelRules, TenThousandBlocksInEachOtherAreChecked)
{
    constexpr std::size_t depth = isInstrumented ? 2000 : 10000;
    const Lines rule = {"RULES:",
                        "OBJECT: BOX",
                        "Optional Parameters = Size",
                        "PARAMETER: Size",
                        "Type = Integer",
                        "END",
                        "END",
                        "END"};
    const std::vector<const char *> texts = pointers(rule);
    ASSERT_EQ(said(loadLibraryData(velparser::findLiteHandle(), texts.data(),
                                   static_cast<std::int32_t>(texts.size()))),
              "");
    Lines lines;
    for (std::size_t i = 0; i < depth; ++i) {
        lines.push_back("BOX: b" + std::to_string(i));
        lines.push_back(i + 1 < depth ? "Size = 1" : "Size = one");
    }
    lines.insert(lines.end(), depth, "END");
    ASSERT_EQ(load(lines), "");
    const double seconds = processorTime([] {
        const Lines found = findings();
        ASSERT_EQ(found.size(), 1U);
        EXPECT_TRUE(found[0].ends_with("/BOX:b" + std::to_string(depth - 1) +
                                       "/Size: \"one\" is not a whole number; "
                                       "use a value such as 10 [wrong-type]"));
    });
    if (!isInstrumented) {
        EXPECT_LT(seconds, 6.0);
    }
}

} // namespace
