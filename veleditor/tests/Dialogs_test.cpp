// Tests the message dialogs and the real boxes on the screen.
#include "veleditor/tests/EditorTest.h"

#include "veleditor/src/MessageDialog.h"

#include <QFile>
#include <QLabel>
#include <QProxyStyle>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextEdit>
#include <QTextLayout>

using namespace velEditor;

namespace {

/// The style of a desktop that has icons for some of the buttons.
class IconStyle : public QProxyStyle
{
public:
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *data) const override
    {
        return hint == SH_DialogButtonBox_ButtonsHaveIcons
                   ? 1
                   : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

} // namespace

class DialogsTest : public EditorTest
{
    Q_OBJECT

private:
    static QStringList labels(const QWidget &window);
    static QStringList buttons(const QWidget &window);
    static MessageBox question();

private slots:
    void showsErrors();
    void asksAboutErrors();
    void indentsWrappedMessages();
    void showsUpgradeMessages();
    void writesMessagesToAFile();
    void proposesANameIfNoneIsGiven();
    void writesToAFileWithAnyName();
    void writesNothingWhenCancelled();
    void reportsThatMessagesCannotBeWritten();
    void showsTheTextsOfABoxUnchanged();
    void keepsButtonsInTheirOrder();
    void pressesTheDefaultButtonOnReturn();
    void hasPlainButtons();
    void keepsLinesWhole();
    void wrapsLinesWiderThanTheScreen();
    void breaksWordsWiderThanALine();
    void scrollsTextsHigherThanTheScreen();
    void staysOpenOnEscapeAndOnClose();
    void closesAnOkBoxOnEscape();
    void keepsABoxWithOneGivenButtonOpen();
    void takesNoAsDefaultAnswer();
};

QStringList DialogsTest::labels(const QWidget &window)
{
    QStringList texts;
    for (const QLabel *label : window.findChildren<QLabel *>()) {
        if (!label->text().isEmpty()) {
            texts.append(label->text());
        }
    }
    return texts;
}

// From left to right.
QStringList DialogsTest::buttons(const QWidget &window)
{
    QList<QPushButton *> found = window.findChildren<QPushButton *>();
    std::sort(found.begin(), found.end(), [&](const QPushButton *a, const QPushButton *b) {
        return a->mapTo(&window, QPoint()).x() < b->mapTo(&window, QPoint()).x();
    });
    QStringList texts;
    for (const QPushButton *button : found) {
        texts.append(button->text());
    }
    return texts;
}

void DialogsTest::showsErrors()
{
    ErrorDialog dialog(nullptr, "Errors", "first <b>line</b>\nsecond", false);
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    dialog.show();
    QCOMPARE(dialog.objectName(), QString("Errors"));
    QCOMPARE(dialog.windowTitle(), QString("Command File Errors"));
    QCOMPARE(labels(dialog),
             QStringList("The following errors were encountered during validation:"));
    QCOMPARE(buttons(dialog), QStringList({"&Ok", "&Write Error Messages to File"}));
    QVERIFY(!dialog.isModal());
    QCOMPARE(dialog.size(), QSize(600, 300));
    auto *area = dialog.findChild<QTextEdit *>();
    QVERIFY(area->isReadOnly());
    QCOMPARE(area->toPlainText(), QString("first <b>line</b>\nsecond"));
    pressButton(dialog, "Ok");
    QCOMPARE(dialog.result(), static_cast<int>(QDialog::Accepted));
}

void DialogsTest::asksAboutErrors()
{
    ErrorDialog dialog(nullptr, "Errors", "x", true);
    dialog.show();
    QCOMPARE(labels(dialog),
             QStringList({"The following errors were encountered during validation:",
                          "Would you like to save this file including the errors?"}));
    QCOMPARE(buttons(dialog), QStringList({"&Yes", "&No", "&Write Error Messages to File"}));
    QVERIFY(dialog.isModal());
    pressButton(dialog, "Yes");
    QCOMPARE(dialog.result(), static_cast<int>(QDialog::Accepted));
    dialog.show();
    pressButton(dialog, "No");
    QCOMPARE(dialog.result(), static_cast<int>(QDialog::Rejected));
}

// The continuation of a wrapped message is indented.
void DialogsTest::indentsWrappedMessages()
{
    const QString message = QString("word ").repeated(60).trimmed();
    ErrorDialog dialog(nullptr, "Errors", (message + u'\n' + message).toStdString(), true);
    dialog.show();
    const QTextDocument &document = *dialog.findChild<QTextEdit *>()->document();
    QCOMPARE(document.blockCount(), 2);
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const QTextLayout *layout = block.layout();
        QVERIFY(layout->lineCount() > 1);
        QVERIFY(layout->lineAt(1).x() >= layout->lineAt(0).x() + 16);
    }
}

