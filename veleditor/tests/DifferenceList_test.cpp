// Tests the list of differences: its rows, what is selected, copies, keys and buttons.
#include "veleditor/src/DifferenceList.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QSignalSpy>
#include <QTest>

using namespace velEditor;
using veltext::Change;
using veltext::DifferenceKind;

namespace {

const std::vector<Change> three{
    {DifferenceKind::Changed, "/FLOW:A/Title", "First run", "Second run"},
    {DifferenceKind::Removed, "/FLOW:A/DOMAIN:Duct", std::nullopt, std::nullopt},
    {DifferenceKind::Added, "/FLOW:A/Speed", std::nullopt, "2.5 [m s^-1]"},
};

/// A line for each row, its cells in "|".
QStringList rowsOf(const DifferenceList &list)
{
    QStringList rows;
    for (int row = 0; row < list.model()->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < list.model()->columnCount(); ++column) {
            cells.append(list.model()->index(row, column).data().toString());
        }
        rows.append(cells.join(u'|'));
    }
    return rows;
}

QStringList headingsOf(const DifferenceList &list)
{
    QStringList headings;
    for (int column = 0; column < list.model()->columnCount(); ++column) {
        headings.append(list.model()->headerData(column, Qt::Horizontal).toString());
    }
    return headings;
}

void select(DifferenceList &list, int row)
{
    list.setCurrentIndex(list.model()->index(row, 0));
}

QStringList pathsOf(const std::vector<Change> &differences)
{
    QStringList paths;
    for (const Change &difference : differences) {
        paths.append(QString::fromStdString(difference.path));
    }
    return paths;
}

} // namespace

class DifferenceListTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void showsARowForEachDifference();
    void namesItsColumns();
    void showsLongValuesShortened();
    void showsMarkupAsText();
    void copiesTheSelectedRows();
    void keepsWhatIsSelected();
    void reportsWhatIsSelected();
    void hasButtonsWithAnAction();
    void pressesButtonsByKey();
    void leavesKeysAloneWithoutAnAction();
    void mayBeFilledAgainByAButton();
    void saysThatThereAreNone();
    void isUsableByScreenReaders();

private:
    std::unique_ptr<DifferenceList> list_;
};

void DifferenceListTest::init()
{
    list_ = std::make_unique<DifferenceList>("Differences", "Differences of a test", nullptr);
    list_->resize(800, 300);
    list_->show();
    QApplication::setActiveWindow(list_.get());
    QVERIFY(QTest::qWaitForWindowActive(list_.get()));
    list_->setFocus();
    QApplication::clipboard()->clear();
}

void DifferenceListTest::cleanup()
{
    list_.reset();
}

void DifferenceListTest::showsARowForEachDifference()
{
    QCOMPARE(rowsOf(*list_), QStringList());
    list_->setDifferences(three);
    QCOMPARE(rowsOf(*list_),
             QStringList({"changed|/FLOW:A/Title|First run|Second run",
                          "removed|/FLOW:A/DOMAIN:Duct||", "added|/FLOW:A/Speed||2.5 [m s^-1]"}));
    QCOMPARE(list_->differences(), three);
    list_->setDifferences({});
    QCOMPARE(rowsOf(*list_), QStringList());
}

void DifferenceListTest::namesItsColumns()
{
    QCOMPARE(headingsOf(*list_), QStringList({"Difference", "Path", "Before", "After"}));
    list_->setValueHeadings("On Disk", "In This Window");
    QCOMPARE(headingsOf(*list_), QStringList({"Difference", "Path", "On Disk", "In This Window"}));
}

