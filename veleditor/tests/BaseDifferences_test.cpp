// The differences between the data and a base: by hand, and after random edits, where
// they are compared with a comparison of both texts.
#include "veleditor/src/BaseDifferences.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/UndoHistory.h"
#include "veleditor/tests/DataText.h"
#include "velparser/api/velparser.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <fstream>
#include <memory>
#include <random>

using namespace velEditor;
using State = BaseDifferences::State;

namespace {

const char start[] = "FLOW: Analysis\n"
                     "  Title = First run\n"
                     "  DOMAIN: Duct\n"
                     "    Kind = Fluid\n"
                     "    BOUNDARY: in\n"
                     "      Kind = Inlet\n"
                     "      Speed = 2\n"
                     "    END\n"
                     "    Location = B1, B2\n"
                     "    BOUNDARY: out\n"
                     "    END\n"
                     "  END\n"
                     "END\n";

const char title[] = "/FLOW:Analysis/Title";
const char duct[] = "/FLOW:Analysis/DOMAIN:Duct";
const char kind[] = "/FLOW:Analysis/DOMAIN:Duct/Kind";
const char in[] = "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in";
const char inKind[] = "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind";

/// "+ PATH", "- PATH" or "~ PATH", with the values of a parameter.
QString lineOf(const veltext::Change &change)
{
    QString line = QLatin1String("+-~")[static_cast<int>(change.kind)] + QString(" ") +
                   QString::fromStdString(change.path);
    for (const auto &value : {change.oldValue, change.newValue}) {
        if (value) {
            line += " = " + QString::fromStdString(*value);
        }
    }
    return line;
}

QStringList linesOf(const std::vector<veltext::Change> &changes)
{
    QStringList lines;
    for (const veltext::Change &change : changes) {
        lines.append(lineOf(change));
    }
    return lines;
}

/// The order-free comparison of two states of the data.
QStringList changesBetween(const Node &before, const Node &after, const std::string &path = {})
{
    QStringList lines;
    const auto find = [](const Node &parent, const Node &child) -> const Node * {
        for (const Node &other : parent.children) {
            if (other.component == child.component &&
                other.value.has_value() == child.value.has_value()) {
                return &other;
            }
        }
        return nullptr;
    };
    const auto report = [&](const Node &node, const std::string &object, const char *sign,
                            auto &self) -> void {
        const std::string below = object + "/" + node.component;
        lines.append(QString(sign) + " " + QString::fromStdString(below) +
                     (node.value ? " = " + QString::fromStdString(*node.value) : QString()));
        for (const Node &child : node.children) {
            self(child, below, sign, self);
        }
    };
    for (const Node &child : before.children) {
        const Node *other = find(after, child);
        const std::string below = path + "/" + child.component;
        if (other == nullptr) {
            report(child, path, "-", report);
        } else if (child.value && *child.value != *other->value) {
            lines.append("~ " + QString::fromStdString(below) + " = " +
                         QString::fromStdString(*child.value) + " = " +
                         QString::fromStdString(*other->value));
        } else {
            lines += changesBetween(child, *other, below);
        }
    }
    for (const Node &child : after.children) {
        if (find(before, child) == nullptr) {
            report(child, path, "+", report);
        }
    }
    return lines;
}

QStringList inOrder(QStringList lines)
{
    lines.sort();
    return lines;
}

} // namespace

class BaseDifferencesTest : public QObject
{
    Q_OBJECT

private:
    void load(const std::string &text);
    void apply(Edit edit);
    [[nodiscard]] QStringList found() const { return linesOf(differences_->all()); }
    void revert(const char *path);
    bool changeAtRandom(std::mt19937 &random);

    QTemporaryDir folder_;
    std::unique_ptr<Document> document_;
    std::unique_ptr<UndoHistory> history_;
    std::unique_ptr<BaseDifferences> differences_;

private slots:
    void init();
    void beginsWithoutDifferences();
    void followsValues();
    void followsParameters();
    void followsObjects();
    void followsReplacedObjects();
    void listsObjectsBeforeTheirContents();
    void knowsTheStateOfItems();
    void followsUndoAndRedo();
    void beginsAgainAtAReset();
    void comparesWithAText();
    void saysWhyATextCannotBeCompared();
    void isBehindOtherChanges();
    void doesNotCountLibraryData();
    void revertsAValue();
    void revertsWhatWasAdded();
    void bringsBackAtItsPlace();
    void bringsBackWithTheObjectsAround();
    void bringsBackAcrossWhatWasAdded();
    void bringsBackAWholeObjectInItsOrder();
    void bringsBackAParameterThatBecameAnObject();
    void bringsBackFromAText();
    void revertsNothingElse();
    void equalsAComparisonAfterRandomEdits();
    void revertsRandomEdits();
};

