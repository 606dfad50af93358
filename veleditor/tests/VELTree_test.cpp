// Tests the command tree: its texts, its colours, and how branches open.
#include "veleditor/tests/EditorTest.h"

#include "common/error.h"
#include "veleditor/tests/TreeText.h"
#include "velparser/api/velparser.h"

#include <QElapsedTimer>
#include <QHeaderView>
#include <QScrollBar>
#include <QStyle>
#include <QStyledItemDelegate>

using namespace velEditor;

class VELTreeTest : public EditorTest
{
    Q_OBJECT

private:
    /// Whether the cell has a pixel of exactly this colour.
    bool cellHas(const char *path, int column, const QColor &colour);
    bool isGreen(const char *path, int column);
    bool isOrange(const char *path, int column);
    /// The colour of the row when it is selected.
    QColor selectionColour(const char *path);

private slots:
    void showsTheFile();
    void showsLibraryDataOnRequest();
    void showsExpertItemsOnRequest();
    void showsParametersOfTheRoot();
    void knowsTheFlowObject();
    void acceptsAnyPathThatBeginsWithFlow();
    void worksWithoutAFlowObject();
    void acceptsTheExpertSectionOnlyInTheFlowObject();
    void showsAnObjectNamedLikeAParameterAsThatParameter();
    void showsBytesAsUtf8ElseAsLatin1();
    void coloursEditableRows();
    void keepsItsColoursInEveryState();
    void saysWhatTheColoursMean();
    void selectsInBlue();
    void hasTwoColumns();
    void showsNoHorizontalBarBesideTheVerticalOne();
    void scrollsSidewaysIfColumnsAreWider();
    void endsTextsBeforeTheScrollBar();
    void keepsTheOrderOfTheFileUntilSorted();
    void opensAndClosesBranchesWithTheRightButton();
    void marksUnsavedChangesOnce();
    void showsDeeplyNestedObjects();
    void showsVeryLongValues();
    void showsTheFirstThousandCharactersOfAValue();
    void showsAnEmptyValue();
    void treatsAFailedQuestionAsYes();
    void throwsWhenTheDatabaseFails();
};

void VELTreeTest::showsTheFile()
{
    open(copyOf("duct.vel"));
    QCOMPARE(treeText(tree()), QString("Root\n"
                                       "  LANGUAGE :\n"
                                       "    Version = 2.1\n"
                                       "  FLOW : Analysis\n"
                                       "    Title = First run *\n"
                                       "    Run Mode = Steady *\n"
                                       "    EXPERT PARAMETERS : !\n"
                                       "      max loops = 3 * !\n"
                                       "      solver build = 17 !\n"
                                       "    DOMAIN : Duct\n"
                                       "      Kind = Fluid *\n"
                                       "      Location = B1, B2 *\n"
                                       "      Reference Pressure = 1 *\n"
                                       "      BOUNDARY : in\n"
                                       "        Kind = Inlet *\n"
                                       "        Mass Flow Rate = 0.5 *\n"
                                       "      BOUNDARY : out\n"
                                       "        Kind = Outlet *\n"));
    QVERIFY(tree().topLevelItem(0)->isExpanded());
    QVERIFY(!row("/FLOW:Analysis").isExpanded());
    QVERIFY(!tree().isModified());
}

void VELTreeTest::showsLibraryDataOnRequest()
{
    qputenv("VELEDITOR_SHOW_LIBRARY", "");
    open(copyOf("duct.vel"));
    const QString text = treeText(tree());
    QVERIFY(text.contains("  LIBRARY :\n    SUBSTANCE : Water\n      Density = 997"));
    QVERIFY(text.contains("  RULES :\n"));
}

void VELTreeTest::showsExpertItemsOnRequest()
{
    qputenv("ZOT5_VEL_EXPERT", "");
    open(copyOf("duct.vel"));
    QCOMPARE(row("/FLOW:Analysis/DOMAIN:Duct/Trace Level").value(), QString("2"));
}

void VELTreeTest::showsParametersOfTheRoot()
{
    open(newFile("root.vel", "Author = me\nFLOW:\nTitle = x\nEND\n"));
    QCOMPARE(row("/Author").value(), QString("me"));
    QCOMPARE(treeText(tree()), QString("Root\n"
                                       "  Author = me *\n"
                                       "  FLOW :\n"
                                       "    Title = x *\n"));
}

