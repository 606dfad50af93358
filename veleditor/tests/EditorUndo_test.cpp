// Undo and redo in the window: the keys, the rows that they select, the title, and
// that rows stay what a fresh load of the same text shows.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/tests/DataText.h"
#include "veleditor/tests/TreeText.h"
#include "velparser/api/velparser.h"

#include <QAction>
#include <QScrollBar>
#include <QTextEdit>

#include <random>

using namespace velEditor;

namespace {

const char title[] = "/FLOW:Analysis/Title";
const char duct[] = "/FLOW:Analysis/DOMAIN:Duct";
const char inletKind[] = "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind";

/// The rows below one, those of each object in alphabetical order.
QString sortedRows(const VELTreeItem &row, int level = 0)
{
    QStringList children;
    for (int i = 0; i < row.childCount(); ++i) {
        const VELTreeItem &child = *VELTreeItem::from(row.child(i));
        children.append(QString(level, u' ') + child.label() + u'|' + child.value() + u'|' +
                        QString::number(child.isEditable()) +
                        QString::number(child.isInExpertSection()) + u'\n' +
                        sortedRows(child, level + 1));
    }
    children.sort();
    return children.join(QString());
}

} // namespace

class EditorUndoTest : public EditorTest
{
    Q_OBJECT

private:
    [[nodiscard]] Document &document() { return editor().document(); }
    void apply(const Edit &edit) { QCOMPARE(document().apply(edit), std::nullopt); }
    /// The action of the window with this name.
    QAction &action(const char *name);
    /// Sets a value as the user does.
    void edit(const char *path, const char *value);
    [[nodiscard]] std::string selectedPath();
    [[nodiscard]] bool isInView(const char *path);
    void changeAtRandom(std::mt19937 &random);

private slots:
    void undoesAndRedoesByKey();
    void namesTheStepInItsTip();
    void showsMarkupInATipAsItIs();
    void selectsWhatHasChanged();
    void selectsTheObjectOfWhatIsGone();
    void opensAndScrollsToTheRow();
    void keepsOpenRowsWhenASectionGoes();
    void marksTheTitle();
    void marksTheTitleAfterASaveInTheMiddle();
    void undoesAnAddedAndADeletedParameter();
    void undoesAnExpertSection();
    void undoesAFlowObjectForTheSection();
    void makesNoStepOfARefusedValue();
    void doesNothingBelowADialog();
    void saysWhyItCannotUndo();
    void showsWhatAFreshLoadShows();
};

QAction &EditorUndoTest::action(const char *name)
{
    auto *found = editor().findChild<QAction *>(QString::fromLatin1(name));
    if (found == nullptr) {
        qFatal("there is no action %s", name);
    }
    return *found;
}

void EditorUndoTest::edit(const char *path, const char *value)
{
    select(path);
    onDialog<EditParamDialog>([value](EditParamDialog &dialog) {
        auto *field = dialog.findChild<QTextEdit *>("Value");
        field->selectAll();
        QTest::keyClicks(field, value);
        pressButton(dialog, "Ok");
    });
    tree().editCurrParameter();
    QApplication::setActiveWindow(&editor()); // this platform does not
}

std::string EditorUndoTest::selectedPath()
{
    const VELTreeItem *item = tree().selectedItem();
    return item != nullptr ? item->path() : "none";
}

bool EditorUndoTest::isInView(const char *path)
{
    const QRect place = tree().visualItemRect(&row(path));
    return !place.isEmpty() && tree().viewport()->rect().contains(place.center());
}

// --- Keys and tips ------------------------------------------------------------------

void EditorUndoTest::undoesAndRedoesByKey()
{
    open(copyOf("duct.vel"));
    edit(title, "Second run");
    edit(title, "Third run");
    press("Ctrl+Z");
    QCOMPARE(row(title).value(), QString("Second run"));
    press("Ctrl+Z");
    QCOMPARE(row(title).value(), QString("First run"));
    press("Ctrl+Z"); // there is no more
    press("Ctrl+Shift+Z");
    QCOMPARE(row(title).value(), QString("Second run"));
    press("Ctrl+Y");
    QCOMPARE(row(title).value(), QString("Third run"));
    press("Ctrl+Y");
    QCOMPARE(document().data().value(title), "Third run");
}

