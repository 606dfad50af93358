// Tests the pages: how they are read, named, found and searched. Also tests that
// the pages of this help are complete and that their links have a target.
#include "help/viewer/Topics.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace velHelp {

namespace {

// Has a folder of pages that the test writes.
class TopicsTest : public testing::Test
{
protected:
    void page(const QString &name, const QByteArray &content)
    {
        QDir(folder.path()).mkpath(QFileInfo(name).path());
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    [[nodiscard]] Topics topics(const char *language = "en-us") const
    {
        return Topics(folder.path(), QString::fromLatin1(language));
    }

    void threePages()
    {
        page("en-us/walls.md", "<!-- chapter: Objects; order: 2; also: Hot Walls, Surfaces -->\n"
                               "# WALL HEAT\n\nHeat through a wall, in `W m^-2`.\n");
        page("en-us/inlet.md", "<!-- chapter: Objects; order: 1 -->\n# Inlets\n\nFlow enters.\n");
        page("en-us/plain.md", "No heading here, but heat.\nAnd *heat* again\n");
    }

    QTemporaryDir folder;
};

std::string titleOf(const Topic *topic)
{
    return topic == nullptr ? "none" : topic->title.toStdString();
}

} // namespace

TEST_F(TopicsTest, areReadWithTheirNamesAndGroups)
{
    threePages();
    const Topics all = topics();
    QString text;
    for (const Topic &topic : all.all()) {
        text += QStringLiteral("%1|%2|%3|%4|%5\n")
                    .arg(topic.name, topic.title, topic.chapter, QString::number(topic.order),
                         topic.also.join(u','));
    }
    EXPECT_EQ("plain|plain||0|\n"
              "inlet|Inlets|Objects|1|\n"
              "walls|WALL HEAT|Objects|2|Hot Walls,Surfaces\n",
              text.toStdString());
    EXPECT_TRUE(all.find("walls")->text.startsWith("# WALL HEAT"));
}

TEST_F(TopicsTest, areFoundByAnyName)
{
    threePages();
    const Topics all = topics();
    for (const char *name :
         {"walls", "Walls", "wall heat", "WALL-HEAT", " wall: heat! ", "hot walls", "surfaces"}) {
        EXPECT_EQ("WALL HEAT", titleOf(all.find(name))) << name;
    }
    for (const char *name : {"", "heat", "../en-us/walls", "walls.md", "/etc/passwd"}) {
        EXPECT_EQ("none", titleOf(all.find(name))) << name;
    }
}

TEST_F(TopicsTest, preferFileNamesToTitlesToOtherNames)
{
    page("en-us/a.md", "<!-- also: b, c -->\n# B\n");
    page("en-us/b.md", "# c\n");
    page("en-us/d.md", "# other\n");
    const Topics all = topics();
    EXPECT_EQ("c", titleOf(all.find("b")));
    EXPECT_EQ("c", titleOf(all.find("C")));
    EXPECT_EQ("B", titleOf(all.find("a")));
}

TEST_F(TopicsTest, offerTheNearestNames)
{
    threePages();
    const Topics all = topics();
    EXPECT_EQ("Inlets", titleOf(all.nearest("inlts", 3).first()));
    EXPECT_EQ("WALL HEAT", titleOf(all.nearest("Surface", 3).first()));
    EXPECT_EQ(3, all.nearest("whatever it is", 9).size());
    EXPECT_EQ(1, all.nearest("", 1).size());
    EXPECT_EQ(2, all.nearest(QString(100'000, u'x'), 2).size());
}

TEST_F(TopicsTest, areSearched)
{
    threePages();
    const Topics all = topics();
    const QList<Hit> hits = all.search("HEAT");
    ASSERT_EQ(2, hits.size());
    EXPECT_EQ("WALL HEAT", titleOf(hits[0].topic));
    EXPECT_EQ("plain", titleOf(hits[1].topic));
    EXPECT_EQ("No heading here, but heat.", hits[1].excerpt.toStdString());
    EXPECT_EQ(1, all.search("heat W m^-2").size());
    EXPECT_EQ(1, all.search("  enters   flow ").size());
    EXPECT_EQ(0, all.search("heat nowhere").size());
    EXPECT_EQ(0, all.search("  ").size());
}

TEST_F(TopicsTest, areRankedByTheirTitles)
{
    page("en-us/list.md", "# All\n\n" + QByteArray("- heat\n").repeated(500));
    page("en-us/heat.md", "# Heat\n\nIt flows, as *heat* does.\n");
    page("en-us/flux.md", "# Heat flux\n");
    const Topics all = topics();
    const QList<Hit> hits = all.search("heat");
    ASSERT_EQ(3, hits.size());
    EXPECT_EQ("Heat", titleOf(hits[0].topic));
    EXPECT_EQ("It flows, as heat does.", hits[0].excerpt.toStdString());
    EXPECT_EQ("Heat flux", titleOf(hits[1].topic));
    EXPECT_EQ("", hits[1].excerpt.toStdString());
    EXPECT_EQ("All", titleOf(hits[2].topic));
}

TEST_F(TopicsTest, areShownInTheLanguageAskedFor)
{
    page("en-us/start.md", "# Start\n");
    page("en-us/more.md", "# More\n");
    page("de/start.md", "# Beginn\n");
    page("de-at/more.md", "# Noch mehr\n");
    EXPECT_EQ("Start", titleOf(topics("en-us").find("start")));
    EXPECT_EQ("Beginn", titleOf(topics("de").find("start")));
    EXPECT_EQ("More", titleOf(topics("de").find("more")));
    EXPECT_EQ("Beginn", titleOf(topics("de_AT.UTF-8").find("start")));
    EXPECT_EQ("Noch mehr", titleOf(topics("de_AT.UTF-8").find("more")));
    EXPECT_EQ("Start", titleOf(topics("fr").find("start")));
    EXPECT_EQ("Start", titleOf(topics("").find("start")));
}

TEST_F(TopicsTest, areNotReadFromALanguageThatIsAPath)
{
    page("secret/start.md", "# Secret\n");
    QDir(folder.path()).mkpath("help/en-us");
    for (const char *language : {"../secret", "/etc", "..", "en-us/../../secret", "."}) {
        EXPECT_EQ(0, Topics(folder.filePath("help"), QString::fromLatin1(language)).all().size());
    }
}

TEST_F(TopicsTest, areMissingWithoutAFolder)
{
    const Topics none(folder.filePath("absent"), "en-us");
    EXPECT_EQ(0, none.all().size());
    EXPECT_EQ("none", titleOf(none.find("x")));
    EXPECT_EQ(0, none.nearest("x", 5).size());
    EXPECT_EQ(0, none.search("x").size());
}

TEST(TopicText, isEscapedForMarkdown)
{
    EXPECT_EQ("a\\*b\\[c\\]\\(d\\) \\<e\\> ü", escaped("a*b[c](d) <e> ü").toStdString());
}

// The pages of this help.
class ShippedTopics : public testing::Test
{
protected:
    const Topics topics{qEnvironmentVariable("VEL_BUILD_DIR") + "/help", "en-us"};
};

TEST_F(ShippedTopics, answerTheHelpMenu)
{
    for (const char *topic : {"Def File Editor", "Expert Parameters", "Master Contents",
                              "Master Index", "Tutorials", "Search", "Help On Help"}) {
        ASSERT_NE(nullptr, topics.find(topic)) << topic;
        EXPECT_GT(topics.find(topic)->text.size(), 500) << topic;
    }
}

TEST_F(ShippedTopics, describeObjectsOfTheRules)
{
    const Topic *boundary = topics.find("BOUNDARY");
    ASSERT_NE(nullptr, boundary);
    EXPECT_EQ("type-boundary", boundary->name.toStdString());
    EXPECT_TRUE(boundary->text.contains("A surface of a domain and what happens on it."));
    EXPECT_TRUE(boundary->text.contains("### Location"));
    ASSERT_NE(nullptr, topics.find("Boundaries"));
    EXPECT_EQ("topic-boundaries", topics.find("Boundaries")->name.toStdString());
    // If a topic has only one type, its only page is that of the type.
    ASSERT_NE(nullptr, topics.find("Heat conduction"));
    EXPECT_EQ("type-conductivity", topics.find("Heat conduction")->name.toStdString());
}

TEST_F(ShippedTopics, describeTheFieldsOfRules)
{
    const Topic *fields = topics.find("Fields of rules");
    ASSERT_NE(nullptr, fields);
    for (const char *field :
         {"Parents", "Units", "If Parameter", "To Object", "Language Version"}) {
        EXPECT_TRUE(fields->text.contains(QStringLiteral("\n| `%1` | ").arg(field))) << field;
    }
}

TEST_F(ShippedTopics, explainTheFindings)
{
    const Topic *findings = topics.find("Findings");
    ASSERT_NE(nullptr, findings);
    for (const char *identifier :
         {"missing-parameter", "wrong-unit", "rules-in-data", "bad-rule"}) {
        EXPECT_TRUE(findings->text.contains(QStringLiteral("\n### %1\n").arg(identifier)))
            << identifier;
    }
}

// There is a page for every type, counted by the lines of the rule library.
TEST_F(ShippedTopics, coverTheWholeRuleLibrary)
{
    QFile rules(qEnvironmentVariable("VEL_SOURCE_DIR") + "/libraries/rules.vel");
    ASSERT_TRUE(rules.open(QIODevice::ReadOnly));
    int types = 0;
    for (const QByteArray &line : rules.readAll().split('\n')) {
        for (const char *kind : {"  OBJECT: ", "  SINGLETON: "}) {
            if (!line.startsWith(kind)) {
                continue;
            }
            const QString type = QString::fromUtf8(line).section(u':', 1).trimmed();
            ++types;
            EXPECT_NE(nullptr, topics.find("type " + type)) << type.toStdString();
        }
    }
    EXPECT_GT(types, 50);
}

TEST_F(ShippedTopics, linkToPagesAndHeadingsThatExist)
{
    static const QRegularExpression link("\\]\\((?:help:)?([^)#]*?)(?:\\.md)?(?:#([^)]*))?\\)");
    static const QRegularExpression heading("^#+ +(.*)$", QRegularExpression::MultilineOption);
    for (const Topic &page : topics.all()) {
        for (auto links = link.globalMatch(page.text); links.hasNext();) {
            const auto match = links.next();
            const Topic *target = topics.find(match.captured(1));
            ASSERT_NE(nullptr, target) << (page.name + ": " + match.captured(0)).toStdString();
            bool isThere = match.captured(2).isEmpty();
            for (auto headings = heading.globalMatch(target->text);
                 !isThere && headings.hasNext();) {
                isThere = normalized(headings.next().captured(1)) == normalized(match.captured(2));
            }
            EXPECT_TRUE(isThere) << (page.name + ": " + match.captured(0)).toStdString();
        }
    }
}

} // namespace velHelp
