// The tool strip: where it is, what its buttons do, and that the rest of the window
// does not notice it.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/Document.h"
#include "veleditor/src/EditParamDialog.h"

#include <QAccessible>
#include <QAction>
#include <QMenuBar>
#include <QToolButton>

using namespace velEditor;

namespace {

const char title[] = "/FLOW:Analysis/Title";

} // namespace

class StripTest : public EditorTest
{
    Q_OBJECT

private:
    QWidget &strip();
    QToolButton &button(const char *name);
    void setTitle(const char *value);
    /// The names of the buttons that are seen, from left to right.
    QStringList shownButtons();
    /// The window without the strip's area.
    QImage restOfWindow();

private slots:
    void isAtTheRightEndOfTheMenuBarsRow();
    void namesItsButtons();
    void leavesMoreInANarrowWindow();
    void undoesAndRedoesByButton();
    void doesNothingBelowADialog();
    void listsWhatHasNoMenuEntry();
    void takesNoFocus();
    void leavesTheRestOfTheWindowAsItIs();
};

QWidget &StripTest::strip()
{
    auto *found = editor().findChild<QWidget *>("strip", Qt::FindDirectChildrenOnly);
    if (found == nullptr) {
        qFatal("there is no strip");
    }
    return *found;
}

QToolButton &StripTest::button(const char *name)
{
    auto *found = strip().findChild<QToolButton *>(QString::fromLatin1(name));
    if (found == nullptr) {
        qFatal("there is no button %s", name);
    }
    return *found;
}

void StripTest::setTitle(const char *value)
{
    QCOMPARE(editor().document().apply(settingValue(title, value)), std::nullopt);
}

QStringList StripTest::shownButtons()
{
    QList<const QToolButton *> buttons;
    for (const QToolButton *found : strip().findChildren<QToolButton *>()) {
        if (found->isVisible()) {
            buttons.append(found);
        }
    }
    std::sort(buttons.begin(), buttons.end(),
              [](const auto *one, const auto *other) { return one->x() < other->x(); });
    QStringList names;
    for (const QToolButton *found : buttons) {
        names.append(QAccessible::queryAccessibleInterface(const_cast<QToolButton *>(found))
                         ->text(QAccessible::Name));
    }
    return names;
}

QImage StripTest::restOfWindow()
{
    QCoreApplication::processEvents();
    QImage picture = editor().grab().toImage();
    const qreal scale = picture.devicePixelRatio();
    const QRect place = strip().geometry();
    picture.setDevicePixelRatio(1);
    QPainter(&picture).fillRect(
        QRectF(place.x() * scale, place.y() * scale, place.width() * scale, place.height() * scale),
        Qt::black);
    return picture;
}

void StripTest::isAtTheRightEndOfTheMenuBarsRow()
{
    open(copyOf("duct.vel"));
    const auto *bar = editor().findChild<QMenuBar *>("MenuBar");
    QCOMPARE(bar->cornerWidget(), nullptr);
    QCOMPARE(bar->geometry(), QRect(0, 0, 800, bar->height()));
    QCOMPARE(strip().geometry().right(), tree().geometry().right());
    QCOMPARE(strip().geometry().top(), 0);
    QCOMPARE(strip().height(), bar->height());
    for (const QToolButton *found : strip().findChildren<QToolButton *>()) {
        QVERIFY(strip().rect().contains(found->geometry()));
        QVERIFY(found->width() >= found->minimumSizeHint().width());
        QVERIFY(found->height() >= found->fontMetrics().height());
    }
}

void StripTest::namesItsButtons()
{
    open(copyOf("duct.vel"));
    QCOMPARE(shownButtons(), QStringList({"Undo", "Redo", "More"}));
    QCOMPARE(button("Undo").text(), QString("Undo"));
    setTitle("2.5 [m s^-1]");
    QCOMPARE(button("Undo").toolTip(), QString("Undo: Title = 2.5 [m s^-1]"));
    QCOMPARE(QAccessible::queryAccessibleInterface(&button("Undo"))->text(QAccessible::Description),
             QString("Undo: Title = 2.5 [m s^-1]"));
}

