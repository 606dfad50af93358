// Tests changing and deleting a parameter.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/tests/TreeText.h"
#include "velparser/api/velparser.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTextEdit>

using namespace velEditor;

class VELTreeEditTest : public EditorTest
{
    Q_OBJECT

private:
    /// The value that the database has.
    static QString stored(const char *path);
    /// Replaces the text of the dialog's field by typing.
    static void type(EditParamDialog &dialog, const QString &text);
    /// Replaces the text of the field, even by characters that cannot be typed.
    static void paste(EditParamDialog &dialog, const QString &text);
    static void choose(EditParamDialog &dialog, const QString &entry);

private slots:
    void editsByFreeText();
    void editsByList();
    void editsTheSelectedParameterFromTheMenu();
    void keepsTheValueWhenCancelled();
    void restoresTheValueAfterARefusal();
    void opensAgainWithARefusedText();
    void opensAgainAfterEachRefusal();
    void opensAgainIfTheRowIsEditedBeforeTheErrorsAreClosed();
    void doesNotOpenAgainForADeletedRow();
    void doesNotOpenAgainForAClosedWindow();
    void showsACurrentValueThatIsNotAllowed();
    void turnsLineBreaksIntoSpaces();
    void removesWhiteSpaceAtTheEndsBeforeTheCheck();
    void pressesOkOnCtrlReturn();
    void refusesValuesThatAFileCannotContain();
    void acceptsABackslashAtTheEnd();
    void doesNotChangeAnUneditedValue();
    void staysInTheEncodingOfTheFile();
    void acceptsAnEmptyValue();
    void choosesNothingForAnEmptyValue();
    void reportsAValueThatCannotBeStored();
    void editsOnlyAtTheLeftButton();
    void doesNotEditObjects();
    void refusesParametersThatAreNotEditable();
    void asksForASelection();
    void deletesAParameter();
    void selectsNothingAfterADelete();
    void showsItsButtonsBelowALongValue();
    void keepsAParameterWhenTheUserCancels();
    void refusesToDeleteAParameterThatIsNotEditable();
};

namespace {

const char title[] = "/FLOW:Analysis/Title";
const char boundaryKind[] = "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind";
const char pressure[] = "/FLOW:Analysis/DOMAIN:Duct/Reference Pressure";

} // namespace

QString VELTreeEditTest::stored(const char *path)
{
    std::optional<std::string> value;
    if (velparser::getStringValue(path, &value) != nullptr || !value) {
        return QString();
    }
    return QString::fromStdString(*value);
}

void VELTreeEditTest::type(EditParamDialog &dialog, const QString &text)
{
    auto *field = dialog.findChild<QTextEdit *>("Value");
    if (field == nullptr) {
        qFatal("there is no text field");
    }
    field->selectAll();
    QTest::keyClicks(field, text);
}

void VELTreeEditTest::paste(EditParamDialog &dialog, const QString &text)
{
    auto *field = dialog.findChild<QTextEdit *>("Value");
    field->selectAll();
    field->insertPlainText(text);
}

void VELTreeEditTest::choose(EditParamDialog &dialog, const QString &entry)
{
    auto *list = dialog.findChild<QComboBox *>("Values");
    if (list == nullptr) {
        qFatal("there is no list");
    }
    const int index = list->findText(entry);
    QVERIFY(index >= 0);
    list->setFocus();
    while (list->currentIndex() != index) {
        QTest::keyClick(list, list->currentIndex() < index ? Qt::Key_Down : Qt::Key_Up);
    }
}

void VELTreeEditTest::editsByFreeText()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        QCOMPARE(dialog.windowTitle(), QString("Edit Parameter"));
        QCOMPARE(dialog.findChild<QLabel *>()->text(), QString("Enter a new value for: Title"));
        QCOMPARE(dialog.findChild<QTextEdit *>("Value")->toPlainText(), QString("First run"));
        QCOMPARE(dialog.findChild<QPushButton *>("Ok")->text(), QString("&Ok"));
        QCOMPARE(dialog.findChild<QPushButton *>("Cancel")->text(), QString("&Cancel"));
        type(dialog, "Second run");
        pressButton(dialog, "Ok");
    });
    doubleClick(title);
    QCOMPARE(row(title).value(), QString("Second run"));
    QCOMPARE(stored(title), QString("Second run"));
    QVERIFY(tree().isModified());
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
}

