// Tests the texts about a row, and the keys for the selected row.
#include "veleditor/tests/EditorTest.h"

#include <QAccessible>
#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QMenu>
#include <QSignalSpy>
#include <QTextDocumentFragment>
#include <QWhatsThis>

using namespace velEditor;

class RowHelpTest : public EditorTest
{
    Q_OBJECT

private:
    /// Opens a file with rules that describe its parameters in detail.
    void openDescribed();
    static QString plain(const QString &rich);
    QMenu *shownMenu();
    static QString menuText(const QMenu &menu);

private slots:
    void showsTheRulesOfAParameter();
    void showsTheRulesOfAnObject();
    void saysInWordsWhatCanBeChanged();
    void showsOnlyWhatTheRulesReturn();
    void showsMarkupAsText();
    void explainsARowOnRequest();
    void opensItsMenuByKey();
    void keepsTheActionOfTheRightButton();
    void choosesFromItsMenuByKey();
    void copiesPathAndValue();
    void expandsAndCollapsesAll();
    void leavesAParameterWithOnePressOfLeft();
};

namespace {

const char flowRate[] = "/FLOW:A/PIPE:p/Flow Rate";

} // namespace

void RowHelpTest::openDescribed()
{
    newFile("own.vel",
            "RULES:\n"
            "OBJECT: FLOW\nParents = /\nOptional Objects = PIPE, EXPERT PARAMETERS\nEND\n"
            "SINGLETON: EXPERT PARAMETERS\nParents = FLOW\nFree Parameters = Yes\nEND\n"
            "OBJECT: PIPE\nDescription = Something to flow through.\nParents = FLOW\n"
            "Optional Parameters = Flow Rate, Kind\nMaximum Count = 2\nEND\n"
            "PARAMETER: Flow Rate\nDescription = Mass in unit time.\nType = Real\n"
            "Units = kg s^-1\nLower Bound = 0 [kg s^-1]\nUpper Bound = 9 [kg s^-1]\n"
            "Default = 1 [kg s^-1]\nHelp Topic = Rates\nEND\n"
            "PARAMETER: Kind\nAllowed Values = Round, <b>\nEditable = No\nEND\n"
            "END\n");
    qputenv("ZOT5_VEL_LIBSDIR", folder().toUtf8());
    qputenv("ZOT5_VEL_LIBS", "own.vel");
    open(newFile("pipe.vel", "FLOW: A\nEXPERT PARAMETERS:\nx = 1\nEND\nPIPE: p\n"
                             "Flow Rate = 2 [kg s^-1]\nKind = <b>\nEND\nEND\n"));
}

QString RowHelpTest::plain(const QString &rich)
{
    return QTextDocumentFragment::fromHtml(rich).toPlainText();
}

QMenu *RowHelpTest::shownMenu()
{
    return qobject_cast<QMenu *>(QApplication::activePopupWidget());
}

QString RowHelpTest::menuText(const QMenu &menu)
{
    QString text;
    for (const QAction *entry : menu.actions()) {
        text += entry->isSeparator() ? QString("--") : entry->text();
        if (!entry->shortcut().isEmpty()) {
            text += "  " + entry->shortcut().toString();
        }
        text += entry->isEnabled() ? "\n" : "  (off)\n";
    }
    return text;
}

void RowHelpTest::showsTheRulesOfAParameter()
{
    openDescribed();
    const QString facts = "Mass in unit time.\nType: Real\nUnits: kg s^-1\n"
                          "Lower Bound: 0 [kg s^-1]\nUpper Bound: 9 [kg s^-1]";
    QCOMPARE(plain(row(flowRate).toolTip(VELTreeItem::Name)),
             "Flow Rate\n(can be changed)\n" + facts);
    QCOMPARE(plain(row(flowRate).toolTip(VELTreeItem::Value)),
             "2 [kg s^-1]\n(can be changed)\n" + facts);
    QCOMPARE(plain(row(flowRate).whatsThis(VELTreeItem::Value)),
             "Flow Rate\n(can be changed)\n" + facts +
                 "\nBounds Exclusive: No\nDefault: 1 [kg s^-1]\nEditable: Yes\n"
                 "Editable While Running: No\nExpert: No\nExpressions: Yes\n"
                 "Presence: optional, by \"Optional Parameters\" of OBJECT:PIPE");
}

