// Reload and merge of what another program wrote: by hand, and with random versions of
// a file, compared with a model that is a map of paths and values.
#include "veleditor/src/TakeOver.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/tests/DataText.h"
#include "veleditor/tests/RandomObjects.h"
#include "veltext/error.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using namespace velEditor;

namespace {

const char start[] = "FLOW: Analysis\n"
                     "  Title = First run\n"
                     "  DOMAIN: Duct\n"
                     "    Kind = Fluid\n"
                     "    Location = B1, B2\n"
                     "  END\n"
                     "END\n";

const char title[] = "/FLOW:Analysis/Title";
const char kind[] = "/FLOW:Analysis/DOMAIN:Duct/Kind";

// --- The model -------------------------------------------------------------------

/// The values of parameters; an object has none.
using Values = std::map<std::string, std::optional<std::string>>;

void collect(const Node &node, const std::string &path, Values &values)
{
    for (const Node &child : node.children) {
        const std::string below = path + "/" + child.component;
        values[below] = child.value;
        collect(child, below, values);
    }
}

/// The data of the window.
Values storedValues()
{
    Values values;
    collect(storedData(), {}, values);
    return values;
}

/// The data of a text with one statement on each line.
Values valuesOf(const std::string &text)
{
    Values values;
    std::string path;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t equals = line.find(" = ");
        const std::size_t colon = line.find(':');
        if (line == "END") {
            path.erase(path.rfind('/'));
        } else if (equals != std::string::npos) {
            values[path + "/" + line.substr(0, equals)] = line.substr(equals + 3);
        } else if (colon + 1 == line.size()) {
            path += "/" + line.substr(0, colon);
            values[path] = std::nullopt;
        } else {
            path += "/" + line.substr(0, colon) + ":" + line.substr(colon + 2);
            values[path] = std::nullopt;
        }
    }
    return values;
}

bool isObject(const Values &values, const std::string &path)
{
    const auto found = values.find(path);
    return found != values.end() && !found->second;
}

/// A path and all below it.
Values partOf(const Values &values, const std::string &path)
{
    Values part;
    for (const auto &[at, value] : values) {
        if (at == path || at.starts_with(path + "/")) {
            part.emplace(at, value);
        }
    }
    return part;
}

/// Whether `later` has something that `former` does not have in this way.
bool hasNews(const Values &former, const Values &later)
{
    for (const auto &[path, value] : later) {
        const auto found = former.find(path);
        if (found == former.end() || found->second != value) {
            return true;
        }
    }
    return false;
}

/// What a merge has to give. `takesTheirs` answers each conflict.
class Model
{
public:
    Model(Values base, Values ours, Values theirs)
        : base_(std::move(base)), ours_(std::move(ours)), theirs_(std::move(theirs))
    {
    }

    template <typename Answer>
    Values merge(const Answer &takesTheirs)
    {
        Values result = ours_;
        std::set<std::string> paths;
        for (const Values *values : {&ours_, &theirs_}) {
            for (const auto &item : *values) {
                paths.insert(item.first);
            }
        }
        for (const std::string &path : paths) {
            if (isObject(ours_, path) && isObject(theirs_, path)) {
                continue;
            }
            const std::string above = parentPath(path);
            const bool isTop = above == "/";
            if (!isTop && !(isObject(ours_, above) && isObject(theirs_, above))) {
                continue; // part of something larger
            }
            mergeAt(path, takesTheirs, result);
        }
        return result;
    }

private:
    template <typename Answer>
    void mergeAt(const std::string &path, const Answer &takesTheirs, Values &result)
    {
        const Values base = partOf(base_, path);
        const Values ours = partOf(ours_, path);
        const Values theirs = partOf(theirs_, path);
        if (ours == theirs || base == theirs) {
            return;
        }
        if (ours.empty() && !hasNews(base, theirs)) {
            return;
        }
        const bool isClear = theirs.empty() ? !hasNews(base, ours) : base == ours;
        if (!isClear && !takesTheirs(path)) {
            return;
        }
        for (const auto &item : ours) {
            result.erase(item.first);
        }
        result.insert(theirs.begin(), theirs.end());
    }