void DialogsTest::showsUpgradeMessages()
{
    VELUpgradeMessagesDialog dialog(nullptr, "Command File Updates", "changed");
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    dialog.show();
    QCOMPARE(dialog.windowTitle(), QString("VEL Upgrade Messages"));
    QCOMPARE(labels(dialog),
             QStringList("The following messages were generated when upgrading the VEL:"));
    QCOMPARE(buttons(dialog), QStringList({"&Ok", "&Write VEL Upgrade Messages to File"}));
    QStringList proposals;
    setFileNameAnswers([&](const QString &, const QString &proposal) {
        proposals.append(proposal);
        return QString();
    });
    pressButton(dialog, "WriteToFile");
    QCOMPARE(proposals, QStringList("upgrademessages.txt"));
}

void DialogsTest::writesMessagesToAFile()
{
    QString file = newFile("messages.txt", "something much longer that was there before");
    ErrorDialog dialog(nullptr, "Errors", "first\nsec\xC2\xA0ond \xC3\xA4", false);
    dialog.show();
    QStringList asked;
    setFileNameAnswers([&](const QString &title, const QString &proposal) {
        asked << title << proposal;
        return file;
    });
    pressButton(dialog, "WriteToFile");
    QCOMPARE(asked, QStringList({"Select File", "errormessages.txt"}));
    QCOMPARE(contentOf(file), QByteArray("first\nsec\xC2\xA0ond \xC3\xA4"));
    QVERIFY(dialog.isVisible());
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
}

void DialogsTest::proposesANameIfNoneIsGiven()
{
    MessageDialog dialog(nullptr, "Plain", "Title", "Heading", "&Write", QString(), "x", true, "?");
    dialog.show();
    QString proposed;
    setFileNameAnswers([&](const QString &, const QString &proposal) {
        proposed = proposal;
        return QString();
    });
    pressButton(dialog, "WriteToFile");
    QCOMPARE(proposed, QString("errormessages.txt"));
}

void DialogsTest::writesToAFileWithAnyName()
{
    ErrorDialog dialog(nullptr, "Errors", "x", true);
    dialog.show();
    QString file = folder() + QString::fromUtf8("/Käse 'n\" Brot.txt");
    setFileNameAnswers([&](const QString &, const QString &) { return file; });
    pressButton(dialog, "WriteToFile");
    QCOMPARE(contentOf(file), QByteArray("x"));
}

void DialogsTest::writesNothingWhenCancelled()
{
    ErrorDialog dialog(nullptr, "Errors", "x", true);
    dialog.show();
    setFileNameAnswers([](const QString &, const QString &) { return QString(); });
    pressButton(dialog, "WriteToFile");
    QVERIFY(dialog.isVisible());
    QVERIFY(!QFile::exists("errormessages.txt"));
}

void DialogsTest::reportsThatMessagesCannotBeWritten()
{
    ErrorDialog dialog(nullptr, "Errors", "x", true);
    dialog.show();
    QString file = folder() + "/absent/messages.txt";
    setFileNameAnswers([&](const QString &, const QString &) { return file; });
    answer();
    pressButton(dialog, "WriteToFile");
    QCOMPARE(boxes,
             QStringList("Critical: Error Writing File\nUnable to write the messages to\n  " +
                         file + "\nNo such file or directory\n[Ok], Escape"));
    QVERIFY(dialog.isVisible());
}

MessageBox DialogsTest::question()
{
    setBoxAnswers({}); // use the real boxes
    MessageBox box;
    box.icon = QMessageBox::Warning;
    box.title = "Title";
    box.text = "One <b>line</b>\nand another";
    box.buttons = QStringList{"&First", "&Second", "&Third"};
    return box;
}