void VELTreeEditTest::editsByList()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        QCOMPARE(dialog.findChild<QLabel *>()->text(), QString("Select a new value for: Kind"));
        auto *list = dialog.findChild<QComboBox *>("Values");
        QVERIFY(!list->isEditable());
        QStringList entries;
        for (int i = 0; i < list->count(); ++i) {
            entries.append(list->itemText(i));
        }
        QCOMPARE(entries, QStringList({"Inlet", "Outlet", "Wall"}));
        QCOMPARE(list->currentText(), QString("Inlet"));
        choose(dialog, "Wall");
        pressButton(dialog, "Ok");
    });
    doubleClick(boundaryKind);
    QCOMPARE(row(boundaryKind).value(), QString("Wall"));
    QCOMPARE(stored(boundaryKind), QString("Wall"));
}

void VELTreeEditTest::editsTheSelectedParameterFromTheMenu()
{
    open(copyOf("duct.vel"));
    select(title);
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "By key");
        pressButton(dialog, "Ok");
    });
    press("Ctrl+E");
    QCOMPARE(stored(title), QString("By key"));
}

void VELTreeEditTest::keepsTheValueWhenCancelled()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "No");
        pressButton(dialog, "Cancel");
    });
    doubleClick(title);
    QCOMPARE(row(title).value(), QString("First run"));
    QCOMPARE(stored(title), QString("First run"));
    QVERIFY(!tree().isModified());
}

void VELTreeEditTest::restoresTheValueAfterARefusal()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "lots");
        pressButton(dialog, "Ok");
    });
    doubleClick(pressure);

    auto &errors = shown<ErrorDialog>();
    QVERIFY(!errors.isModal());
    QCOMPARE(errors.objectName(), QString("Errors"));
    QVERIFY(errors.findChild<QTextEdit *>("Messages")->toPlainText().contains("[wrong-type]"));
    QCOMPARE(row(pressure).value(), QString("1"));
    QCOMPARE(stored(pressure), QString("1"));
    QVERIFY(tree().isModified());
}

// The typed text was once lost. A list of errors does not block the window, so the
// dialog opens again when the user has closed the list.
void VELTreeEditTest::opensAgainWithARefusedText()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        paste(dialog, "3 times\n");
        pressButton(dialog, "Ok");
    });
    doubleClick(pressure);
    auto &errors = shown<ErrorDialog>();
    QVERIFY(visible<EditParamDialog>() == nullptr);

    bool cameBack = false;
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        cameBack = true;
        QVERIFY(visible<ErrorDialog>() == nullptr);
        QCOMPARE(stored(pressure), QString("1"));
        QCOMPARE(row(pressure).value(), QString("1"));
        QCOMPARE(dialog.findChild<QTextEdit *>("Value")->toPlainText(), QString("3 times\n"));
        type(dialog, "3");
        pressButton(dialog, "Ok");
    });
    pressButton(errors, "Ok");
    QTRY_VERIFY(cameBack);
    QTRY_COMPARE(stored(pressure), QString("3"));
    QVERIFY(visible<ErrorDialog>() == nullptr);
}

void VELTreeEditTest::opensAgainAfterEachRefusal()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "x");
        pressButton(dialog, "Ok");
    });
    doubleClick(pressure);
    int times = 0;
    for (const char *next : {"y", "z"}) {
        onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
            ++times;
            type(dialog, next);
            pressButton(dialog, "Ok");
        });
        shown<ErrorDialog>().reject(); // Escape
        QTRY_VERIFY(visible<ErrorDialog>() != nullptr);
    }
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        ++times;
        QCOMPARE(dialog.findChild<QTextEdit *>("Value")->toPlainText(), QString("z"));
        pressButton(dialog, "Cancel");
    });
    shown<ErrorDialog>().close(); // the button in the frame
    QTRY_COMPARE(times, 3);
    QTRY_VERIFY(visible<EditParamDialog>() == nullptr);
    QCOMPARE(stored(pressure), QString("1"));
}