    Values base_;
    Values ours_;
    Values theirs_;
};

} // namespace

class TakeOverTest : public QObject
{
    Q_OBJECT

private:
    void load(const std::string &text);
    void write(const std::string &text);
    void set(const char *path, const char *value);
    void undo() { QCOMPARE(history_->undo(), std::nullopt); }
    void redo() { QCOMPARE(history_->redo(), std::nullopt); }
    /// Fails the test unless there is none.
    void merge(const std::vector<bool> &takesTheirs = {});
    [[nodiscard]] std::string value(const char *path) const;
    [[nodiscard]] std::string file() const { return folder_->filePath("case.vel").toStdString(); }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<Document> document_;
    std::unique_ptr<UndoHistory> history_;

private slots:
    void init();

    void reloadsTheFile();
    void undoesAReload();
    void reloadsTheSameData();
    void reloadsAnUnmodifiedDocument();
    void refusesAFileWithAMistake();
    void refusesAFileThatIsNotThere();

    void mergesChangesOfBoth();
    void mergesAgainWithTheNewBase();
    void mergesWithWhatWasSaved();
    void asksAboutConflicts();
    void takesASideOfEachConflict();
    void isUnmodifiedIfTheDataIsThatOfTheFile();
    void putsNewItemsInTheirPlaces();
    void replacesAParameterByASingleton();
    void mergesNothingIfTheFileIsRefused();

    void agreesWithAModel_data();
    void agreesWithAModel();
};

void TakeOverTest::init()
{
    history_.reset();
    document_.reset();
    forgetData();
    folder_ = std::make_unique<QTemporaryDir>();
    qputenv("XDG_STATE_HOME", QFile::encodeName(folder_->filePath("state")));
}

void TakeOverTest::write(const std::string &text)
{
    QFile out(QString::fromStdString(file()));
    if (!out.open(QIODevice::WriteOnly) || out.write(text.c_str()) != qint64(text.size())) {
        qFatal("cannot write");
    }
}

void TakeOverTest::load(const std::string &text)
{
    write(text);
    document_ = std::make_unique<Document>(file());
    history_ = std::make_unique<UndoHistory>(*document_);
    QCOMPARE(document_->load(), std::nullopt);
}

void TakeOverTest::set(const char *path, const char *value)
{
    QCOMPARE(document_->apply(settingValue(path, value)), std::nullopt);
}

void TakeOverTest::merge(const std::vector<bool> &takesTheirs)
{
    const FileMerge merge(*document_);
    QCOMPARE(merge.conflicts().size(), takesTheirs.size());
    QCOMPARE(merge.apply(*document_, *history_, takesTheirs), std::nullopt);
}

std::string TakeOverTest::value(const char *path) const
{
    return document_->data().value(path).value_or("none");
}

// --- Reload ---------------------------------------------------------------------

void TakeOverTest::reloadsTheFile()
{
    load(start);
    set(title, "Mine");
    const std::string text = "FLOW: Analysis\n  Title = Theirs # why\n  NEW: n\n  END\nEND\n";
    write(text);
    QCOMPARE(reload(*document_, *history_), std::nullopt);
    QCOMPARE(dump(storedData()), std::string("FLOW:Analysis\n  Title = Theirs\n  NEW:n\n"));
    QVERIFY(!document_->isModified());
    QCOMPARE(document_->loadedText(), text);
    QCOMPARE(document_->knownVersion()->bytes(), text);
    QCOMPARE(history_->undoText(), QString("Reload"));
}

