// Undo and redo of a document, without any window: steps and their names, groups,
// the mark of unsaved changes. Random edits, undos and redos are compared with what
// was stored at each state, and with another session that loads the same text.
#include "veleditor/src/UndoHistory.h"

#include "veleditor/src/Document.h"
#include "veleditor/tests/DataText.h"
#include "velparser/api/velparser.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <vector>

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

const char title[] = "/FLOW:Analysis/Title";
const char duct[] = "/FLOW:Analysis/DOMAIN:Duct";

std::string inOrder(const char *findings)
{
    QStringList lines = QString::fromUtf8(findings).split(u'\n');
    lines.sort();
    return lines.join(u'\n').toStdString();
}

/// Random edits, single and in groups, undos, redos and saves; and what has to be
/// there after each.
class Player
{
public:
    Player(Document &document, UndoHistory &history, unsigned seed)
        : document_(document), history_(history), random_(seed), states_{{dump(storedData()), 0}}
    {
    }

    /// What is wrong after a random step; empty for nothing.
    QString step()
    {
        const unsigned kind = below(100);
        if (kind < 27) {
            return move(false);
        }
        if (kind < 45) {
            return move(true);
        }
        if (kind < 48) {
            return save();
        }
        return edit(kind < 55);
    }

    /// Undoes all there is, and redoes it.
    QString playAll()
    {
        QString fault;
        while (history_.canUndo() && fault.isEmpty()) {
            fault = move(false);
        }
        while (history_.canRedo() && fault.isEmpty()) {
            fault = move(true);
        }
        return fault;
    }

    /// Every path that was ever there.
    [[nodiscard]] const std::set<std::string> &seenPaths() const { return seen_; }

private:
    /// A state of the data, and a number that no other has.
    struct State
    {
        std::string text;
        unsigned number;
    };

    QString move(bool forward)
    {
        const std::size_t next = forward ? current_ + 1 : current_ - 1;
        const bool can = forward ? next < states_.size() : current_ > 0;
        if (can != (forward ? history_.canRedo() : history_.canUndo())) {
            return "there is a step too many or too few";
        }
        if (const Message failure = forward ? history_.redo() : history_.undo()) {
            return QString::fromStdString(*failure);
        }
        if (!can) {
            return {};
        }
        current_ = next;
        if (dump(storedData()) != states_[current_].text) {
            return "another state came back";
        }
        if (document_.isModified() != (states_[current_].number != onDisk_)) {
            return "the mark is wrong";
        }
        return {};
    }

    QString save()
    {
        document_.clearModified();
        onDisk_ = states_[current_].number;
        return {};
    }

    QString edit(bool inGroup)
    {
        const std::uint64_t before = document_.revision();
        if (inGroup) {
            const UndoGroup group(history_, "several");
            for (unsigned i = below(4); i > 0; --i) {
                makeOne();
            }
        } else if (below(10) == 0) {
            const Message failure = makeOne() ? document_.rollBack() : std::nullopt;
            if (failure) {
                return QString::fromStdString(*failure);
            }
        } else {
            makeOne();
        }
        if (document_.revision() == before) {
            return dump(storedData()) == states_[current_].text ? QString()
                                                                : "a change is not a state";
        }
        states_.resize(++current_);
        states_.push_back({dump(storedData()), ++lastNumber_});
        for (const bool parameters : {true, false}) {
            for (std::string &path : storedPaths(parameters)) {
                seen_.insert(std::move(path));
            }
        }
        return document_.isModified() ? QString() : "an edit left no mark";
    }