void VELTreeEditTest::opensAgainIfTheRowIsEditedBeforeTheErrorsAreClosed()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "lots");
        pressButton(dialog, "Ok");
    });
    doubleClick(pressure);
    // The dialog of another row begins with the value of that row.
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        QCOMPARE(dialog.findChild<QTextEdit *>("Value")->toPlainText(), QString("First run"));
        pressButton(dialog, "Cancel");
    });
    doubleClick(title);
    shown<ErrorDialog>().accept();
    QTest::qWait(0);
    QVERIFY(visible<EditParamDialog>() == nullptr); // the user has done something else meanwhile

    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "many");
        pressButton(dialog, "Ok");
    });
    doubleClick(pressure);
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        QCOMPARE(dialog.findChild<QTextEdit *>("Value")->toPlainText(), QString("many"));
        pressButton(dialog, "Cancel");
    });
    doubleClick(pressure);
    shown<ErrorDialog>().accept();
    QTest::qWait(0);
    QVERIFY(visible<EditParamDialog>() == nullptr);
}

void VELTreeEditTest::doesNotOpenAgainForADeletedRow()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "lots");
        pressButton(dialog, "Ok");
    });
    doubleClick(pressure);
    answer(0);
    tree().deleteParam();
    shown<ErrorDialog>().accept();
    QTest::qWait(0);
    QVERIFY(visible<EditParamDialog>() == nullptr);

    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        choose(dialog, "Wall");
        pressButton(dialog, "Cancel");
    });
    doubleClick(boundaryKind);
}

void VELTreeEditTest::doesNotOpenAgainForAClosedWindow()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "lots");
        pressButton(dialog, "Ok");
    });
    doubleClick(pressure);
    auto &errors = shown<ErrorDialog>();
    editor().hide();
    errors.close();
    QTest::qWait(0);
    QVERIFY(visible<EditParamDialog>() == nullptr);
}

void VELTreeEditTest::showsACurrentValueThatIsNotAllowed()
{
    open(newFile("odd.vel", "FLOW: A\nDOMAIN: D\nKind = Plasma\nEND\nEND\n"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        auto *list = dialog.findChild<QComboBox *>("Values");
        QCOMPARE(list->currentIndex(), -1);
        QCOMPARE(list->placeholderText(), QString("Plasma"));
        pressButton(dialog, "Ok");
    });
    doubleClick("/FLOW:A/DOMAIN:D/Kind");
    // Nothing was chosen; the invalid value is unchanged.
    QVERIFY(visible<ErrorDialog>() != nullptr);
    QCOMPARE(stored("/FLOW:A/DOMAIN:D/Kind"), QString("Plasma"));
}

void VELTreeEditTest::turnsLineBreaksIntoSpaces()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        auto *field = dialog.findChild<QTextEdit *>("Value");
        field->selectAll();
        QTest::keyClicks(field, "two");
        QTest::keyClick(field, Qt::Key_Return);
        QTest::keyClicks(field, "lines");
        pressButton(dialog, "Ok");
    });
    doubleClick(title);
    QCOMPARE(stored(title), QString("two lines"));
    QCOMPARE(row(title).value(), QString("two lines"));
}

// A correct number with a line break after it was once refused.
void VELTreeEditTest::removesWhiteSpaceAtTheEndsBeforeTheCheck()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        auto *field = dialog.findChild<QTextEdit *>("Value");
        field->selectAll();
        QTest::keyClicks(field, " 7 ");
        QTest::keyClick(field, Qt::Key_Return);
        pressButton(dialog, "Ok");
    });
    doubleClick(pressure);
    QVERIFY(visible<ErrorDialog>() == nullptr);
    QCOMPARE(stored(pressure), QString("7"));
    QCOMPARE(row(pressure).value(), QString("7"));
}

