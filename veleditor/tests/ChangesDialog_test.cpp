// The dialog "Changes" and the marks of changed rows, in the real window.
#include "veleditor/src/ChangesDialog.h"

#include "veleditor/src/ChangesFeature.h"
#include "veleditor/src/DifferenceList.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/FileVersion.h"
#include "veleditor/tests/DataText.h"
#include "veleditor/tests/EditorTest.h"
#include "veleditor/tests/TreeText.h"
#include "veltext/commandText.h"

#include <QAction>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QTreeWidgetItemIterator>

#include <random>
#include <set>

using namespace velEditor;

namespace {

const char title[] = "/FLOW:Analysis/Title";
const char duct[] = "/FLOW:Analysis/DOMAIN:Duct";
const char kind[] = "/FLOW:Analysis/DOMAIN:Duct/Kind";

/// A line for each row, without its button.
QStringList rowsOf(const DifferenceList &list)
{
    QStringList rows;
    for (int row = 0; row < list.model()->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < DifferenceList::Action; ++column) {
            cells.append(list.model()->index(row, column).data().toString());
        }
        rows.append(cells.join(u'|'));
    }
    return rows;
}

} // namespace

class ChangesDialogTest : public EditorTest
{
    Q_OBJECT

private:
    Document &document() { return editor().document(); }
    void apply(Edit edit);
    ChangesDialog &openDialog();
    static DifferenceList &list() { return *shown<ChangesDialog>().findChild<DifferenceList *>(); }
    static QStringList rows() { return rowsOf(list()); }
    static QPushButton &button(const char *name);
    static QString heading()
    {
        return shown<ChangesDialog>().findChild<QLabel *>("Heading")->text();
    }
    QImage picture();
    QString markedRows();
    QString rowsThatDiffer();
    void changeAtRandom(std::mt19937 &random);

private slots:
    void isInMore();
    void saysThatThereAreNone();
    void listsTheChanges();
    void followsWhatTheUserDoes();
    void revertsARow();
    void revertsTheSelectedRows();
    void revertsEverythingInOneStep();
    void isEmptyAfterASave();
    void comparesWithWhatTheDiskHas();
    void comparesWithTheLastVersionWithoutAFile();
    void saysWhyTheFileCannotBeCompared();
    void followsAFileThatComesBack();
    void opensOnce();
    void marksARowThatDiffers();
    void marksAnObjectThatLostSomething();
    void describesTheMark();
    void takesTheMarkAwayAtASave();
    void marksWhatAScriptHasChanged();
    void comparesWithAVersionThatWasTakenOver();
    void marksWhatAnUpgradeHasChanged();
    void marksTheRowsThatAComparisonFinds();
};

void ChangesDialogTest::apply(Edit edit)
{
    const Message failure = document().apply(std::move(edit));
    QVERIFY2(!failure, failure.value_or("").c_str());
}

ChangesDialog &ChangesDialogTest::openDialog()
{
    QApplication::setActiveWindow(&editor());
    press("Ctrl+Shift+H");
    return shown<ChangesDialog>();
}

QPushButton &ChangesDialogTest::button(const char *name)
{
    return *shown<ChangesDialog>().findChild<QPushButton *>(QString::fromLatin1(name));
}

// --- The dialog -----------------------------------------------------------------------

void ChangesDialogTest::isInMore()
{
    open(copyOf("duct.vel"));
    const auto *menu = editor().findChild<QMenu *>("MoreMenu");
    const auto *action = editor().findChild<QAction *>("Changes");
    QVERIFY(menu->actions().contains(action));
    QCOMPARE(action->shortcut().toString(), QString("Ctrl+Shift+H"));
}

void ChangesDialogTest::saysThatThereAreNone()
{
    open(copyOf("duct.vel"));
    openDialog();
    QCOMPARE(rows(), QStringList());
    QCOMPARE(list().accessibleDescription(), QString("No changes"));
    QVERIFY(!button("RevertAll").isEnabled());
    QVERIFY(!button("RevertSelected").isEnabled());
    QCOMPARE(heading(), "What this window has, compared with the file\n" + file());
}

void ChangesDialogTest::listsTheChanges()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "Second run"));
    apply(deletingParameter(kind));
    apply(addingParameter("/FLOW:Analysis/Note", "x"));
    openDialog();
    QCOMPARE(rows(), QStringList({"removed|/FLOW:Analysis/DOMAIN:Duct/Kind|Fluid|",
                                  "added|/FLOW:Analysis/Note||x",
                                  "changed|/FLOW:Analysis/Title|First run|Second run"}));
}

