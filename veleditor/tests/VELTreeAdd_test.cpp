// Tests adding a parameter and the section of expert parameters.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/AddParamDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/tests/TreeText.h"
#include "velparser/api/velparser.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTextEdit>

using namespace velEditor;

class VELTreeAddTest : public EditorTest
{
    Q_OBJECT

private:
    static QStringList labels(const AddParamDialog &dialog);
    /// Of the rows.
    static QList<int> spacings(const AddParamDialog &dialog);
    /// Replaces the Perl routine that returns the names that may be added.
    void replaceAllowedParams(const QByteArray &body);
    static void enter(AddParamDialog &dialog, const QString &name, const QString &value);
    /// Adds a parameter to the expert section with these entries. Returns the boxes.
    void addExpert(const QString &name, const QString &value, bool accepted);

private slots:
    void addsByFreeName();
    void addsFromAList();
    void removesWhiteSpaceAtTheEndsOfTheValue();
    void takesAFinalBackslash();
    void pressesOkOnCtrlReturn();
    void addsToTheObjectThatHoldsTheParameter();
    void addsToTheRoot();
    void scrollsToTheNewRow();
    void saysWhenTheRulesFail();
    void saysWhereNothingCanBeAdded();
    void fitsTheScreenWithALongPath_data();
    void fitsTheScreenWithALongPath();
    void addsNothingWhenCancelled();
    void changesAParameterThatIsThereAlready();
    void keepsTheSelectionOnAReplacedRow();
    void leavesAParameterThatCannotBeChanged();
    void refusesANewNameThatTheRulesMakeReadOnly();
    void leavesAHiddenParameterThatCannotBeChanged();
    void reportsWhatTheDatabaseRefuses();
    void showsWhatIsWrongWithTheObject();
    void asksForASelection();
    void refusesBadEntries_data();
    void refusesBadEntries();
    void returnsToTheFieldThatIsWrong();
    void makesUnderscoresBlanks();
    void addsAnExpertSection();
    void addsAnExpertSectionToAFlowObjectWithoutName();
    void addsAnExpertSectionOnce();
    void knowsAnEmptyExpertSection();
    void makesAFlowObjectForTheExpertSection();
};

namespace {

const char expert[] = "/FLOW:Analysis/EXPERT PARAMETERS";

/// A pump, whose kind requires one parameter more.
const char pumpText[] = "DOMAIN: north\nKind = Fluid\nEND\nDOMAIN: south\nKind = Fluid\nEND\n"
                        "PUMP: p\nKind = Piston\nSpeed = 50\nEND\n";
const char emptyPumpText[] = "PUMP: p\nEND\n";
const char pump[] = "/PUMP:p";

} // namespace

QStringList VELTreeAddTest::labels(const AddParamDialog &dialog)
{
    QStringList texts;
    for (const QLabel *label : dialog.findChildren<QLabel *>()) {
        texts.append(label->text());
    }
    return texts;
}

QList<int> VELTreeAddTest::spacings(const AddParamDialog &dialog)
{
    QList<int> pixels;
    for (const QHBoxLayout *row : dialog.layout()->findChildren<QHBoxLayout *>()) {
        pixels.append(row->spacing());
    }
    return pixels;
}

void VELTreeAddTest::replaceAllowedParams(const QByteArray &body)
{
    runPerl("require API; no warnings 'redefine'; *API::getAllowedParams = sub {" + body +
            "};\n1;");
}

void VELTreeAddTest::enter(AddParamDialog &dialog, const QString &name, const QString &value)
{
    if (auto *entry = dialog.findChild<QLineEdit *>("Name")) {
        entry->setText(name);
    } else {
        dialog.findChild<QComboBox *>("editable combo")->setEditText(name);
    }
    dialog.findChild<QTextEdit *>("Value")->setPlainText(value);
}

