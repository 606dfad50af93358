// Tests the viewer's window by its widgets, as a user works with it.
#include "help/viewer/Window.h"

#include "help/viewer/Browser.h"
#include "help/viewer/Viewer.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPrinter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTreeWidget>
#include <QWheelEvent>

#include <algorithm>

using namespace velHelp;

class HelpWindowTest : public QObject
{
    Q_OBJECT

private:
    void page(const QString &name, const QByteArray &content);
    [[nodiscard]] QString shown() const { return window_->page().toPlainText(); }
    void trigger(const char *action);
    bool isEnabled(const char *action)
    {
        return window_->findChild<QAction *>(action)->isEnabled();
    }
    template <typename Child>
    Child &child(const char *name)
    {
        return *window_->findChild<Child *>(name);
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<Topics> topics_;
    std::unique_ptr<Window> window_;

private slots:
    void init();
    void showsATopic();
    void showsTheContentsFirst();
    void goesToASection();
    void goesToASectionOfItsFirstPage();
    void reportsAnUnknownPage();
    void showsUnknownNamesUnchanged();
    void goesBackAndForward();
    void forgetsForwardPagesAfterANewPage();
    void countsARepeatedPageOnce();
    void followsLinks();
    void loadsNoFiles();
    void listsTheContents();
    void opensFromTheContents();
    void searches();
    void countsItsMatches();
    void goesToTheSearchedWords();
    void opensTheSearchWithItsTopic();
    void zooms();
    void zoomsByTheWheel();
    void prints();
    void printsNothingAfterCancel();
    void reportsThatItWasClosed();
};

void HelpWindowTest::page(const QString &name, const QByteArray &content)
{
    QFile file(folder_->filePath("en-us/" + name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

void HelpWindowTest::init()
{
    window_.reset();
    folder_ = std::make_unique<QTemporaryDir>();
    QDir(folder_->path()).mkpath("en-us");
    page("master-contents.md", "<!-- chapter: Guide; order: 1 -->\n# Contents\n\nWelcome.\n");
    page("search.md", "<!-- chapter: Guide; order: 2 -->\n# Search\n\nHow to.\n");
    QByteArray text = "<!-- chapter: Objects -->\n# Walls\n\n[up](master-contents.md) "
                      "[down](#far-below) [out](http://example.com/) [file](file:///etc/passwd) "
                      "[none](nowhere.md)\n\n";
    for (int i = 0; i < 200; ++i) {
        text += i == 30 ? "## Midway\n\n" : "A paragraph of text, longer than a narrow page.\n\n";
    }
    page("walls.md", text + "## Far below\n\nThe <b>end</b>. ![x](/etc/passwd)\n");
    topics_ = std::make_unique<Topics>(folder_->path(), "en-us");
    window_ = std::make_unique<Window>(*topics_);
    window_->comeForward();
}

void HelpWindowTest::trigger(const char *action)
{
    window_->findChild<QAction *>(action)->trigger();
}

void HelpWindowTest::showsATopic()
{
    window_->showTopic("Walls", "");
    QVERIFY(shown().startsWith("Walls\n"));
    QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
    QCOMPARE(window_->page().verticalScrollBar()->value(), 0);
}

void HelpWindowTest::showsTheContentsFirst()
{
    window_->showTopic("", "");
    QCOMPARE(shown(), QString("Contents\nWelcome."));
}

void HelpWindowTest::goesToASection()
{
    window_->showTopic("walls", "FAR below");
    QVERIFY(window_->page().verticalScrollBar()->value() > 1000);
    QCOMPARE(window_->page().textCursor().block().text(), QString("Far below"));
    window_->showTopic("walls", "no such section");
    QCOMPARE(window_->page().verticalScrollBar()->value(), 0);
}

// When the viewer makes its first window, the window does not have a size yet.
void HelpWindowTest::goesToASectionOfItsFirstPage()
{
    window_.reset();
    Viewer viewer(folder_->path(), "en-us");
    viewer.show("walls", "midway");
    const QWidgetList windows = QApplication::topLevelWidgets();
    const auto found = std::find_if(windows.begin(), windows.end(), [](const QWidget *widget) {
        return widget->objectName() == "HelpWindow";
    });
    QVERIFY(found != windows.end());
    const QScrollBar *bar = (*found)->findChild<Browser *>()->verticalScrollBar();
    const int place = bar->value();
    QVERIFY(place > 300);
    viewer.show("", "");
    viewer.show("walls", "midway");
    QCOMPARE(place, bar->value());
}

void HelpWindowTest::reportsAnUnknownPage()
{
    window_->showTopic("Wals", "");
    QVERIFY(shown().startsWith("No such page\nThe help has no page with the name “Wals”.\n"
                               "These have similar names:\nWalls\n"));
    emit window_->page().anchorClicked(QUrl("walls.md"));
    QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
}

void HelpWindowTest::showsUnknownNamesUnchanged()
{
    window_->showTopic("<b>*x*</b> [a](b) ![i](/etc/passwd) `c`", "");
    QVERIFY2(shown().contains("“<b>*x*</b> [a](b) ![i](/etc/passwd) `c`”"), qPrintable(shown()));
    window_->showTopic(QString(100'000, u'x'), "");
    QVERIFY(shown().size() < 1000);
}

void HelpWindowTest::goesBackAndForward()
{
    QVERIFY(!isEnabled("Back"));
    window_->showTopic("walls", "far below");
    const int place = window_->page().verticalScrollBar()->value();
    window_->showTopic("", "");
    QVERIFY(!isEnabled("Forward"));
    trigger("Back");
    QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
    QCOMPARE(window_->page().verticalScrollBar()->value(), place);
    QVERIFY(!isEnabled("Back"));
    trigger("Forward");
    QCOMPARE(window_->windowTitle(), QString("Contents - Help"));
}

void HelpWindowTest::forgetsForwardPagesAfterANewPage()
{
    window_->showTopic("walls", "");
    window_->showTopic("search", "");
    trigger("Back");
    trigger("Home");
    QVERIFY(!isEnabled("Forward"));
    trigger("Back");
    QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
}

void HelpWindowTest::countsARepeatedPageOnce()
{
    window_->showTopic("", "");
    auto &contents = child<QTreeWidget>("Contents");
    contents.expandAll();
    const QRect place = contents.visualItemRect(contents.topLevelItem(1)->child(0));
    QTest::mouseClick(contents.viewport(), Qt::LeftButton, {}, place.center());
    QTest::mouseDClick(contents.viewport(), Qt::LeftButton, {}, place.center());
    window_->showTopic("WALLS", "");
    QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
    trigger("Back");
    QCOMPARE(window_->windowTitle(), QString("Contents - Help"));
    window_->showTopic("nowhere", "");
    window_->showTopic("nowhere", "");
    trigger("Back");
    QCOMPARE(window_->windowTitle(), QString("Contents - Help"));
    QVERIFY(!isEnabled("Back"));
}

void HelpWindowTest::followsLinks()
{
    window_->showTopic("walls", "");
    emit window_->page().anchorClicked(QUrl("#far-below"));
    QCOMPARE(window_->page().textCursor().block().text(), QString("Far below"));
    emit window_->page().anchorClicked(QUrl("master-contents.md"));
    QCOMPARE(window_->windowTitle(), QString("Contents - Help"));
    for (const char *link : {"http://example.com/", "file:///etc/passwd", "//host/x"}) {
        emit window_->page().anchorClicked(QUrl(link));
    }
    QCOMPARE(window_->windowTitle(), QString("Contents - Help"));
    emit window_->page().anchorClicked(QUrl("help:walls"));
    QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
    emit window_->page().anchorClicked(QUrl("../../../etc/passwd"));
    QCOMPARE(window_->windowTitle(), QString("No such page - Help"));
}

void HelpWindowTest::loadsNoFiles()
{
    window_->showTopic("walls", "");
    QVERIFY(shown().contains("The <b>end</b>."));
    QVERIFY(
        !window_->page().loadResource(QTextDocument::ImageResource, QUrl("/etc/passwd")).isValid());
}

void HelpWindowTest::listsTheContents()
{
    QStringList lines;
    for (QTreeWidgetItemIterator item(&child<QTreeWidget>("Contents")); *item != nullptr; ++item) {
        lines.append(((*item)->parent() != nullptr ? "  " : "") + (*item)->text(0));
    }
    QCOMPARE(lines, QStringList({"Guide", "  Contents", "  Search", "Objects", "  Walls"}));
}

void HelpWindowTest::opensFromTheContents()
{
    auto &contents = child<QTreeWidget>("Contents");
    emit contents.itemClicked(contents.topLevelItem(1)->child(0), 0);
    QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
    emit contents.itemClicked(contents.topLevelItem(0), 0);
    QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
    QCOMPARE(contents.currentItem()->text(0), QString("Walls"));
}

void HelpWindowTest::searches()
{
    trigger("Find");
    auto &field = child<QLineEdit>("SearchField");
    auto &hits = child<QListWidget>("Hits");
    QTest::keyClicks(&field, "paragraph text");
    QCOMPARE(hits.count(), 1);
    QCOMPARE(hits.item(0)->text(),
             QString("Walls\nA paragraph of text, longer than a narrow page."));
    QTest::keyClick(&field, Qt::Key_Return);
    QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
    field.setText("nothing like this");
    QCOMPARE(hits.count(), 0);
    QTest::keyClick(&field, Qt::Key_Return);
    field.clear();
    QCOMPARE(hits.count(), 0);
}

void HelpWindowTest::countsItsMatches()
{
    auto &field = child<QLineEdit>("SearchField");
    const auto &count = child<QLabel>("HitCount");
    field.setText("welcome");
    QCOMPARE(count.text(), QString("1 page found"));
    QCOMPARE(child<QListWidget>("Hits").item(0)->text(), QString("Contents\nWelcome."));
    field.setText("o");
    QCOMPARE(count.text(), QString("3 pages found"));
    field.setText("nothing like this");
    QCOMPARE(count.text(), QString("0 pages found"));
    field.setText("search"); // only in the title
    QCOMPARE(child<QListWidget>("Hits").item(0)->text(), QString("Search"));
    field.setText(" ");
    QCOMPARE(count.text(), QString());
}

void HelpWindowTest::goesToTheSearchedWords()
{
    auto &field = child<QLineEdit>("SearchField");
    for (const char *words : {"far BELOW", "below far"}) {
        field.setText(words);
        QTest::keyClick(&field, Qt::Key_Return);
        QCOMPARE(window_->windowTitle(), QString("Walls - Help"));
        QVERIFY(window_->page().textCursor().hasSelection());
        QCOMPARE(window_->page().textCursor().block().text(), QString("Far below"));
        QVERIFY(window_->page().verticalScrollBar()->value() > 1000);
        window_->showTopic("", "");
    }
}

void HelpWindowTest::opensTheSearchWithItsTopic()
{
    QVERIFY(!child<QLineEdit>("SearchField").isVisible());
    window_->showTopic("Search", "");
    QVERIFY(child<QLineEdit>("SearchField").isVisible());
    QCOMPARE(window_->windowTitle(), QString("Search - Help"));
}

void HelpWindowTest::zooms()
{
    window_->showTopic("", "");
    const int normal = window_->page().font().pointSize();
    for (int i = 0; i < 3; ++i) {
        trigger("ZoomIn");
    }
    QCOMPARE(window_->page().font().pointSize(), normal + 3);
    trigger("ZoomOut");
    QCOMPARE(window_->page().font().pointSize(), normal + 2);
    for (int i = 0; i < 100; ++i) {
        trigger("ZoomOut");
    }
    QVERIFY(window_->page().font().pointSize() >= 1);
    trigger("ZoomReset");
    QCOMPARE(window_->page().font().pointSize(), normal);
}

void HelpWindowTest::zoomsByTheWheel()
{
    window_->showTopic("walls", "");
    Browser &page = window_->page();
    const int normal = page.font().pointSize();
    const auto turn = [&page](int angle, Qt::KeyboardModifiers keys) {
        const QPointF middle(page.viewport()->rect().center());
        QWheelEvent event(middle, page.viewport()->mapToGlobal(middle), {}, {0, angle},
                          Qt::NoButton, keys, Qt::NoScrollPhase, false);
        QApplication::sendEvent(page.viewport(), &event);
    };
    turn(240, Qt::ControlModifier);
    QCOMPARE(page.font().pointSize(), normal + 2);
    turn(-60, Qt::ControlModifier);
    turn(-60, Qt::ControlModifier);
    QCOMPARE(page.font().pointSize(), normal + 1);
    trigger("ZoomReset");
    QCOMPARE(page.font().pointSize(), normal);
    turn(-120, Qt::NoModifier);
    QCOMPARE(page.font().pointSize(), normal);
    QVERIFY(page.verticalScrollBar()->value() > 0);
}

void HelpWindowTest::prints()
{
    const auto pagesOf = [this](const char *topic) {
        window_->showTopic(topic, "");
        QFile file(folder_->filePath("printed.pdf"));
        QString document;
        window_->setPrinterChoice([&](QPrinter &printer) {
            document = printer.docName();
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(file.fileName());
            return true;
        });
        trigger("Print");
        const QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        return document + ": " + (content.startsWith("%PDF-") ? "" : "no ") +
               QString::number(content.count("/Type /Page\n"));
    };
    QCOMPARE(pagesOf("master-contents"), QString("Contents - Help: 1"));
    const QString walls = pagesOf("walls");
    QVERIFY2(walls > "Walls - Help: 2" && walls <= "Walls - Help: 9", qPrintable(walls));
}

void HelpWindowTest::printsNothingAfterCancel()
{
    window_->showTopic("walls", "");
    const QString file = folder_->filePath("printed.pdf");
    window_->setPrinterChoice([&](QPrinter &printer) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(file);
        return false;
    });
    trigger("Print");
    QVERIFY(!QFile::exists(file));
}

void HelpWindowTest::reportsThatItWasClosed()
{
    const QSignalSpy closed(window_.get(), &Window::closed);
    window_->close();
    QCOMPARE(closed.count(), 1);
    QVERIFY(!window_->isVisible());
    window_->comeForward();
    QVERIFY(window_->isVisible());
}

QTEST_MAIN(HelpWindowTest)
#include "Window_test.moc"
