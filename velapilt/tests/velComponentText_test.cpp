// Tests components of paths as text: made from words, split, and made from the
// results of queries and walks.
#include "velapilt/src/velComponentText.h"

#include "velapilt/src/velSpace.h"
#include "velapilt/src/velapilt.h"

#include <gtest/gtest.h>

namespace {

TEST(ComponentText, JoinsTheWordsThatThereAre)
{
    EXPECT_EQ(velJoinComponent("DOMAIN", "Duct"), "DOMAIN:Duct");
    EXPECT_EQ(velJoinComponent("FLOW", ""), "FLOW");
    EXPECT_EQ(velJoinComponent("", "Option"), "Option");
}

TEST(ComponentText, IsSplitAtTheFirstColon)
{
    const auto split = [](std::string_view text) {
        const velComponentParts parts = velSplitComponent(text);
        return std::string(parts.type) + '|' + std::string(parts.name) + '|' +
               (parts.hasColon ? "yes" : "no");
    };
    EXPECT_EQ(split("DOMAIN:Duct"), "DOMAIN|Duct|yes");
    EXPECT_EQ(split("FLOW"), "FLOW||no");
    EXPECT_EQ(split("A:b:c"), "A|b:c|yes");
    EXPECT_EQ(split("A:"), "A||yes");
    EXPECT_EQ(split(""), "||no");
}

TEST(ComponentText, IsTheSameFromAQueryAndFromTheWalk)
{
    const velHandlePtr handle(velCreateHandle());
    for (const char *line :
         {"FLOW:", "Option = 1", "OUTPUT:", "END", "DOMAIN: Duct", "END", "END"}) {
        ASSERT_EQ(parseVELLineH(handle.get(), line, 0), nullptr);
    }

    std::vector<velChildInfo> children;
    ASSERT_EQ(getChildList(handle.get(), "/FLOW", &children, nullptr), nullptr);
    std::vector<std::string> asked;
    for (const velChildInfo &child : children) {
        asked.push_back(velComponentOf(child));
    }

    std::vector<std::string> walked;
    const velNode *node = velFirstChild(velFindNode(handle.get(), "/FLOW"));
    for (; node != nullptr; node = velNextSibling(node)) {
        walked.push_back(velComponentOf(velDescribe(handle.get(), node)));
    }

    EXPECT_EQ(asked, (std::vector<std::string>{"Option", "OUTPUT", "DOMAIN:Duct"}));
    EXPECT_EQ(walked, asked);
}

TEST(WhiteSpace, AreTheSixWhiteSpaceCharactersOfTheCLocale)
{
    std::string blanks;
    for (int c = 0; c < 256; ++c) {
        if (velIsSpace(static_cast<char>(c))) {
            blanks += static_cast<char>(c);
        }
    }
    EXPECT_EQ(blanks, "\t\n\v\f\r ");
}

TEST(WhiteSpace, AreRemovedFromBothEnds)
{
    EXPECT_EQ(velTrim(" \t\v\f\r\n a \t b \r\n"), "a \t b");
    EXPECT_EQ(velTrim(std::string(20, ' ') + "x"), "x");
    EXPECT_EQ(velTrim(std::string(20, ' ')), "");
    EXPECT_EQ(velTrim(""), "");
    EXPECT_EQ(velTrimEnd(" a \r"), " a");
    EXPECT_EQ(velTrimEnd("\t "), "");
}

} // namespace