    // Each edit changes something, so only an empty group is not a step.
    bool makeOne()
    {
        const std::string value = "v" + std::to_string(++values_) + " [m s^-1]";
        const std::string object = one(storedPaths(false), "/");
        const std::string parameter = one(storedPaths(true), title);
        const std::string number = std::to_string(below(6));
        Edit edit;
        switch (below(9)) {
        case 0:
        case 1:
            edit = addingParameter(childPath(object, "p " + number), value);
            break;
        case 8:
            edit = addingParameter(childPath(object, "ZONE:z" + number + "/PART/p"), value);
            break;
        case 2:
            edit = addingObject(childPath(object, "DOMAIN:d" + number),
                                "DOMAIN: d" + number + "\nBOUNDARY: b\nKind = Inlet\nEND\nLate = " +
                                    value + "\nEND\n");
            break;
        case 3:
            edit = deletingParameter(parameter);
            break;
        case 4:
            edit = deletingObject(object == "/" ? "/FLOW:Absent" : object);
            break;
        default:
            edit = settingValue(parameter, value);
        }
        return !document_.apply(edit);
    }

    std::string one(const std::vector<std::string> &texts, const char *otherwise)
    {
        return texts.empty() ? otherwise : texts[below(static_cast<unsigned>(texts.size()))];
    }

    unsigned below(unsigned limit) { return static_cast<unsigned>(random_()) % limit; }

    Document &document_;
    UndoHistory &history_;
    std::mt19937 random_;
    std::vector<State> states_;
    std::size_t current_ = 0;
    unsigned onDisk_ = 0;
    unsigned lastNumber_ = 0;
    unsigned values_ = 0;
    std::set<std::string> seen_;
};

} // namespace

class UndoHistoryTest : public QObject
{
    Q_OBJECT

private:
    void open(const QByteArray &content = start);
    void apply(const Edit &edit) { QCOMPARE(document_->apply(edit), std::nullopt); }
    void undo() { QCOMPARE(history_->undo(), std::nullopt); }
    void redo() { QCOMPARE(history_->redo(), std::nullopt); }
    void compareWithFreshLoad(const std::set<std::string> &seenPaths);

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<Document> document_;
    std::unique_ptr<UndoHistory> history_;

private slots:
    void initTestCase();
    void init();

    void beginsEmpty();
    void undoesAndRedoes();
    void namesItsSteps();
    void dropsUndoneStepsAtAnEdit();
    void makesOneStepOfAGroup();
    void forgetsWhatWasRolledBack();
    void makesNoStepOfAnEditThatChangesNothing();
    void marksWhatIsNotOnTheDisk();
    void marksAfterASaveInTheMiddle();
    void staysMarkedAfterUnknownChanges();
    void keepsItsStatesAfterARefusedEdit();
    void validatesWhatCameBack();
    void startsAgainAtALoad();
    void endsAfterAFailure();
    void playsRandomStepsBackAndForth();
};

void UndoHistoryTest::open(const QByteArray &content)
{
    QFile file(folder_->filePath("file.vel"));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write");
    }
    file.close();
    document_ = std::make_unique<Document>(file.fileName().toStdString());
    history_ = std::make_unique<UndoHistory>(*document_);
    QCOMPARE(document_->load(), std::nullopt);
}

void UndoHistoryTest::initTestCase()
{
    QCOMPARE(Document("").readLibraries(), std::nullopt);
}

void UndoHistoryTest::init()
{
    forgetData();
    history_.reset();
    folder_ = std::make_unique<QTemporaryDir>();
}

// --- Steps ------------------------------------------------------------------------

void UndoHistoryTest::beginsEmpty()
{
    open();
    QVERIFY(!history_->canUndo());
    QVERIFY(!history_->canRedo());
    QCOMPARE(history_->undoText(), QString());
    QCOMPARE(history_->redoText(), QString());
    undo();
    redo();
    QVERIFY(!document_->isModified());
}