void EditorUndoTest::namesTheStepInItsTip()
{
    open(copyOf("duct.vel"));
    QVERIFY(!action("Undo").isEnabled());
    QVERIFY(!action("Redo").isEnabled());
    apply(addingParameter(std::string(duct) + "/Normal Speed", "1"));
    apply(settingValue(std::string(duct) + "/Normal Speed", "2.5 [m s^-1]"));
    QVERIFY(action("Undo").isEnabled());
    QCOMPARE(action("Undo").toolTip(), QString("Undo: Normal Speed = 2.5 [m s^-1]"));
    press("Ctrl+Z");
    QCOMPARE(action("Undo").toolTip(), QString("Undo: Add Normal Speed = 1"));
    QCOMPARE(action("Redo").toolTip(), QString("Redo: Normal Speed = 2.5 [m s^-1]"));
    press("Ctrl+Z");
    QCOMPARE(action("Undo").toolTip(), QString("Nothing to undo"));
}

void EditorUndoTest::showsMarkupInATipAsItIs()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "<b>bold</b>"));
    const QString tip = action("Undo").toolTip();
    QVERIFY2(tip.contains("&lt;b&gt;bold"), qPrintable(tip));
}

// --- The affected row -----------------------------------------------------------------

void EditorUndoTest::selectsWhatHasChanged()
{
    open(copyOf("duct.vel"));
    apply(settingValue(title, "a"));
    apply(settingValue(inletKind, "Wall"));
    select(duct);
    press("Ctrl+Z");
    QCOMPARE(selectedPath(), inletKind);
    press("Ctrl+Z");
    QCOMPARE(selectedPath(), title);
    press("Ctrl+Y");
    press("Ctrl+Y");
    QCOMPARE(selectedPath(), inletKind);
}

void EditorUndoTest::selectsTheObjectOfWhatIsGone()
{
    open(copyOf("duct.vel"));
    const std::string in = std::string(duct) + "/BOUNDARY:in";
    apply(addingParameter(std::string(duct) + "/Reviewer", "x"));
    press("Ctrl+Z");
    QCOMPARE(selectedPath(), duct);
    apply(deletingObject(in));
    press("Ctrl+Z");
    QCOMPARE(selectedPath(), in);
    press("Ctrl+Y");
    QCOMPARE(selectedPath(), duct);
    // What is meant for experts has no row.
    apply(settingValue(std::string(duct) + "/Trace Level", "3"));
    select(title);
    press("Ctrl+Z");
    QCOMPARE(selectedPath(), duct);
}

void EditorUndoTest::opensAndScrollsToTheRow()
{
    QByteArray text = contentOf(copyOf("duct.vel"));
    for (int i = 0; i < 60; ++i) {
        text += "NOTES: n" + QByteArray::number(i) + "\nAuthor = a\nEND\n";
    }
    open(newFile("long.vel", text));
    apply(settingValue(title, "a"));
    apply(settingValue("/NOTES:n59/Author", "b"));
    tree().closeAll();
    QVERIFY(!isInView("/NOTES:n59/Author"));
    press("Ctrl+Z");
    QVERIFY(isInView("/NOTES:n59/Author"));
    QVERIFY(!row("/NOTES:n58").isExpanded());
    press("Ctrl+Z");
    QVERIFY(isInView(title));
}