void VELTreeAddTest::addsByFreeName()
{
    open(copyOf("duct.vel"));
    select(expert);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        QCOMPARE(dialog.windowTitle(), QString("Add Parameter"));
        QCOMPARE(labels(dialog),
                 QStringList({"Adding new parameter to: /FLOW:Analysis/EXPERT PARAMETERS",
                              "Enter the name and value of the new parameter to add inside "
                              "/FLOW:Analysis/EXPERT PARAMETERS",
                              "Name:", "Value:"}));
        QCOMPARE(spacings(dialog), QList<int>({5, 5}));
        QCOMPARE(dialog.findChild<QPushButton *>("Ok")->text(), QString("&Ok"));
        QCOMPARE(dialog.findChild<QPushButton *>("Cancel")->text(), QString("&Cancel"));
        QCOMPARE(dialog.findChild<QTextEdit *>("Value")->toPlainText(), QString());
        enter(dialog, "relaxation", "0.75");
        pressButton(dialog, "Ok");
    });
    press("Ctrl+A");
    QVERIFY(treeText(tree()).contains("    EXPERT PARAMETERS : !\n"
                                      "      relaxation = 0.75 * !\n"
                                      "      max loops = 3 * !\n"));
    VELTreeItem &added = row("/FLOW:Analysis/EXPERT PARAMETERS/relaxation");
    QCOMPARE(tree().lastAddedItem(), &added);
    QVERIFY(row(expert).isExpanded());
    QVERIFY(tree().isModified());

    QVERIFY(editor().save(file().toStdString()));
    QVERIFY(contentOf(file()).contains("  EXPERT PARAMETERS:\n"
                                       "    max loops = 3\n"
                                       "    solver build = 17\n"
                                       "    relaxation = 0.75\n"));
}

void VELTreeAddTest::addsFromAList()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/DOMAIN:Duct");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        QCOMPARE(labels(dialog),
                 QStringList({"Adding new parameter to: /FLOW:Analysis/DOMAIN:Duct",
                              "Select the new parameter to add, and enter a value", "Value:"}));
        auto *list = dialog.findChild<QComboBox *>("editable combo");
        QVERIFY(list->isEditable());
        QCOMPARE(list->count(), 1); // all others already exist
        QCOMPARE(list->currentText(), QString("Reviewer"));
        dialog.findChild<QTextEdit *>("Value")->setPlainText("checked");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/FLOW:Analysis/DOMAIN:Duct/Reviewer").value(), QString("checked"));
}

void VELTreeAddTest::removesWhiteSpaceAtTheEndsOfTheValue()
{
    open(newFile("pump.vel", emptyPumpText));
    select(pump);
    answer();
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "Speed", " \n ");
        pressButton(dialog, "Ok"); // no value at all
        QCOMPARE(dialog.findChild<QTextEdit *>("Value")->toPlainText(), QString(" \n "));
        enter(dialog, "Speed", "\n 7 \n");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QVERIFY(boxes.value(0).startsWith("Warning: Missing Parameter Value\n"));
    QCOMPARE(row("/PUMP:p/Speed").value(), QString("7"));
}

// A final backslash would continue the line that adds the parameter.
void VELTreeAddTest::takesAFinalBackslash()
{
    open(copyOf("duct.vel"));
    select(expert);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "folder", "C:\\results\\");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/FLOW:Analysis/EXPERT PARAMETERS/folder").value(), QString("C:\\results\\"));
}

void VELTreeAddTest::pressesOkOnCtrlReturn()
{
    open(newFile("pump.vel", pumpText));
    const struct
    {
        const char *name, *value, *field;
    } cases[] = {{"Note", "a", "Value"}, {"Speed", "8", "editable combo"}};
    for (const auto &entry : cases) {
        select(pump);
        onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
            enter(dialog, entry.name, entry.value);
            QApplication::setActiveWindow(&dialog);
            auto *field = dialog.findChild<QWidget *>(entry.field);
            field->setFocus();
            QTest::keyClick(field, Qt::Key_Return, Qt::ControlModifier);
        });
        tree().addParameter();
        QCOMPARE(tree().lastAddedItem()->value(), QString(entry.value));
    }
    // The entry for a free name has the focus at first.
    replaceAllowedParams("@{$_[2]} = ('-1'); return ''");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "Stroke", "2");
        QApplication::setActiveWindow(&dialog);
        QTest::keyClick(dialog.findChild<QLineEdit *>("Name"), Qt::Key_Return, Qt::ControlModifier);
    });
    tree().addParameter();
    QCOMPARE(row("/PUMP:p/Stroke").value(), QString("2"));
}

