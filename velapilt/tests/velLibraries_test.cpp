// Tests loading of library files, by list and by environment.
#include "velapilt/src/velapilt.h"

#include "velapilt/tests/velTestData.h"

#include <gtest/gtest.h>

namespace {

constexpr const char *noLibraries =
    "Error: No library files specified by $ZOT5_VEL_LIBS. No libraries were read.\n";

class VelLibraries : public testing::Test
{
protected:
    VelLibraries()
    {
        folder_.write("a.vel", "RULES:\na = 1\nEND\n");
        folder_.write("b.vel", "RULES:\nb = 2\nEND\n");
        folder_.write(":colon.vel", "RULES:\ncolon = 3\nEND\n");
        folder_.write("bad.vel", "RULES:\nbad\nEND\n");
        folder_.write("open.vel", "RULES:\n");
        std::filesystem::create_directory(folder_.path("sub"));
        folder_.write("sub/a.vel", "RULES:\nsub = 4\nEND\n");
    }

    /// The message, or the parameters of /RULES in the order in which they were
    /// read.
    std::string readList(const char *list, const char *directory)
    {
        const velHandlePtr handle(velCreateHandle());
        const std::string message = said(readNamedLibraries(handle.get(), list, directory));
        return message.empty() ? rules(handle) : message;
    }

    std::string readByEnvironment(std::optional<std::string> list,
                                  std::optional<std::string> directory)
    {
        const Environment libraries("ZOT5_VEL_LIBS", std::move(list));
        const Environment folder("ZOT5_VEL_LIBSDIR", std::move(directory));
        const velHandlePtr handle(velCreateHandle());
        const std::string message = said(readLibraries(handle.get()));
        return message.empty() ? rules(handle) : message;
    }

    static std::string rules(const velHandlePtr &handle)
    {
        velStringList names;
        if (havePath(handle.get(), "/RULES") == 0) {
            return "none";
        }
        EXPECT_EQ(isLibrary(handle.get(), "/RULES"), 1);
        EXPECT_EQ(said(getChildParamList(handle.get(), "/RULES", &names)), "");
        return asLines(names);
    }

    std::string here() const { return folder_.path(); }

