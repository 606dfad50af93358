// The notice bar: where it is, what its buttons do, and that the window does not
// notice it otherwise.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/NoticeBar.h"

#include <QAccessible>
#include <QToolButton>

using namespace velEditor;

class NoticeBarTest : public EditorTest
{
    Q_OBJECT

private:
    NoticeBar &bar() { return editor().notice(); }
    /// The names of the buttons that are seen, from left to right.
    QStringList choices();

private slots:
    void isHiddenWithoutANotice();
    void takesItsHeightFromTheTree();
    void givesTheHeightBack();
    void wrapsInANarrowWindow();
    void leavesHalfOfTheTree();
    void actsOnAChoice();
    void canStayAfterAChoice();
    void isPutAway();
    void replacesANoticeOfItsKind();
    void showsTheNoticeBefore();
    void takesNoFocus();
    void pressesAChoiceByKey();
    void canPostAnotherFromAChoice();
    void namesItsParts();
};

QStringList NoticeBarTest::choices()
{
    QStringList names;
    for (const QToolButton *button : bar().findChildren<QToolButton *>()) {
        if (!button->isHidden())
            names.append(button->accessibleName());
    }
    return names;
}

void NoticeBarTest::isHiddenWithoutANotice()
{
    open(copyOf("duct.vel"));
    QVERIFY(bar().isHidden());
    QVERIFY(!bar().isNeeded());
    QCOMPARE(bar().text(), QString());
    QCOMPARE(bar().heightForWidth(500), 0);
    QCOMPARE(tree().geometry(), QRect(QPoint(10, 40), QPoint(800 - 6, 600 - 11)));
}

void NoticeBarTest::takesItsHeightFromTheTree()
{
    open(copyOf("duct.vel"));
    const QRect before = tree().geometry();
    bar().post({"file", "The file was changed", {{"&Reload", [] {}}, {"&Merge", [] {}}}});
    QVERIFY(bar().isVisible());
    QCOMPARE(bar().geometry().topLeft(), before.topLeft());
    QCOMPARE(bar().width(), before.width());
    QCOMPARE(tree().geometry().bottomRight(), before.bottomRight());
    QCOMPARE(tree().geometry().left(), before.left());
    QVERIFY(tree().geometry().top() > bar().geometry().bottom());
    QVERIFY(bar().height() < 60);
    for (const QWidget *part : bar().findChildren<QWidget *>())
        QVERIFY(bar().rect().contains(part->geometry()));
}

void NoticeBarTest::givesTheHeightBack()
{
    open(copyOf("duct.vel"));
    const QRect before = tree().geometry();
    const QImage picture = editor().grab().toImage();
    bar().post({"file", "The file was changed", {}});
    QVERIFY(editor().grab().toImage() != picture);
    bar().withdraw("other");
    QVERIFY(bar().isVisible());
    bar().withdraw("file");
    QCOMPARE(tree().geometry(), before);
    QCOMPARE(editor().grab().toImage(), picture);
}

void NoticeBarTest::wrapsInANarrowWindow()
{
    open(copyOf("duct.vel"));
    bar().post({"file",
                "/a/long/path/of/a/file/duct.vel was changed by another program",
                {{"&Reload", [] {}}, {"&Merge", [] {}}, {"C&ompare", [] {}}}});
    const int wide = bar().height();
    editor().resize(300, 400);
    QVERIFY(bar().height() > wide);
    for (const QWidget *part : bar().findChildren<QWidget *>())
        QVERIFY(bar().rect().contains(part->geometry()));
    const auto *text = bar().findChild<QWidget *>("noticeText");
    for (const QToolButton *button : bar().findChildren<QToolButton *>())
        QVERIFY(!button->geometry().intersects(text->geometry()));
    editor().resize(800, 600);
    QCOMPARE(bar().height(), wide);
}

void NoticeBarTest::leavesHalfOfTheTree()
{
    open(copyOf("duct.vel"));
    editor().resize(300, 200);
    const int before = tree().height();
    bar().post({"file", QString("long ").repeated(500), {}});
    QVERIFY(tree().height() >= before / 2 - 5);
}