void StripTest::leavesMoreInANarrowWindow()
{
    open(copyOf("duct.vel"));
    const int right = editor().width() - strip().geometry().right();
    editor().resize(300, 200);
    QCOMPARE(shownButtons(), QStringList({"More"}));
    QCOMPARE(editor().width() - strip().geometry().right(), right);
    QCOMPARE(strip().width(), button("More").width());
    editor().resize(800, 600);
    QCOMPARE(shownButtons(), QStringList({"Undo", "Redo", "More"}));
}

void StripTest::undoesAndRedoesByButton()
{
    open(copyOf("duct.vel"));
    QVERIFY(!button("Undo").isEnabled());
    QVERIFY(!button("Redo").isEnabled());
    setTitle("a");
    pressButton(strip(), "Undo");
    QCOMPARE(row(title).value(), QString("First run"));
    QCOMPARE(tree().selectedItem(), &row(title));
    QCOMPARE(editor().windowTitle(), file());
    QVERIFY(!button("Undo").isEnabled());
    pressButton(strip(), "Redo");
    QCOMPARE(row(title).value(), QString("a"));
    QCOMPARE(editor().windowTitle(), file() + " - Modified");
}

void StripTest::doesNothingBelowADialog()
{
    open(copyOf("duct.vel"));
    setTitle("a");
    select(title);
    onDialog<EditParamDialog>([this](EditParamDialog &dialog) {
        pressButton(strip(), "Undo");
        button("Undo").click(); // as assistive technology does
        dialog.reject();
    });
    tree().editCurrParameter();
    QCOMPARE(row(title).value(), QString("a"));
}

void StripTest::listsWhatHasNoMenuEntry()
{
    open(copyOf("duct.vel"));
    QStringList entries;
    for (const QAction *action : button("More").menu()->actions()) {
        if (!action->isSeparator()) {
            entries.append(action->text().remove(u'&') + u'|' + action->shortcut().toString());
        }
    }
    QCOMPARE(entries, QStringList({"Undo|Ctrl+Z", "Redo|Ctrl+Shift+Z", "Copy Path|Ctrl+Shift+C",
                                   "Copy Value|Ctrl+C", "Expand All|Ctrl++", "Collapse All|Ctrl+-",
                                   "What's This?|Shift+F1", "Help on Row|F1",
                                   "Menu of Row|Shift+F10", "History\u2026|Ctrl+H",
                                   "Changes\u2026|Ctrl+Shift+H", "Keep Comments and Layout|"}));

    QSet<const QAction *> listed;
    for (const QAction *action : button("More").menu()->actions()) {
        listed.insert(action);
    }
    for (const QAction *menu : editor().findChild<QMenuBar *>("MenuBar")->actions()) {
        if (menu->menu() == nullptr) {
            continue;
        }
        for (const QAction *action : menu->menu()->actions()) {
            listed.insert(action);
        }
    }
    for (const QAction *action : editor().findChildren<QAction *>()) {
        if (!action->isSeparator() && !action->objectName().isEmpty()) {
            QVERIFY2(listed.contains(action), qPrintable(action->objectName()));
        }
    }
}

void StripTest::takesNoFocus()
{
    open(copyOf("duct.vel"));
    QStringList inOrder;
    const QWidget *widget = &editor();
    do {
        if (widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus) != 0) {
            inOrder.append(widget->objectName());
        }
        widget = widget->nextInFocusChain();
    } while (widget != &editor());
    QCOMPARE(inOrder, QStringList({"Tree"}));
    tree().setFocus();
    setTitle("a");
    pressButton(strip(), "Undo");
    QVERIFY(tree().hasFocus());
}

void StripTest::leavesTheRestOfTheWindowAsItIs()
{
    open(copyOf("duct.vel"));
    tree().openAll();
    const QImage with = restOfWindow();
    strip().hide();
    QCOMPARE(restOfWindow(), with);
    strip().show();
    setTitle("a");
    pressButton(strip(), "Undo");
    tree().setCurrentItem(tree().firstItem());
    tree().clearSelection();
    QCOMPARE(row(title).value(), QString("First run"));
    const QImage after = restOfWindow();
    strip().hide();
    QCOMPARE(restOfWindow(), after);
}

VEL_EDITOR_TEST(StripTest)
#include "Strip_test.moc"