void VELTreeTest::knowsTheFlowObject()
{
    open(copyOf("duct.vel"));
    QCOMPARE(tree().flowItem(), &row("/FLOW:Analysis"));
    QCOMPARE(tree().lastFlowChild(), &row("/FLOW:Analysis/DOMAIN:Duct"));
    QCOMPARE(tree().expertItem(), &row("/FLOW:Analysis/EXPERT PARAMETERS"));
    QCOMPARE(tree().lastAddedItem(), nullptr);
}

void VELTreeTest::acceptsAnyPathThatBeginsWithFlow()
{
    open(newFile("two.vel", "FLOW: One\nTitle = 1\nEND\nFLOWER: Two\nTitle = 2\nEND\n"));
    QCOMPARE(tree().flowItem(), &row("/FLOWER:Two"));
    QCOMPARE(tree().lastFlowChild(), &row("/FLOWER:Two/Title"));
}

void VELTreeTest::worksWithoutAFlowObject()
{
    open(newFile("none.vel", "LANGUAGE:\nVersion = 2.1\nEND\n"));
    QCOMPARE(tree().flowItem(), nullptr);
    QCOMPARE(tree().lastFlowChild(), nullptr);
    QCOMPARE(tree().expertItem(), nullptr);
}

void VELTreeTest::acceptsTheExpertSectionOnlyInTheFlowObject()
{
    open(newFile("inner.vel", "FLOW: A\nDOMAIN: D\nKind = Fluid\nEXPERT PARAMETERS:\nx = 1\nEND\n"
                              "END\nEND\nEXPERT PARAMETERS:\ny = 1\nEND\n"));
    QCOMPARE(tree().expertItem(), nullptr);
    QVERIFY(!row("/FLOW:A/DOMAIN:D/EXPERT PARAMETERS/x").isInExpertSection());
    QVERIFY(!row("/EXPERT PARAMETERS/y").isInExpertSection());
}

// If there is a value at the child's path, the row is a parameter.
void VELTreeTest::showsAnObjectNamedLikeAParameterAsThatParameter()
{
    open(newFile("same.vel", "FLOW: A\nD = 3\nDOMAIN: D\nKind = Fluid\nEND\nEND\n"));
    QCOMPARE(treeText(tree()), QString("Root\n"
                                       "  FLOW : A\n"
                                       "    D = 3 *\n"
                                       "    DOMAIN : D = 3\n"));
}

void VELTreeTest::showsBytesAsUtf8ElseAsLatin1()
{
    open(newFile("bytes.vel", "FLOW: A\nTitle = K\xC3\xA4se\nRun Mode = K\xE4se\nEND\n"));
    QCOMPARE(row("/FLOW:A/Title").value(), QString::fromUtf8("K\u00e4se"));
    QCOMPARE(row("/FLOW:A/Run Mode").value(), QString::fromUtf8("K\u00e4se"));
}

bool VELTreeTest::cellHas(const char *path, int column, const QColor &colour)
{
    QFont sharp = tree().font();
    sharp.setStyleStrategy(QFont::NoAntialias);
    tree().setFont(sharp);
    VELTreeItem &item = row(path);
    tree().showMatch(item);
    tree().clearSelection();
    tree().setCurrentItem(nullptr);
    QRect cell = tree().visualItemRect(&item);
    const int left = tree().header()->sectionViewportPosition(column);
    cell.setLeft(column == VELTreeItem::Name ? cell.left() : left);
    cell.setRight(left + tree().columnWidth(column) - 1);
    const QImage picture = tree().viewport()->grab(cell).toImage();
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y) == colour) {
                return true;
            }
        }
    }
    return false;
}

bool VELTreeTest::isGreen(const char *path, int column)
{
    return cellHas(path, column, QColor(0, 200, 0));
}

bool VELTreeTest::isOrange(const char *path, int column)
{
    return cellHas(path, column, QColor(255, 140, 0));
}

QColor VELTreeTest::selectionColour(const char *path)
{
    select(path);
    const QRect cell = tree().visualItemRect(&row(path));
    const QImage picture = tree().viewport()->grab(cell).toImage();
    return picture.pixelColor(picture.width() - 3, 3);
}

