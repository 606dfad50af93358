// TextEdit and editTowards: fixed cases, and random edits compared with the database.
#include "veltext/textEdit.h"

#include "veltext/error.h"
#include "veltext/tests/newHandle.h"
#include "veltext/tests/otherLines.h"
#include "veltext/tests/randomText.h"
#include "veltext/treeData.h"
#include "veltext/treeDiff.h"
#include "veltext/treeWalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>

namespace veltext {
namespace {

using test::newHandle;

std::string edit(const std::string &text, const std::function<void(TextEdit &)> &change)
{
    const SourceText source(text);
    TextEdit edit(source);
    change(edit);
    return edit.bytes();
}

std::string withParameter(const std::string &text, const std::string &path,
                          const std::string &value)
{
    return edit(text, [&](TextEdit &edit) { edit.addParameter(path, value); });
}

std::string without(const std::string &text, const std::string &path)
{
    return edit(text, [&](TextEdit &edit) { edit.remove(path); });
}

TEST(TextEdit, AddsAfterTheLastParameterOfTheLastBlock)
{
    EXPECT_EQ(withParameter("A:\n  x = 1 # one\n  # note\n  B: b\n    y = 2\n  END\nEND\n"
                            "A:\n\tz = 3, \\\n\t  4\n\n  C:\n  END\nEND\n",
                            "/A/new", "5"),
              "A:\n  x = 1 # one\n  # note\n  B: b\n    y = 2\n  END\nEND\n"
              "A:\n\tz = 3, \\\n\t  4\n\tnew = 5\n\n  C:\n  END\nEND\n");
}

// The empty comment keeps the value, wherever the line is wrapped.
TEST(TextEdit, AddsAValueThatEndsInABackslash)
{
    EXPECT_EQ(withParameter("A:\n  y = 1\nEND\n", "/A/x", "C:\\"),
              "A:\n  y = 1\n  x = C:\\ #\nEND\n");
    EXPECT_EQ(edit("A:\nEND\n", [](TextEdit &edit) { edit.addParameter("/A/x", "C:\\", "# why"); }),
              "A:\n  x = C:\\ # why\nEND\n");
    for (std::size_t length = 1; length < 200; ++length) {
        for (const char *filling : {"a", "a b", "a, "}) {
            std::string value;
            while (value.size() < length) {
                value += filling;
            }
            value.resize(length);
            value.back() = '\\';
            const SourceText text(withParameter("A:\n  y = 1\nEND\n", "/A/x", value));
            const velHandlePtr handle = newHandle();
            const velStringList lines = text.parsedLines().takeStrings();
            require(
                loadVELData(handle.get(), lines.data(), static_cast<std::int32_t>(lines.size())));
            const char *read = velFindValue(handle.get(), "/A/x");
            ASSERT_NE(read, nullptr) << text.bytes();
            EXPECT_EQ(read, value) << text.bytes();
        }
    }
}

TEST(TextEdit, AddsToABlockWithoutParameters)
{
    EXPECT_EQ(withParameter("A:\nEND\n", "/A/x", "1"), "A:\n  x = 1\nEND\n");
    EXPECT_EQ(withParameter("A:\n    B: b\n    END\nEND\n", "/A/B:b/x", "1"),
              "A:\n    B: b\n        x = 1\n    END\nEND\n");
    EXPECT_EQ(withParameter("A: # why\r\n\r\nEND\r\n", "/A/x", ""),
              "A: # why\r\n  x =\r\n\r\nEND\r\n");
}

TEST(TextEdit, AddsAtTheTopLevel)
{
    EXPECT_EQ(withParameter("", "/x", "1"), "x = 1\n");
    EXPECT_EQ(withParameter(" y = 2", "/x", "1"), " y = 2\n x = 1");
    EXPECT_EQ(withParameter("y = 2\r\nA:\r\nEND", "/x", "1"), "y = 2\r\nA:\r\nEND\r\nx = 1");
    EXPECT_EQ(withParameter("y = 2\n# cut off \\", "/x", "1"), "y = 2\nx = 1\n# cut off \\");
}

TEST(TextEdit, ReadsAndWritesComments)
{
    EXPECT_EQ(edit("A:\n  x = 1, \\\n  2 # why \\\n  not\n  y = 3\nEND\n",
                   [](TextEdit &edit) {
                       EXPECT_EQ(edit.commentOf("/A/y"), "");
                       edit.addParameter("/A/z", "4", edit.commentOf("/A/x"));
                   }),
              "A:\n  x = 1, \\\n  2 # why \\\n  not\n  y = 3\n  z = 4 # why not\nEND\n");
}

TEST(TextEdit, WrapsALongNewLineAsTheEditorDoes)
{
    const std::string value(70, 'v');
    EXPECT_EQ(withParameter("A:\nEND\n", "/A/x", value + ", " + value),
              "A:\n  x = " + value + ", \\\n    " + value + "\nEND\n");
}

TEST(TextEdit, RemovesEveryStatementOfAParameter)
{
    EXPECT_EQ(without("A:\n  # kept\n  x = 1, \\\n    2 # gone\n  y = 3\n\n  x = 4\nEND\n", "/A/x"),
              "A:\n  # kept\n  y = 3\n\nEND\n");
    EXPECT_EQ(without("y = 1\nx = 2", "/x"), "y = 1\n");
}

TEST(TextEdit, RemovesEveryBlockOfAnObject)
{
    EXPECT_EQ(
        without("A: a\n  x = 1\nEND\n# between\n&replace A: a\n  B:\n  END\nEND # gone\nC:\nEND\n",
                "/A:a"),
        "# between\nC:\nEND\n");
}

TEST(TextEdit, RenamesInEveryStatement)
{
    const std::string text = "OLD : a # OLD\n  Two  Words   = 1 # why\nEND\n&replace OLD: a\n"
                             "  Two Words = 2\n  OLD:\n  END\nEND\n";
    const std::string renamed = edit(text, [](TextEdit &edit) {
        edit.rename("/OLD:a", "NEW:a");
        edit.rename("/NEW:a/Two Words", "One");
        edit.setValue("/NEW:a/One", "3");
        edit.addParameter("/NEW:a/Last", "4");
    });
    EXPECT_EQ(renamed, "NEW : a # OLD\n  One   = 1 # why\nEND\n&replace NEW: a\n"
                       "  One = 3\n  Last = 4\n  OLD:\n  END\nEND\n");
}

TEST(TextEdit, RenamesBothWordsOfASingletonThatIsWrittenWithTwo)
{
    const std::string renamed =
        edit("OLD : OLD # OLD\n  x = 1\nEND\n&replace OLD: \\\n  OLD\nEND\nOLD: # why\nEND\n",
             [](TextEdit &edit) { edit.rename("/OLD", "NEW"); });
    EXPECT_EQ(renamed, "NEW : NEW # OLD\n  x = 1\nEND\n&replace NEW: NEW\nEND\n"
                       "NEW: # why\nEND\n");
}

TEST(TextEdit, AddsObjectsWithTheirContents)
{
    const std::string added = edit("A:\n  x = 1\n  B: b\n  END\nEND\n", [](TextEdit &edit) {
        edit.addObject("/A/C:c");
        edit.addObject("/A/C:c/D");
        edit.addParameter("/A/C:c/D/y", "2");
        edit.addParameter("/A/C:c/z", "3");
        edit.addObject("/E");
    });
    EXPECT_EQ(added, "A:\n  x = 1\n  B: b\n  END\n  C: c\n    z = 3\n    D:\n      y = 2\n"
                     "    END\n  END\nEND\nE:\nEND\n");
}

TEST(TextEdit, ReportsAPathThatTheTextDoesNotState)
{
    try {
        static_cast<void>(without("A:\nEND\n", "/A/x"));
        FAIL();
    } catch (const Error &failure) {
        EXPECT_EQ(failure.message(), "/A/x: the file does not contain this object or parameter");
    }
}

bool parse(velHandle *handle, const SourceText &source)
{
    const velArray lines = source.parsedLines();
    return parseVELData(handle, &lines, 0) == nullptr;
}

/// A random change of both the tree and the text.
class RandomEdit
{
public:
    RandomEdit(velHandle *handle, test::RandomText &random) : handle_(handle), random_(random)
    {
        TreeWalk walk(handle, velFindNode(handle, "/"), "/");
        for (; walk.node() != nullptr; walk.step()) {
            (walk.info().kind == velParam ? parameters_ : objects_).push_back(walk.path());
        }
    }