void UndoHistoryTest::undoesAndRedoes()
{
    open();
    std::vector<std::string> states{dump(storedData())};
    for (const Edit &edit :
         {settingValue(title, "Second run"), addingParameter(std::string(duct) + "/Note", "x"),
          deletingParameter(std::string(duct) + "/Kind"),
          addingObject("/FLOW:Analysis/EXPERT PARAMETERS", "EXPERT PARAMETERS:\nEND\n"),
          addingObject(duct, "DOMAIN: Duct\nNote = y\nEND\n"), deletingObject(duct)}) {
        apply(edit);
        states.push_back(dump(storedData()));
    }
    std::vector<Edit::Kind> kinds;
    connect(history_.get(), &UndoHistory::moved, this,
            [&](const Edit &edit) { kinds.push_back(edit.kind); });
    for (std::size_t i = states.size() - 1; i > 0; --i) {
        QCOMPARE(dump(storedData()), states[i]);
        undo();
    }
    QVERIFY(!history_->canUndo());
    for (const std::string &state : states) {
        QCOMPARE(dump(storedData()), state);
        redo();
    }
    QVERIFY(!history_->canRedo());
    using Kind = Edit::Kind;
    QCOMPARE(kinds, (std::vector<Kind>{Kind::AddObject, Kind::ReplaceObject, Kind::DeleteObject,
                                       Kind::AddParameter, Kind::DeleteParameter, Kind::SetValue,
                                       Kind::SetValue, Kind::AddParameter, Kind::DeleteParameter,
                                       Kind::AddObject, Kind::ReplaceObject, Kind::DeleteObject}));
}

void UndoHistoryTest::namesItsSteps()
{
    open();
    const auto nameOf = [this](const Edit &edit) {
        static_cast<void>(document_->apply(edit));
        return history_->undoText();
    };
    QCOMPARE(nameOf(addingParameter("/FLOW:Analysis/Normal Speed", "1")),
             QString("Add Normal Speed = 1"));
    QCOMPARE(nameOf(settingValue("/FLOW:Analysis/Normal Speed", "2.5 [m s^-1]")),
             QString("Normal Speed = 2.5 [m s^-1]"));
    QCOMPARE(nameOf(deletingParameter("/FLOW:Analysis/Normal Speed")),
             QString("Delete Normal Speed"));
    QCOMPARE(nameOf(addingObject("/EXPERT PARAMETERS", "EXPERT PARAMETERS:\nEND\n")),
             QString("Add EXPERT PARAMETERS"));
    QCOMPARE(nameOf(addingObject(duct, "DOMAIN: Duct\nNote = y\nEND\n")),
             QString("Change DOMAIN : Duct"));
    QCOMPARE(nameOf(deletingObject(duct)), QString("Delete DOMAIN : Duct"));
    QCOMPARE(nameOf(settingValue(title, "\xE4")), QString("Title = ä"));
    QCOMPARE(nameOf(settingValue(title, std::string(5000, 'x'))).size(), qsizetype(1001));
    undo();
    undo();
    QCOMPARE(history_->undoText(), QString("Delete DOMAIN : Duct"));
    QCOMPARE(history_->redoText(), QString("Title = ä"));
}

void UndoHistoryTest::dropsUndoneStepsAtAnEdit()
{
    open();
    apply(settingValue(title, "a"));
    apply(settingValue(title, "b"));
    undo();
    apply(settingValue(title, "c"));
    QVERIFY(!history_->canRedo());
    undo();
    QCOMPARE(document_->data().value(title), "a");
}

void UndoHistoryTest::makesOneStepOfAGroup()
{
    open();
    const std::string before = dump(storedData());
    {
        const UndoGroup group(*history_, "Move the duct");
        apply(settingValue(title, "a"));
        QVERIFY(!history_->canUndo());
        undo();
        QCOMPARE(document_->data().value(title), "a");
        const UndoGroup inner(*history_, "inner");
        apply(deletingObject(duct));
    }
    apply(settingValue(title, "b"));
    const UndoGroup *empty = new UndoGroup(*history_, "nothing");
    delete empty;
    QCOMPARE(history_->undoText(), QString("Title = b"));
    undo();
    QCOMPARE(history_->undoText(), QString("Move the duct"));
    undo();
    QCOMPARE(dump(storedData()), before);
    QVERIFY(!document_->isModified());
    QVERIFY(!history_->canUndo());
    redo();
    QCOMPARE(document_->data().value(title), "a");
    QVERIFY(!document_->data().has(duct));
    QCOMPARE(history_->redoText(), QString("Title = b"));
}