// Rows are made again then.
void EditorUndoTest::keepsOpenRowsWhenASectionGoes()
{
    open(newFile("flow.vel", "FLOW: A\nTitle = x\nDOMAIN: D\nKind = Fluid\nEND\nEND\n"
                             "FLOW: B\nTitle = y\nEND\n"));
    press("Ctrl+P");
    tree().closeAll();
    row("/FLOW:A").setExpanded(true);
    row("/FLOW:A/DOMAIN:D").setExpanded(true);
    const QString open = treeText(tree());
    press("Ctrl+Z");
    QVERIFY(row("/FLOW:A").isExpanded());
    QVERIFY(row("/FLOW:A/DOMAIN:D").isExpanded());
    QCOMPARE(selectedPath(), "/FLOW:B");
    press("Ctrl+Y");
    QCOMPARE(treeText(tree()), open);
    QVERIFY(row("/FLOW:A/DOMAIN:D").isExpanded());
}

// --- The title ------------------------------------------------------------------------

void EditorUndoTest::marksTheTitle()
{
    open(copyOf("duct.vel"));
    edit(title, "Second run");
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
    press("Ctrl+Z");
    QCOMPARE(editor().windowTitle(), file());
    press("Ctrl+Y");
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
    press("Ctrl+Z");
    QVERIFY(editor().close()); // without a question
}

void EditorUndoTest::marksTheTitleAfterASaveInTheMiddle()
{
    open(copyOf("duct.vel"));
    edit(title, "Second run");
    edit(title, "Third run");
    press("Ctrl+Z");
    press("Ctrl+S");
    QCOMPARE(editor().windowTitle(), file());
    press("Ctrl+Z");
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
    press("Ctrl+Y");
    QCOMPARE(editor().windowTitle(), file());
    press("Ctrl+Y");
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
}

// --- Kinds of change --------------------------------------------------------------------

void EditorUndoTest::undoesAnAddedAndADeletedParameter()
{
    open(copyOf("duct.vel"));
    const QString before = treeText(tree());
    select(title);
    answer();
    press("Ctrl+D");
    const QString deleted = treeText(tree());
    QVERIFY(deleted != before);
    press("Ctrl+Z");
    QCOMPARE(treeText(tree()), before);
    QCOMPARE(selectedPath(), title);
    press("Ctrl+Y");
    QCOMPARE(treeText(tree()), deleted);
    QVERIFY(!document().data().value(title));
}

void EditorUndoTest::undoesAnExpertSection()
{
    open(newFile("flow.vel", "FLOW: A\nTitle = x\nEND\n"));
    press("Ctrl+P");
    const QString added = treeText(tree());
    press("Ctrl+Z");
    QCOMPARE(tree().expertItem(), nullptr);
    QCOMPARE(editor().windowTitle(), file());
    press("Ctrl+Y");
    QCOMPARE(treeText(tree()), added);
    QVERIFY(tree().expertItem() != nullptr);
    press("Ctrl+Z");
    press("Ctrl+P"); // there is none, so it is made again
    QCOMPARE(treeText(tree()), added);
}

void EditorUndoTest::undoesAFlowObjectForTheSection()
{
    open(newFile("none.vel", "DOMAIN: D\nKind = Fluid\nEND\n"));
    const QString before = treeText(tree());
    press("Ctrl+P");
    QCOMPARE(editor().windowTitle(), file()); // this change alone marks nothing
    press("Ctrl+Z");
    QCOMPARE(treeText(tree()), before);
    QCOMPARE(editor().windowTitle(), file());
    QVERIFY(tree().flowItem() == nullptr);
}

void EditorUndoTest::makesNoStepOfARefusedValue()
{
    open(copyOf("duct.vel"));
    edit(title, "a");
    edit("/FLOW:Analysis/DOMAIN:Duct/Reference Pressure", "much");
    bool cameBack = false;
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        cameBack = true;
        dialog.reject();
    });
    shown<ErrorDialog>().accept();
    QTRY_VERIFY(cameBack && QApplication::activeModalWidget() == nullptr);
    QApplication::setActiveWindow(&editor());
    QCOMPARE(action("Undo").toolTip(), QString("Undo: Title = a"));
    press("Ctrl+Z");
    QCOMPARE(row(title).value(), QString("First run"));
    QCOMPARE(editor().windowTitle(), file());
}

