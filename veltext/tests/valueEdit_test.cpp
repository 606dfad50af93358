// New values in the text of a statement: unchanged characters, wrapping, refusals.
#include "veltext/valueEdit.h"

#include "veltext/error.h"
#include "veltext/statementTree.h"
#include "veltext/tests/newHandle.h"
#include "veltext/tests/randomText.h"
#include "veltext/treeWalk.h"

#include <gtest/gtest.h>

#include <ctime>

namespace veltext {
namespace {

using test::newHandle;

/// The text with the value of its first statement replaced.
std::string edit(const std::string &text, const std::string &value)
{
    const SourceText source(text);
    Statement statement;
    readStatement(source, 0, Positions::Skip, &statement);
    return spliced(source, valueSplice(source, statement.lines, value));
}

TEST(ReplaceValue, KeepsEverythingElseInTheLine)
{
    EXPECT_EQ(edit("  Name  =  old value\t # why\r\nrest\n", "new"),
              "  Name  =  new\t # why\r\nrest\n");
    EXPECT_EQ(edit("Name=old", "new"), "Name=new");
    EXPECT_EQ(edit("Name = a = b # c\n", "x"), "Name = x # c\n");
    EXPECT_EQ(edit("Name = a \\# b# c\n", "x"), "Name = x# c\n");
}

TEST(ReplaceValue, AddsAMissingValue)
{
    EXPECT_EQ(edit("Name =\n", "new"), "Name = new\n");
    EXPECT_EQ(edit("Name=# why\n", "new"), "Name= new# why\n");
    EXPECT_EQ(edit("Name = # why\n", "new"), "Name = new # why\n");
    EXPECT_EQ(edit("Name = \\\n# why\n", "new"), "Name = new\\\n# why\n");
}

TEST(ReplaceValue, RemovesAValueAndAddsItAgain)
{
    for (const std::string text : {"Name = old # why\n", "Name = old\r\n", "Name = old"}) {
        const std::string without = edit(text, "");
        EXPECT_EQ(without.find("old"), std::string::npos);
        EXPECT_EQ(edit(without, "old"), text);
    }
}

TEST(ReplaceValue, KeepsALongLineOneLine)
{
    const std::string value(200, 'v');
    EXPECT_EQ(edit("Name = old\n", value + ' ' + value), "Name = " + value + ' ' + value + '\n');
}

TEST(ReplaceValue, WrapsAWrappedValueAgain)
{
    EXPECT_EQ(edit("Location = Surface 1, Surface 2, \\\r\n"
                   "    Surface 3 # here\r\n",
                   "Surface 9, Surface 8, Surface 7, Surface 6, Surface 5"),
              "Location = Surface 9, Surface 8, \\\r\n"
              "    Surface 7, Surface 6, \\\r\n"
              "    Surface 5 # here\r\n");
    EXPECT_EQ(edit("Location = Surface 1, Surface 2, \\\n    Surface 3\n", "one"),
              "Location = one\n");
}

TEST(ReplaceValue, IsFastForAStatementWithManyLines)
{
    // A linear search for each line would take ten seconds.
    std::string text = "L = one";
    for (int i = 0; i < 100000; ++i) {
        text += ", \\\n  one";
    }
    const std::clock_t start = std::clock();
    EXPECT_EQ(edit(text + '\n', "two"), "L = two\n");
    EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 2);
}

TEST(ReplaceValue, KeepsTheLinesOfPiecesThatStay)
{
    EXPECT_EQ(edit("L = a, \\ \n\tb, \\\n      c\n", "a, b, d"), "L = a, \\ \n\tb, \\\n      d\n");
    EXPECT_EQ(edit("L = a b,   \\\n  c d\n", "a b, e"), "L = a b, e\n")
        << "the value has one blank instead of several";
    EXPECT_EQ(edit("L = a,\\\n  some more\n", "a, some less"), "L = a, \\\n  some less\n")
        << "a continuation line cannot begin with a blank of the value";
}

TEST(ReplaceValue, KeepsOneEntryPerLine)
{
    EXPECT_EQ(edit("L = first one, \\\n  b, \\\n  c\n", "x, y y,z, f(1, 2)"),
              "L = x, \\\n  y y,\\\n  z, \\\n  f(1, 2)\n");
    EXPECT_EQ(edit("L = f(1, 2), \\\n  b, \\\n  c\n", "b"), "L = b\n");
}

TEST(ReplaceValue, ReplacesAValueOnAContinuationLine)
{
    EXPECT_EQ(edit("Name = \\\n  old\n", "new"), "Name = \\\n  new\n");
    EXPECT_EQ(edit("Na\\\nme = old # a \\\n b\n", "new"), "Na\\\nme = new # a \\\n b\n");
}

// Without a comment after it, a backslash at the end continues the line.
TEST(ReplaceValue, GuardsAFinalBackslashWithAnEmptyComment)
{
    EXPECT_EQ(edit("x = 1\ny = 2\n", "a\\"), "x = a\\ #\ny = 2\n");
    EXPECT_EQ(edit("x = 1 # why\n", "a\\"), "x = a\\ # why\n");
    EXPECT_EQ(edit("x = 1# why\n", "a\\"), "x = a\\ # why\n");
    EXPECT_EQ(edit("x =\n", "a\\"), "x = a\\ #\n");
    EXPECT_EQ(edit("x = a, \\\n  b\n", "a, c\\"), "x = a, \\\n  c\\ #\n");
}

TEST(StorageFault, IsFoundInValuesThatAFileDoesNotKeep)
{
    for (const char *value :
         {"", "a b", "a \\# b", "-5 [Pa]", "a = b : c", "\xC3\xA4\xFF", "\\ a"}) {
        EXPECT_EQ(storageFault(value), "");
    }
    EXPECT_EQ(storageFault("a # b"),
              "value \"a # b\" cannot be stored in a file: '#' begins a comment; write \\#");
    EXPECT_EQ(storageFault("a\\"), "value \"a\\\" cannot be stored in a file: a backslash at its "
                                   "end continues the line; remove it");
    EXPECT_EQ(storageFault("a\nb"),
              "value \"a\nb\" cannot be stored in a file: control character number 10 "
              "is not allowed");
    for (const char *value : {"#", "a\tb", " a", "a ", "a  b", "a\r"}) {
        EXPECT_NE(storageFault(value), "") << value;
    }
}

/// The path of a random parameter.
std::string randomParameter(velHandle *handle, test::RandomText &random)
{
    std::vector<std::string> paths;
    TreeWalk walk(handle, velFindNode(handle, "/"), "/");
    for (walk.step(); walk.node() != nullptr; walk.step()) {
        if (walk.info().kind == velParam) {
            paths.push_back(walk.path());
        }
    }
    return paths.empty() ? "" : paths[random.below(paths.size())];
}

std::string wholeTree(velHandle *handle)
{
    velStringList lines;
    EXPECT_EQ(getObjectVELH(handle, "/", &lines, true), nullptr);
    std::string text;
    for (const char *line : lines) {
        text.append(line).append(1, '\n');
    }
    return text;
}

bool parse(velHandle *handle, const SourceText &source)
{
    const velArray lines = source.parsedLines();
    return parseVELData(handle, &lines, 0) == nullptr;
}

/// Expects that only the lines of the statement have changed.
void expectSameSurroundings(const SourceText &before, const SourceText &after, LineRange lines)
{
    const std::size_t begin = before.lineStart(lines.first);
    const std::size_t tail = before.bytes().size() - before.lineStart(lines.first + lines.count);
    ASSERT_EQ(before.bytes().substr(0, begin), after.bytes().substr(0, begin));
    ASSERT_GE(after.bytes().size(), begin + tail);
    ASSERT_EQ(before.bytes().substr(before.bytes().size() - tail),
              after.bytes().substr(after.bytes().size() - tail));
}

TEST(ReplaceValue, EditsRandomTextsAsTheDatabaseDoes)
{
    test::RandomText random(11);
    int edits = 0;
    for (int round = 0; round < 600; ++round) {
        SourceText source(random.next());
        const velHandlePtr handle = newHandle();
        if (!parse(handle.get(), source)) {
            continue;
        }
        for (int k = 0; k < 6; ++k) {
            const std::string path = randomParameter(handle.get(), random);
            if (path.empty()) {
                break;
            }
            const StatementTree tree(source);
            const StatementTree::Stated *stated = tree.lastOf(path);
            ASSERT_NE(stated, nullptr);
            const std::string value = random.value();
            ASSERT_EQ(storageFault(value), "");
            const SourceText edited(spliced(source, valueSplice(source, stated->lines, value)));
            expectSameSurroundings(source, edited, stated->lines);
            ASSERT_EQ(setStringValue(handle.get(), path.c_str(), value.c_str()), nullptr);
            const velHandlePtr reread = newHandle();
            ASSERT_TRUE(parse(reread.get(), edited)) << edited.bytes();
            ASSERT_EQ(wholeTree(reread.get()), wholeTree(handle.get()))
                << path << " = " << value << " in\n"
                << source.bytes() << "gave\n"
                << edited.bytes();
            source = edited;
            ++edits;
        }
    }
    EXPECT_GT(edits, 1000);
}

} // namespace
} // namespace veltext
