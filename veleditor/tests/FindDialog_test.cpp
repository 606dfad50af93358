// Tests the search of the tree.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/FindDialog.h"

#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>

using namespace velEditor;

class FindDialogTest : public EditorTest
{
    Q_OBJECT

private:
    FindDialog &dialog();
    /// The path of the selected row, which is the match.
    QString found();
    static QString notFound(const QString &text);
    void search(const QString &text);

private slots:
    void isModalWithoutALoop();
    void findsOnCtrlReturn();
    void findsRowsInClosedBranches();
    void findsWhenItsButtonIsPressed();
    void scrollsToTheMatch();
    void findsTheNextMatchAndWrapsAround();
    void searchesLabelsAndValues();
    void startsAfterTheSelection();
    void neverFindsASingleLetter();
    void keepsTheTextForTheNextTime();
    void findsTheNextMatchWithoutTheDialog();
    void startsAgainAfterARebuild();
    void startsAgainAfterItsRowWasDeleted();
};

FindDialog &FindDialogTest::dialog()
{
    return shown<FindDialog>();
}

QString FindDialogTest::found()
{
    const VELTreeItem *item = tree().selectedItem();
    return item != nullptr ? QString::fromStdString(item->path()) : QString();
}

QString FindDialogTest::notFound(const QString &text)
{
    return "Information: Not Found\nThe string \"" + text +
           "\" was not found.\nThe next search will start at the top of the tree.\n\n[Ok], Escape";
}

void FindDialogTest::search(const QString &text)
{
    auto *entry = dialog().findChild<QLineEdit *>();
    entry->setText(text);
    QTest::keyClick(entry, Qt::Key_Return);
}

// Ctrl+Return presses the main button, as in every dialog with a text field.
void FindDialogTest::findsOnCtrlReturn()
{
    open(copyOf("duct.vel"));
    press("Ctrl+F");
    auto *entry = dialog().findChild<QLineEdit *>();
    entry->setText("first run");
    QTest::keyClick(entry, Qt::Key_Return, Qt::ControlModifier);
    QCOMPARE(found(), QString("/FLOW:Analysis/Title"));
}

void FindDialogTest::isModalWithoutALoop()
{
    open(copyOf("duct.vel"));
    press("Ctrl+F");
    QVERIFY(dialog().isModal());
    QCOMPARE(dialog().objectName(), QString("Find"));
    QCOMPARE(dialog().windowTitle(), QString("Find"));
    QCOMPARE(dialog().findChild<QLabel *>()->text(), QString("Enter the string to find:"));
    QCOMPARE(dialog().findChild<QPushButton *>("FindButton")->text(), QString("&Find"));
    QCOMPARE(dialog().findChild<QPushButton *>("Close")->text(), QString("&Close"));
    QCOMPARE(dialog().layout()->spacing(), 10);
    QCOMPARE(dialog().size(), QSize(300, 125));
    pressButton(dialog(), "Close");
    QCOMPARE(visible<FindDialog>(), nullptr);
}

void FindDialogTest::findsRowsInClosedBranches()
{
    open(copyOf("duct.vel"));
    tree().doFind();
    search("mass flow");
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Mass Flow Rate"));
    QVERIFY(row("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in").isExpanded());
    QVERIFY(row("/FLOW:Analysis").isExpanded());
    QVERIFY(!row("/LANGUAGE").isExpanded());
}

void FindDialogTest::findsWhenItsButtonIsPressed()
{
    open(copyOf("duct.vel"));
    tree().doFind();
    dialog().findChild<QLineEdit *>()->setText("outlet");
    pressButton(dialog(), "FindButton");
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:out/Kind"));
    QVERIFY(visible<FindDialog>() != nullptr);
}

void FindDialogTest::scrollsToTheMatch()
{
    QByteArray text = "FLOW: A\n";
    for (int i = 0; i < 500; ++i) {
        text += "p" + QByteArray::number(i) + " = x\n";
    }
    open(newFile("many.vel", text + "END\n"));
    tree().doFind();
    for (const char *name : {"p490", "p3"}) {
        search(name);
        const QRect place = tree().visualItemRect(tree().selectedItem());
        QVERIFY(!place.isEmpty());
        QVERIFY(tree().viewport()->rect().contains(place.center()));
        answer(); // there is no match after the last one
        search("no such row");
    }
}

void FindDialogTest::findsTheNextMatchAndWrapsAround()
{
    open(copyOf("duct.vel"));
    tree().doFind();
    search("kind");
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/Kind"));
    search("kind");
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind"));
    search("kind");
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:out/Kind"));
    // That was the last row of the tree.
    answer();
    search("kind");
    QCOMPARE(boxes, QStringList(notFound("kind")));
    search("kind");
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/Kind"));
}

void FindDialogTest::searchesLabelsAndValues()
{
    open(copyOf("duct.vel"));
    tree().doFind();
    search("DOMAIN : D");
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct"));
    QVERIFY(row("/FLOW:Analysis/DOMAIN:Duct").isExpanded());
    search("b1, B2");
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/Location"));
}

void FindDialogTest::startsAfterTheSelection()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/DOMAIN:Duct/Kind");
    tree().doFind();
    search("kind");
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind"));
    pressButton(dialog(), "Close");

    // After an object, even a closed one, comes its first child.
    select("/LANGUAGE");
    tree().doFind();
    search("version");
    QCOMPARE(found(), QString("/LANGUAGE/Version"));
    pressButton(dialog(), "Close");

    // After the last row comes the first.
    select("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:out/Kind");
    tree().doFind();
    search("root");
    QCOMPARE(found(), QString("/"));
}

void FindDialogTest::neverFindsASingleLetter()
{
    open(copyOf("duct.vel"));
    tree().doFind();
    for (const char *text : {"r", "r", ""}) {
        answer();
        search(text);
        QCOMPARE(boxes.last(), notFound(text));
    }
    QCOMPARE(found(), QString());
}

void FindDialogTest::keepsTheTextForTheNextTime()
{
    open(copyOf("duct.vel"));
    tree().doFind();
    search("title");
    pressButton(dialog(), "Close");
    tree().doFind();
    auto *entry = dialog().findChild<QLineEdit *>();
    QCOMPARE(entry->text(), QString("title"));
    QCOMPARE(entry->selectedText(), QString("title"));
    QCOMPARE(tree().findChildren<FindDialog *>().size(), 1);
}

void FindDialogTest::findsTheNextMatchWithoutTheDialog()
{
    open(copyOf("duct.vel"));
    press("Ctrl+N"); // nothing was searched yet, so the dialog opens
    search("kind");
    pressButton(dialog(), "Close");
    press("Ctrl+N");
    QCOMPARE(visible<FindDialog>(), nullptr);
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind"));
}

void FindDialogTest::startsAgainAfterARebuild()
{
    open(copyOf("duct.vel"));
    tree().doFind();
    search("kind");
    tree().buildTree();
    answer();
    tree().doFindNext();
    tree().doFindNext();
    QCOMPARE(found(), QString("/FLOW:Analysis/DOMAIN:Duct/Kind"));
}

void FindDialogTest::startsAgainAfterItsRowWasDeleted()
{
    open(copyOf("duct.vel"));
    tree().doFind();
    search("kind"); // of the duct; the search continues at its Location
    pressButton(dialog(), "Close");
    select("/FLOW:Analysis/DOMAIN:Duct/Location");
    answer();
    tree().deleteParam();
    answer();
    tree().doFindNext();
    QCOMPARE(boxes.last(), notFound("kind"));
}

VEL_EDITOR_TEST(FindDialogTest)
#include "FindDialog_test.moc"
