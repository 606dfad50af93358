// Tests every window for all palettes and scales: nothing is cut off, and every
// control has a name, a key and a place in the tab order. Runs at the usual scale
// and at twice that scale.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/AddParamDialog.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/FindDialog.h"
#include "veleditor/src/MessageDialog.h"

#include <QAccessible>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QSet>
#include <QTextEdit>

#include <functional>

using namespace velEditor;

class LookTest : public EditorTest
{
    Q_OBJECT

private:
    static void takeDarkPalette();
    /// Shows each window of the program in turn.
    void forEachWindow(const std::function<void(QWidget &)> &look);

private slots:
    void cutsNothingOff_data();
    void cutsNothingOff();
    void namesEveryControl();
    void reachesEveryControlByKey();
    void isLegibleInADarkPalette();
    void hasSharpIcons();
};

void LookTest::takeDarkPalette()
{
    QPalette dark(QColor(45, 45, 45));
    dark.setColor(QPalette::Base, QColor(30, 30, 30));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText}) {
        dark.setColor(role, QColor(230, 230, 230));
    }
    dark.setColor(QPalette::HighlightedText, Qt::black);
    QApplication::setPalette(dark);
}

void LookTest::forEachWindow(const std::function<void(QWidget &)> &look)
{
    open(newFile("all.vel", "FLOW: A\nTitle = x\nEXPERT PARAMETERS:\na = 1\nEND\n"
                            "DOMAIN: D\nKind = Fluid\nEND\nEND\nSEALED: s\nEND\n"));
    const auto show = [&](QDialog &dialog) {
        dialog.show();
        QCoreApplication::processEvents();
        look(dialog);
        dialog.hide();
    };
    look(editor());
    FindDialog find(&tree());
    show(find);
    for (const char *path : {"/FLOW:A/Title", "/FLOW:A/DOMAIN:D/Kind"}) {
        EditParamDialog edit(&tree(), "Edit Parameter", row(path), TextEncoding::Utf8);
        show(edit);
    }
    for (const char *path : {"/FLOW:A/EXPERT PARAMETERS", "/FLOW:A/DOMAIN:D", "/SEALED:s"}) {
        AddParamDialog add(&tree(), "Add Parameter", path, TextEncoding::Utf8);
        show(add);
    }
    for (const bool asks : {false, true}) {
        ErrorDialog errors(&editor(), "Errors", "first\nsecond", asks);
        errors.setAttribute(Qt::WA_DeleteOnClose, false);
        show(errors);
    }
    VELUpgradeMessagesDialog upgrade(&editor(), "Command File Updates", "changed");
    upgrade.setAttribute(Qt::WA_DeleteOnClose, false);
    show(upgrade);

    setBoxAnswers({});
    onDialog<QMessageBox>([&](QMessageBox &box) {
        look(box);
        box.reject();
    });
    MessageBox box;
    box.icon = QMessageBox::Warning;
    box.title = "A title that is longer than the text";
    box.text = "Text";
    box.details = "Details";
    box.buttons = QStringList{"&Delete The Parameter", "&Cancel"};
    static_cast<void>(ask(&editor(), box));
}

void LookTest::cutsNothingOff_data()
{
    QTest::addColumn<bool>("isDark");
    QTest::newRow("usual") << false;
    QTest::newRow("dark") << true;
}

void LookTest::cutsNothingOff()
{
    QFETCH(bool, isDark);
    if (isDark) {
        takeDarkPalette();
    }
    forEachWindow([](QWidget &window) {
        for (const QWidget *widget : window.findChildren<QWidget *>()) {
            const bool shows = qobject_cast<const QLabel *>(widget) != nullptr ||
                               qobject_cast<const QPushButton *>(widget) != nullptr ||
                               qobject_cast<const QLineEdit *>(widget) != nullptr ||
                               qobject_cast<const QComboBox *>(widget) != nullptr;
            if (!shows || !widget->isVisible() || widget->parentWidget()->inherits("QComboBox")) {
                continue;
            }
            const QSize needed = qobject_cast<const QLabel *>(widget) != nullptr
                                     ? QSize(0, widget->heightForWidth(widget->width()))
                                     : widget->minimumSizeHint();
            const QString where = QString("%1: %2 \"%3\" %4x%5 for %6x%7")
                                      .arg(window.windowTitle(), widget->objectName(),
                                           widget->property("text").toString())
                                      .arg(widget->width())
                                      .arg(widget->height())
                                      .arg(needed.width())
                                      .arg(needed.height());
            QVERIFY2(widget->width() >= needed.width(), qPrintable(where));
            QVERIFY2(widget->height() >= needed.height(), qPrintable(where));
            const auto *label = qobject_cast<const QLabel *>(widget);
            if (label != nullptr && !label->wordWrap() && !label->text().isEmpty()) {
                QVERIFY2(label->width() >= label->sizeHint().width(), qPrintable(where));
            }
            // The widget is inside the window, and no sibling covers it.
            const QRect place(widget->mapTo(&window, QPoint()), widget->size());
            QVERIFY2(window.rect().contains(place), qPrintable(where));
        }
    });
}