void TakeOverTest::undoesAReload()
{
    load(start);
    const std::string loaded = dump(storedData());
    set(title, "Mine");
    const std::string mine = dump(storedData());
    write("FLOW: Analysis\n  Title = Theirs\nEND\n");
    QCOMPARE(reload(*document_, *history_), std::nullopt);
    undo();
    QCOMPARE(dump(storedData()), mine);
    QVERIFY(document_->isModified());
    undo();
    QCOMPARE(dump(storedData()), loaded);
    QVERIFY(document_->isModified());
    QVERIFY(!history_->canUndo());
    redo();
    QVERIFY(document_->isModified());
    redo();
    QCOMPARE(dump(storedData()), std::string("FLOW:Analysis\n  Title = Theirs\n"));
    QVERIFY(!document_->isModified());
}

// Only comments and layout differ, or what the user has already changed.
void TakeOverTest::reloadsTheSameData()
{
    load(start);
    write(std::string("# A comment\n") + start);
    QCOMPARE(reload(*document_, *history_), std::nullopt);
    QVERIFY(!history_->canUndo());
    QVERIFY(!document_->isModified());
    QVERIFY(document_->loadedText().starts_with("# A comment\n"));

    set(title, "Theirs");
    write("FLOW: Analysis\n  Title = Theirs\n  DOMAIN: Duct\n    Kind = Fluid\n"
          "    Location = B1, B2\n  END\nEND\n");
    QCOMPARE(reload(*document_, *history_), std::nullopt);
    QVERIFY(!document_->isModified());
    undo();
    QVERIFY(document_->isModified());
}

void TakeOverTest::reloadsAnUnmodifiedDocument()
{
    load(start);
    write("FLOW: Analysis\n  Title = Theirs\nEND\n");
    QCOMPARE(reload(*document_, *history_), std::nullopt);
    QVERIFY(!document_->isModified());
    undo();
    QVERIFY(document_->isModified());
    QCOMPARE(value(kind), std::string("Fluid"));
}

void TakeOverTest::refusesAFileWithAMistake()
{
    load(start);
    set(title, "Mine");
    const std::string mine = dump(storedData());
    write("FLOW: Analysis\n  Title Theirs\nEND\n");
    const Message refused = reload(*document_, *history_);
    QVERIFY(refused.has_value());
    QVERIFY2(refused->starts_with(file() + ":2: "), refused->c_str());
    QCOMPARE(dump(storedData()), mine);
    QCOMPARE(document_->loadedText(), std::string(start));
    QCOMPARE(history_->undoText(), QString("Title = Mine"));
    QVERIFY(document_->isModified());
}

void TakeOverTest::refusesAFileThatIsNotThere()
{
    load(start);
    QVERIFY(QFile::remove(QString::fromStdString(file())));
    QCOMPARE(reload(*document_, *history_), Message(file() + ": cannot read the file"));
    QCOMPARE(value(kind), std::string("Fluid"));
}

// --- Merge ----------------------------------------------------------------------

void TakeOverTest::mergesChangesOfBoth()
{
    load(start);
    set(title, "Mine");
    const std::string mine = dump(storedData());
    const std::string text = "FLOW: Analysis\n  Title = First run\n  DOMAIN: Duct\n"
                             "    Kind = Solid # why\n    Location = B1, B2\n  END\nEND\n";
    write(text);
    merge();
    QCOMPARE(value(title), std::string("Mine"));
    QCOMPARE(value(kind), std::string("Solid"));
    QVERIFY(document_->isModified());
    QCOMPARE(document_->knownVersion()->bytes(), text);
    QCOMPARE(history_->undoText(), QString("Merge"));
    undo();
    QCOMPARE(dump(storedData()), mine);
    QVERIFY(document_->isModified());
    redo();
    QCOMPARE(value(kind), std::string("Solid"));
    QVERIFY(document_->isModified());
}

// Afterwards the base is what was merged: the same change is not one any more.
void TakeOverTest::mergesAgainWithTheNewBase()
{
    load(start);
    set(title, "Mine");
    write("FLOW: Analysis\n  Title = First run\n  DOMAIN: Duct\n    Kind = Solid\n"
          "    Location = B1, B2\n  END\nEND\n");
    merge();
    set(kind, "Gas");
    write("FLOW: Analysis\n  Title = First run\n  DOMAIN: Duct\n    Kind = Solid\n"
          "    Location = B3\n  END\nEND\n");
    merge();
    QCOMPARE(value(kind), std::string("Gas"));
    QCOMPARE(value("/FLOW:Analysis/DOMAIN:Duct/Location"), std::string("B3"));
}