void RowHelpTest::showsTheRulesOfAnObject()
{
    openDescribed();
    QCOMPARE(plain(row("/FLOW:A/PIPE:p").toolTip(VELTreeItem::Name)),
             QString("PIPE : p\nSomething to flow through."));
    QCOMPARE(plain(row("/FLOW:A/PIPE:p").toolTip(VELTreeItem::Value)),
             QString("PIPE : p\nSomething to flow through."));
    QCOMPARE(plain(row("/FLOW:A/PIPE:p").whatsThis(VELTreeItem::Name)),
             QString("PIPE : p\nSomething to flow through.\nParents: FLOW\n"
                     "Optional Parameters: Flow Rate, Kind\nFree Parameters: No\nMaximum Count: 2\n"
                     "Expert: No\nOutput Ordering Priority: 0\n"
                     "Presence: optional, by \"Optional Objects\" of OBJECT:FLOW"));
}

// A screen reader gets the same text as the tool tip.
void RowHelpTest::saysInWordsWhatCanBeChanged()
{
    openDescribed();
    const struct
    {
        const char *path;
        QString state;
    } rows[] = {{flowRate, "can be changed"},
                {"/FLOW:A/PIPE:p/Kind", "cannot be changed"},
                {"/FLOW:A/EXPERT PARAMETERS/x", "expert parameter, can be changed"},
                {"/FLOW:A", ""}};
    for (const auto &expected : rows) {
        for (const int column : {VELTreeItem::Name, VELTreeItem::Value}) {
            VELTreeItem &item = row(expected.path);
            QCOMPARE(item.data(column, Qt::AccessibleDescriptionRole).toString(), expected.state);
            QCOMPARE(plain(item.toolTip(column)).contains('(' + expected.state + ')'),
                     !expected.state.isEmpty());
        }
    }

    tree().showMatch(row(flowRate));
    QAccessibleInterface *table = QAccessible::queryAccessibleInterface(&tree());
    if (table == nullptr) {
        qFatal("the tree has no accessible face");
    }
    QStringList descriptions;
    for (int i = 0; i < table->childCount(); ++i) {
        const QAccessibleInterface *cell = table->child(i);
        if (cell != nullptr && cell->text(QAccessible::Name) == "2 [kg s^-1]") {
            descriptions.append(cell->text(QAccessible::Description));
        }
    }
    QCOMPARE(descriptions, QStringList("can be changed"));
}

void RowHelpTest::showsOnlyWhatTheRulesReturn()
{
    open(copyOf("duct.vel"));
    QCOMPARE(plain(row("/").toolTip(VELTreeItem::Name)), QString("Root"));
    runPerl("require API; no warnings 'redefine'; *API::explainItem = sub { die };\n1;");
    QCOMPARE(plain(row("/FLOW:Analysis/Title").toolTip(VELTreeItem::Name)),
             QString("Title\n(can be changed)"));
}

void RowHelpTest::showsMarkupAsText()
{
    openDescribed();
    VELTreeItem &kind = row("/FLOW:A/PIPE:p/Kind");
    QVERIFY(kind.toolTip(VELTreeItem::Value).contains("&lt;b&gt;"));
    QVERIFY(plain(kind.whatsThis(VELTreeItem::Value)).contains("Allowed Values: Round, <b>"));
}

void RowHelpTest::explainsARowOnRequest()
{
    openDescribed();
    tree().showMatch(row(flowRate));
    QSignalSpy shown(editor().findChild<QAction *>("WhatsThis"), &QAction::triggered);
    press("Shift+F1");
    QCOMPARE(shown.count(), 1);
    QVERIFY(QTest::qWaitFor([] {
        for (const QWidget *window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && window->inherits("QWhatsThat"))
                return true;
        }
        return false;
    }));
    QWhatsThis::hideText();

    // The same with the mouse.
    const QPoint place = tree().visualItemRect(&row(flowRate)).center();
    QHelpEvent ask(QEvent::QueryWhatsThis, place, tree().viewport()->mapToGlobal(place));
    QVERIFY(QApplication::sendEvent(tree().viewport(), &ask));
    QVERIFY(ask.isAccepted());
}