void BaseDifferencesTest::init()
{
    forgetData();
    load(start);
}

void BaseDifferencesTest::load(const std::string &text)
{
    const std::string file = folder_.filePath("start.vel").toStdString();
    std::ofstream(file, std::ios::binary) << text;
    forgetData();
    differences_.reset();
    history_.reset();
    document_ = std::make_unique<Document>(file);
    history_ = std::make_unique<UndoHistory>(*document_);
    QCOMPARE(document_->readLibraries(), std::nullopt);
    const Message refused = document_->load();
    QVERIFY2(!refused, refused.value_or("").c_str());
    differences_ = std::make_unique<BaseDifferences>(*document_);
}

void BaseDifferencesTest::apply(Edit edit)
{
    const Message failure = document_->apply(std::move(edit));
    QVERIFY2(!failure, failure.value_or("").c_str());
}

/// Reverts the difference with this path.
void BaseDifferencesTest::revert(const char *path)
{
    const std::vector<veltext::Change> all = differences_->all();
    const auto difference = std::ranges::find_if(
        all, [&](const veltext::Change &change) { return change.path == path; });
    QVERIFY2(difference != all.end(), path);
    for (const Edit &edit : differences_->reverting(*difference)) {
        apply(edit);
    }
}

// --- Following ----------------------------------------------------------------------

void BaseDifferencesTest::beginsWithoutDifferences()
{
    QVERIFY(differences_->isEmpty());
    QCOMPARE(found(), QStringList());
}

void BaseDifferencesTest::followsValues()
{
    const QSignalSpy differ(differences_.get(), &BaseDifferences::differ);
    apply(settingValue(title, "Second run"));
    QCOMPARE(differ.count(), 1);
    QCOMPARE(found(), QStringList("~ /FLOW:Analysis/Title = First run = Second run"));
    apply(settingValue(title, "Third run"));
    QCOMPARE(found(), QStringList("~ /FLOW:Analysis/Title = First run = Third run"));
    apply(settingValue(title, "First run"));
    QVERIFY(differences_->isEmpty());
}

void BaseDifferencesTest::followsParameters()
{
    apply(addingParameter("/FLOW:Analysis/Note", "x"));
    QCOMPARE(found(), QStringList("+ /FLOW:Analysis/Note = x"));
    apply(settingValue("/FLOW:Analysis/Note", "y"));
    QCOMPARE(found(), QStringList("+ /FLOW:Analysis/Note = y"));
    apply(deletingParameter("/FLOW:Analysis/Note"));
    QVERIFY(differences_->isEmpty());

    apply(deletingParameter(kind));
    QCOMPARE(found(), QStringList("- /FLOW:Analysis/DOMAIN:Duct/Kind = Fluid"));
    apply(addingParameter(kind, "Solid"));
    QCOMPARE(found(), QStringList("~ /FLOW:Analysis/DOMAIN:Duct/Kind = Fluid = Solid"));
    apply(settingValue(kind, "Fluid"));
    QVERIFY(differences_->isEmpty());
}

void BaseDifferencesTest::followsObjects()
{
    apply(deletingObject(in));
    QCOMPARE(found(), QStringList({"- /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in",
                                   "- /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind = Inlet",
                                   "- /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Speed = 2"}));
    apply(addingObject(in, "BOUNDARY: in\nKind = Outlet\nAngle = 1\nEND\n"));
    QCOMPARE(found(), QStringList({"+ /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Angle = 1",
                                   "~ /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind = Inlet = Outlet",
                                   "- /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Speed = 2"}));
    apply(deletingObject(duct));
    QCOMPARE(found().size(), 7);
    QVERIFY(!found().join("\n").contains("Angle"));
}

