// Tests what the dialog for a new parameter offers: names, defaults and lists of
// values.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/AddParamDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "velparser/api/velparser.h"

#include <QComboBox>
#include <QLineEdit>
#include <QScreen>
#include <QTextEdit>

using namespace velEditor;

class AddProposalsTest : public EditorTest
{
    Q_OBJECT

private slots:
    void offersNamesInTheOrderOfTheRules();
    void offersAMissingRequiredParameterFirst();
    void startsWithTheDefault();
    void offersAllowedValuesLogicalValuesAndObjectsAsAList();
    void fitsTheScreenWithALongEntry();
    void choosesNothingWithoutADefault();
    void keepsATypedValueWhenTheNameChanges();
    void offersTheValuesOfAFreeName();
    void doesNotChangeTypedNames();
};

namespace {

/// A pump, whose kind requires one more parameter.
const char pumpText[] = "DOMAIN: north\nKind = Fluid\nEND\nDOMAIN: south\nKind = Fluid\nEND\n"
                        "PUMP: p\nKind = Piston\nSpeed = 50\nEND\n";
const char emptyPumpText[] = "PUMP: p\nEND\n";
const char pump[] = "/PUMP:p";

QStringList entries(const QComboBox &list)
{
    QStringList texts;
    for (int i = 0; i < list.count(); ++i) {
        texts.append(list.itemText(i));
    }
    return texts;
}

/// The value part of the dialog as text: "[a | b] b" for a list with its choice,
/// otherwise the text of the field.
QString offeredValue(const AddParamDialog &dialog)
{
    const auto *list = dialog.findChild<QComboBox *>("Values");
    const auto *field = dialog.findChild<QTextEdit *>("Value");
    if (list->isVisible() == field->isVisible()) {
        qFatal("one of list and field is to be visible");
    }
    if (field->isVisible()) {
        return field->toPlainText();
    }
    return '[' + entries(*list).join(" | ") + "] " + list->currentText();
}

} // namespace

void AddProposalsTest::offersNamesInTheOrderOfTheRules()
{
    open(newFile("few.vel", "FLOW: A\nDOMAIN: D\nKind = Fluid\nTrace Level = 1\nEND\nEND\n"));
    select("/FLOW:A/DOMAIN:D");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        auto *list = dialog.findChild<QComboBox *>("editable combo");
        QCOMPARE(entries(*list), QStringList({"Location", "Reference Pressure", "Reviewer"}));
        QCOMPARE(dialog.paramName(), std::string("Location"));
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Down);
        QCOMPARE(dialog.paramName(), std::string("Reviewer"));
        dialog.findChild<QTextEdit *>("Value")->setPlainText("third");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/FLOW:A/DOMAIN:D/Reviewer").value(), QString("third"));
}

// The parameter comes first even if only the kind of the object requires it. It
// once came after all optional ones.
void AddProposalsTest::offersAMissingRequiredParameterFirst()
{
    open(newFile("pump.vel", pumpText));
    select(pump);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        QCOMPARE(entries(*dialog.findChild<QComboBox *>("editable combo")),
                 QStringList({"Stroke", "Note", "Running", "Source", "Serial Number"}));
        QCOMPARE(dialog.paramName(), std::string("Stroke"));
        dialog.reject();
    });
    tree().addParameter();

    // If any name may be added, the entry starts with the missing one.
    open(
        newFile("notes.vel", "NOTES: n\nAuthor = me\nEND\nNOTES: m\nAuthor = me\nDate = 1\nEND\n"));
    select("/NOTES:n");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        auto *name = dialog.findChild<QLineEdit *>("Name");
        QCOMPARE(name->text(), QString("Date"));
        QCOMPARE(name->selectedText(), QString("Date")); // so that typing replaces it
        dialog.findChild<QTextEdit *>("Value")->setPlainText("today");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/NOTES:n/Date").value(), QString("today"));
    select("/NOTES:m");
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        QCOMPARE(dialog.findChild<QLineEdit *>("Name")->text(), QString());
        dialog.reject();
    });
    tree().addParameter();
}

void AddProposalsTest::startsWithTheDefault()
{
    open(newFile("pump.vel", emptyPumpText));
    select(pump);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        auto *names = dialog.findChild<QComboBox *>("editable combo");
        QCOMPARE(names->currentText(), QString("Kind"));
        QCOMPARE(offeredValue(dialog), QString("[Centrifugal | Piston] Piston"));
        names->setFocus();
        QTest::keyClick(names, Qt::Key_Down);
        QCOMPARE(offeredValue(dialog), QString("50"));
        QTest::keyClick(names, Qt::Key_Down);
        QCOMPARE(offeredValue(dialog), QString("none yet"));
        QTest::keyClick(names, Qt::Key_Up);
        QCOMPARE(offeredValue(dialog), QString("50"));
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/PUMP:p/Speed").value(), QString("50"));

    // Typing replaces a default.
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        auto *names = dialog.findChild<QComboBox *>("editable combo");
        names->setFocus();
        QTest::keyClick(names, Qt::Key_Down);
        QTest::keyClicks(dialog.findChild<QTextEdit *>("Value"), "checked");
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/PUMP:p/Note").value(), QString("checked"));
}