// Return alone types a line break in a field.
void VELTreeEditTest::pressesOkOnCtrlReturn()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "typed");
        QApplication::setActiveWindow(&dialog);
        QTest::keyClick(dialog.findChild<QTextEdit *>("Value"), Qt::Key_Return,
                        Qt::ControlModifier);
    });
    doubleClick(title);
    QCOMPARE(stored(title), QString("typed"));

    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "keypad");
        QApplication::setActiveWindow(&dialog);
        QTest::keyClick(dialog.findChild<QTextEdit *>("Value"), Qt::Key_Enter,
                        Qt::ControlModifier | Qt::KeypadModifier);
    });
    doubleClick(title);
    QCOMPARE(stored(title), QString("keypad"));

    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        choose(dialog, "Wall");
        QApplication::setActiveWindow(&dialog);
        QTest::keyClick(dialog.findChild<QComboBox *>("Values"), Qt::Key_Return,
                        Qt::ControlModifier);
    });
    doubleClick(boundaryKind);
    QCOMPARE(stored(boundaryKind), QString("Wall"));

    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "lots");
        pressButton(dialog, "Ok");
    });
    doubleClick(pressure);
    auto &errors = shown<ErrorDialog>();
    bool cameBack = false;
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        cameBack = true;
        pressButton(dialog, "Cancel");
    });
    QApplication::setActiveWindow(&errors);
    QTest::keyClick(errors.findChild<QTextEdit *>(), Qt::Key_Return, Qt::ControlModifier);
    QTRY_VERIFY(cameBack);
    QVERIFY(visible<ErrorDialog>() == nullptr);
}

// One box gives the reason, and the typed text stays in the field.
void VELTreeEditTest::refusesValuesThatAFileCannotContain()
{
    open(copyOf("duct.vel"));
    answer();
    answer();
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        const auto *field = dialog.findChild<QTextEdit *>("Value");
        type(dialog, " 5 # comment ");
        pressButton(dialog, "Ok");
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.focusWidget(), field);
        QCOMPARE(field->toPlainText(), QString(" 5 # comment "));
        paste(dialog, QString("5") + QChar(27) + "6");
        pressButton(dialog, "Ok");
        QVERIFY(dialog.isVisible());
        QCOMPARE(field->toPlainText(), QString("5") + QChar(27) + "6");
        type(dialog, "5 \\# kept");
        pressButton(dialog, "Ok");
    });
    doubleClick(title);
    QCOMPARE(
        boxes,
        QStringList({"Warning: Edit Parameter\nA value cannot contain the character \"#\", which "
                     "begins a comment in a command file.\nPlease write \"\\#\" for the character "
                     "itself.\n[Ok], Escape",
                     "Warning: Edit Parameter\nA value cannot contain control characters.\n"
                     "Please remove them.\n[Ok], Escape"}));
    QCOMPARE(stored(title), QString("5 \\# kept"));
}

// The line is written with an empty comment, so that the value reads back.
void VELTreeEditTest::acceptsABackslashAtTheEnd()
{
    open(copyOf("duct.vel"));
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "C:\\results\\ ");
        pressButton(dialog, "Ok");
    });
    doubleClick(title);
    QCOMPARE(stored(title), QString("C:\\results\\"));
    QVERIFY(editor().save(file().toStdString()));

    // The value and the line after it are read back from the file.
    const char *const others[] = {title, "/FLOW:Analysis/Run Mode"};
    for (const char *path : others) {
        QCOMPARE(velparser::setStringValue(path, "other"), nullptr);
    }
    QCOMPARE(velparser::loadVELFromFile(file().toUtf8(), "vel"), nullptr);
    QCOMPARE(stored(title), QString("C:\\results\\"));
    QCOMPARE(stored("/FLOW:Analysis/Run Mode"), QString("Steady"));
}

void VELTreeEditTest::doesNotChangeAnUneditedValue()
{
    // A no-break space as UTF-8 and as Latin-1, and a line separator: a text
    // field would lose them.
    open(newFile("nbsp.vel", "FLOW: A\nTitle = 1\xC2\xA0m\xE2\x80\xA8n\nRun Mode = 1\xA0m\nEND\n"));
    for (const char *path : {"/FLOW:A/Title", "/FLOW:A/Run Mode"}) {
        onDialog<EditParamDialog>([&](EditParamDialog &dialog) { pressButton(dialog, "Ok"); });
        doubleClick(path);
    }
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()),
             QByteArray("FLOW: A\n  Title = 1\xC2\xA0m\xE2\x80\xA8n\n  Run Mode = 1\xA0m\nEND\n"));
}