void NoticeBarTest::actsOnAChoice()
{
    open(copyOf("duct.vel"));
    QString done;
    bar().post({"file",
                "The file was changed",
                {{"&Reload", [&] { done = bar().isNeeded() ? "too early" : "reloaded"; }},
                 {"&Merge", [&] { done = "merged"; }}}});
    QCOMPARE(choices(), QStringList({"Reload", "Merge", "Close"}));
    pressButton(bar(), "Reload");
    QCOMPARE(done, QString("reloaded"));
    QVERIFY(!bar().isNeeded());
}

void NoticeBarTest::canStayAfterAChoice()
{
    open(copyOf("duct.vel"));
    int shown = 0;
    bar().post({"file", "The file was changed", {{"&Show", [&] { ++shown; }, false}}});
    pressButton(bar(), "Show");
    pressButton(bar(), "Show");
    QCOMPARE(shown, 2);
    QVERIFY(bar().isNeeded());
}

void NoticeBarTest::isPutAway()
{
    open(copyOf("duct.vel"));
    bool acted = false;
    bar().post({"file", "The file was changed", {{"&Reload", [&] { acted = true; }}}});
    pressButton(bar(), "Close");
    QVERIFY(!bar().isNeeded());
    QVERIFY(!acted);
}

void NoticeBarTest::replacesANoticeOfItsKind()
{
    open(copyOf("duct.vel"));
    bar().post({"file", "one", {{"&Reload", [] {}}}});
    bar().post({"file", "two", {}});
    QCOMPARE(bar().text(), QString("two"));
    QCOMPARE(choices(), QStringList({"Close"}));
    bar().withdraw("file");
    QVERIFY(!bar().isNeeded());
}

void NoticeBarTest::showsTheNoticeBefore()
{
    open(copyOf("duct.vel"));
    bar().post({"file", "one", {{"&Reload", [] {}}}});
    bar().post({"journal", "two", {}});
    QCOMPARE(bar().text(), QString("two"));
    pressButton(bar(), "Close");
    QCOMPARE(bar().text(), QString("one"));
    QCOMPARE(choices(), QStringList({"Reload", "Close"}));
}

void NoticeBarTest::takesNoFocus()
{
    open(copyOf("duct.vel"));
    tree().setFocus();
    bar().post({"file", "The file was changed", {{"&Reload", [] {}, false}}});
    QCOMPARE(QApplication::focusWidget(), &tree());
    pressButton(bar(), "Reload");
    QCOMPARE(QApplication::focusWidget(), &tree());
    for (const QWidget *part : bar().findChildren<QWidget *>())
        QCOMPARE(part->focusPolicy(), Qt::NoFocus);
}

void NoticeBarTest::pressesAChoiceByKey()
{
    open(copyOf("duct.vel"));
    bool reloaded = false;
    bar().post({"file", "The file was changed", {{"&Reload", [&] { reloaded = true; }}}});
    press("Alt+R");
    QTRY_VERIFY(reloaded); // the button is seen to be pressed first
    QVERIFY(!bar().isNeeded());
}

void NoticeBarTest::canPostAnotherFromAChoice()
{
    open(copyOf("duct.vel"));
    bar().post({"file", "one", {{"&Reload", [&] { bar().post({"file", "two", {}}); }}}});
    pressButton(bar(), "Reload");
    QCOMPARE(bar().text(), QString("two"));
    QCOMPARE(choices(), QStringList({"Close"}));
}

void NoticeBarTest::namesItsParts()
{
    open(copyOf("duct.vel"));
    QCOMPARE(bar().objectName(), QString("notice"));
    bar().post({"file", "<b>The</b> file", {{"&Reload", [] {}}}});
    QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&bar());
    QCOMPARE(accessible->text(QAccessible::Name), QString("Notice"));
    QCOMPARE(accessible->text(QAccessible::Description), QString("<b>The</b> file"));
}

VEL_EDITOR_TEST(NoticeBarTest)
#include "NoticeBar_test.moc"
