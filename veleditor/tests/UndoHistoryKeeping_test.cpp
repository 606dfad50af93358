// The steps of an undo history as values: which ones are kept around a state, and what
// another history does with them.
#include "veleditor/src/UndoHistory.h"

#include "veleditor/src/Document.h"
#include "veleditor/tests/DataText.h"
#include "velparser/api/velparser.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <limits>
#include <memory>

using namespace velEditor;

namespace {

const char start[] = "FLOW: Analysis\n"
                     "  Title = First run\n"
                     "  DOMAIN: Duct\n"
                     "    Kind = Fluid\n"
                     "  END\n"
                     "END\n";

const char title[] = "/FLOW:Analysis/Title";
const char duct[] = "/FLOW:Analysis/DOMAIN:Duct";

constexpr std::size_t anySize = std::numeric_limits<std::size_t>::max();

} // namespace

class UndoHistoryKeepingTest : public QObject
{
    Q_OBJECT

private:
    void set(const char *value)
    {
        QCOMPARE(document_->apply(settingValue(title, value)), std::nullopt);
    }
    void undo() { QCOMPARE(history_->undo(), std::nullopt); }
    void redo() { QCOMPARE(history_->redo(), std::nullopt); }
    /// The names of the steps around the state on the disk.
    QString kept(std::size_t mostBytes = anySize);
    void reopen();

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<Document> document_;
    std::unique_ptr<UndoHistory> history_;

private slots:
    void initTestCase();
    void init();

    void keepsStepsOnBothSides();
    void keepsNothingOfAnotherState();
    void keepsNoStepBeyondAnUnknownChange();
    void leavesOutTheOldestSteps();
    void keepsNothingInsideAGroup();
    void undoesAndRedoesInAnotherHistory();
    void replacesTheStepsThatThereWere();
};

void UndoHistoryKeepingTest::initTestCase()
{
    QCOMPARE(Document("").readLibraries(), std::nullopt);
}

void UndoHistoryKeepingTest::init()
{
    forgetData();
    history_.reset();
    folder_ = std::make_unique<QTemporaryDir>();
    QFile file(folder_->filePath("file.vel"));
    if (!file.open(QIODevice::WriteOnly) || file.write(start) < 0) {
        qFatal("cannot write");
    }
    file.close();
    document_ = std::make_unique<Document>(file.fileName().toStdString());
    history_ = std::make_unique<UndoHistory>(*document_);
    QCOMPARE(document_->load(), std::nullopt);
}

QString UndoHistoryKeepingTest::kept(std::size_t mostBytes)
{
    const auto steps = history_->stepsAround(document_->revisionOnDisk(), mostBytes);
    if (!steps) {
        return QStringLiteral("none");
    }
    QString text;
    for (auto step = steps->done.rbegin(); step != steps->done.rend(); ++step) {
        text += step->name + QString::fromStdString(step->edits.back().newText) + u' ';
    }
    text += u'|';
    for (const UndoStep &step : steps->undone) {
        text += u' ' + step.name + QString::fromStdString(step.edits.back().newText);
    }
    return text;
}

void UndoHistoryKeepingTest::reopen()
{
    const std::optional<UndoSteps> steps =
        history_->stepsAround(document_->revisionOnDisk(), anySize);
    QVERIFY(steps.has_value());
    QVERIFY(document_->save(document_->file()).outcome == SaveOutcome::Written);
    history_.reset();
    document_ = std::make_unique<Document>(document_->file());
    history_ = std::make_unique<UndoHistory>(*document_);
    forgetData();
    QCOMPARE(document_->load(), std::nullopt);
    history_->restore(*steps);
}

void UndoHistoryKeepingTest::keepsStepsOnBothSides()
{
    QCOMPARE(kept(), QString("none"));
    set("a");
    QCOMPARE(kept(), QString("| a"));
    set("b");
    document_->clearModified();
    QCOMPARE(kept(), QString("a b |"));
    set("c");
    QCOMPARE(kept(), QString("a b | c"));
    undo();
    QCOMPARE(kept(), QString("a b | c"));
    undo();
    QCOMPARE(kept(), QString("a b | c"));
    undo();
    QCOMPARE(kept(), QString("a b | c"));
}