void BaseDifferencesTest::followsReplacedObjects()
{
    Edit replace{Edit::Kind::ReplaceObject, in, {}, "BOUNDARY : in\nKind = Wall\nEND\n"};
    apply(replace);
    QCOMPARE(found(), QStringList({"~ /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind = Inlet = Wall",
                                   "- /FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Speed = 2"}));
    replace.newText = "BOUNDARY : in\nSpeed = 2\nKind = Inlet\nEND\n";
    apply(replace);
    QVERIFY(differences_->isEmpty()); // the order does not count
}

void BaseDifferencesTest::listsObjectsBeforeTheirContents()
{
    apply(addingObject("/FLOW:Analysis/DOMAIN:A", "DOMAIN: A\nKind = 1\nEND\n"));
    apply(addingObject("/FLOW:Analysis/DOMAIN:A b", "DOMAIN: A b\nKind = 2\nEND\n"));
    QCOMPARE(found(),
             QStringList({"+ /FLOW:Analysis/DOMAIN:A", "+ /FLOW:Analysis/DOMAIN:A/Kind = 1",
                          "+ /FLOW:Analysis/DOMAIN:A b", "+ /FLOW:Analysis/DOMAIN:A b/Kind = 2"}));
}

void BaseDifferencesTest::knowsTheStateOfItems()
{
    QCOMPARE(differences_->stateOf(title, true), State::Same);
    apply(settingValue(title, "Second run"));
    apply(deletingParameter(kind));
    apply(addingObject("/FLOW:Analysis/DOMAIN:New", "DOMAIN: New\nKind = 1\nEND\n"));
    QCOMPARE(differences_->stateOf(title, true), State::Changed);
    QCOMPARE(differences_->stateOf(duct, false), State::Lost);
    QCOMPARE(differences_->stateOf("/FLOW:Analysis/DOMAIN:New", false), State::Added);
    QCOMPARE(differences_->stateOf("/FLOW:Analysis/DOMAIN:New/Kind", true), State::Added);
    QCOMPARE(differences_->stateOf("/FLOW:Analysis", false), State::Same);
    QCOMPARE(differences_->stateOf("/", false), State::Same);
    apply(deletingObject("/FLOW:Analysis"));
    QCOMPARE(differences_->stateOf("/", false), State::Lost);
}

void BaseDifferencesTest::followsUndoAndRedo()
{
    apply(settingValue(title, "Second run"));
    apply(deletingObject(duct));
    const QStringList both = found();
    QCOMPARE(history_->undo(), std::nullopt);
    QCOMPARE(history_->undo(), std::nullopt);
    QVERIFY(differences_->isEmpty());
    QCOMPARE(history_->redo(), std::nullopt);
    QCOMPARE(history_->redo(), std::nullopt);
    QCOMPARE(found(), both);
    QCOMPARE(document_->rollBack(), std::nullopt);
    QVERIFY(!differences_->isBehind());
}

// --- The base -----------------------------------------------------------------------

void BaseDifferencesTest::beginsAgainAtAReset()
{
    apply(settingValue(title, "Second run"));
    apply(deletingParameter(kind));
    differences_->reset();
    QVERIFY(differences_->isEmpty());
    QCOMPARE(differences_->stateOf(duct, false), State::Same);
    apply(settingValue(title, "First run"));
    QCOMPARE(found(), QStringList("~ /FLOW:Analysis/Title = Second run = First run"));
}

void BaseDifferencesTest::comparesWithAText()
{
    apply(settingValue(title, "Second run"));
    QCOMPARE(differences_->compareWith("FLOW: Analysis\nTitle = Old\nNote = x\nEND\n", "old.vel"),
             std::nullopt);
    const QStringList lines = found();
    QCOMPARE(lines.size(), 9);
    QCOMPARE(lines.first(), QString("+ /FLOW:Analysis/DOMAIN:Duct"));
    QVERIFY(lines.contains("- /FLOW:Analysis/Note = x"));
    QVERIFY(lines.contains("~ /FLOW:Analysis/Title = Old = Second run"));
    QCOMPARE(differences_->stateOf("/FLOW:Analysis", false), State::Lost);
    apply(settingValue(title, "Old"));
    QCOMPARE(found().size(), 8);
}

void BaseDifferencesTest::saysWhyATextCannotBeCompared()
{
    apply(settingValue(title, "Second run"));
    const QStringList before = found();
    QCOMPARE(differences_->compareWith("b c\n", "old.vel"),
             Message("old.vel:1: parseVELLineH: syntax error near \"b c\""));
    QCOMPARE(found(), before);
}