void UndoHistoryTest::forgetsWhatWasRolledBack()
{
    open();
    apply(settingValue(title, "a"));
    apply(settingValue(title, "b"));
    undo();
    apply(settingValue(title, "refused"));
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(history_->undoText(), QString("Title = a"));
    QCOMPARE(history_->redoText(), QString("Title = b"));
    redo();
    QCOMPARE(document_->data().value(title), "b");
    undo();
    undo();
    QVERIFY(!document_->isModified());

    // The mark of the refused value stays until undo gets to the state on the disk.
    apply(settingValue(title, "refused"));
    QCOMPARE(document_->rollBack(), std::nullopt);
    QVERIFY(document_->isModified());
    QVERIFY(!history_->canUndo());
    redo();
    undo();
    QVERIFY(!document_->isModified());
}

void UndoHistoryTest::makesNoStepOfAnEditThatChangesNothing()
{
    open();
    apply(settingValue(title, "a"));
    undo();
    apply(settingValue(title, "First run"));
    QVERIFY(document_->isModified());
    QVERIFY(!history_->canUndo());
    QCOMPARE(history_->redoText(), QString("Title = a"));
    QCOMPARE(document_->rollBack(), std::nullopt);
    QCOMPARE(history_->redoText(), QString("Title = a"));
}

// --- Unsaved changes ----------------------------------------------------------------

void UndoHistoryTest::marksWhatIsNotOnTheDisk()
{
    open();
    std::string marks;
    connect(document_.get(), &Document::modifiedMarked, this,
            [&](bool modified) { marks += modified ? "+" : "-"; });
    apply(settingValue(title, "a"));
    apply(settingValue(title, "b"));
    undo();
    QVERIFY(document_->isModified());
    undo();
    QVERIFY(!document_->isModified());
    redo();
    QVERIFY(document_->isModified());
    QCOMPARE(marks, "+++-+");

    // A change that does not mark the document can be undone, too.
    open();
    QCOMPARE(document_->apply(deletingObject(duct), Document::Marking::None), std::nullopt);
    QVERIFY(!document_->isModified());
    undo();
    QVERIFY(!document_->isModified());
    redo();
    QVERIFY(document_->isModified());
}

void UndoHistoryTest::marksAfterASaveInTheMiddle()
{
    open();
    apply(settingValue(title, "a"));
    apply(settingValue(title, "b"));
    undo();
    QVERIFY(document_->save(document_->file()).outcome == SaveOutcome::Written);
    QVERIFY(!document_->isModified());
    undo();
    QVERIFY(document_->isModified());
    redo();
    QVERIFY(!document_->isModified());
    redo();
    QVERIFY(document_->isModified());
    undo();
    QVERIFY(!document_->isModified());
    undo();
    apply(settingValue(title, "a")); // as on the disk, but by another way
    QVERIFY(document_->isModified());
}

// Nobody knows what undo leads to then.
void UndoHistoryTest::staysMarkedAfterUnknownChanges()
{
    open();
    apply(settingValue(title, "a"));
    apply(settingValue(title, "b"));
    QCOMPARE(velparser::setStringValue((std::string(duct) + "/Kind").c_str(), "Solid"), nullptr);
    document_->setModified();
    undo();
    undo();
    QCOMPARE(document_->data().value(title), "First run");
    QVERIFY(document_->isModified());
    redo();
    undo();
    QVERIFY(document_->isModified());
}