// The lists are the same as for editing such a value.
void AddProposalsTest::offersAllowedValuesLogicalValuesAndObjectsAsAList()
{
    open(newFile("pump.vel", pumpText));
    select(pump);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        const auto offered = [&](const char *name) {
            dialog.findChild<QComboBox *>("editable combo")->setEditText(name);
            return offeredValue(dialog);
        };
        QCOMPARE(offered("Kind"), QString("[Centrifugal | Piston] Piston"));
        QCOMPARE(offered("Running"), QString("[Yes | No] "));
        QCOMPARE(offered("Source"), QString("[north | south] "));
        QCOMPARE(offered("Serial_Number"), QString());
        QCOMPARE(offered("Sour"), QString());
        QCOMPARE(offered(" Source"), QString()); // this name cannot be added
        QCOMPARE(offered("../PUMP:p/Source"), QString());
        QCOMPARE(offered("Source"), QString("[north | south] "));
        auto *list = dialog.findChild<QComboBox *>("Values");
        QVERIFY(!list->isEditable());
        list->setFocus();
        QTest::keyClick(list, Qt::Key_End);
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/PUMP:p/Source").value(), QString("south"));
}

// The dialog was once as wide as the longest name.
void AddProposalsTest::fitsTheScreenWithALongEntry()
{
    const QByteArray name = "North" + QByteArray("OfTheMeetingRoom").repeated(12);
    open(newFile("pump.vel", "DOMAIN: " + name + "\nKind = Fluid\nEND\n" + pumpText));
    select(pump);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        dialog.findChild<QComboBox *>("editable combo")->setEditText("Source");
        QCoreApplication::processEvents();
        const auto *list = dialog.findChild<QComboBox *>("Values");
        QCOMPARE(list->itemText(0), QString(name));
        QVERIFY(list->sizeHint().width() > dialog.screen()->availableGeometry().width());
        QVERIFY(dialog.width() <= dialog.screen()->availableGeometry().width());
        dialog.reject();
    });
    tree().addParameter();
}

void AddProposalsTest::choosesNothingWithoutADefault()
{
    open(newFile("pump.vel", pumpText));
    select(pump);
    answer();
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        dialog.findChild<QComboBox *>("editable combo")->setEditText("Running");
        pressButton(dialog, "Ok");
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.focusWidget()->objectName(), QString("Values"));
        dialog.reject();
    });
    tree().addParameter();
    QCOMPARE(boxes, QStringList("Warning: Missing Parameter Value\nYou must enter a parameter "
                                "value before continuing.\n[Ok], Escape"));
}

void AddProposalsTest::keepsATypedValueWhenTheNameChanges()
{
    open(newFile("pump.vel", emptyPumpText));
    select(pump);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        auto *names = dialog.findChild<QComboBox *>("editable combo");
        names->setEditText("Note");
        auto *field = dialog.findChild<QTextEdit *>("Value");
        field->selectAll();
        QTest::keyClicks(field, "70");
        names->setEditText("Running"); // a list
        QCOMPARE(offeredValue(dialog), QString("[Yes | No] "));
        names->setEditText("Speed");
        QCOMPARE(offeredValue(dialog), QString("70"));
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/PUMP:p/Speed").value(), QString("70"));
}

void AddProposalsTest::offersTheValuesOfAFreeName()
{
    runPerl("require API; no warnings 'redefine';"
            "*API::getAllowedParams = sub { @{$_[2]} = ('-1'); return '' };\n1;");
    open(newFile("pump.vel", pumpText));
    select(pump);
    onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
        auto *name = dialog.findChild<QLineEdit *>("Name");
        QTest::keyClicks(name, "Note");
        QCOMPARE(offeredValue(dialog), QString("none yet"));
        name->selectAll();
        QTest::keyClicks(name, "Running");
        QCOMPARE(offeredValue(dialog), QString("[Yes | No] "));
        auto *list = dialog.findChild<QComboBox *>("Values");
        list->setFocus();
        QTest::keyClick(list, Qt::Key_Down);
        pressButton(dialog, "Ok");
    });
    tree().addParameter();
    QCOMPARE(row("/PUMP:p/Running").value(), QString("Yes"));
}

// The list of names turned "Spe" into "Speed" and "speed" into "Speed".
void AddProposalsTest::doesNotChangeTypedNames()
{
    open(newFile("pump.vel", emptyPumpText));
    for (const char *name : {"Spe", "speed"}) {
        select(pump);
        onDialog<AddParamDialog>([&](AddParamDialog &dialog) {
            auto *names = dialog.findChild<QComboBox *>("editable combo");
            QApplication::setActiveWindow(&dialog); // a completer needs the focus
            names->setFocus();
            names->lineEdit()->selectAll();
            QTest::keyClicks(names->lineEdit(), name);
            QCOMPARE(names->currentText(), QString(name));
            QTest::keyClick(names->lineEdit(), Qt::Key_Tab);
            QCOMPARE(names->currentText(), QString(name));
            QTest::keyClicks(dialog.findChild<QTextEdit *>("Value"), "1");
            pressButton(dialog, "Ok");
        });
        tree().addParameter();
        shown<ErrorDialog>().close(); // the rules do not know the name
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(QString::fromStdString(tree().lastAddedItem()->path()),
                 QString("/PUMP:p/") + name);
    }
}

VEL_EDITOR_TEST(AddProposalsTest)
#include "AddProposals_test.moc"