void ChangesDialogTest::followsWhatTheUserDoes()
{
    open(copyOf("duct.vel"));
    openDialog();
    apply(settingValue(title, "Second run"));
    QTRY_COMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|First run|Second run"));
    QApplication::setActiveWindow(&editor());
    press("Ctrl+Z");
    QTRY_COMPARE(rows(), QStringList());
    press("Ctrl+Y");
    QTRY_COMPARE(rows().size(), 1);
}

void ChangesDialogTest::revertsARow()
{
    open(copyOf("duct.vel"));
    const QString before = treeText(tree());
    apply(settingValue(title, "Second run"));
    apply(deletingParameter(kind));
    openDialog();
    QTest::keyClick(&list(), Qt::Key_Home);
    QTest::keyClick(&list(), Qt::Key_Return);
    QCOMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|First run|Second run"));
    QCOMPARE(editor().findChild<QAction *>("Undo")->toolTip(), QString("Undo: Revert Kind"));
    QTest::keyClick(&list(), Qt::Key_Space);
    QCOMPARE(rows(), QStringList());
    QCOMPARE(treeText(tree()), before);
    QApplication::setActiveWindow(&editor());
    press("Ctrl+Z");
    QCOMPARE(row(title).value(), QString("Second run"));
    QTRY_COMPARE(rows().size(), 1);
}

void ChangesDialogTest::revertsTheSelectedRows()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "Second run"));
    apply(deletingObject(duct));
    openDialog();
    const int all = static_cast<int>(rows().size());
    QVERIFY(all > 3);
    QTest::keyClick(&list(), Qt::Key_Home);
    QTest::keyClick(&list(), Qt::Key_Down, Qt::ShiftModifier);
    pressButton(shown<ChangesDialog>(), "RevertSelected");
    QCOMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|First run|Second run"));
    QCOMPARE(editor().findChild<QAction *>("Undo")->toolTip(), QString("Undo: Revert 2 changes"));
}

void ChangesDialogTest::revertsEverythingInOneStep()
{
    open(copyOf("duct.vel"));
    const QString before = treeText(tree());
    apply(settingValue(title, "Second run"));
    apply(deletingObject(duct));
    apply(addingParameter("/FLOW:Analysis/Note", "x"));
    const std::string changed = dump(storedData());
    openDialog();
    pressButton(shown<ChangesDialog>(), "RevertAll");
    QCOMPARE(rows(), QStringList());
    QCOMPARE(treeText(tree()), before);
    QCOMPARE(editor().findChild<QAction *>("Undo")->toolTip(), QString("Undo: Revert All"));
    QApplication::setActiveWindow(&editor());
    press("Ctrl+Z");
    QCOMPARE(dump(storedData()), changed);
}

void ChangesDialogTest::isEmptyAfterASave()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "Second run"));
    openDialog();
    QCOMPARE(rows().size(), 1);
    editor().doSave();
    QCOMPARE(rows(), QStringList());
    QApplication::setActiveWindow(&editor());
    press("Ctrl+Z");
    QTRY_COMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|Second run|First run"));
}

void ChangesDialogTest::comparesWithWhatTheDiskHas()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "Second run"));
    openDialog();
    QByteArray text = contentOf(file());
    newFile("duct.vel", text.replace("First run", "By another"));
    QTRY_COMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|By another|Second run"));
    QCOMPARE(row(title).state(), QString("can be changed; changed, not saved yet"));
}

void ChangesDialogTest::comparesWithTheLastVersionWithoutAFile()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "Second run"));
    QVERIFY(QFile::remove(file()));
    openDialog();
    QCOMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|First run|Second run"));
    QCOMPARE(heading(), "What this window has, compared with what was loaded or saved last, "
                        "because the file cannot be read:\n" +
                            file());
    pressButton(shown<ChangesDialog>(), "RevertAll");
    QCOMPARE(rows(), QStringList());
}

void ChangesDialogTest::saysWhyTheFileCannotBeCompared()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "Second run"));
    newFile("duct.vel", "FLOW: Analysis\nb c\n");
    openDialog();
    QCOMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|First run|Second run"));
    QVERIFY(heading().endsWith(file() + ":2: parseVELLineH: syntax error near \"b c\""));
}

void ChangesDialogTest::followsAFileThatComesBack()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "Second run"));
    QByteArray text = contentOf(file());
    for (const bool isOpen : {false, true}) {
        QVERIFY(QFile::remove(file()));
        if (!isOpen) {
            openDialog();
        }
        QTRY_VERIFY(heading().contains("cannot be read"));
        newFile("duct.vel", text);
        QTRY_VERIFY(!heading().contains("cannot be read"));
        QCOMPARE(rows().size(), 1);
    }
    newFile("duct.vel", text.replace("First run", "Second run"));
    QTRY_COMPARE(rows(), QStringList());
}