void EditorUndoTest::doesNothingBelowADialog()
{
    open(copyOf("duct.vel"));
    edit(title, "a");
    select(title);
    onDialog<EditParamDialog>([this](EditParamDialog &dialog) {
        press("Ctrl+Z");
        action("Undo").trigger();
        QCOMPARE(row(title).value(), QString("a"));
        QTest::keySequence(dialog.findChild<QTextEdit *>("Value"), QKeySequence("Ctrl+Z"));
        QCOMPARE(row(title).value(), QString("a"));
        dialog.reject();
    });
    tree().editCurrParameter();
    action("Undo").trigger();
    QCOMPARE(row(title).value(), QString("First run"));
}

void EditorUndoTest::saysWhyItCannotUndo()
{
    open(copyOf("duct.vel"));
    edit(title, "a");
    QCOMPARE(velparser::deleteParam(title), nullptr);
    answer();
    press("Ctrl+Z");
    QCOMPARE(
        boxes.last(),
        QString("Critical: Undo\nsetStringValue: requested object does not exist\n[Ok], Escape"));
    QVERIFY(!action("Undo").isEnabled());
}

// --- All of it ------------------------------------------------------------------------

void EditorUndoTest::changeAtRandom(std::mt19937 &random)
{
    const auto below = [&](std::size_t limit) {
        return static_cast<std::size_t>(random()) % limit;
    };
    std::vector<std::string> objects;
    std::vector<std::string> parameters;
    for (QTreeWidgetItemIterator i(&tree()); *i != nullptr; ++i) {
        const VELTreeItem *item = VELTreeItem::from(*i);
        (item->hasValue() ? parameters : objects).push_back(item->path());
    }
    const std::string value = "v" + std::to_string(below(1000));
    const std::string number = std::to_string(below(6));
    const std::string object = objects[below(objects.size())];
    const std::string parameter = parameters.empty() ? title : parameters[below(parameters.size())];
    switch (below(12)) {
    case 0:
        static_cast<void>(document().apply(deletingParameter(parameter)));
        break;
    case 1:
        if (object != "/") {
            apply(deletingObject(object));
        }
        break;
    case 2:
        apply(addingObject(childPath(object, "DOMAIN:d" + number),
                           "DOMAIN: d" + number + "\nBOUNDARY: b\nKind = Inlet\nEND\nEND\n"));
        break;
    case 3:
    case 4:
        apply(addingParameter(childPath(object, "p " + number), value));
        break;
    case 5:
    case 6:
    case 7:
        press("Ctrl+Z");
        break;
    case 8:
    case 9:
        press("Ctrl+Y");
        break;
    default:
        static_cast<void>(document().apply(settingValue(parameter, value)));
    }
}

void EditorUndoTest::showsWhatAFreshLoadShows()
{
    open(copyOf("duct.vel"));
    std::mt19937 random(7);
    for (int step = 1; step <= 400; ++step) {
        changeAtRandom(random);
        const bool isRebuilt = step % 10 == 0;
        if (isRebuilt) {
            const QString followed = sortedRows(*tree().firstItem());
            tree().buildTree();
            QCOMPARE(followed, sortedRows(*tree().firstItem()));
        }
        if (step % 100 != 0) {
            continue;
        }
        const QString rows = sortedRows(*tree().firstItem());
        const std::vector<std::string> lines = writtenLines();
        QVERIFY(document().save(document().file()).outcome == SaveOutcome::Written);
        forgetData();
        QCOMPARE(document().load(), std::nullopt);
        QCOMPARE(sortedRows(*tree().firstItem()), rows);
        QCOMPARE(writtenLines(), lines);
        QVERIFY(!action("Undo").isEnabled());
        QCOMPARE(editor().windowTitle(), file());
    }
}

VEL_EDITOR_TEST(EditorUndoTest)
#include "EditorUndo_test.moc"
