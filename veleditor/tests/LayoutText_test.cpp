// What a save that keeps comments and layout writes: random files with random edits, and
// data that the text has but the window does not save.
#include "veleditor/src/LayoutText.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/FileVersion.h"
#include "veleditor/tests/DataText.h"
#include "veltext/error.h"
#include "veltext/tests/otherLines.h"
#include "veltext/tests/randomText.h"

#include <QTemporaryDir>
#include <QTest>

#include <fstream>
#include <memory>
#include <set>
#include <sstream>

using namespace velEditor;
using veltext::SourceText;
using veltext::StatementTree;
using veltext::test::RandomText;

namespace {

/// Random edits of a document, and the paths that they are about.
class RandomEdits
{
public:
    RandomEdits(Document &document, RandomText &random) : document_(document), random_(random)
    {
        for (std::size_t k = 1 + random_.below(6); k > 0; --k) {
            edit();
        }
    }

    std::vector<std::string> set;
    std::vector<std::string> removed;
    std::vector<std::string> added;

private:
    std::string any(bool parameters)
    {
        const std::vector<std::string> paths = storedPaths(parameters);
        return paths.empty() ? std::string() : paths[random_.below(paths.size())];
    }

    void edit()
    {
        const std::size_t kind = random_.below(5);
        const std::string path = any(kind < 3);
        if (path.empty()) {
            return;
        }
        if (kind < 2) {
            make(settingValue(path, random_.value()), set);
        } else if (kind == 2) {
            make(deletingParameter(path), removed);
        } else if (kind == 3 && random_.below(3) == 0) {
            make(deletingObject(path), removed);
        } else {
            const std::string name = "New " + std::to_string(++count_);
            make(addingParameter(childPath(path, name), random_.value()), added);
        }
    }

    void make(Edit edit, std::vector<std::string> &paths)
    {
        const std::string path = edit.path;
        const Message failure = document_.apply(std::move(edit));
        QVERIFY2(!failure, failure.value_or("").c_str());
        paths.push_back(path);
    }

    Document &document_;
    RandomText &random_;
    int count_ = 0;
};

std::vector<std::string> parsedLines(const SourceText &text)
{
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < text.lineCount(); ++i) {
        lines.emplace_back(text.parsedLine(i));
    }
    return lines;
}

} // namespace

class LayoutTextTest : public QObject
{
    Q_OBJECT

private:
    /// A document of a file with this text; null if the text is refused.
    std::unique_ptr<Document> load(const std::string &text);

    QTemporaryDir folder_;

private slots:
    void changesNoOtherLineOfRandomFiles();
    void keepsWhatTheFileStatesOfALibrary();
    void saysWhichValueAFileCannotHold();
    void givesItemsWithNewNamesTheirLines();
};

std::unique_ptr<Document> LayoutTextTest::load(const std::string &text)
{
    const std::string file = folder_.filePath("a.vel").toStdString();
    std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
    forgetData();
    auto document = std::make_unique<Document>(file);
    static_cast<void>(document->readLibraries());
    if (document->load()) {
        return nullptr;
    }
    Document &own = *document;
    document->setTextMaker(
        [&own] { return layoutText(own.knownVersion()->bytes(), own.data(), {}); });
    return document;
}

void LayoutTextTest::changesNoOtherLineOfRandomFiles()
{
    RandomText random(17);
    int done = 0;
    for (int round = 0; round < 120; ++round) {
        const SourceText text(random.next());
        const std::unique_ptr<Document> document = load(text.bytes());
        if (document == nullptr || text.bytes().empty()) {
            continue;
        }
        const RandomEdits edits(*document, random);
        QCOMPARE(document->save(document->file()).outcome, SaveOutcome::Written);
        const SourceText saved(document->knownVersion()->bytes());
        QVERIFY(document->knownVersion()->compare(document->file()).match ==
                FileVersion::Match::Same);

        const StatementTree before(text);
        const StatementTree after(saved);
        std::set<std::size_t> oldLines;
        std::set<std::size_t> newLines;
        const auto mayDiffer = [&](const std::vector<std::string> &paths, bool all) {
            for (const std::string &path : paths) {
                oldLines.merge(veltext::test::linesOf(before, path, all));
                newLines.merge(veltext::test::linesOf(after, path, all));
            }
        };
        mayDiffer(edits.set, false);
        mayDiffer(edits.removed, true);
        mayDiffer(edits.added, true);
        QCOMPARE(veltext::test::otherLines(saved, newLines),
                 veltext::test::otherLines(text, oldLines));
        velparser::Session fresh = freshLoad(parsedLines(saved));
        QCOMPARE(dump(asSaved(storedData(fresh))), dump(asSaved(storedData())));
        ++done;
    }
    QVERIFY2(done > 40, std::to_string(done).c_str());
}

// The formatted text does not have it; an edit elsewhere must not drop it.
void LayoutTextTest::keepsWhatTheFileStatesOfALibrary()
{
    const std::unique_ptr<Document> document = load("LIBRARY: # ours\n"
                                                    "  SUBSTANCE: Water # tap\n"
                                                    "    Density = 998\n"
                                                    "  END\n"
                                                    "END\n"
                                                    "FLOW: A\n"
                                                    "  Title = x # why\n"
                                                    "END\n");
    QCOMPARE(document->apply(settingValue("/FLOW:A/Title", "y")), std::nullopt);
    QCOMPARE(layoutText(document->knownVersion()->bytes(), document->data(), {}),
             std::string("LIBRARY: # ours\n"
                         "  SUBSTANCE: Water # tap\n"
                         "    Density = 998\n"
                         "  END\n"
                         "END\n"
                         "FLOW: A\n"
                         "  Title = y # why\n"
                         "END\n"));
}

void LayoutTextTest::saysWhichValueAFileCannotHold()
{
    const std::unique_ptr<Document> document = load("FLOW: A\n  Title = x\nEND\n");
    QCOMPARE(document->apply(settingValue("/FLOW:A/Title", "a  b")), std::nullopt);
    std::string reason;
    try {
        static_cast<void>(layoutText(document->knownVersion()->bytes(), document->data(), {}));
    } catch (const veltext::Error &error) {
        reason = error.message();
    }
    QVERIFY2(reason.starts_with("/FLOW:A/Title: value \"a  b\" cannot be stored in a file"),
             reason.c_str());
}

void LayoutTextTest::givesItemsWithNewNamesTheirLines()
{
    const std::string text = "FLOW: A\n  Mode = Steady # why\nEND\n";
    const std::unique_ptr<Document> document = load(text);
    const std::vector<veltext::PathChange> paths = upgradePaths(text);
    QCOMPARE(paths.size(), 1U);
    QCOMPARE(paths[0].path, std::string("/FLOW:A/Mode"));
    QCOMPARE(paths[0].newPath, std::string("/FLOW:A/Run Mode"));
    QVERIFY(document->upgrade().has_value());
    QCOMPARE(layoutText(text, document->data(), paths),
             std::string("FLOW: A\n  Run Mode = Steady # why\nEND\n"
                         "LANGUAGE:\n  Version = 2.1\nEND\n"));
    QVERIFY(upgradePaths("no statement\n").empty());
}

QTEST_GUILESS_MAIN(LayoutTextTest)
#include "LayoutText_test.moc"