void ChangesDialogTest::opensOnce()
{
    open(copyOf("duct.vel"));
    ChangesDialog &first = openDialog();
    QCOMPARE(&openDialog(), &first);
    QTest::keyClick(&first, Qt::Key_Escape);
    QTRY_VERIFY(visible<ChangesDialog>() == nullptr);
    openDialog();
}

// --- The marks ------------------------------------------------------------------------

QImage ChangesDialogTest::picture()
{
    return tree().viewport()->grab().toImage();
}

void ChangesDialogTest::marksARowThatDiffers()
{
    open(copyOf("duct.vel"));
    tree().openAll();
    const QImage before = picture();
    apply(settingValue(title, "First ruN"));
    QImage marked = picture();
    apply(settingValue(title, "First run"));
    QCOMPARE(picture(), before);

    // Nothing but the value and a bar before the row has changed.
    const QRect line = tree().visualItemRect(&row(title));
    int columnsOfBar = 0;
    for (int y = 0; y < before.height(); ++y) {
        for (int x = 0; x < tree().columnWidth(VELTreeItem::Name); ++x) {
            if (before.pixel(x, y) != marked.pixel(x, y)) {
                QVERIFY2(line.top() <= y && y <= line.bottom(), "another row has changed");
                QVERIFY2(x < line.left(), "the name has changed");
                columnsOfBar += y == line.center().y() ? 1 : 0;
            }
        }
    }
    QVERIFY(columnsOfBar >= 2);
}

void ChangesDialogTest::marksAnObjectThatLostSomething()
{
    open(copyOf("duct.vel"));
    const auto stateOf = [this](const char *path) { return tree().differenceOf(row(path)); };
    apply(deletingParameter(kind));
    QVERIFY(stateOf(duct) == BaseDifferences::State::Lost);
    QVERIFY(stateOf(title) == BaseDifferences::State::Same);
    apply(deletingObject("/FLOW:Analysis"));
    const QImage marked = picture();
    QVERIFY(tree().differenceOf(*tree().firstItem()) == BaseDifferences::State::Lost);
    tree().showDifferences(nullptr);
    QVERIFY(picture() != marked);
}

void ChangesDialogTest::describesTheMark()
{
    open(copyOf("duct.vel"));
    const auto described = [this](const char *path) {
        return row(path).data(VELTreeItem::Name, Qt::AccessibleDescriptionRole).toString();
    };
    QCOMPARE(described(title), QString("can be changed"));
    QCOMPARE(described(duct), QString());
    apply(settingValue(title, "Second run"));
    apply(deletingParameter(kind));
    apply(addingObject("/FLOW:Analysis/DOMAIN:New", "DOMAIN: New\nKind = Fluid\nEND\n"));
    QCOMPARE(described(title), QString("can be changed; changed, not saved yet"));
    QCOMPARE(described(duct), QString("something in it was removed, not saved yet"));
    QCOMPARE(described("/FLOW:Analysis/DOMAIN:New"), QString("added, not saved yet"));
    const QString whatsThis = row(title).data(VELTreeItem::Name, Qt::WhatsThisRole).toString();
    QVERIFY(whatsThis.contains("changed, not saved yet"));
    QApplication::setActiveWindow(&editor());
    press("Ctrl+Z");
    press("Ctrl+Z");
    press("Ctrl+Z");
    QCOMPARE(described(title), QString("can be changed"));
}

void ChangesDialogTest::takesTheMarkAwayAtASave()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "Second run"));
    QVERIFY(tree().differenceOf(row(title)) == BaseDifferences::State::Changed);
    press("Ctrl+S");
    QVERIFY(tree().differenceOf(row(title)) == BaseDifferences::State::Same);
    press("Ctrl+Z");
    QVERIFY(tree().differenceOf(row(title)) == BaseDifferences::State::Changed);
}

void ChangesDialogTest::marksWhatAScriptHasChanged()
{
    open(copyOf("duct.vel"));
    changeSomething();
    tree().buildTree();
    QTRY_VERIFY(tree().differenceOf(row(title)) == BaseDifferences::State::Changed);
    apply(settingValue(title, "First run"));
    QVERIFY(tree().differenceOf(row(title)) == BaseDifferences::State::Same);
}

// As a merge does: the data has both changes, the disk the other one.
void ChangesDialogTest::comparesWithAVersionThatWasTakenOver()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "Second run"));
    apply(settingValue(kind, "Solid"));
    QByteArray text = contentOf(file());
    newFile("duct.vel", text.replace("Kind = Fluid", "Kind = Solid"));
    document().takeOver(FileVersion::read(file().toStdString()), false);
    QTRY_COMPARE(markedRows(), QString(title));
    openDialog();
    QCOMPARE(rows(), QStringList("changed|/FLOW:Analysis/Title|First run|Second run"));
}

