// The data becomes that of another text, in one step that can be undone: by hand, and
// from and to random texts, compared with another session that loads the text.
#include "veleditor/src/DataChange.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/tests/DataText.h"
#include "veleditor/tests/RandomObjects.h"
#include "veltext/commandText.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <fstream>
#include <memory>
#include <random>
#include <sstream>

using namespace velEditor;

namespace {

const char start[] = "FLOW: Analysis\n"
                     "  Title = First run\n"
                     "  DOMAIN: Duct\n"
                     "    Kind = Fluid\n"
                     "    BOUNDARY: in\n"
                     "      Kind = Inlet\n"
                     "    END\n"
                     "    Location = B1, B2\n"
                     "  END\n"
                     "END\n";

std::vector<std::string> linesOf(const std::string &text)
{
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// A line for each edit.
std::string listOf(const std::vector<Edit> &edits)
{
    std::string list;
    for (const Edit &edit : edits) {
        switch (edit.kind) {
        case Edit::Kind::SetValue:
            list += "set " + edit.path + " = " + edit.newText;
            break;
        case Edit::Kind::AddParameter:
            list += "add " + edit.path + " = " + edit.newText;
            break;
        case Edit::Kind::DeleteParameter:
            list += "delete " + edit.path;
            break;
        case Edit::Kind::AddObject:
            list += "add object " + edit.path;
            break;
        case Edit::Kind::DeleteObject:
            list += "delete object " + edit.path;
            break;
        case Edit::Kind::ReplaceObject:
            list += "replace " + edit.path;
            break;
        }
        const bool isNew =
            edit.kind == Edit::Kind::AddParameter || edit.kind == Edit::Kind::AddObject;
        list += isNew ? " at " + std::to_string(edit.position) + "\n" : "\n";
    }
    return list;
}

} // namespace

class DataChangeTest : public QObject
{
    Q_OBJECT

private:
    void load(const std::string &text);
    std::string change(const std::string &text);