    /// False if the chosen kind of change is impossible.
    bool make(TextEdit *edit)
    {
        switch (random_.below(4)) {
        case 0:
            return add(edit);
        case 1:
            return remove(parameters_, deleteParamH, edit);
        case 2:
            return random_.below(4) == 0 && remove(objects_, deleteObjH, edit);
        default:
            return set(edit);
        }
    }

    [[nodiscard]] const std::string &path() const { return path_; }
    [[nodiscard]] bool isRemoval() const { return removal_; }
    [[nodiscard]] bool isAddition() const { return addition_; }

private:
    bool choose(const std::vector<std::string> &from)
    {
        if (!from.empty()) {
            path_ = from[random_.below(from.size())];
        }
        return !from.empty();
    }

    bool add(TextEdit *edit)
    {
        choose(objects_);
        path_ = (path_ == "/" ? "" : path_) + (random_.below(2) ? "/New Name" : "/x");
        if (havePath(handle_, path_.c_str())) {
            return false;
        }
        const std::string value = random_.value();
        addition_ = true;
        edit->addParameter(path_, value);
        return velCreateParam(handle_, path_.c_str(), value.c_str()) == nullptr;
    }

    bool set(TextEdit *edit)
    {
        if (!choose(parameters_)) {
            return false;
        }
        const std::string value = random_.value();
        edit->setValue(path_, value);
        return setStringValue(handle_, path_.c_str(), value.c_str()) == nullptr;
    }