void UndoHistoryTest::keepsItsStatesAfterARefusedEdit()
{
    open();
    apply(settingValue(title, "a"));
    QVERIFY(document_->apply(addingParameter("/FLOW:Analysis/?", "1")).has_value());
    QVERIFY(document_->apply(settingValue("/FLOW:Analysis/Absent", "1")).has_value());
    QVERIFY(document_->apply(deletingParameter("/FLOW:Analysis/Absent")).has_value());
    QVERIFY(document_->isModified());
    QCOMPARE(history_->undoText(), QString("Title = a"));
    undo();
    QVERIFY(!document_->isModified());
}

void UndoHistoryTest::validatesWhatCameBack()
{
    open();
    const std::string kind = std::string(duct) + "/BOUNDARY:in/Kind";
    std::string reports;
    connect(document_.get(), &Document::validated, this,
            [&](const std::string &path, const Message &findings) {
                reports += path + (findings ? " has findings\n" : " is valid\n");
            });
    apply(settingValue(kind, "Elsewhere"));
    apply(settingValue(kind, "Outlet"));
    apply(addingParameter(std::string(duct) + "/Reviewer", "x"));
    undo();
    undo();
    undo();
    redo();
    redo();
    redo();
    QCOMPARE(reports, kind + " has findings\n" + kind + " is valid\n" + kind + " has findings\n" +
                          kind + " is valid\n" + duct + " is valid\n");
    undo();
    undo();
    QCOMPARE(inOrder(document_->validate().value_or("").c_str()).find("Elsewhere") !=
                 std::string::npos,
             true);
}

// --- Ends ---------------------------------------------------------------------------

void UndoHistoryTest::startsAgainAtALoad()
{
    open();
    apply(settingValue(title, "a"));
    apply(settingValue(title, "b"));
    undo();
    int reports = 0;
    connect(history_.get(), &UndoHistory::stepsChanged, this, [&] { ++reports; });
    QCOMPARE(document_->load(), std::nullopt);
    QVERIFY(!history_->canUndo());
    QVERIFY(!history_->canRedo());
    QCOMPARE(reports, 1);
}

void UndoHistoryTest::endsAfterAFailure()
{
    open();
    apply(settingValue(title, "a"));
    apply(settingValue(title, "b"));
    QCOMPARE(velparser::deleteParam(title), nullptr);
    QVERIFY(history_->undo().has_value());
    QVERIFY(!history_->canUndo());
    QVERIFY(!history_->canRedo());
    QVERIFY(document_->isModified());
}

// --- All of it ------------------------------------------------------------------------

void UndoHistoryTest::compareWithFreshLoad(const std::set<std::string> &seenPaths)
{
    velparser::Session fresh = freshLoad(writtenLines());
    QCOMPARE(dump(asSaved(storedData())), dump(asSaved(storedData(fresh))));
    QCOMPARE(writtenLines(), writtenLines(fresh));
    const char *findings = velparser::validateVELDataH(fresh);
    QCOMPARE(inOrder(document_->validate().value_or("").c_str()), inOrder(findings));
    for (const std::string &path : seenPaths) {
        QCOMPARE(velparser::isVELLibrary(path.c_str()),
                 velparser::isVELLibrary(fresh, path.c_str()));
    }
}

void UndoHistoryTest::playsRandomStepsBackAndForth()
{
    open();
    Player player(*document_, *history_, 1);
    for (int step = 1; step <= 10000; ++step) {
        const QString fault = player.step();
        QVERIFY2(fault.isEmpty(), qPrintable(QString("%1: %2").arg(step).arg(fault)));
        if (step % 500 == 0) {
            compareWithFreshLoad(player.seenPaths());
        }
    }
    const QString fault = player.playAll();
    QVERIFY2(fault.isEmpty(), qPrintable(fault));
    compareWithFreshLoad(player.seenPaths());
}

QTEST_GUILESS_MAIN(UndoHistoryTest)
#include "UndoHistory_test.moc"