void LookTest::namesEveryControl()
{
    forEachWindow([](QWidget &window) {
        QVERIFY2(!window.isWindow() || !window.windowTitle().isEmpty(),
                 qPrintable(window.objectName()));
        for (QWidget *widget : window.findChildren<QWidget *>()) {
            const bool isControl = qobject_cast<QAbstractButton *>(widget) != nullptr ||
                                   qobject_cast<QLineEdit *>(widget) != nullptr ||
                                   qobject_cast<QTextEdit *>(widget) != nullptr ||
                                   qobject_cast<QComboBox *>(widget) != nullptr ||
                                   qobject_cast<VELTree *>(widget) != nullptr ||
                                   qobject_cast<QMenu *>(widget) != nullptr ||
                                   qobject_cast<QMenuBar *>(widget) != nullptr;
            const auto *menu = qobject_cast<QMenu *>(widget);
            const bool isPart = (menu != nullptr && menu->title().isEmpty()) ||
                                widget->objectName().startsWith("qt_") ||
                                widget->parentWidget()->inherits("QComboBox");
            if (!isControl || isPart) {
                continue;
            }
            QAccessibleInterface *face = QAccessible::queryAccessibleInterface(widget);
            const QString where = window.windowTitle() + ": " + widget->metaObject()->className() +
                                  ' ' + widget->objectName();
            if (face == nullptr) {
                qFatal("no accessible face: %s", qPrintable(where));
            }
            QVERIFY2(!face->text(QAccessible::Name).isEmpty(), qPrintable(where));
            const bool isOfABox = qobject_cast<QMessageBox *>(&window) != nullptr;
            QVERIFY2(isOfABox || !widget->objectName().isEmpty(), qPrintable(where));
        }
        for (const QAction *action : window.actions()) {
            QVERIFY2(!action->objectName().isEmpty(), qPrintable(action->text()));
        }
    });
}

void LookTest::reachesEveryControlByKey()
{
    forEachWindow([](QWidget &window) {
        QSet<const QWidget *> reached;
        const QWidget *widget = &window;
        do {
            reached.insert(widget);
            widget = widget->nextInFocusChain();
        } while (widget != &window);
        QStringList mnemonics;
        for (const QPushButton *button : window.findChildren<QPushButton *>()) {
            const QString where = window.windowTitle() + ": " + button->text();
            QVERIFY2(button->focusPolicy() & Qt::TabFocus, qPrintable(where));
            QVERIFY2(reached.contains(button), qPrintable(where));
            const QKeySequence key = QKeySequence::mnemonic(button->text());
            QVERIFY2(!key.isEmpty(), qPrintable(where));
            QVERIFY2(!mnemonics.contains(key.toString()), qPrintable(where));
            mnemonics.append(key.toString());
        }
        for (const QTextEdit *field : window.findChildren<QTextEdit *>()) {
            QVERIFY2(field->tabChangesFocus(), qPrintable(window.windowTitle()));
        }
    });
}

// Texts contrast with their background; the colours of the rows do not change.
void LookTest::isLegibleInADarkPalette()
{
    takeDarkPalette();
    open(copyOf("duct.vel"));
    const auto coloursOf = [&](const char *path, int column) {
        VELTreeItem &item = row(path);
        const QRect cell = tree().visualItemRect(&item);
        const int left = tree().header()->sectionViewportPosition(column);
        const QRect part = column == VELTreeItem::Name
                               ? cell
                               : QRect(left, cell.top(), tree().columnWidth(column), cell.height());
        const QImage picture = tree().viewport()->grab(part).toImage();
        QSet<QRgb> colours;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                colours.insert(picture.pixelColor(x, y).rgb());
            }
        }
        return colours;
    };
    QFont sharp = tree().font();
    sharp.setStyleStrategy(QFont::NoAntialias);
    tree().setFont(sharp);
    tree().openAll();
    tree().clearSelection();
    tree().setCurrentItem(nullptr);
    const QSet<QRgb> plainName = coloursOf("/FLOW:Analysis", VELTreeItem::Name);
    QVERIFY(plainName.contains(qRgb(230, 230, 230)));
    QVERIFY(plainName.contains(qRgb(30, 30, 30)));
    QVERIFY(coloursOf("/FLOW:Analysis/Title", VELTreeItem::Value).contains(qRgb(0, 200, 0)));
    QVERIFY(coloursOf("/FLOW:Analysis/EXPERT PARAMETERS/max loops", VELTreeItem::Value)
                .contains(qRgb(255, 140, 0)));
    select("/FLOW:Analysis/Title");
    const QSet<QRgb> selected = coloursOf("/FLOW:Analysis/Title", VELTreeItem::Value);
    QVERIFY(selected.contains(qRgb(0, 0, 255)));
    QVERIFY(selected.contains(qRgb(255, 255, 255)));
}

void LookTest::hasSharpIcons()
{
    open(copyOf("duct.vel"));
    for (const int size : {16, 32, 48}) {
        const QPixmap picture = editor().windowIcon().pixmap(QSize(size, size), 1.0);
        QCOMPARE(picture.size(), QSize(size, size));
        QVERIFY(picture.hasAlphaChannel());
    }
}

VEL_EDITOR_TEST(LookTest)
#include "Look_test.moc"