    bool remove(const std::vector<std::string> &from,
                const char *(*deleteNode)(velHandle *, const char *), TextEdit *edit)
    {
        if (!choose(from) || path_ == "/") {
            return false;
        }
        removal_ = true;
        edit->remove(path_);
        return deleteNode(handle_, path_.c_str()) == nullptr;
    }

    velHandle *handle_;
    test::RandomText &random_;
    std::vector<std::string> parameters_;
    std::vector<std::string> objects_;
    std::string path_;
    bool removal_ = false;
    bool addition_ = false;
};

TEST(TextEdit, RandomEditsChangeNoOtherLineAndGiveTheTreeEditedInMemory)
{
    test::RandomText random(23);
    int edits = 0;
    for (int round = 0; round < 800; ++round) {
        SourceText source(random.next());
        const velHandlePtr handle = newHandle();
        if (!parse(handle.get(), source)) {
            continue;
        }
        for (std::size_t k = 1 + random.below(8); k > 0; --k) {
            TextEdit edit(source);
            RandomEdit change(handle.get(), random);
            if (!change.make(&edit)) {
                continue;
            }
            const SourceText edited(edit.bytes());
            const auto before =
                change.isAddition()
                    ? std::set<std::size_t>()
                    : test::linesOf(StatementTree(source), change.path(), change.isRemoval());
            const auto after = test::linesOf(StatementTree(edited), change.path(), false);
            ASSERT_EQ(test::otherLines(source, before), test::otherLines(edited, after))
                << change.path() << " in\n"
                << source.bytes() << "gave\n"
                << edited.bytes();
            const velHandlePtr reread = newHandle();
            ASSERT_TRUE(parse(reread.get(), edited)) << edited.bytes();
            ASSERT_TRUE(haveSameData(reread.get(), handle.get())) << change.path() << " in\n"
                                                                  << source.bytes() << "gave\n"
                                                                  << edited.bytes();
            source = edited;
            ++edits;
        }
    }
    EXPECT_GT(edits, 1500);
}

/// The sorted paths, one per line, with the values of parameters.
std::string sortedData(velHandle *handle)
{
    std::set<std::string> lines;
    const TreeData data(handle);
    for (const TreeData::Item &item : data.items()) {
        lines.insert(item.path + (item.value ? " = " + *item.value : "") + '\n');
    }
    std::string text;
    for (const std::string &line : lines) {
        text += line;
    }
    return text;
}

TEST(EditTowards, GivesOneTextTheDataOfAnother)
{
    test::RandomText random(31);
    int done = 0;
    for (int round = 0; round < 300; ++round) {
        const SourceText from(random.next());
        const SourceText to(random.next());
        const velHandlePtr have = newHandle();
        const velHandlePtr want = newHandle();
        if (!parse(have.get(), from) || !parse(want.get(), to)) {
            continue;
        }
        TextEdit edit(from);
        editTowards(TreeData(have.get()), TreeData(want.get()), {}, &edit);
        const SourceText edited(edit.bytes());
        const velHandlePtr reread = newHandle();
        ASSERT_TRUE(parse(reread.get(), edited)) << edited.bytes();
        ASSERT_EQ(sortedData(reread.get()), sortedData(want.get())) << from.bytes() << "gave\n"
                                                                    << edited.bytes();
        ++done;
    }
    EXPECT_GT(done, 100);
}

} // namespace
} // namespace veltext