    TemporaryFolder folder_;
};

TEST_F(VelLibraries, AListIsReadInOrder)
{
    const std::string folder = here();
    EXPECT_EQ(readList("a.vel", folder.c_str()), "a\n");
    EXPECT_EQ(readList("b.vel;a.vel", folder.c_str()), "b\na\n");
    EXPECT_EQ(readList("a.vel;b.vel;", folder.c_str()), "a\nb\n"); // no item follows the last ';'
    EXPECT_EQ(readList(";a.vel", folder.c_str()), "a\n");
    EXPECT_EQ(readList(":a.vel;b.vel", folder.c_str()), "a\nb\n");
    // One ';' or ':' before an item is skipped, even if it did not end another
    // item.
    EXPECT_EQ(readList("a.vel;:colon.vel", folder.c_str()), "a\ncolon\n");
    EXPECT_EQ(readList("::colon.vel", folder.c_str()), "colon\n");
    EXPECT_EQ(readList("sub/a.vel", folder.c_str()), "sub\n");
    EXPECT_EQ(readList("a.vel", (folder + "/").c_str()), "a\n");
}

TEST_F(VelLibraries, NothingToRead)
{
    const std::string folder = here();
    EXPECT_EQ(readList("", folder.c_str()), "none");
    EXPECT_EQ(readList(nullptr, folder.c_str()), "none");
    EXPECT_EQ(readList(";", folder.c_str()), "none");
}

TEST_F(VelLibraries, AnEmptyItemNamesTheDirectoryItself)
{
    const std::string folder = here();
    const std::string refused =
        "Error reading library file " + folder + "/: loadFileData: " + folder + "/: open failed";
    EXPECT_EQ(readList("a.vel;;b.vel", folder.c_str()), refused);
    EXPECT_EQ(readList(";;a.vel", folder.c_str()), refused);
    EXPECT_EQ(readList(";;", folder.c_str()), refused);
    EXPECT_EQ(readList("a.vel;;", folder.c_str()), refused);
}

TEST_F(VelLibraries, ItemsWithoutTheDirectory)
{
    const std::string folder = here();
    EXPECT_EQ(readList((folder + "/a.vel").c_str(), "/"), "a\n");
    const auto refusal = [](const std::string &path) {
        return "Error reading library file " + path + ": loadFileData: " + path + ": open failed";
    };
    EXPECT_EQ(readList("./no such.vel", folder.c_str()), refusal("./no such.vel"));
    EXPECT_EQ(readList("../no such.vel", folder.c_str()), refusal("../no such.vel"));
    EXPECT_EQ(readList(".hidden", folder.c_str()), refusal(".hidden"));
    EXPECT_EQ(readList("\\x", folder.c_str()), refusal("\\x"));
    EXPECT_EQ(readList("C:/x.vel", folder.c_str()), refusal("C:/x.vel"));
    EXPECT_EQ(readList("c:\\x.vel", folder.c_str()), refusal("c:\\x.vel"));
    EXPECT_EQ(readList("1:/x.vel", folder.c_str()), refusal(folder + "/1:/x.vel"));
    EXPECT_EQ(readList("CC:/x.vel", folder.c_str()), refusal(folder + "/CC:/x.vel"));
    EXPECT_EQ(readList("C:x.vel", folder.c_str()), refusal(folder + "/C:x.vel"));
}

TEST_F(VelLibraries, TheFirstFailureStopsTheWalk)
{
    const std::string folder = here();
    const velHandlePtr handle(velCreateHandle());
    EXPECT_EQ(said(readNamedLibraries(handle.get(), "a.vel;bad.vel;b.vel", folder.c_str())),
              "Error reading library file " + folder +
                  "/bad.vel: parseVELLineH: syntax error near \"bad\"");
    EXPECT_EQ(rules(handle), "a\n");
    EXPECT_EQ(readList("open.vel", folder.c_str()),
              "Error reading library file " + folder +
                  "/open.vel: 1 missing END statement(s) in input");
}

TEST_F(VelLibraries, TheDirectory)
{
    constexpr const char *noDirectory =
        "readNamedLibraries: unable to find a valid lib directory\n";
    const std::string folder = here();
    const std::string file = folder_.path("a.vel");
    {
        const Environment none("ZOT5_VEL_LIBSDIR", std::nullopt);
        EXPECT_EQ(readList("a.vel", ""), noDirectory);
        EXPECT_EQ(readList("a.vel", nullptr), noDirectory);
        EXPECT_EQ(readList("a.vel", "/no such folder"), noDirectory);
        EXPECT_EQ(readList("a.vel", file.c_str()), noDirectory);
        EXPECT_EQ(readList("", "/no such folder"), noDirectory); // checked before the list
    }
    {
        const Environment given("ZOT5_VEL_LIBSDIR", folder);
        EXPECT_EQ(readList("a.vel", ""), "a\n");
        EXPECT_EQ(readList("a.vel", nullptr), "a\n");
        EXPECT_EQ(readList("a.vel", "/no such folder"), noDirectory); // a given folder is used
        EXPECT_EQ(readList("a.vel", (folder + "/sub").c_str()), "sub\n");
    }
    // One separator of either kind at the end does not belong to the name.
    EXPECT_EQ(readList("", (folder + "/").c_str()), "none");
    EXPECT_EQ(readList("", (folder + "\\").c_str()), "none");
    EXPECT_EQ(readList("", (folder + "\\\\").c_str()), noDirectory);
    const Environment wrong("ZOT5_VEL_LIBSDIR", file);
    EXPECT_EQ(readList("a.vel", ""), noDirectory);
}

TEST_F(VelLibraries, ByEnvironment)
{
    const std::string folder = here();
    EXPECT_EQ(readByEnvironment(std::nullopt, std::nullopt), noLibraries);
    EXPECT_EQ(readByEnvironment(std::nullopt, folder), noLibraries);
    EXPECT_EQ(readByEnvironment("a.vel;b.vel", folder), "a\nb\n");
    EXPECT_EQ(readByEnvironment("", folder), "none");
    EXPECT_EQ(readByEnvironment(folder + "/b.vel", std::nullopt), "b\n");
    // If the directory does not exist, the current one is used, and messages say so.
    EXPECT_EQ(
        readByEnvironment("no such.vel", std::nullopt),
        "Error reading library file .//no such.vel: loadFileData: .//no such.vel: open failed");
    EXPECT_EQ(
        readByEnvironment("no such.vel", "/no such folder"),
        "Error reading library file .//no such.vel: loadFileData: .//no such.vel: open failed");
}

TEST_F(VelLibraries, LibrariesAndUserDataOfOneHandle)
{
    const velHandlePtr handle = parsed("FLOW:\nx = 1\nEND\n");
    EXPECT_EQ(said(readNamedLibraries(handle.get(), "a.vel", here().c_str())), "");
    EXPECT_EQ(flagsOf(handle), "/ Object 0\n"
                               "/FLOW Singleton 0\n"
                               "/FLOW/x Param 0\n"
                               "/RULES Singleton 0x1\n"
                               "/RULES/a Param 0x1\n");
}

} // namespace
