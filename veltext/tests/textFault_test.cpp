// findFault: the line and the message of the first mistake, for each kind.
#include "veltext/textFault.h"

#include "velapilt/src/velapilt.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace veltext {
namespace {

/// The first mistake as "case.vel:LINE: message"; empty if there is none.
std::string faultOf(const std::string &text)
{
    const velHandlePtr handle(velCreateHandle());
    const std::optional<TextFault> fault = findFault(SourceText(text), handle.get());
    return fault ? placed("case.vel", *fault) : "";
}

TEST(TextFault, IsNotFoundInACorrectText)
{
    EXPECT_EQ(faultOf(""), "");
    EXPECT_EQ(faultOf("A:\n  x = 1\n  B: b\n  END\nEND\n"), "");
}

TEST(TextFault, NamesTheLine)
{
    EXPECT_EQ(faultOf("A:\nno statement\nEND\n"),
              "case.vel:2: parseVELLineH: syntax error near \"no statement\"");
    EXPECT_EQ(faultOf("A:\nEND\nEND\n"), "case.vel:3: parseVELLineH: unmatched END");
}

TEST(TextFault, NamesTheLineOfTheOpenBlock)
{
    EXPECT_EQ(faultOf("x = 1\nA:\n  y = 2\n"), "case.vel:2: 1 missing END statement(s) in input");
    EXPECT_EQ(faultOf("A:\n  B: b\n    y = 2\n"),
              "case.vel:2: 2 missing END statement(s) in input");
    EXPECT_EQ(faultOf("A:\nEND\nB:\n  C:\n  END\n"),
              "case.vel:3: 1 missing END statement(s) in input");
}

TEST(TextFault, NamesAnEndWithADifferentIndent)
{
    EXPECT_EQ(faultOf("A:\n  B: b\n    y = 2\nEND\n"),
              "case.vel:1: 1 missing END statement(s) in input; the END in line 4 closes the block "
              "of line 2, but is indented differently");
}

TEST(TextFault, IsAPlainSentenceForConflictMarkers)
{
    const std::string sentence = "a conflict marker of a merge; keep one of the two sides and "
                                 "delete the marker lines";
    EXPECT_EQ(faultOf("A:\n<<<<<<< ours\n  x = 1\n=======\n  x = 2\n>>>>>>> theirs\nEND\n"),
              "case.vel:2: " + sentence);
    EXPECT_EQ(faultOf("x = 1\n=======\nx = 2\n"), "case.vel:2: " + sentence);
    EXPECT_EQ(faultOf("<<<<<<< HEAD: a\n"), "case.vel:1: " + sentence);
}

TEST(TextFault, IsAPlainSentenceForADefFile)
{
    EXPECT_EQ(
        faultOf("*INFO\n                   0\n*ENDINFO\n"),
        "case.vel: this is a def or res file where a text is expected; take its command data out "
        "with veltool extract");
}

TEST(TextFault, ComesAfterTheMessageOfTheRefusal)
{
    std::string file = (std::filesystem::temp_directory_path() / "textFault-XXXXXX").string();
    const int descriptor = mkstemp(file.data());
    ASSERT_GE(descriptor, 0);
    close(descriptor);
    const auto refusal = [&](const std::string &text, const std::string &message) {
        std::ofstream(file, std::ios::binary) << text;
        return explainRefusal(file, message);
    };
    EXPECT_EQ(refusal("x = 1\nnonsense\n", "parseVELLineH: syntax error near \"nonsense\""),
              "parseVELLineH: syntax error near \"nonsense\" (" + file + ":2)");
    EXPECT_EQ(refusal("x = 1\nA:\n", "1 missing END statement(s) in input"),
              "1 missing END statement(s) in input (" + file + ":2)");
    EXPECT_EQ(refusal("*INFO\n", "parseVELLineH: syntax error near \"*INFO\""),
              "parseVELLineH: syntax error near \"*INFO\"\n" + file +
                  ": this is a def or res file where a text is expected; take its command data out "
                  "with veltool extract");
    EXPECT_EQ(refusal("x = 1\n", "something else"), "something else");
    std::filesystem::remove(file);
}

TEST(TextFault, DoesNotChangeTheMessageOfAFileThatCannotBeRead)
{
    EXPECT_EQ(explainRefusal("/no such file", "readTextFile: open failed"),
              "readTextFile: open failed");
}

} // namespace
} // namespace veltext