void ChangesDialogTest::marksWhatAnUpgradeHasChanged()
{
    open(newFile("old.vel", "LANGUAGE:\n  Version = 2.0\nEND\n"
                            "FLOW: A\n  Mode = Steady\n  Title = x\nEND\n"));
    const std::string old = dump(storedData());
    const Message changes = document().upgrade();
    QVERIFY(changes.has_value());
    tree().setModified();
    tree().buildTree();
    document().announceUpgrade(*changes);
    const QString upgraded = "/FLOW:A/Run Mode\n/FLOW:A: lost\n/LANGUAGE/Version";
    QTRY_COMPARE(markedRows(), upgraded);
    openDialog();
    QCOMPARE(rows(), QStringList({"removed|/FLOW:A/Mode|Steady|", "added|/FLOW:A/Run Mode||Steady",
                                  "changed|/LANGUAGE/Version|2.0|2.1"}));
    pressButton(shown<ChangesDialog>(), "RevertAll");
    QCOMPARE(dump(storedData()), old);
    QCOMPARE(markedRows(), QString());
    QApplication::setActiveWindow(&editor());
    press("Ctrl+Z");
    QCOMPARE(markedRows(), upgraded);
    press("Ctrl+Z");
    QCOMPARE(markedRows(), QString());
}

/// The rows that have a mark: "path: state".
QString ChangesDialogTest::markedRows()
{
    QStringList marked;
    for (QTreeWidgetItemIterator i(&tree()); *i != nullptr; ++i) {
        const VELTreeItem *item = VELTreeItem::from(*i);
        const BaseDifferences::State state = tree().differenceOf(*item);
        if (state != BaseDifferences::State::Same) {
            marked.append(QString::fromStdString(item->path()) +
                          (state == BaseDifferences::State::Lost ? ": lost" : ""));
        }
    }
    marked.sort();
    return marked.join(u'\n');
}

/// The same from a comparison of the file with what a save would write.
QString ChangesDialogTest::rowsThatDiffer()
{
    std::string text;
    for (const std::string &line : writtenLines()) {
        text += line + '\n';
    }
    std::set<std::string> differ;
    std::set<std::string> lost;
    for (const veltext::Change &change : veltext::diff(
             veltext::CommandText::read(file().toStdString()), veltext::CommandText(text))) {
        if (change.kind != veltext::DifferenceKind::Removed) {
            differ.insert(change.path);
        } else if (document().data().has(parentPath(change.path))) {
            lost.insert(parentPath(change.path));
        }
    }
    QStringList rows;
    for (const std::string &path : differ) {
        rows.append(QString::fromStdString(path));
        lost.erase(path);
    }
    for (const std::string &path : lost) {
        rows.append(QString::fromStdString(path) + ": lost");
    }
    rows.sort();
    return rows.join(u'\n');
}

void ChangesDialogTest::changeAtRandom(std::mt19937 &random)
{
    const auto below = [&](std::size_t limit) {
        return static_cast<std::size_t>(random()) % limit;
    };
    std::vector<std::string> objects;
    std::vector<std::string> parameters{title};
    for (QTreeWidgetItemIterator i(&tree()); *i != nullptr; ++i) {
        const VELTreeItem *item = VELTreeItem::from(*i);
        (item->hasValue() ? parameters : objects).push_back(item->path());
    }
    const std::string number = std::to_string(below(4));
    const std::string object = objects[below(objects.size())];
    const std::string parameter = parameters[below(parameters.size())];
    switch (below(8)) {
    case 0:
        static_cast<void>(document().apply(deletingParameter(parameter)));
        break;
    case 1:
        if (object != "/") {
            static_cast<void>(document().apply(deletingObject(object)));
        }
        break;
    case 2:
        static_cast<void>(document().apply(
            addingObject(childPath(object, "DOMAIN:d" + number),
                         "DOMAIN: d" + number + "\nBOUNDARY: b\nKind = Inlet\nEND\nEND\n")));
        break;
    case 3:
        static_cast<void>(
            document().apply(addingParameter(childPath(object, "p " + number), number)));
        break;
    case 4:
        press("Ctrl+Z");
        break;
    case 5:
        press("Ctrl+Y");
        break;
    default:
        static_cast<void>(document().apply(settingValue(parameter, number)));
    }
}

void ChangesDialogTest::marksTheRowsThatAComparisonFinds()
{
    open(copyOf("duct.vel"));
    std::mt19937 random(5);
    for (int step = 1; step <= 200; ++step) {
        changeAtRandom(random);
        if (step % 70 == 0) {
            QVERIFY(document().save(document().file()).outcome == SaveOutcome::Written);
        }
        QCoreApplication::processEvents();
        QCOMPARE(markedRows(), rowsThatDiffer());
    }
}

VEL_EDITOR_TEST(ChangesDialogTest)
#include "ChangesDialog_test.moc"