void VELTreeEditTest::staysInTheEncodingOfTheFile()
{
    open(newFile("latin1.vel", "FLOW: A\nTitle = K\xE4se\nRun Mode = plain\nEND\n"));
    const auto append = [&](const char *path, const QString &text) {
        onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
            auto *field = dialog.findChild<QTextEdit *>("Value");
            field->moveCursor(QTextCursor::End);
            field->insertPlainText(text);
            pressButton(dialog, "Ok");
        });
        doubleClick(path);
    };
    append("/FLOW:A/Title", QString(u'\u00f6'));
    append("/FLOW:A/Run Mode", QString(u'\u00f6'));
    QVERIFY(editor().save(file().toStdString()));
    QCOMPARE(contentOf(file()),
             QByteArray("FLOW: A\n  Title = K\xE4se\xF6\n  Run Mode = plain\xF6\nEND\n"));
}

// The rules decide whether a value may be empty; an empty one can be edited again.
void VELTreeEditTest::acceptsAnEmptyValue()
{
    open(copyOf("duct.vel"));
    const auto edit = [&](const char *path, const QString &former, const QString &text) {
        onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
            auto *field = dialog.findChild<QTextEdit *>("Value");
            QCOMPARE(field->toPlainText(), former);
            field->setPlainText(text);
            field->document()->setModified();
            pressButton(dialog, "Ok");
        });
        doubleClick(path);
    };
    edit(title, "First run", "");
    QVERIFY(visible<ErrorDialog>() == nullptr);
    QCOMPARE(row(title).value(), QString(""));
    edit(title, "", "Second run");
    QCOMPARE(stored(title), QString("Second run"));
    edit(title, "Second run", "");
    QVERIFY(editor().save(file().toStdString()));
    QVERIFY(contentOf(file()).contains("\n  Title = \n"));
}

void VELTreeEditTest::choosesNothingForAnEmptyValue()
{
    open(copyOf("duct.vel"));
    QCOMPARE(velparser::setStringValue(boundaryKind, ""), nullptr);
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        QCOMPARE(dialog.findChild<QComboBox *>("Values")->currentIndex(), -1);
        choose(dialog, "Wall");
        pressButton(dialog, "Ok");
    });
    doubleClick(boundaryKind);
    QCOMPARE(stored(boundaryKind), QString("Wall"));
}

// The rules may have deleted the parameter. The dialog opens again at once.
void VELTreeEditTest::reportsAValueThatCannotBeStored()
{
    open(copyOf("duct.vel"));
    QCOMPARE(velparser::deleteParam(title), nullptr);
    QList<QString> texts;
    setBoxAnswers([&](const MessageBox &box) {
        boxes.append(box.title + '\n' + box.text);
        onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
            texts.append(dialog.findChild<QTextEdit *>("Value")->toPlainText());
            pressButton(dialog, "Cancel");
        });
        return 0;
    });
    onDialog<EditParamDialog>([&](EditParamDialog &dialog) {
        type(dialog, "x");
        pressButton(dialog, "Ok");
    });
    doubleClick(title);
    QCOMPARE(boxes.size(), 1);
    QVERIFY2(boxes.first().startsWith("Edit Parameter\nsetStringValue"), qPrintable(boxes.first()));
    QCOMPARE(texts, QStringList("x"));
    QCOMPARE(row(title).value(), QString("First run"));
}

void VELTreeEditTest::editsOnlyAtTheLeftButton()
{
    open(copyOf("duct.vel"));
    tree().showMatch(row(title));
    const QPoint place = tree().visualItemRect(&row(title)).center();
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        QTest::mouseClick(tree().viewport(), button, Qt::NoModifier, place);
        QTest::mouseDClick(tree().viewport(), button, Qt::NoModifier, place);
        QTest::mouseRelease(tree().viewport(), button, Qt::NoModifier, place);
    }
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(!tree().isModified());
}

void VELTreeEditTest::doesNotEditObjects()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/DOMAIN:Duct");
    tree().editCurrParameter();
    QVERIFY(boxes.isEmpty());
    QVERIFY(!tree().isModified());
}

void VELTreeEditTest::refusesParametersThatAreNotEditable()
{
    open(copyOf("duct.vel"));
    answer();
    doubleClick("/LANGUAGE/Version");
    QCOMPARE(
        boxes,
        QStringList("Warning: Cannot edit Version\nOnly orange expert parameters and parameters\n"
                    "whose values are shown in green can be edited.\n[Ok], Escape"));
}

