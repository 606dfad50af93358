// Statements and their tree: fixed cases, and random texts compared with the database.
#include "veltext/statementTree.h"

#include "velapilt/src/velSpace.h"
#include "veltext/tests/newHandle.h"
#include "veltext/tests/randomText.h"
#include "veltext/treeWalk.h"

#include <gtest/gtest.h>

namespace veltext {
namespace {

using test::newHandle;

/// "first+count kind component" for each statement, one per line.
std::string statements(const std::string &text)
{
    const char *kinds[] = {"nothing", "header", "parameter", "end", "action", "unfinished"};
    const SourceText source(text);
    std::string listing;
    Statement statement;
    for (std::size_t line = 0; line < source.lineCount(); line += statement.lines.count) {
        readStatement(source, line, Positions::Skip, &statement);
        listing += std::to_string(line) + '+' + std::to_string(statement.lines.count) + ' ' +
                   kinds[static_cast<int>(statement.kind)] +
                   (statement.component.empty() ? "" : " " + statement.component) + '\n';
    }
    return listing;
}

TEST(Statement, KnowsTheKindsOfLines)
{
    EXPECT_EQ(statements("FLOW:\n"
                         " DOMAIN : Duct  1 # where\n"
                         "  Mass  Flow\t= 1\n"
                         "\n"
                         "# nothing = here\n"
                         " > run\n"
                         " &replace  WALL: WALL\n"
                         " END\n"),
              "0+1 header FLOW\n"
              "1+1 header DOMAIN:Duct 1\n"
              "2+1 parameter Mass Flow\n"
              "3+1 nothing\n"
              "4+1 nothing\n"
              "5+1 action\n"
              "6+1 header WALL\n"
              "7+1 end\n");
}

TEST(Statement, JoinsContinuedLines)
{
    EXPECT_EQ(statements("Na\\\n  me \\\r\n = a, \\\r\n b\r\n"
                         "x = 1 # comment \\\n goes = on\n"
                         "\\\nEND\n"
                         "y = 2 \\"),
              "0+4 parameter Name\n"
              "4+2 parameter x\n"
              "6+2 end\n"
              "8+1 unfinished\n");
}

TEST(Statement, ReadsALineUpToItsFirstNul)
{
    EXPECT_EQ(statements(std::string("A:\0 = b\nx\0\\\n", 12)), "0+1 header A\n1+1 nothing\n");
}

TEST(Statement, CountsComments)
{
    EXPECT_EQ(countComments(SourceText("# one\nx = 1 # two\ny = \\# none\n")), 2U);
}

/// The value of a statement as the parser would store it.
std::string valueOf(const SourceText &source, LineRange lines)
{
    Statement statement;
    readStatement(source, lines.first, Positions::Keep, &statement);
    EXPECT_EQ(statement.kind, StatementKind::Parameter);
    EXPECT_EQ(statement.lines.count, lines.count);
    EXPECT_EQ(statement.positions.size(), statement.text.size());
    const std::size_t equals = statement.text.find('=');
    std::string value;
    for (std::size_t i = equals + 1; i < statement.comment; ++i) {
        EXPECT_EQ(source.bytes()[statement.positions[i]], statement.text[i]);
        const char c = statement.text[i];
        if (!velIsSpace(c)) {
            value += c;
        } else if (!value.empty() && value.back() != ' ') {
            value += ' ';
        }
    }
    if (value.ends_with(' ')) {
        value.pop_back();
    }
    return value;
}

TEST(StatementTree, AgreesWithTheDatabaseOnRandomTexts)
{
    test::RandomText random(7);
    int parsed = 0;
    int parameters = 0;
    for (int round = 0; round < 2000; ++round) {
        const SourceText source(random.next());
        const velHandlePtr handle = newHandle();
        const velArray lines = source.parsedLines();
        if (parseVELData(handle.get(), &lines, 0) != nullptr) {
            continue;
        }
        ++parsed;
        const StatementTree tree(source);
        TreeWalk walk(handle.get(), velFindNode(handle.get(), "/"), "/");
        for (walk.step(); walk.node() != nullptr; walk.step()) {
            const StatementTree::Stated *stated = tree.lastOf(walk.path());
            ASSERT_NE(stated, nullptr) << walk.path() << " in\n" << source.bytes();
            if (walk.info().kind != velParam) {
                continue;
            }
            ++parameters;
            ASSERT_EQ(valueOf(source, stated->lines), walk.info().value) << walk.path() << " in\n"
                                                                         << source.bytes();
        }
    }
    EXPECT_GT(parsed, 1000);
    EXPECT_GT(parameters, 5000);
}

} // namespace
} // namespace veltext