void VELTreeTest::coloursEditableRows()
{
    open(copyOf("duct.vel"));
    const char *ordinary = "/FLOW:Analysis/Title";
    QVERIFY(!isGreen(ordinary, VELTreeItem::Name));
    QVERIFY(isGreen(ordinary, VELTreeItem::Value));
    QVERIFY(!isOrange(ordinary, VELTreeItem::Value));

    const char *expert = "/FLOW:Analysis/EXPERT PARAMETERS/max loops";
    QVERIFY(isOrange(expert, VELTreeItem::Name));
    QVERIFY(isOrange(expert, VELTreeItem::Value));

    const char *fixedExpert = "/FLOW:Analysis/EXPERT PARAMETERS/solver build";
    QVERIFY(!isOrange(fixedExpert, VELTreeItem::Name));
    QVERIFY(!isOrange(fixedExpert, VELTreeItem::Value));

    QVERIFY(!isGreen("/LANGUAGE/Version", VELTreeItem::Value));
    QVERIFY(!isOrange("/FLOW:Analysis/EXPERT PARAMETERS", VELTreeItem::Name));
}

// Rows and selection have the same colours in an active, inactive or disabled window.
void VELTreeTest::keepsItsColoursInEveryState()
{
    open(copyOf("duct.vel"));
    const auto look = [&] {
        QVERIFY(isGreen("/FLOW:Analysis/Title", VELTreeItem::Value));
        QVERIFY(isOrange("/FLOW:Analysis/EXPERT PARAMETERS/max loops", VELTreeItem::Name));
        QCOMPARE(selectionColour("/FLOW:Analysis"), QColor(0, 0, 255));
    };
    look();
    QWidget other;
    other.show();
    QApplication::setActiveWindow(&other);
    look();
    tree().setEnabled(false);
    look();
}

void VELTreeTest::saysWhatTheColoursMean()
{
    open(newFile("tips.vel", "FLOW: A\nTitle = x\nEXPERT PARAMETERS:\nx = 1\n"
                             "solver build = 2\nEND\nEND\n"));
    const auto description = [&](const char *path) {
        return row(path).data(VELTreeItem::Value, Qt::AccessibleDescriptionRole).toString();
    };
    QCOMPARE(description("/FLOW:A"), QString());
    QCOMPARE(description("/FLOW:A/Title"), QString("can be changed"));
    QCOMPARE(description("/FLOW:A/EXPERT PARAMETERS/x"),
             QString("expert parameter, can be changed"));
    QCOMPARE(description("/FLOW:A/EXPERT PARAMETERS/solver build"), QString("cannot be changed"));
}

void VELTreeTest::selectsInBlue()
{
    open(copyOf("duct.vel"));
    QCOMPARE(selectionColour("/FLOW:Analysis"), QColor(0, 0, 255));
}

void VELTreeTest::hasTwoColumns()
{
    open(copyOf("duct.vel"));
    QCOMPARE(tree().objectName(), QString("Tree"));
    QCOMPARE(tree().headerItem()->text(0), QString("Name"));
    QCOMPARE(tree().headerItem()->text(1), QString("Value"));
    QCOMPARE(tree().columnWidth(1), 400);
    QCOMPARE(tree().indentation(), 40);
    QCOMPARE(tree().style()->name(), QString("windows"));
    QVERIFY(tree().style() != editor().style());
}

// The columns fill the view. When the vertical bar appeared, the horizontal bar
// once appeared too. Then the view moved sideways by the width of the bar.
void VELTreeTest::showsNoHorizontalBarBesideTheVerticalOne()
{
    QByteArray text = "FLOW: A\n";
    for (int i = 0; i < 100; ++i) {
        text += "DOMAIN: d" + QByteArray::number(i) + "\nKind = Fluid\nEND\n";
    }
    open(newFile("many.vel", text + "END\n"));
    QCoreApplication::processEvents();
    QVERIFY(!tree().verticalScrollBar()->isVisible());
    const int nameWidth = tree().columnWidth(VELTreeItem::Name);

    tree().openAll();
    tree().showMatch(row("/FLOW:A/DOMAIN:d99/Kind"));
    QCoreApplication::processEvents();
    QVERIFY(tree().verticalScrollBar()->isVisible());
    QVERIFY(!tree().horizontalScrollBar()->isVisible());
    QCOMPARE(tree().header()->offset(), 0);
    QCOMPARE(tree().columnWidth(VELTreeItem::Name), nameWidth); // as the window says
    QCOMPARE(tree().columnWidth(VELTreeItem::Value), 400);

    // A resized window or a value wider than its column must not need it either.
    editor().resize(700, 500);
    tree().scrollTo(tree().model()->index(0, VELTreeItem::Value));
    tree().scrollTo(tree().currentIndex().siblingAtColumn(VELTreeItem::Value));
    QTest::keyClick(&tree(), Qt::Key_End);
    QCoreApplication::processEvents();
    QVERIFY(!tree().horizontalScrollBar()->isVisible());
    QCOMPARE(tree().header()->offset(), 0);

    // The view must not move when it scrolls to a value, as after a click on it. The
    // next event might move it back, so the check comes before any event.
    const QModelIndex name = tree().currentIndex().siblingAtColumn(VELTreeItem::Name);
    tree().scrollTo(name.siblingAtColumn(VELTreeItem::Value));
    QCOMPARE(tree().header()->offset(), 0);
    QCOMPARE(tree().horizontalScrollBar()->maximum(), 0);
}