void RowHelpTest::opensItsMenuByKey()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/DOMAIN:Duct/Kind");
    press("Shift+F10");
    QMenu *menu = shownMenu();
    if (menu == nullptr) {
        qFatal("there is no menu");
    }
    QCOMPARE(menuText(*menu), QString("&Add Parameter  Ctrl+A\n"
                                      "&Edit Parameter  Ctrl+E\n"
                                      "&Delete Parameter  Ctrl+D\n"
                                      "Add Expert &Parameter Section  Ctrl+P\n"
                                      "--\n"
                                      "&Find  Ctrl+F\n"
                                      "Find &Next  Ctrl+N\n"
                                      "--\n"
                                      "&Copy Path  Ctrl+Shift+C\n"
                                      "Copy &Value  Ctrl+C\n"
                                      "--\n"
                                      "E&xpand All  Ctrl++\n"
                                      "C&ollapse All  Ctrl+-\n"
                                      "--\n"
                                      "&What's This?  Shift+F1\n"
                                      "&Help on Row  F1\n"));
    // The place is directly below the row.
    const QRect place = tree().visualItemRect(&row("/FLOW:Analysis/DOMAIN:Duct/Kind"));
    QCOMPARE(menu->pos().y(), tree().viewport()->mapToGlobal(place.bottomLeft()).y());
    menu->close();

    // The Menu key comes as a context-menu event.
    tree().clearSelection();
    QContextMenuEvent key(QContextMenuEvent::Keyboard, QPoint(5, 5), QPoint(5, 5));
    QApplication::sendEvent(&tree(), &key);
    menu = shownMenu();
    if (menu == nullptr) {
        qFatal("there is no menu");
    }
    QVERIFY(menuText(*menu).contains("&Copy Path  Ctrl+Shift+C  (off)\n"
                                     "Copy &Value  Ctrl+C  (off)\n"));
    menu->close();
}

void RowHelpTest::keepsTheActionOfTheRightButton()
{
    open(copyOf("duct.vel"));
    const QPoint place = tree().visualItemRect(&row("/FLOW:Analysis")).center();
    QTest::mouseClick(tree().viewport(), Qt::RightButton, Qt::NoModifier, place);
    QContextMenuEvent button(QContextMenuEvent::Mouse, place,
                             tree().viewport()->mapToGlobal(place));
    QApplication::sendEvent(tree().viewport(), &button);
    QVERIFY(shownMenu() == nullptr);
    QVERIFY(row("/FLOW:Analysis").isExpanded());
}

void RowHelpTest::choosesFromItsMenuByKey()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis/DOMAIN:Duct/Location");
    press("Shift+F10");
    answer(0);
    QTest::keyClick(shownMenu(), Qt::Key_D); // its mnemonic
    QVERIFY2(boxes.value(0).startsWith("Information: Deleting Parameter\n"),
             qPrintable(boxes.value(0)));
}

void RowHelpTest::copiesPathAndValue()
{
    open(copyOf("duct.vel"));
    QClipboard *clipboard = QApplication::clipboard();
    select("/FLOW:Analysis/DOMAIN:Duct/Location");
    press("Ctrl+C");
    QCOMPARE(clipboard->text(), QString("B1, B2"));
    press("Ctrl+Shift+C");
    QCOMPARE(clipboard->text(), QString("/FLOW:Analysis/DOMAIN:Duct/Location"));

    // An object has a path but no value.
    select("/FLOW:Analysis/DOMAIN:Duct");
    press("Ctrl+C");
    QCOMPARE(clipboard->text(), QString("/FLOW:Analysis/DOMAIN:Duct/Location"));
    press("Ctrl+Shift+C");
    QCOMPARE(clipboard->text(), QString("/FLOW:Analysis/DOMAIN:Duct"));
    QVERIFY(!tree().isModified());
}

void RowHelpTest::expandsAndCollapsesAll()
{
    open(copyOf("duct.vel"));
    select("/FLOW:Analysis");
    press("Ctrl++");
    for (const char *path : {"/LANGUAGE", "/FLOW:Analysis", "/FLOW:Analysis/DOMAIN:Duct",
                             "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in"}) {
        QVERIFY2(row(path).isExpanded(), path);
    }

    select("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Kind");
    press("Ctrl+-");
    QVERIFY(row("/").isExpanded());
    for (const char *path : {"/LANGUAGE", "/FLOW:Analysis", "/FLOW:Analysis/DOMAIN:Duct",
                             "/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in"}) {
        QVERIFY2(!row(path).isExpanded(), path);
    }
    QCOMPARE(tree().selectedItem(), &row("/FLOW:Analysis"));
}

// After Expand All or a search, the first press once only closed the row.
void RowHelpTest::leavesAParameterWithOnePressOfLeft()
{
    open(copyOf("duct.vel"));
    const char kind[] = "/FLOW:Analysis/DOMAIN:Duct/Kind";
    const auto leave = [&] {
        QTest::keyClick(&tree(), Qt::Key_Left);
        QCOMPARE(tree().selectedItem(), &row("/FLOW:Analysis/DOMAIN:Duct"));
    };
    tree().showMatch(row(kind));
    leave();
    press("Ctrl++");
    select(kind);
    leave();
    QTest::keyClick(&tree(), Qt::Key_Asterisk);
    select(kind);
    leave();
}

VEL_EDITOR_TEST(RowHelpTest)
#include "RowHelp_test.moc"