void BaseDifferencesTest::isBehindOtherChanges()
{
    QVERIFY(!differences_->isBehind());
    QCOMPARE(velparser::setStringValue(title, "By a script"), nullptr);
    document_->setModified();
    QVERIFY(differences_->isBehind());
    apply(settingValue(kind, "Solid"));
    QVERIFY(differences_->isBehind());
    QCOMPARE(differences_->compareWith(start, "start.vel"), std::nullopt);
    QVERIFY(!differences_->isBehind());
    QCOMPARE(found(), QStringList({"~ /FLOW:Analysis/DOMAIN:Duct/Kind = Fluid = Solid",
                                   "~ /FLOW:Analysis/Title = First run = By a script"}));
}

void BaseDifferencesTest::doesNotCountLibraryData()
{
    QCOMPARE(differences_->compareWith(start, "start.vel"), std::nullopt);
    QVERIFY(differences_->isEmpty());
}

// --- Reverting ----------------------------------------------------------------------

void BaseDifferencesTest::revertsAValue()
{
    apply(settingValue(title, "Second run"));
    apply(settingValue(kind, "Solid"));
    revert(title);
    QCOMPARE(found(), QStringList("~ /FLOW:Analysis/DOMAIN:Duct/Kind = Fluid = Solid"));
    revert(kind);
    QVERIFY(differences_->isEmpty());
}

void BaseDifferencesTest::revertsWhatWasAdded()
{
    const std::string before = dump(storedData());
    apply(addingParameter("/FLOW:Analysis/Note", "x"));
    apply(addingObject("/FLOW:Analysis/DOMAIN:New", "DOMAIN: New\nKind = 1\nEND\n"));
    revert("/FLOW:Analysis/DOMAIN:New/Kind");
    QCOMPARE(found(), QStringList({"+ /FLOW:Analysis/DOMAIN:New", "+ /FLOW:Analysis/Note = x"}));
    revert("/FLOW:Analysis/DOMAIN:New");
    revert("/FLOW:Analysis/Note");
    QCOMPARE(dump(storedData()), before);
}

// In whatever order they went, and come back.
void BaseDifferencesTest::bringsBackAtItsPlace()
{
    const std::string before = dump(storedData());
    std::vector<std::string> gone{in, kind, std::string(duct) + "/Location",
                                  std::string(duct) + "/BOUNDARY:out"};
    std::sort(gone.begin(), gone.end());
    do {
        std::vector<std::string> back = gone;
        std::sort(back.begin(), back.end());
        do {
            for (const std::string &path : gone) {
                apply(path.find("BOUNDARY") != std::string::npos ? deletingObject(path)
                                                                 : deletingParameter(path));
            }
            for (const std::string &path : back) {
                revert(path.c_str());
            }
            QCOMPARE(dump(storedData()), before);
        } while (std::next_permutation(back.begin(), back.end()));
    } while (std::next_permutation(gone.begin(), gone.end()));
}

void BaseDifferencesTest::bringsBackWithTheObjectsAround()
{
    const std::string before = dump(storedData());
    apply(deletingObject(duct));
    revert(inKind);
    QCOMPARE(dump(storedData()), std::string("FLOW:Analysis\n"
                                             "  Title = First run\n"
                                             "  DOMAIN:Duct\n"
                                             "    BOUNDARY:in\n"
                                             "      Kind = Inlet\n"));
    while (!differences_->isEmpty()) {
        revert(differences_->all().front().path.c_str());
    }
    QCOMPARE(dump(storedData()), before);
}

void BaseDifferencesTest::bringsBackAcrossWhatWasAdded()
{
    const std::string before = dump(storedData());
    Edit note = addingParameter(std::string(duct) + "/Note", "x");
    note.position = 1;
    note.parametersBefore = 1;
    apply(note);
    apply(deletingObject(in));
    apply(deletingParameter(std::string(duct) + "/Location"));
    apply(deletingObject(duct));
    revert(duct);
    QCOMPARE(dump(storedData()), before);
}

void BaseDifferencesTest::bringsBackAWholeObjectInItsOrder()
{
    const std::string before = dump(storedData());
    apply(deletingParameter(inKind));
    apply(deletingObject(in));
    apply(deletingParameter(kind));
    apply(deletingObject("/FLOW:Analysis"));
    revert("/FLOW:Analysis");
    QVERIFY(differences_->isEmpty());
    QCOMPARE(dump(storedData()), before);
}

