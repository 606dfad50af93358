// keepLayout: the text with other data, renamed and moved items, and what cannot be kept.
#include "veltext/keepLayout.h"

#include "veltext/error.h"
#include "veltext/tests/newHandle.h"
#include "veltext/tests/otherLines.h"
#include "veltext/tests/randomText.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace veltext {
namespace {

using Kind = PathChange::Kind;

bool parse(velHandle *handle, const SourceText &source)
{
    const velArray lines = source.parsedLines();
    return parseVELData(handle, &lines, 0) == nullptr;
}

TreeData dataOf(const std::string &text)
{
    const velHandlePtr handle = test::newHandle();
    EXPECT_TRUE(parse(handle.get(), SourceText(text))) << text;
    return TreeData(handle.get());
}

std::string kept(const std::string &text, const std::string &wanted,
                 const std::vector<PathChange> &changes = {}, const StaysAsItIs &stays = nullptr)
{
    return keepLayout(SourceText(text), dataOf(wanted), changes, stays);
}

std::string reasonWhyNot(const std::string &text, const TreeData &wanted)
{
    try {
        return "kept: " + keepLayout(SourceText(text), wanted);
    } catch (const Error &error) {
        return error.message();
    }
}

TEST(KeepLayout, ChangesOnlyTheLinesThatDiffer)
{
    EXPECT_EQ(kept("# top\r\nA:\r\n\tx  =  1 # one\r\n  y = 2\r\nEND\r\n# end",
                   "A:\n  y = 2\n  x = 3\nEND\n"),
              "# top\r\nA:\r\n\tx  =  3 # one\r\n  y = 2\r\nEND\r\n# end");
}

TEST(KeepLayout, GivesTheSameBytesForTheSameData)
{
    for (const std::string text : {"", "\n\n", "# only this",
                                   "\xEF\xBB\xBF"
                                   "A:\r\n x=1 # \xB5\r\nEND # e\r\n\r\n",
                                   "A:\n  x = \\\n 1\nEND\nA:\n  x = 2\nEND"}) {
        EXPECT_EQ(kept(text, text), text);
    }
}

TEST(KeepLayout, KeepsTheLinesOfRenamedAndMovedItems)
{
    const std::string text = "PIPE: a # pipe\n"
                             "  Bore = 1, \\\n"
                             "    2 # bores\n"
                             "  Power = 3 # plate\n"
                             "END\n";
    const std::string wanted = "LINE: a\nDiameter = 1, 2\nMOTOR:\nRated Power = 3\nEND\nEND\n";
    const std::vector<PathChange> changes{
        {Kind::Renamed, "/PIPE:a", "/LINE:a"},
        {Kind::Renamed, "/LINE:a/Bore", "/LINE:a/Diameter"},
        {Kind::Moved, "/LINE:a/Power", "/LINE:a/MOTOR/Power"},
        {Kind::Renamed, "/LINE:a/MOTOR/Power", "/LINE:a/MOTOR/Rated Power"},
    };
    EXPECT_EQ(kept(text, wanted, changes), "LINE: a # pipe\n"
                                           "  Diameter = 1, \\\n"
                                           "    2 # bores\n"
                                           "  MOTOR:\n"
                                           "    Rated Power = 3 # plate\n"
                                           "  END\n"
                                           "END\n");
    EXPECT_EQ(kept(text, wanted).find('#'), std::string::npos) << "nothing says what is the same";
}

TEST(KeepLayout, DoesNotChangeItemsThatStay)
{
    const std::string text = "RULES: # ours\n  x = 1\n  B:\n  y = 2 # two\n  END\nEND\n"
                             "C:\n z = 1\nEND\n";
    const auto isRules = [](const std::string &path) { return path == "/RULES"; };
    EXPECT_EQ(kept(text, "C:\nz = 2\nEND\n", {}, isRules),
              "RULES: # ours\n  x = 1\n  B:\n  y = 2 # two\n  END\nEND\nC:\n z = 2\nEND\n");
    EXPECT_EQ(kept(text, "C:\nz = 2\nEND\n"), "C:\n z = 2\nEND\n");
}

TEST(KeepLayout, ReportsDataThatAFileCannotContain)
{
    const std::string text = "A:\n  x = 1\nEND\n";
    const auto with = [](const std::string &value) {
        TreeData data;
        data.add({"/A", std::nullopt});
        data.add({"/A/x", value});
        return data;
    };
    EXPECT_EQ(
        reasonWhyNot(text, with("2 # two")),
        "/A/x: value \"2 # two\" cannot be stored in a file: '#' begins a comment; write \\#");
    EXPECT_EQ(reasonWhyNot(text, with("2\nEND")),
              "/A/x: value \"2\nEND\" cannot be stored in a file: control character number 10 is "
              "not allowed");
    EXPECT_EQ(
        reasonWhyNot(text, with("2  3")),
        "/A/x: value \"2  3\" cannot be stored in a file: tabs, blanks at its ends and several "
        "blanks in a row are not kept; use single blanks");
    EXPECT_EQ(reasonWhyNot(text, with("C:\\")), "kept: A:\n  x = C:\\ #\nEND\n");
    EXPECT_NE(reasonWhyNot("A:\n  x 1\nEND\n", with("1")).find("syntax error"), std::string::npos);
}

TEST(KeepLayout, RefusesObjectsThatNestTooDeeply)
{
    std::string text;
    for (int i = 0; i <= deepestKept; ++i) {
        text += "A:\n";
    }
    for (int i = 0; i <= deepestKept; ++i) {
        text += "END\n";
    }
    EXPECT_EQ(reasonWhyNot(text, TreeData()), "objects nest deeper than 10000 levels");
}

/// Random changes of data, and the paths that they change.
class RandomChanges
{
public:
    RandomChanges(const TreeData &data, test::RandomText &random)
        : items_(data.items()), random_(random)
    {
        for (std::size_t k = 1 + random_.below(6); k > 0; --k) {
            change();
        }
    }