void VELTreeAddTest::addsToTheRoot()
{
    replaceAllowedParams("@{$_[2]} = ('-1'); return ''");
    open(copyOf("duct.vel"));
    select("/");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        QCOMPARE(labels(dialog).first(), QString("Adding new parameter to: /"));
        enter(dialog, "Author", "me");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QVERIFY2(treeText(tree()).startsWith("Root\n  Author = me *\n  LANGUAGE :\n"),
             qPrintable(treeText(tree())));
    QCOMPARE(QString::fromStdString(tree().lastAddedItem()->path()), QString("/Author"));
}

void VELTreeAddTest::scrollsToTheNewRow()
{
    QByteArray text = "FLOW: A\n";
    for (int i = 0; i < 300; ++i) {
        text += "p" + QByteArray::number(i) + " = x\n";
    }
    open(newFile("many.vel", text + "END\n"));
    tree().showMatch(row("/FLOW:A/p299"));
    replaceAllowedParams("@{$_[2]} = ('-1'); return ''");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "new", "1");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    const QRect place = tree().visualItemRect(tree().lastAddedItem());
    QVERIFY(tree().viewport()->rect().contains(place.center()));
}

void VELTreeAddTest::saysWhenTheRulesFail()
{
    replaceAllowedParams("return 'no rules today'");
    open(copyOf("duct.vel"));
    select(expert);
    answer();
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        QCOMPARE(labels(dialog).size(), 1);
        QVERIFY(labels(dialog).first().startsWith("No new parameters can be added to the\n"));
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(boxes, QStringList("Warning: Error\nno rules today\n[Ok], Escape"));
}

void VELTreeAddTest::addsToTheObjectThatHoldsTheParameter()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/EXPERT PARAMETERS/max loops");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "a", "1");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/FLOW:Analysis/EXPERT PARAMETERS/a").value(), QString("1"));
}

void VELTreeAddTest::saysWhereNothingCanBeAdded()
{
    open(newFile("sealed.vel", "SEALED: s\nEND\n"));
    select("/SEALED:s");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        QCOMPARE(labels(dialog),
                 QStringList("No new parameters can be added to the\n/SEALED:s\nsection of the ZOT "
                             "Command File.\n\nTo add a parameter to a different section, please "
                             "highlight\nthe appropriate section before attempting to add the "
                             "parameter.\n"));
        auto *ok = dialog.findChild<QPushButton *>();
        QCOMPARE(dialog.findChildren<QPushButton *>(), QList<QPushButton *>({ok}));
        QCOMPARE(ok->text(), QString("&Ok"));
        pressButton(dialog, "Ok");
        QCOMPARE(dialog.result(), static_cast<int>(QDialog::Rejected));
    });
    tree().addParameter();
    QVERIFY(!tree().isModified());
}

void VELTreeAddTest::fitsTheScreenWithALongPath_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("blanks") << "Return Air" + QByteArray(" of the Meeting Room").repeated(8);
    QTest::newRow("no blanks") << "ReturnAir" + QByteArray("OfTheMeetingRoom").repeated(12);
}

// The dialog was once as wide as the path, with Cancel beyond the screen, and a path
// without blanks was cut off.
void VELTreeAddTest::fitsTheScreenWithALongPath()
{
    QFETCH(QByteArray, name);
    open(newFile("deep.vel", "FLOW: A\nDOMAIN: " + name + "\nKind = Fluid\nBOUNDARY: " + name +
                                 "\nKind = Wall\nEND\nEND\nEND\n"));
    select("/FLOW:A/DOMAIN:" + name);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        QVERIFY(dialog.width() <= dialog.screen()->availableGeometry().width());
        const auto *label = dialog.findChild<QLabel *>();
        QCOMPARE(label->text(), "Adding new parameter to: /FLOW:A/DOMAIN:" + QString(name));
        QVERIFY(label->height() >= label->heightForWidth(label->width()));
        const int lines = label->height() / label->fontMetrics().height();
        QVERIFY(lines * label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
        dialog.reject();
    });
    tree().addParameter();
}