void VELTreeTest::scrollsSidewaysIfColumnsAreWider()
{
    open(copyOf("duct.vel"));
    tree().setColumnWidth(VELTreeItem::Name, 700);
    QTRY_VERIFY(tree().horizontalScrollBar()->isVisible());
    tree().horizontalScrollBar()->setValue(tree().horizontalScrollBar()->maximum());
    QCOMPARE(tree().header()->offset() + tree().viewport()->width(), tree().header()->length());
    tree().setColumnWidth(VELTreeItem::Name, 100);
    QTRY_VERIFY(!tree().horizontalScrollBar()->isVisible());
    QCOMPARE(tree().header()->offset(), 0);
}

void VELTreeTest::endsTextsBeforeTheScrollBar()
{
    const auto valueEnds = [&] {
        const QModelIndex index = tree().indexFromItem(&row("/FLOW:A/Title"), VELTreeItem::Value);
        const QRect cell = tree().visualRect(index) & tree().viewport()->rect();
        const QImage picture = tree().viewport()->grab(cell).toImage();
        const int right = picture.width() - 1;
        for (int x = right; x > 0; --x) {
            for (int y = 0; y < picture.height(); ++y) {
                if (picture.pixelColor(x, y) != picture.pixelColor(right, 0)) {
                    return right - x;
                }
            }
        }
        return right;
    };
    QByteArray text = "FLOW: A\nTitle = " + QByteArray("_").repeated(2000) + "\n";
    for (int i = 0; i < 100; ++i) {
        text += "p" + QByteArray::number(i) + " = x\n";
    }
    open(newFile("long.vel", text + "END\n"));
    tree().openAll();
    QCoreApplication::processEvents();
    QVERIFY(tree().verticalScrollBar()->isVisible());
    QVERIFY(valueEnds() > 0); // an ellipsis, and the gap after it
}

void VELTreeTest::keepsTheOrderOfTheFileUntilSorted()
{
    open(newFile("order.vel", "FLOW: A\nTitle = b\nRun Mode = a\nEND\n"));
    const QTreeWidgetItem *flow = &row("/FLOW:A");
    QCOMPARE(flow->child(0)->text(0), QString("Title"));
    tree().setSorting(0);
    QCOMPARE(flow->child(0)->text(0), QString("Run Mode"));
    tree().setSorting(0, false);
    QCOMPARE(flow->child(0)->text(0), QString("Title"));
    tree().setSorting(-1);
    QVERIFY(!tree().isSortingEnabled());
}

void VELTreeTest::opensAndClosesBranchesWithTheRightButton()
{
    open(copyOf("duct.vel"));
    VELTreeItem &flow = row("/FLOW:Analysis");
    const auto clickFlow = [&] {
        QTest::mouseClick(tree().viewport(), Qt::RightButton, Qt::NoModifier,
                          tree().visualItemRect(&flow).center());
    };
    clickFlow();
    QVERIFY(flow.isExpanded());
    QVERIFY(row("/FLOW:Analysis/DOMAIN:Duct").isExpanded());
    QVERIFY(row("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in").isExpanded());
    QVERIFY(!row("/LANGUAGE").isExpanded());

    clickFlow();
    QVERIFY(!flow.isExpanded());
    QVERIFY(!row("/FLOW:Analysis/DOMAIN:Duct").isExpanded());
    QVERIFY(!row("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in").isExpanded());

    // A double click counts as one click.
    clickFlow();
    const QPoint place = tree().visualItemRect(&flow).center();
    QTest::mouseDClick(tree().viewport(), Qt::RightButton, Qt::NoModifier, place);
    QTest::mouseRelease(tree().viewport(), Qt::RightButton, Qt::NoModifier, place);
    QVERIFY(flow.isExpanded());
    clickFlow();
    QVERIFY(!flow.isExpanded());

    // A click beside the rows does nothing.
    QTest::mouseClick(tree().viewport(), Qt::RightButton, Qt::NoModifier,
                      tree().viewport()->rect().bottomRight() - QPoint(5, 5));
    QVERIFY(!flow.isExpanded());
}