void BaseDifferencesTest::bringsBackAParameterThatBecameAnObject()
{
    const std::string before = dump(storedData());
    apply(deletingParameter(kind));
    apply(addingObject(kind, "Kind:\nx = 1\nEND\n"));
    const std::vector<veltext::Change> all = differences_->all();
    QCOMPARE(linesOf(all), QStringList({"- /FLOW:Analysis/DOMAIN:Duct/Kind = Fluid",
                                        "+ /FLOW:Analysis/DOMAIN:Duct/Kind",
                                        "+ /FLOW:Analysis/DOMAIN:Duct/Kind/x = 1"}));
    for (const Edit &edit : differences_->reverting(all.front())) {
        apply(edit);
    }
    QCOMPARE(dump(storedData()), before);
}

void BaseDifferencesTest::bringsBackFromAText()
{
    const std::string before = dump(storedData());
    apply(deletingObject(in));
    apply(deletingParameter(kind));
    QCOMPARE(differences_->compareWith(start, "start.vel"), std::nullopt);
    revert(inKind);
    revert(kind);
    revert((std::string(in) + "/Speed").c_str());
    QCOMPARE(dump(storedData()), before);
}

void BaseDifferencesTest::revertsNothingElse()
{
    apply(settingValue(title, "Second run"));
    const veltext::Change other{veltext::DifferenceKind::Changed, kind, "Fluid", "Solid"};
    QVERIFY(differences_->reverting(other).empty());
}

// --- Random edits ---------------------------------------------------------------------

bool BaseDifferencesTest::changeAtRandom(std::mt19937 &random)
{
    const auto below = [&](std::size_t limit) {
        return static_cast<std::size_t>(random()) % limit;
    };
    const std::vector<std::string> objects = storedPaths(false);
    const std::vector<std::string> parameters = storedPaths(true);
    const std::string number = std::to_string(below(4));
    const std::string object = objects.empty() ? "/FLOW:Analysis" : objects[below(objects.size())];
    const std::string parameter = parameters.empty() ? title : parameters[below(parameters.size())];
    switch (below(10)) {
    case 0:
        return !document_->apply(deletingParameter(parameter));
    case 1:
        return !document_->apply(deletingObject(object));
    case 2:
    case 3:
        return !document_->apply(
            addingObject(childPath(object, "PART:p" + number),
                         "PART: p" + number + "\nKind = " + number + "\nPART: b\nEND\nEND\n"));
    case 4:
    case 5:
        return !document_->apply(addingParameter(childPath(object, "p " + number), number));
    case 6:
        return !history_->undo();
    case 7:
        return !history_->redo();
    default:
        return !document_->apply(settingValue(parameter, number));
    }
}

void BaseDifferencesTest::equalsAComparisonAfterRandomEdits()
{
    for (const unsigned seed : {1U, 2U, 3U}) {
        load(start);
        std::mt19937 random(seed);
        Node base = storedData();
        for (int step = 1; step <= 300; ++step) {
            static_cast<void>(changeAtRandom(random));
            if (differences_->isBehind()) { // an edit that failed
                differences_->reset();
                base = storedData();
            }
            QCOMPARE(inOrder(found()), inOrder(changesBetween(base, storedData())));
            if (step % 100 == 0) {
                differences_->reset();
                base = storedData();
            }
        }
    }
}

void BaseDifferencesTest::revertsRandomEdits()
{
    int compared = 0;
    for (unsigned seed = 1; seed <= 30; ++seed) {
        load(start);
        std::mt19937 random(seed);
        Node base = storedData();
        for (int step = 1; step <= 30; ++step) {
            static_cast<void>(changeAtRandom(random));
        }
        if (differences_->isBehind()) { // an edit failed
            continue;
        }
        ++compared;
        while (!differences_->isEmpty()) {
            const std::vector<veltext::Change> all = differences_->all();
            for (const Edit &edit : differences_->reverting(all[random() % all.size()])) {
                apply(edit);
            }
            QVERIFY(linesOf(differences_->all()).size() < linesOf(all).size());
        }
        QCOMPARE(changesBetween(base, storedData()), QStringList());
    }
    QVERIFY(compared > 5);
}

QTEST_GUILESS_MAIN(BaseDifferencesTest)
#include "BaseDifferences_test.moc"