void VELTreeAddTest::addsNothingWhenCancelled()
{
    open(copyOf("duct.vel"));
    select(expert);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "a", "1");
        pressButton(dialog, "Cancel");
    });
    tree().addParameter();
    QVERIFY(!treeText(tree()).contains("a = 1"));
    QVERIFY(!tree().isModified());
}

// Adding a name that exists replaces its row.
void VELTreeAddTest::changesAParameterThatIsThereAlready()
{
    open(copyOf("duct.vel"));
    select(expert);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "max loops", "9");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QVERIFY(treeText(tree()).contains("    EXPERT PARAMETERS : !\n"
                                      "      max loops = 9 * !\n"
                                      "      solver build = 17 !\n"));

    // The row is at the place of a new one.
    select("/FLOW:Analysis/DOMAIN:Duct");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "Location", "B3");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QVERIFY(treeText(tree()).contains("    DOMAIN : Duct\n"
                                      "      Location = B3 *\n"
                                      "      Kind = Fluid *\n"
                                      "      Reference Pressure = 1 *\n"));
}

// The view once selected the row next to it.
void VELTreeAddTest::keepsTheSelectionOnAReplacedRow()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/DOMAIN:Duct/Location");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "Location", "B3");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(tree().selectedItem(), &row("/FLOW:Analysis/DOMAIN:Duct/Location"));
    QCOMPARE(tree().selectedItem()->value(), QString("B3"));
}

// Adding a parameter that the rules make read-only changes nothing, whether or not the
// object has it.
void VELTreeAddTest::refusesANewNameThatTheRulesMakeReadOnly()
{
    open(newFile("pump.vel", pumpText));
    const QString before = treeText(tree());
    select(pump);
    answer();
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "Serial_Number", "12");
        pressButton(dialog, "Ok");
        answer();
    });
    tree().addParameter();
    QCOMPARE(boxes.value(1),
             QString("Warning: Cannot edit Serial Number\nOnly orange expert parameters and "
                     "parameters\nwhose values are shown in green can be edited.\n[Ok], Escape"));
    QCOMPARE(treeText(tree()), before);
    std::optional<std::string> value;
    static_cast<void>(velparser::getStringValue("/PUMP:p/Serial Number", &value));
    QVERIFY(!value);
    QVERIFY(!tree().isModified());
}

void VELTreeAddTest::leavesAParameterThatCannotBeChanged()
{
    open(copyOf("duct.vel"));
    const QString before = treeText(tree());
    select(expert);
    answer();
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "solver build", "99");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(boxes, QStringList("Warning: Cannot edit solver build\nOnly orange expert parameters "
                                "and parameters\nwhose values are shown in green can be "
                                "edited.\n[Ok], Escape"));
    QCOMPARE(treeText(tree()), before);
    std::optional<std::string> value;
    QCOMPARE(velparser::getStringValue("/FLOW:Analysis/EXPERT PARAMETERS/solver build", &value),
             nullptr);
    QCOMPARE(value.value_or(""), std::string("17"));
    QVERIFY(!tree().isModified());
}

// In safe mode no row is shown for it.
void VELTreeAddTest::leavesAHiddenParameterThatCannotBeChanged()
{
    open(copyOf("duct.vel"), true);
    select("/FLOW:Analysis/DOMAIN:Duct");
    answer();
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "Trace Level", "7");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QVERIFY(boxes.value(0).startsWith("Warning: Cannot edit Trace Level\n"));
    std::optional<std::string> value;
    QCOMPARE(velparser::getStringValue("/FLOW:Analysis/DOMAIN:Duct/Trace Level", &value), nullptr);
    QCOMPARE(value.value_or(""), std::string("2"));
}

// The object's name has a character that a line of a command file cannot contain.
void VELTreeAddTest::reportsWhatTheDatabaseRefuses()
{
    open(copyOf("duct.vel"));
    select(expert);
    row(expert).setText(VELTreeItem::Name, "NO OBJECT");
    answer();
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "a", "1");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(boxes, QStringList("Warning: Add Parameter\nError encountered while processing new "
                                "parameter.\nError message was:\nparseVELLineH: syntax error near "
                                "\"NO OBJECT\"\nParameter was not created.\n[Ok], Escape"));
    QVERIFY(!treeText(tree()).contains("a = 1"));
    QVERIFY(tree().isModified());
}