void VELTreeEditTest::asksForASelection()
{
    open(copyOf("duct.vel"));
    tree().clearSelection();
    answer();
    press("Ctrl+E");
    QCOMPARE(boxes, QStringList(
                        "Warning: Edit Parameter\nPlease select the parameter you wish to edit and "
                        "try again.\n\n[Ok], Escape"));
}

void VELTreeEditTest::deletesAParameter()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/DOMAIN:Duct/Location");
    answer(0);
    press("Ctrl+D");
    QCOMPARE(boxes,
             QStringList("Information: Deleting Parameter\nYou are about to delete the parameter\n"
                         "Location = B1, B2\nThis cannot be undone.\n"
                         "Do you really want to do this?\n"
                         "[&Delete The Parameter] | &Cancel"));
    QVERIFY(!treeText(tree()).contains("Location"));
    QCOMPARE(stored("/FLOW:Analysis/DOMAIN:Duct/Location"), QString());
    QVERIFY(tree().isModified());
}

// The view once selected the next row, so that the same keys deleted one parameter
// after the other.
void VELTreeEditTest::selectsNothingAfterADelete()
{
    open(copyOf("duct.vel"));
    for (const char *path : {"/FLOW:Analysis/DOMAIN:Duct/Location",
                             "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Mass Flow Rate"}) {
        select(path);
        answer(0);
        press("Ctrl+D");
        QVERIFY(tree().selectedItems().isEmpty());
    }
    boxes.clear();
    answer();
    press("Ctrl+D");
    QVERIFY2(boxes.value(0).startsWith("Warning: Deleting Parameter\nOnly orange"),
             qPrintable(boxes.value(0)));
    // The keyboard focus stays at its place.
    QVERIFY(tree().currentItem() != nullptr);
    QTest::keyClick(&tree(), Qt::Key_Down);
    QCOMPARE(tree().selectedItems().size(), 1);
}

// For a table of many thousand numbers, the box was once larger than the screen.
// Only its buttons close it.
void VELTreeEditTest::showsItsButtonsBelowALongValue()
{
    const QByteArray numbers = QByteArray("12.5, ").repeated(4000);
    open(newFile("table.vel", "FLOW: A\nTitle = " + numbers + "\nEND\n"));
    select("/FLOW:A/Title");
    setBoxAnswers({}); // use the real boxes
    onDialog<QMessageBox>([&](QMessageBox &box) {
        QCOMPARE(box.text(),
                 "You are about to delete the parameter\nTitle = " + QString(numbers.trimmed()) +
                     "\nThis cannot be undone.\nDo you really want to do this?");
        QVERIFY(box.height() <= box.screen()->availableGeometry().height());
        QTest::mouseClick(box.buttons().first(), Qt::LeftButton);
    });
    tree().deleteParam();
    QCOMPARE(stored("/FLOW:A/Title"), QString());
}

void VELTreeEditTest::keepsAParameterWhenTheUserCancels()
{
    open(copyOf("duct.vel"));
    for (const int button : {1, -1}) {
        select("/FLOW:Analysis/DOMAIN:Duct/Location");
        answer(button);
        tree().deleteParam();
    }
    QCOMPARE(stored("/FLOW:Analysis/DOMAIN:Duct/Location"), QString("B1, B2"));
    QVERIFY(!tree().isModified());
}

void VELTreeEditTest::refusesToDeleteAParameterThatIsNotEditable()
{
    open(copyOf("duct.vel"));
    const QString refusal =
        "Warning: Deleting Parameter\nOnly orange expert parameters and parameters\n"
        "whose values are shown in green can be deleted.\n\n[Ok], Escape";
    answer();
    tree().clearSelection();
    tree().deleteParam();
    for (const char *path : {"/FLOW:Analysis", "/LANGUAGE/Version"}) {
        answer();
        select(path);
        tree().deleteParam();
    }
    QCOMPARE(boxes, QStringList({refusal, refusal, refusal}));
}

VEL_EDITOR_TEST(VELTreeEditTest)
#include "VELTreeEdit_test.moc"