void TakeOverTest::mergesWithWhatWasSaved()
{
    load(start);
    set(title, "Saved");
    QVERIFY(document_->save(file()).outcome == SaveOutcome::Written);
    set(title, "Mine");
    write("FLOW: Analysis\n  Title = Saved\n  DOMAIN: Duct\n    Kind = Solid\n"
          "    Location = B1, B2\n  END\nEND\n");
    merge(); // the title is not a conflict: theirs is the saved one
    QCOMPARE(value(title), std::string("Mine"));
    QCOMPARE(value(kind), std::string("Solid"));
}

void TakeOverTest::asksAboutConflicts()
{
    load(start);
    set(title, "Mine");
    QCOMPARE(document_->apply(deletingObject("/FLOW:Analysis/DOMAIN:Duct")), std::nullopt);
    const std::string mine = dump(storedData());
    write("FLOW: Analysis\n  Title = Theirs\n  DOMAIN: Duct\n    Kind = Solid\n  END\nEND\n");
    const FileMerge merge(*document_);
    QCOMPARE(merge.conflicts().size(), std::size_t(2));
    QCOMPARE(merge.conflicts()[0].path, std::string(title));
    QCOMPARE(merge.conflicts()[0].ours->text, std::string("Mine"));
    QCOMPARE(merge.conflicts()[0].theirs->text, std::string("Theirs"));
    QCOMPARE(merge.conflicts()[1].path, std::string("/FLOW:Analysis/DOMAIN:Duct"));
    QVERIFY(!merge.conflicts()[1].ours.has_value());
    QCOMPARE(merge.conflicts()[1].theirs->text, std::string("DOMAIN : Duct\nKind = Solid\nEND\n"));
    QCOMPARE(dump(storedData()), mine);
    QCOMPARE(document_->knownVersion()->bytes(), std::string(start));
}

void TakeOverTest::takesASideOfEachConflict()
{
    for (const bool first : {false, true}) {
        for (const bool second : {false, true}) {
            init();
            load(start);
            set(title, "Mine");
            set(kind, "Gas");
            write("FLOW: Analysis\n  Title = Theirs\n  DOMAIN: Duct\n    Kind = Solid\n"
                  "    Location = B3\n  END\nEND\n");
            merge({first, second});
            QCOMPARE(value(title), std::string(first ? "Theirs" : "Mine"));
            QCOMPARE(value(kind), std::string(second ? "Solid" : "Gas"));
            QCOMPARE(value("/FLOW:Analysis/DOMAIN:Duct/Location"), std::string("B3"));
            QCOMPARE(document_->isModified(), !(first && second));
        }
    }
}

void TakeOverTest::isUnmodifiedIfTheDataIsThatOfTheFile()
{
    load(start);
    write("FLOW: Analysis\n  Title = Theirs\nEND\n");
    merge();
    QVERIFY(!document_->isModified());
    undo();
    QVERIFY(document_->isModified());
    redo();
    QVERIFY(!document_->isModified());
}

void TakeOverTest::putsNewItemsInTheirPlaces()
{
    load("A: a\n  x = 1\n  y = 1\nEND\n");
    QCOMPARE(document_->apply(addingParameter("/A:a/mine", "1")), std::nullopt);
    write("A: a\n  first = 1\n  second = 1\n  x = 1\n  third = 1\n  B: b\n  z = 1\n  END\n"
          "  fourth = 1\n  y = 1\n  C:\n  END\nEND\n");
    merge();
    QCOMPARE(dump(storedData()), std::string("A:a\n  first = 1\n  second = 1\n  x = 1\n"
                                             "  third = 1\n  B:b\n    z = 1\n  fourth = 1\n"
                                             "  y = 1\n  C\n  mine = 1\n"));
}