void VELTreeAddTest::showsWhatIsWrongWithTheObject()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/DOMAIN:Duct");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "Colour", "red");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    auto &errors = shown<ErrorDialog>();
    QVERIFY(!errors.isModal());
    QVERIFY(errors.findChild<QTextEdit *>()->toPlainText().contains("[unknown-parameter]"));
    QCOMPARE(row("/FLOW:Analysis/DOMAIN:Duct/Colour").value(), QString("red"));
}

void VELTreeAddTest::asksForASelection()
{
    open(copyOf("duct.vel"));
    tree().clearSelection();
    answer();
    tree().addParameter();
    QCOMPARE(
        boxes,
        QStringList("Warning: Add Parameter\nError:  You must select the object you wish to add "
                    "parameters to.\nPlease select an object and try again.\n[Ok], Escape"));
}

void VELTreeAddTest::addExpert(const QString &name, const QString &value, bool accepted)
{
    select(expert);
    answer();
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, name, value);
        pressButton(dialog, "Ok");
        QCOMPARE(dialog.isVisible(), !accepted);
        if (dialog.isVisible()) {
            dialog.reject();
        }
    });
    tree().addParameter();
}

void VELTreeAddTest::refusesBadEntries_data()
{
    const QString start =
        "Warning: Invalid Parameter Name\nParameter names must begin with a letter or a "
        "number.\nPlease correct your parameter name before continuing.\n[Ok], Escape";
    const auto character = [](const QString &c) {
        return QString("Warning: Invalid Parameter Name\nError: \"" + c +
                       "\" is not a valid character in a parameter name.\nPlease correct your "
                       "parameter name before continuing.\n[Ok], Escape");
    };
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("box");
    QTest::newRow("no name")
        << ""
        << "1"
        << "Warning: Missing Parameter Name\nYou must enter a name for your parameter "
           "before continuing.\n[Ok], Escape";
    QTest::newRow("underscore first") << "_a"
                                      << "1" << start;
    QTest::newRow("blank first") << " a"
                                 << "1" << start;
    QTest::newRow("letter beyond ASCII first") << QString(u'\u00e4') << "1" << start;
    QTest::newRow("no value")
        << "a"
        << ""
        << "Warning: Missing Parameter Value\nYou must enter a parameter value before "
           "continuing.\n[Ok], Escape";
    QTest::newRow("no value comes before a bad character")
        << "a-b"
        << ""
        << "Warning: Missing Parameter Value\nYou must enter a parameter value before "
           "continuing.\n[Ok], Escape";
    QTest::newRow("minus") << "a-b"
                           << "1" << character("-");
    QTest::newRow("the first of two") << "a/b-c"
                                      << "1" << character("/");
    QTest::newRow("beyond ASCII") << QString("a") + u'\u00e4' << "1"
                                  << character(QString(u'\u00e4'));
    QTest::newRow("a comment")
        << "a"
        << "1 # one"
        << "Warning: Add Parameter\nA value cannot contain the character \"#\", which begins "
           "a comment in a command file.\nPlease write \"\\#\" for the character "
           "itself.\n[Ok], Escape";
}

void VELTreeAddTest::refusesBadEntries()
{
    QFETCH(QString, name);
    QFETCH(QString, value);
    QFETCH(QString, box);
    boxes.clear();
    open(copyOf("duct.vel"));
    addExpert(name, value, false);
    QCOMPARE(boxes, QStringList(box));
    QVERIFY(!tree().isModified());
}

// The focus once stayed at the button, so that typing had no effect.
void VELTreeAddTest::returnsToTheFieldThatIsWrong()
{
    open(copyOf("duct.vel"));
    const struct
    {
        const char *path, *name, *value, *field;
    } cases[] = {{expert, "", "1", "Name"},
                 {expert, "_a", "1", "Name"},
                 {expert, "a-b", "1", "Name"},
                 {expert, "a", "", "Value"},
                 {expert, "a", "1 # b", "Value"},
                 {"/FLOW:Analysis/DOMAIN:Duct", "a-b", "1", "editable combo"}};
    for (const auto &wrong : cases) {
        select(wrong.path);
        answer();
        onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
            enter(dialog, wrong.name, wrong.value);
            pressButton(dialog, "Ok");
            QCOMPARE(dialog.focusWidget()->objectName(), QString(wrong.field));
            dialog.reject();
        });
        tree().addParameter();
    }
}