    [[nodiscard]] TreeData data() const
    {
        TreeData data;
        for (const TreeData::Item &item : items_) {
            data.add(item);
        }
        return data;
    }

    [[nodiscard]] const std::vector<std::string> &set() const { return set_; }
    [[nodiscard]] const std::vector<std::string> &removed() const { return removed_; }
    [[nodiscard]] const std::vector<std::string> &added() const { return added_; }

private:
    void change()
    {
        const std::size_t place = random_.below(items_.size() + 1);
        if (place == items_.size() || random_.below(4) == 0) {
            add(place == items_.size() || items_[place].value ? "" : items_[place].path);
        } else if (random_.below(4) == 0) {
            remove(items_[place].path);
        } else if (items_[place].value) {
            items_[place].value = random_.value();
            set_.push_back(items_[place].path);
        }
    }

    void remove(const std::string path)
    {
        std::erase_if(items_, [&](const TreeData::Item &item) {
            return item.path == path || item.path.starts_with(path + '/');
        });
        removed_.push_back(path);
    }

    void add(const std::string &object)
    {
        std::string path = object + "/New Item " + std::to_string(++count_);
        if (random_.below(2) == 0) {
            path = object + "/NEW:n" + std::to_string(count_);
            items_.push_back({path, std::nullopt});
            added_.push_back(path);
            path += "/x";
        }
        items_.push_back({path, random_.value()});
        added_.push_back(path);
    }

    std::vector<TreeData::Item> items_;
    test::RandomText &random_;
    std::vector<std::string> set_;
    std::vector<std::string> removed_;
    std::vector<std::string> added_;
    int count_ = 0;
};

TEST(KeepLayout, ChangesNoOtherLineOfRandomTexts)
{
    test::RandomText random(41);
    int done = 0;
    for (int round = 0; round < 1500; ++round) {
        const SourceText text(random.next());
        const velHandlePtr handle = test::newHandle();
        if (!parse(handle.get(), text)) {
            continue;
        }
        const RandomChanges changes(TreeData(handle.get()), random);
        const TreeData wanted = changes.data();
        const SourceText edited(keepLayout(text, wanted));
        EXPECT_TRUE(haveSameData(dataOf(edited.bytes()), wanted)) << text.bytes();

        const StatementTree before(text);
        const StatementTree after(edited);
        std::set<std::size_t> oldLines;
        std::set<std::size_t> newLines;
        const auto mayDiffer = [&](const std::vector<std::string> &paths, bool all) {
            for (const std::string &path : paths) {
                oldLines.merge(test::linesOf(before, path, all));
                newLines.merge(test::linesOf(after, path, all));
            }
        };
        mayDiffer(changes.set(), false);
        mayDiffer(changes.removed(), true);
        mayDiffer(changes.added(), true);
        ASSERT_EQ(test::otherLines(text, oldLines), test::otherLines(edited, newLines))
            << text.bytes() << "gave\n"
            << edited.bytes();
        ++done;
    }
    EXPECT_GT(done, 500);
}

} // namespace
} // namespace veltext