// The saved state was undone, and then changed in another way.
void UndoHistoryKeepingTest::keepsNothingOfAnotherState()
{
    set("a");
    document_->clearModified();
    undo();
    set("b");
    QCOMPARE(kept(), QString("none"));
}

void UndoHistoryKeepingTest::keepsNoStepBeyondAnUnknownChange()
{
    set("a");
    document_->setModified();
    set("b");
    document_->clearModified();
    set("c");
    document_->setModified();
    set("d");
    QCOMPARE(kept(), QString("b | c"));
}

void UndoHistoryKeepingTest::leavesOutTheOldestSteps()
{
    // A step has the text before and the text after.
    for (const char letter : {'a', 'b', 'c'}) {
        set(std::string(100000, letter).c_str());
    }
    document_->clearModified();
    set(std::string(100000, 'd').c_str());
    const auto letters = [this](std::size_t mostBytes) {
        return kept(mostBytes).remove(QRegularExpression(QStringLiteral("(.)(?=\\1)| ")));
    };
    QCOMPARE(letters(anySize), QString("abc|d"));
    QCOMPARE(letters(710000), QString("abc|d"));
    QCOMPARE(letters(690000), QString("abc|"));
    QCOMPARE(letters(490000), QString("bc|"));
    QCOMPARE(letters(210000), QString("c|"));
    QCOMPARE(letters(190000), QString("|"));
}

void UndoHistoryKeepingTest::keepsNothingInsideAGroup()
{
    set("a");
    const UndoGroup group(*history_, "several");
    QCOMPARE(kept(), QString("none"));
}

void UndoHistoryKeepingTest::undoesAndRedoesInAnotherHistory()
{
    const std::string first = dump(asSaved(storedData()));
    set("a");
    {
        const UndoGroup group(*history_, "Clear ");
        QCOMPARE(document_->apply(deletingParameter(title)), std::nullopt);
        QCOMPARE(document_->apply(deletingObject(duct)), std::nullopt);
    }
    document_->clearModified();
    const std::string second = dump(asSaved(storedData()));
    QCOMPARE(document_->apply(addingParameter("/FLOW:Analysis/Note", "x")), std::nullopt);
    const std::string third = dump(asSaved(storedData()));
    undo();
    reopen();

    QCOMPARE(history_->undoText(), QString("Clear "));
    QCOMPARE(history_->redoText(), QString("Add Note = x"));
    QCOMPARE(dump(asSaved(storedData())), second);
    redo();
    QCOMPARE(dump(asSaved(storedData())), third);
    QVERIFY(document_->isModified());
    QVERIFY(!history_->canRedo());
    undo();
    QVERIFY(!document_->isModified());
    undo();
    QVERIFY(document_->isModified());
    QCOMPARE(document_->data().value(title), "a");
    undo();
    QCOMPARE(dump(asSaved(storedData())), first);
    QVERIFY(!history_->canUndo());
    redo();
    redo();
    QCOMPARE(dump(asSaved(storedData())), second);
    QVERIFY(!document_->isModified());
    reopen(); // steps of steps
    undo();
    undo();
    QCOMPARE(dump(asSaved(storedData())), first);
}

void UndoHistoryKeepingTest::replacesTheStepsThatThereWere()
{
    set("a");
    document_->clearModified();
    const auto steps = history_->stepsAround(document_->revision(), anySize);
    set("b");
    undo();
    int reports = 0;
    connect(history_.get(), &UndoHistory::stepsChanged, this, [&] { ++reports; });
    history_->restore(*steps);
    QCOMPARE(reports, 1);
    QVERIFY(!history_->canRedo());
    QCOMPARE(history_->undoText(), QString("Title = a"));
    history_->restore({});
    QVERIFY(!history_->canUndo());
    QVERIFY(!document_->isModified());
}

QTEST_GUILESS_MAIN(UndoHistoryKeepingTest)
#include "UndoHistoryKeeping_test.moc"