void DialogsTest::showsTheTextsOfABoxUnchanged()
{
    onDialog<QMessageBox>([](QMessageBox &box) {
        QCOMPARE(box.windowTitle(), QString("Title"));
        QCOMPARE(box.text(), QString("One <b>line</b>\nand another"));
        QCOMPARE(box.textFormat(), Qt::PlainText);
        QCOMPARE(box.icon(), QMessageBox::Warning);
        box.buttons().first()->click();
    });
    QCOMPARE(ask(nullptr, question()), 0);
}

void DialogsTest::keepsButtonsInTheirOrder()
{
    for (int i = 0; i < 3; ++i) {
        onDialog<QMessageBox>([&](QMessageBox &box) {
            const QStringList texts{"&First", "&Second", "&Third"};
            QCOMPARE(buttons(box), texts);
            for (QAbstractButton *button : box.buttons()) {
                if (button->text() == texts[i]) {
                    QTest::mouseClick(button, Qt::LeftButton);
                }
            }
        });
        QCOMPARE(ask(nullptr, question()), i);
    }
}

void DialogsTest::pressesTheDefaultButtonOnReturn()
{
    onDialog<QMessageBox>([](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Return); });
    MessageBox box = question();
    box.defaultButton = 1;
    QCOMPARE(ask(nullptr, box), 1);
}

// With icons on only some of them, the buttons would look inconsistent.
void DialogsTest::hasPlainButtons()
{
    setBoxAnswers({});
    static auto *const style = new IconStyle; // setStyle() takes ownership
    QApplication::setStyle(style);
    const auto look = [](QMessageBox &box, const QStringList &texts) {
        QCOMPARE(buttons(box), texts);
        for (const QAbstractButton *button : box.buttons()) {
            QVERIFY(button->icon().isNull());
        }
        box.reject();
    };
    onDialog<QMessageBox>([&](QMessageBox &box) { look(box, {"&Ok"}); });
    inform(nullptr, "Title", "Text");
    onDialog<QMessageBox>([&](QMessageBox &box) { look(box, {"&Yes", "&No"}); });
    QVERIFY(!askYesNo(nullptr, "Title", "Text"));
}

// Lines break only where the text has line ends.
void DialogsTest::keepsLinesWhole()
{
    const QString line = "Use \"Edit->Add Expert Parameter\" to add a parameter to this section.";
    QFont large = QApplication::font();
    large.setPointSize(12);
    QApplication::setFont(large);
    onDialog<QMessageBox>([&](QMessageBox &box) {
        const auto *label = box.findChild<QLabel *>("qt_msgbox_label");
        const QFontMetrics metrics = label->fontMetrics();
        QVERIFY(metrics.horizontalAdvance(line) > 500);
        QVERIFY(label->width() >= metrics.horizontalAdvance(line));
        QCOMPARE(label->heightForWidth(label->width()), label->heightForWidth(2 * label->width()));
        box.reject();
    });
    MessageBox box = question();
    box.text = "First\n" + line + "\nLast";
    QCOMPARE(ask(nullptr, box), -1);
}

void DialogsTest::wrapsLinesWiderThanTheScreen()
{
    onDialog<QMessageBox>([&](QMessageBox &box) {
        QVERIFY(box.width() <= box.screen()->availableGeometry().width());
        const auto *label = box.findChild<QLabel *>("qt_msgbox_label");
        QVERIFY(box.rect().contains(QRect(label->mapTo(&box, QPoint()), label->size())));
        QVERIFY(label->height() >= label->heightForWidth(label->width()));
        box.reject();
    });
    MessageBox box = question();
    box.text = QString("word ").repeated(200);
    QCOMPARE(ask(nullptr, box), -1);
}

