// Files and lines of mistakes in libraries that the test writes.
#include "veltext/libraryFaults.h"

#include "velapilt/src/velapilt.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>

namespace veltext {
namespace {

/// A new folder for libraries.
class LibraryFaultsTest : public ::testing::Test
{
protected:
    LibraryFaultsTest()
    {
        std::string name = (std::filesystem::temp_directory_path() / "libraries-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        folder_ = name;
    }
    ~LibraryFaultsTest() override { std::filesystem::remove_all(folder_); }

    std::string write(const std::string &name, const std::string &text) const
    {
        std::ofstream(folder_ / name, std::ios::binary) << text;
        return (folder_ / name).string();
    }

    /// The errors of reading these libraries, with file and line.
    [[nodiscard]] std::string errorsOf(const char *names) const
    {
        const velHandlePtr handle(velCreateHandle());
        const char *errors = readNamedLibraries(handle.get(), names, folder_.c_str());
        return errors != nullptr ? placedLibraryErrors(errors, {}, filesOf(names)) : "";
    }

    [[nodiscard]] std::vector<std::string> filesOf(const char *names) const
    {
        return velLibraryFiles(names, folder_.c_str());
    }

    std::filesystem::path folder_;
};

TEST_F(LibraryFaultsTest, NamesTheLineOfASyntaxError)
{
    write("good.vel", "RULES:\nEND\n");
    const std::string file = write("bad.vel", "RULES:\n  no statement\nEND\n");
    EXPECT_EQ(errorsOf("good.vel;bad.vel"),
              "Error reading library file " + file +
                  ": parseVELLineH: syntax error near \"no statement\" (line 2)");
}

TEST_F(LibraryFaultsTest, NamesTheLineOfTheOpenBlock)
{
    const std::string file = write("open.vel", "RULES:\nEND\nRULES:\n");
    EXPECT_EQ(errorsOf("open.vel"), "Error reading library file " + file +
                                        ": 1 missing END statement(s) in input (line 3)");
}

TEST_F(LibraryFaultsTest, SuggestsTheSemicolonBetweenNames)
{
    write("a.vel", "");
    write("b.vel", "");
    const std::string errors = errorsOf("a.vel:b.vel");
    EXPECT_TRUE(
        errors.ends_with("open failed; separate the names in ZOT5_VEL_LIBS by ';', not by ':'"))
        << errors;
    EXPECT_EQ(errorsOf("a.vel;b.vel"), "");
}

TEST_F(LibraryFaultsTest, FindsThePlaceOfAMistakeThatNoLibraryStates)
{
    const std::string file = write("a.vel", "RULES:\nEND\n");
    const LibraryTexts texts = readLibraryTexts({file});
    EXPECT_EQ(texts.placed({.path = "/RULES/OBJECT:B", .line = "is missing"}),
              file + ":1: is missing");
    EXPECT_EQ(texts.placed({.path = "/FLOW", .line = "is missing"}), file + ":0: is missing");
    EXPECT_EQ(LibraryTexts().placed({.path = "/FLOW", .line = "is missing"}), ":0: is missing");
}

TEST_F(LibraryFaultsTest, AddsFileAndLineToMistakesInRules)
{
    write("a.vel", "RULES:\n  OBJECT: A\n    Parents = B\n  END\nEND\n");
    const std::string b = write("b.vel", "RULES:\n  OBJECT: B\n    Typo = 1\n  END\nEND\n");
    const std::vector<std::string> files = filesOf("a.vel;b.vel");
    const std::string placed = b + ":3: /RULES/OBJECT:B/Typo: unknown field [bad-rule]\n" + b +
                               ":2: /RULES/OBJECT:B/Missing: is missing [bad-rule]";
    const std::vector<RuleFault> faults = {
        {"/RULES/OBJECT:B/Typo", "/RULES/OBJECT:B/Typo: unknown field [bad-rule]"},
        {"/RULES/OBJECT:B/Missing", "/RULES/OBJECT:B/Missing: is missing [bad-rule]"}};
    EXPECT_EQ(placedLibraryErrors(nullptr, faults, files), placed);
    EXPECT_EQ(placedLibraryErrors("not read", faults, files), "not read\n" + placed);
    EXPECT_EQ(placedLibraryErrors("not read\n", {}, files), "not read\n");
}

TEST_F(LibraryFaultsTest, KeepsTheLineEndOfAMessageAfterTheHint)
{
    write("bad.vel", "RULES:\n  no statement\nEND\n");
    EXPECT_EQ(placedLibraryErrors("not read\n", {}, filesOf("bad.vel")), "not read (line 2)\n");
}

TEST_F(LibraryFaultsTest, TakesTheLibrariesOfTheEnvironmentWithoutAList)
{
    const std::string file = write("bad.vel", "RULES:\n  no statement\nEND\n");
    setenv("ZOT5_VEL_LIBSDIR", folder_.c_str(), 1);
    setenv("ZOT5_VEL_LIBS", "bad.vel", 1);
    EXPECT_EQ(placedLibraryErrors("not read\n", {}), "not read (line 2)\n");
    EXPECT_EQ(placedLibraryErrors(nullptr, {{"/RULES", "here"}}), file + ":1: here");
    unsetenv("ZOT5_VEL_LIBS");
    unsetenv("ZOT5_VEL_LIBSDIR");
}

TEST_F(LibraryFaultsTest, ListsTheFilesInTheOrderOfTheList)
{
    const char *list = ":a.vel;/b.vel;;./c.vel;";
    const std::string folder = folder_.string();
    const std::vector<std::string> files = {folder + "/a.vel", "/b.vel", folder + "/", "./c.vel"};
    EXPECT_EQ(velLibraryFiles(list, folder.c_str()), files);
    EXPECT_EQ(velLibraryFiles(nullptr, folder.c_str()), std::vector<std::string>());
    EXPECT_EQ(velLibraryFiles(list, (folder + "/none").c_str()), std::vector<std::string>());
    setenv("ZOT5_VEL_LIBSDIR", folder.c_str(), 1);
    setenv("ZOT5_VEL_LIBS", list, 1);
    EXPECT_EQ(velLibraryFiles(), files);
    EXPECT_EQ(velLibraryFiles("a.vel", ""), std::vector<std::string>{folder + "/a.vel"});
    unsetenv("ZOT5_VEL_LIBS");
    EXPECT_EQ(velLibraryFiles(), std::vector<std::string>());
    unsetenv("ZOT5_VEL_LIBSDIR");
}

} // namespace
} // namespace veltext