void VELTreeAddTest::makesUnderscoresBlanks()
{
    open(copyOf("duct.vel"));
    addExpert("two_words", "1", true);
    QCOMPARE(boxes,
             QStringList(
                 "Information: Underscores replaced\nUnderscores (`_') are not valid characters in "
                 "a parameter name.\nUnderscores have been replaced with spaces in "
                 "your parameter name.\n[Ok], Escape"));
    QCOMPARE(row("/FLOW:Analysis/EXPERT PARAMETERS/two words").value(), QString("1"));
}

void VELTreeAddTest::addsAnExpertSection()
{
    open(newFile("plain.vel", "FLOW: A\nTitle = x\nDOMAIN: D\nKind = Fluid\nEND\nEND\n"));
    press("Ctrl+P");
    QCOMPARE(treeText(tree()), QString("Root\n"
                                       "  FLOW : A\n"
                                       "    Title = x *\n"
                                       "    DOMAIN : D\n"
                                       "      Kind = Fluid *\n"
                                       "    EXPERT PARAMETERS : !\n"));
    QCOMPARE(tree().expertItem(), &row("/FLOW:A/EXPERT PARAMETERS"));
    QVERIFY(row("/FLOW:A").isExpanded());
    QVERIFY(tree().isModified());
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()), QByteArray("FLOW: A\n"
                                           "  Title = x\n"
                                           "  EXPERT PARAMETERS:\n"
                                           "  END\n"
                                           "  DOMAIN: D\n"
                                           "    Kind = Fluid\n"
                                           "  END\n"
                                           "END\n"));
}

void VELTreeAddTest::addsAnExpertSectionToAFlowObjectWithoutName()
{
    open(newFile("single.vel", "FLOW:\nTitle = x\nEND\n"));
    tree().addExpertParamObj();
    QCOMPARE(QString::fromStdString(tree().expertItem()->path()),
             QString("/FLOW/EXPERT PARAMETERS"));
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()),
             QByteArray("FLOW:\n  Title = x\n  EXPERT PARAMETERS:\n  END\nEND\n"));
}

void VELTreeAddTest::knowsAnEmptyExpertSection()
{
    open(newFile("empty.vel", "FLOW: A\nEXPERT PARAMETERS:\nEND\nEND\n"));
    QCOMPARE(tree().expertItem(), &row("/FLOW:A/EXPERT PARAMETERS"));
    answer();
    tree().addExpertParamObj();
    QCOMPARE(boxes.size(), 1);
    select("/FLOW:A/EXPERT PARAMETERS");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        enter(dialog, "a", "1");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(treeText(tree()), QString("Root\n"
                                       "  FLOW : A\n"
                                       "    EXPERT PARAMETERS : !\n"
                                       "      a = 1 * !\n"));
}

void VELTreeAddTest::addsAnExpertSectionOnce()
{
    open(copyOf("duct.vel"));
    answer();
    tree().addExpertParamObj();
    QCOMPARE(
        boxes,
        QStringList(
            "Information: Add Expert Parameter Section\nAn expert parameter section already "
            "exists.\nMultiple expert parameter sections cannot be created. \nUse "
            "\"Edit->Add Expert Parameter\" to add a parameter to this section.\n[Ok], Escape"));
    QVERIFY(row("/FLOW:Analysis").isExpanded());
    QVERIFY(!tree().isModified());
}

void VELTreeAddTest::makesAFlowObjectForTheExpertSection()
{
    open(newFile("none.vel", "SEALED: s\nEND\n"));
    tree().addExpertParamObj();
    QCOMPARE(treeText(tree()), QString("Root\n"
                                       "  SEALED : s\n"
                                       "  FLOW : Analysis\n"
                                       "    EXPERT PARAMETERS : !\n"));
    QVERIFY(!tree().isModified()); // this change does not mark the document
    QCOMPARE(tree().expertItem(), &row("/FLOW:Analysis/EXPERT PARAMETERS"));
}

VEL_EDITOR_TEST(VELTreeAddTest)
#include "VELTreeAdd_test.moc"