void DifferenceListTest::showsLongValuesShortened()
{
    const std::string longValue(100'000, 'x');
    list_->setDifferences({{DifferenceKind::Added, "/Long", std::nullopt, longValue}});
    const QModelIndex cell = list_->model()->index(0, DifferenceList::After);
    QCOMPARE(cell.data().toString(), QString(1000, 'x') + QChar(0x2026));
    QVERIFY(list_->columnWidth(DifferenceList::Path) < 400);
    select(*list_, 0);
    list_->copySelected();
    QCOMPARE(QApplication::clipboard()->text(),
             "added\t/Long\t\t" + QString::fromStdString(longValue));
}

void DifferenceListTest::showsMarkupAsText()
{
    list_->setDifferences({{DifferenceKind::Added, "/a", std::nullopt, "<b>x</b>"}});
    const QModelIndex cell = list_->model()->index(0, DifferenceList::After);
    QVERIFY(cell.data(Qt::ToolTipRole).toString().contains("&lt;b&gt;x&lt;/b&gt;"));
}

void DifferenceListTest::copiesTheSelectedRows()
{
    list_->setDifferences(three);
    QTest::keySequence(list_.get(), QKeySequence("Ctrl+C"));
    QCOMPARE(QApplication::clipboard()->text(), QString());
    QTest::keySequence(list_.get(), QKeySequence("Ctrl+A"));
    QTest::keySequence(list_.get(), QKeySequence("Ctrl+C"));
    QCOMPARE(QApplication::clipboard()->text(),
             QString("changed\t/FLOW:A/Title\tFirst run\tSecond run\n"
                     "removed\t/FLOW:A/DOMAIN:Duct\t\t\n"
                     "added\t/FLOW:A/Speed\t\t2.5 [m s^-1]"));
}

void DifferenceListTest::keepsWhatIsSelected()
{
    list_->setDifferences(three);
    select(*list_, 2);
    const Change before{DifferenceKind::Added, "/FLOW:A/Alpha", std::nullopt, "1"};
    list_->setDifferences({before, three[2]});
    QCOMPARE(pathsOf(list_->selectedDifferences()), QStringList("/FLOW:A/Speed"));
    QCOMPARE(list_->currentIndex().row(), 1);
    list_->setDifferences({before});
    QVERIFY(list_->selectedDifferences().empty());
}

void DifferenceListTest::reportsWhatIsSelected()
{
    list_->setDifferences(three);
    const QSignalSpy moved(list_.get(), &DifferenceList::selectionMoved);
    list_->selectAll();
    QCOMPARE(moved.count(), 1);
    QCOMPARE(list_->selectedDifferences(), three);
}

void DifferenceListTest::hasButtonsWithAnAction()
{
    list_->setAction("Revert");
    list_->setDifferences(three);
    QCOMPARE(rowsOf(*list_).first(), QString("changed|/FLOW:A/Title|First run|Second run|Revert"));

    QStringList acted;
    connect(list_.get(), &DifferenceList::acted, this, [&](const Change &difference) {
        acted.append(QString::fromStdString(difference.path));
    });
    const auto click = [this](int row, int column) {
        const QRect cell = list_->visualRect(list_->model()->index(row, column));
        QVERIFY(list_->viewport()->rect().contains(cell));
        QTest::mouseClick(list_->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    };
    click(1, DifferenceList::Action);
    click(0, DifferenceList::Path);
    QCOMPARE(acted, QStringList("/FLOW:A/DOMAIN:Duct"));
}

void DifferenceListTest::pressesButtonsByKey()
{
    list_->setAction("Revert");
    list_->setDifferences(three);
    QStringList acted;
    connect(list_.get(), &DifferenceList::acted, this, [&](const Change &difference) {
        acted.append(QString::fromStdString(difference.path));
    });
    QTest::keyClick(list_.get(), Qt::Key_Home);
    QTest::keyClick(list_.get(), Qt::Key_Return);
    QTest::keyClick(list_.get(), Qt::Key_Down);
    QTest::keyClick(list_.get(), Qt::Key_Space);
    QTest::keyClick(list_.get(), Qt::Key_End);
    QTest::keyClick(list_.get(), Qt::Key_Enter);
    QCOMPARE(acted, QStringList({"/FLOW:A/Title", "/FLOW:A/DOMAIN:Duct", "/FLOW:A/Speed"}));
}

void DifferenceListTest::leavesKeysAloneWithoutAnAction()
{
    list_->setDifferences(three);
    const QSignalSpy acted(list_.get(), &DifferenceList::acted);
    QTest::keyClick(list_.get(), Qt::Key_Home);
    QTest::keyClick(list_.get(), Qt::Key_Return);
    QCOMPARE(acted.count(), 0);
}

// The receiver gets the difference, although its row is gone.
void DifferenceListTest::mayBeFilledAgainByAButton()
{
    list_->setAction("Revert");
    list_->setDifferences(three);
    std::string path;
    connect(list_.get(), &DifferenceList::acted, this, [&](const Change &difference) {
        list_->setDifferences({});
        path = difference.path;
    });
    select(*list_, 2);
    QTest::keyClick(list_.get(), Qt::Key_Return);
    QCOMPARE(path, std::string("/FLOW:A/Speed"));
}

void DifferenceListTest::saysThatThereAreNone()
{
    const QImage empty = list_->grab().toImage();
    list_->setEmptyText("No changes");
    QCOMPARE(list_->accessibleDescription(), QString("No changes"));
    QVERIFY(list_->grab().toImage() != empty);
    list_->setDifferences(three);
    QCOMPARE(list_->accessibleDescription(), QString());
    list_->setDifferences({});
    QCOMPARE(list_->accessibleDescription(), QString("No changes"));
}

void DifferenceListTest::isUsableByScreenReaders()
{
    QCOMPARE(list_->objectName(), QString("Differences"));
    QCOMPARE(list_->accessibleName(), QString("Differences of a test"));
    list_->setDifferences(three);
    select(*list_, 0);
    QVERIFY(list_->focusPolicy() & Qt::TabFocus);
    QVERIFY(!list_->tabKeyNavigation());
}

QTEST_MAIN(DifferenceListTest)
#include "DifferenceList_test.moc"