void VELTreeTest::marksUnsavedChangesOnce()
{
    open(copyOf("duct.vel"));
    tree().setModified();
    tree().setModified();
    QVERIFY(tree().isModified());
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
    tree().clearModified();
    QVERIFY(!tree().isModified());
    QCOMPARE(editor().windowTitle(), file());
}

void VELTreeTest::showsDeeplyNestedObjects()
{
    constexpr int levels = 3000;
    QByteArray text;
    for (int i = 0; i < levels; ++i) {
        text += "SEALED: s\n";
    }
    text += "x = 1\n";
    for (int i = 0; i < levels; ++i) {
        text += "END\n";
    }
    open(newFile("deep.vel", text));
    const QTreeWidgetItem *item = tree().topLevelItem(0);
    int depth = 0;
    for (; item->childCount() > 0; item = item->child(0)) {
        ++depth;
    }
    QCOMPARE(depth, levels + 1);
    QCOMPARE(item->text(0), QString("x"));
    tree().openOrClose(nullptr, tree().viewport()->mapToGlobal(QPoint(5, 5)), 0);
    tree().openOrClose(nullptr, tree().viewport()->mapToGlobal(QPoint(5, 5)), 0);
    QVERIFY(tree().topLevelItem(0)->isExpanded());
}

void VELTreeTest::showsVeryLongValues()
{
    const QByteArray value = QByteArray("x y ").repeated(2'000'000).trimmed();
    open(newFile("long.vel", "FLOW: A\nTitle = " + value + "\nEND\n"));
    QElapsedTimer clock;
    clock.start();
    QVERIFY(isGreen("/FLOW:A/Title", VELTreeItem::Value));
    QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(row("/FLOW:A/Title").value().size(), value.size());
}

void VELTreeTest::showsTheFirstThousandCharactersOfAValue()
{
    const QString value = QString("0123456789").repeated(100);
    open(newFile("long.vel", "FLOW: A\nTitle = " + value.toLatin1() + "xyz\nEND\n"));
    const QModelIndex cell = tree().indexFromItem(&row("/FLOW:A/Title"), VELTreeItem::Value);
    const auto *delegate = qobject_cast<QStyledItemDelegate *>(tree().itemDelegate());
    QCOMPARE(delegate->displayText(cell.data(), QLocale::c()), value + QChar(0x2026));
    QCOMPARE(row("/FLOW:A/Title").value(), value + "xyz"); // the whole value is copied and edited
}

void VELTreeTest::showsAnEmptyValue()
{
    open(newFile("bare.vel", "FLOW: A\nTitle =\nRun Mode = x\nEND\n"));
    QCOMPARE(treeText(tree()), QString("Root\n"
                                       "  FLOW : A\n"
                                       "    Title =  *\n"
                                       "    Run Mode = x *\n"));
}

void VELTreeTest::treatsAFailedQuestionAsYes()
{
    runPerl("require API; no warnings 'redefine'; *API::isParamEditable = sub { die };\n"
            "*API::isItemExpert = sub { die if $_[1] =~ /Title/; return 0 };\n1;");
    open(copyOf("duct.vel"));
    QVERIFY(row("/LANGUAGE/Version").isEditable());
    QVERIFY(!treeText(tree()).contains("Title"));
    qputenv("ZOT5_VEL_EXPERT", "");
    tree().buildTree();
    QVERIFY(treeText(tree()).contains("Title = First run *\n"));
}

void VELTreeTest::throwsWhenTheDatabaseFails()
{
    open(copyOf("duct.vel"));
    // The rules delete an item while the tree queries it.
    runPerl("no warnings 'redefine';\n"
            "*API::isItemExpert = sub {\n"
            "    my ($self, $path) = @_;\n"
            "    $self->{database}->deleteObj($path)\n"
            "        if $path =~ /DOMAIN:Duct$/;\n"
            "    return 0;\n"
            "};\n1;\n");
    std::string message;
    try {
        tree().buildTree();
    } catch (const error &failure) {
        message = failure.message();
    }
    QCOMPARE(QString::fromStdString(message),
             QString("getChildList : getChildList: unable to find the requested path"));
    QCOMPARE(tree().flowItem(), nullptr);

    // The current path of the database has not changed, so relative names are
    // found at the top.
    std::optional<std::string> value;
    QCOMPARE(velparser::getStringValue("LANGUAGE/Version", &value), nullptr);
    QCOMPARE(value.value_or(""), std::string("2.1"));
}

VEL_EDITOR_TEST(VELTreeTest)
#include "VELTree_test.moc"