void TakeOverTest::replacesAParameterByASingleton()
{
    load("A: a\n  x = 1\n  PART = 1\n  y = 1\nEND\n");
    write("A: a\n  x = 1\n  new = 1\n  PART:\n    z = 1\n  END\n  last = 1\nEND\n");
    merge();
    QCOMPARE(dump(storedData()),
             std::string("A:a\n  x = 1\n  new = 1\n  PART\n    z = 1\n  last = 1\n"));
    QVERIFY(!document_->isModified());
}

void TakeOverTest::mergesNothingIfTheFileIsRefused()
{
    load(start);
    write("FLOW: Analysis\n  Title = Theirs\n");
    try {
        const FileMerge merge(*document_);
        QFAIL("the file was not refused");
    } catch (const veltext::Error &refused) {
        QVERIFY2(refused.message().starts_with(file() + ":1: "), refused.message().c_str());
    }
    QVERIFY(QFile::remove(QString::fromStdString(file())));
    QVERIFY_EXCEPTION_THROWN(FileMerge{*document_}, veltext::Error);
}

// --- Random versions ----------------------------------------------------------------

void TakeOverTest::agreesWithAModel_data()
{
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 0; seed < 30; ++seed) {
        QTest::addRow("%u", seed) << seed;
    }
}

// A history of reloads and merges, undone and redone at the end.
void TakeOverTest::agreesWithAModel()
{
    QFETCH(unsigned, seed);
    std::mt19937 random(seed);
    const std::string first = randomObjects(random, 3);
    load(first);
    Values base = valuesOf(first);
    QVERIFY(storedValues() == base);
    std::vector<std::string> states{dump(storedData())};
    const auto note = [&] {
        std::string now = dump(storedData());
        if (now != states.back()) {
            states.push_back(std::move(now));
        }
    };
    for (int round = 0; round < 6; ++round) {
        const std::string mine = randomObjects(random, 3);
        const std::string theirs = randomObjects(random, 3);
        // The window gets to its data by a reload that the base does not follow.
        const std::shared_ptr<FileVersion> known = document_->knownVersion();
        write(mine);
        QCOMPARE(reload(*document_, *history_), std::nullopt);
        note();
        const Values ours = storedValues();
        document_->takeOver(known, false);

        write(theirs);
        if (random() % 4 == 0) {
            QCOMPARE(reload(*document_, *history_), std::nullopt);
            note();
            base = valuesOf(theirs);
            QVERIFY(storedValues() == base);
            QVERIFY(!document_->isModified());
            continue;
        }
        const FileMerge merge(*document_);
        std::map<std::string, bool> answers;
        std::vector<bool> takesTheirs;
        for (const veltext::DataMergeStep &conflict : merge.conflicts()) {
            takesTheirs.push_back(random() % 2 == 0);
            answers[conflict.path] = takesTheirs.back();
        }
        QCOMPARE(merge.apply(*document_, *history_, takesTheirs), std::nullopt);
        note();

        std::set<std::string> asked;
        Model model(base, ours, valuesOf(theirs));
        const Values merged = model.merge([&](const std::string &path) {
            asked.insert(path);
            return answers.at(path);
        });
        QCOMPARE(asked.size(), answers.size());
        QVERIFY(storedValues() == merged);
        QCOMPARE(document_->isModified(), merged != valuesOf(theirs));
        base = valuesOf(theirs);
    }
    for (auto state = states.rbegin() + 1; state != states.rend(); ++state) {
        undo();
        QCOMPARE(dump(storedData()), *state);
    }
    QVERIFY(!history_->canUndo());
    for (auto state = states.begin() + 1; state != states.end(); ++state) {
        redo();
        QCOMPARE(dump(storedData()), *state);
    }
    QVERIFY(!history_->canRedo());
}

QTEST_GUILESS_MAIN(TakeOverTest)
#include "TakeOver_test.moc"