// A value without spaces was once cut off at the edge of the box.
void DialogsTest::breaksWordsWiderThanALine()
{
    const QString word = QString("0123456789").repeated(40);
    for (const bool isDetails : {false, true}) {
        onDialog<QMessageBox>([&](QMessageBox &box) {
            QVERIFY(box.width() <= box.screen()->availableGeometry().width());
            auto *label = box.findChild<QLabel *>("WrappedText");
            QVERIFY(label->isVisible());
            QCOMPARE(label->text(), isDetails ? "Kept in\n" + word : "x = " + word + "\nReally?");
            QVERIFY(box.rect().contains(QRect(label->mapTo(&box, QPoint()), label->size())));
            const int lines = label->height() / label->fontMetrics().height();
            QVERIFY(lines * label->width() >= label->fontMetrics().horizontalAdvance(word));
            // Every line of the word except the last one is full, to less than
            // one digit.
            const QImage picture = label->grab().toImage();
            const int digit = label->fontMetrics().horizontalAdvance('0') + 1;
            int columns = 0;
            for (int x = 0; x < picture.width(); ++x) {
                for (int y = 0; y < picture.height(); ++y) {
                    if (picture.pixelColor(x, y) != picture.pixelColor(0, picture.height() - 1)) {
                        columns = x;
                        break;
                    }
                }
            }
            QVERIFY(columns >= picture.width() - 2 * digit);
            box.reject();
        });
        MessageBox box = question();
        if (isDetails) {
            box.details = "Kept in\n" + word;
        } else {
            box.text = "x = " + word + "\nReally?";
        }
        QCOMPARE(ask(nullptr, box), -1);
    }
}

// A long list of faults in a rule library once pushed the buttons below the screen.
void DialogsTest::scrollsTextsHigherThanTheScreen()
{
    MessageBox box = question();
    const QString lines = QString("a fault of a rule\n").repeated(200);
    const QString wrapped = QString("word ").repeated(20000);
    const QString wide = QString("x").repeated(20000);
    for (const QString &text : {lines, wrapped, wide + u'\n' + lines}) {
        onDialog<QMessageBox>([&](QMessageBox &window) {
            const QRect screen = window.screen()->availableGeometry();
            QVERIFY(window.width() <= screen.width());
            QVERIFY(window.height() <= screen.height());
            QCOMPARE(window.text(), text);
            const auto *area = window.findChild<QScrollArea *>();
            const QWidget *label = area->widget();
            QVERIFY(label->height() >= label->heightForWidth(label->width()));
            QVERIFY(area->verticalScrollBar()->maximum() > 0);
            QCOMPARE(window.focusWidget(), window.buttons().first());
            QTest::mouseClick(window.buttons().first(), Qt::LeftButton);
        });
        box.text = text;
        QCOMPARE(ask(nullptr, box), 0);
    }
}

void DialogsTest::staysOpenOnEscapeAndOnClose()
{
    onDialog<QMessageBox>([](QMessageBox &box) {
        QTest::keyClick(&box, Qt::Key_Escape);
        QVERIFY(box.isVisible());
        box.close();
        QVERIFY(box.isVisible());
        box.reject(); // like an application that fails
    });
    QCOMPARE(ask(nullptr, question()), -1);
}

void DialogsTest::closesAnOkBoxOnEscape()
{
    setBoxAnswers({});
    onDialog<QMessageBox>([](QMessageBox &box) {
        QCOMPARE(box.buttons().size(), 1);
        QTest::keyClick(&box, Qt::Key_Escape);
    });
    warn(nullptr, "Title", "Text");
}

void DialogsTest::keepsABoxWithOneGivenButtonOpen()
{
    MessageBox box = question();
    box.buttons = QStringList{"Continue"};
    onDialog<QMessageBox>([](QMessageBox &window) {
        QTest::keyClick(&window, Qt::Key_Escape);
        QVERIFY(window.isVisible());
        QTest::keyClick(&window, Qt::Key_Return);
    });
    QCOMPARE(ask(nullptr, box), 0);
}

void DialogsTest::takesNoAsDefaultAnswer()
{
    setBoxAnswers({});
    for (const int key : {Qt::Key_Return, Qt::Key_Escape}) {
        onDialog<QMessageBox>([&](QMessageBox &box) {
            QCOMPARE(box.icon(), QMessageBox::Question);
            QTest::keyClick(&box, static_cast<Qt::Key>(key));
        });
        QVERIFY(!askYesNo(nullptr, "Title", "Text"));
    }
    onDialog<QMessageBox>([](QMessageBox &box) { box.button(QMessageBox::Yes)->click(); });
    QVERIFY(askYesNo(nullptr, "Title", "Text"));
}

VEL_EDITOR_TEST(DialogsTest)
#include "Dialogs_test.moc"