    QTemporaryDir folder_;
    std::unique_ptr<Document> document_;
    std::unique_ptr<UndoHistory> history_;

private slots:
    void init();
    void editsNothingForTheSameData();
    void editsOnlyWhatDiffers();
    void addsWhereATextHasIt();
    void movesWhatIsElsewhere();
    void tellsAParameterFromASingleton();
    void isOneStep();
    void refusesATextWithAMistake();
    void keepsLibraryData();
    void leadsFromAnyTextToAnyOther();
    void leadsThereByWholeObjects();
};

void DataChangeTest::init()
{
    forgetData();
    load(start);
}

void DataChangeTest::load(const std::string &text)
{
    const std::string file = folder_.filePath("start.vel").toStdString();
    std::ofstream(file, std::ios::binary) << text;
    forgetData();
    document_ = std::make_unique<Document>(file);
    history_ = std::make_unique<UndoHistory>(*document_);
    QCOMPARE(document_->readLibraries(), std::nullopt);
    const Message refused = document_->load();
    QVERIFY2(!refused, refused.value_or("").c_str());
}

std::string DataChangeTest::change(const std::string &text)
{
    return listOf(editsTowards(document_->data(), veltext::CommandText(text)));
}

void DataChangeTest::editsNothingForTheSameData()
{
    QCOMPARE(change(start), std::string());
    QCOMPARE(changeTo(*document_, *history_, start, "Reload"), std::nullopt);
    QVERIFY(!history_->canUndo());
    QVERIFY(!document_->isModified());
}

void DataChangeTest::editsOnlyWhatDiffers()
{
    QCOMPARE(change("FLOW: Analysis\n  Title = Second\n  DOMAIN: Duct\n    Kind = Fluid\n"
                    "    Location = B1, B2\n  END\nEND\n"),
             std::string("set /FLOW:Analysis/Title = Second\n"
                         "delete object /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in\n"));
}

void DataChangeTest::addsWhereATextHasIt()
{
    QCOMPARE(change("FLOW: Analysis\n  Author = me\n  Title = First run\n  DOMAIN: Duct\n"
                    "    Kind = Fluid\n    BOUNDARY: out\n    END\n    BOUNDARY: in\n"
                    "      Kind = Inlet\n    END\n    Location = B1, B2\n  END\n  Last = 1\nEND\n"),
             std::string("add /FLOW:Analysis/Author = me at 0\n"
                         "add /FLOW:Analysis/Last = 1 at 3\n"
                         "add object /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:out at 1\n"));
}

void DataChangeTest::movesWhatIsElsewhere()
{
    QCOMPARE(change("FLOW: Analysis\n  DOMAIN: Duct\n    Kind = Fluid\n    BOUNDARY: in\n"
                    "      Kind = Inlet\n    END\n    Location = B1, B2\n  END\n"
                    "  Title = First run\nEND\n"),
             std::string("delete /FLOW:Analysis/Title\n"
                         "add /FLOW:Analysis/Title = First run at 1\n"));
}

void DataChangeTest::tellsAParameterFromASingleton()
{
    load("A:\n  B = 1\nEND\n");
    QCOMPARE(change("A:\n  B:\n    C = 2\n  END\nEND\n"),
             std::string("delete /A/B\nadd object /A/B at 0\n"));
}

void DataChangeTest::isOneStep()
{
    const std::string before = dump(storedData());
    const std::string wanted = "FLOW: Analysis\n  A = 1\n  B = 2\nEND\nOTHER:\nEND\n";
    QSignalSpy validated(document_.get(), &Document::validated);
    QCOMPARE(changeTo(*document_, *history_, wanted, "Reload"), std::nullopt);
    QCOMPARE(validated.count(), 1);
    QCOMPARE(history_->undoText(), QString("Reload"));
    QVERIFY(document_->isModified());
    const std::string after = dump(storedData());
    QCOMPARE(history_->undo(), std::nullopt);
    QCOMPARE(dump(storedData()), before);
    QVERIFY(!document_->isModified());
    QVERIFY(!history_->canUndo());
    QCOMPARE(history_->redo(), std::nullopt);
    QCOMPARE(dump(storedData()), after);
}

void DataChangeTest::refusesATextWithAMistake()
{
    const std::string before = dump(storedData());
    const Message failure = changeTo(*document_, *history_, "A:\n  B = 1\n", "Reload");
    QVERIFY(failure.has_value());
    QVERIFY2(failure->starts_with(document_->file() + ":"), failure->c_str());
    QCOMPARE(dump(storedData()), before);
    QVERIFY(!document_->isModified());
    QVERIFY(!history_->canUndo());
}

void DataChangeTest::keepsLibraryData()
{
    const auto libraries = [&] {
        std::string found;
        for (const CommandData::Child &child : document_->data().children("/")) {
            found += child.isLibrary ? child.component + '\n' : std::string();
        }
        return found;
    };
    const std::string before = libraries();
    QVERIFY(!before.empty());
    QCOMPARE(changeTo(*document_, *history_, "", "Reload"), std::nullopt);
    QCOMPARE(libraries(), before);
    QCOMPARE(dump(storedData()), std::string());
}

void DataChangeTest::leadsFromAnyTextToAnyOther()
{
    std::mt19937 random(7); // NOLINT(bugprone-random-generator-seed): the same each time
    for (int round = 0; round < 300; ++round) {
        load(randomObjects(random, 4));
        const std::string former = dump(storedData());
        const std::string wanted = randomObjects(random, 4);
        const std::vector<Edit> edits =
            editsTowards(document_->data(), veltext::CommandText(wanted));
        std::vector<Edit> made;
        connect(document_.get(), &Document::applied, this,
                [&](const Edit &edit) { made.push_back(edit); });
        const Message failure = changeTo(*document_, *history_, wanted, "Reload");
        QVERIFY2(!failure, failure.value_or("").c_str());
        QVERIFY(made == edits); // they were complete
        disconnect(document_.get(), &Document::applied, this, nullptr);
        velparser::Session fresh = freshLoad(linesOf(wanted));
        QCOMPARE(dump(storedData()), dump(storedData(fresh)));
        QCOMPARE(change(wanted), std::string());
        if (history_->canUndo()) {
            QCOMPARE(history_->undo(), std::nullopt);
        }
        QCOMPARE(dump(storedData()), former);
    }
}

void DataChangeTest::leadsThereByWholeObjects()
{
    std::mt19937 random(8); // NOLINT(bugprone-random-generator-seed): the same each time
    for (int round = 0; round < 100; ++round) {
        load(randomObjects(random, 4));
        const std::string former = dump(storedData());
        const std::string wanted = randomObjects(random, 4);
        const std::vector<Edit> edits =
            editsTowards(document_->data(), veltext::CommandText(wanted), EditDetail::Objects);
        std::vector<Edit> made;
        connect(document_.get(), &Document::applied, this,
                [&](const Edit &edit) { made.push_back(edit); });
        for (const Edit &edit : edits) {
            QVERIFY(edit.path.rfind('/') == 0);
            QCOMPARE(document_->apply(edit), std::nullopt);
        }
        QVERIFY(made == edits); // they were complete
        velparser::Session fresh = freshLoad(linesOf(wanted));
        QCOMPARE(dump(storedData()), dump(storedData(fresh)));
        while (history_->canUndo()) {
            QCOMPARE(history_->undo(), std::nullopt);
        }
        QCOMPARE(dump(storedData()), former);
    }
}

QTEST_GUILESS_MAIN(DataChangeTest)
#include "DataChange_test.moc"
