// Tests the Help menu: the requests to the viewer, and the end of the viewer. A
// test program replaces the viewer and logs what it receives.
#include "veleditor/tests/EditorTest.h"

#include <QAction>
#include <QDir>
#include <QFile>

using namespace velEditor;

class EditorHelpTest : public EditorTest
{
    Q_OBJECT

private:
    /// Opens the window with a viewer.
    void openWithViewer();
    void choose(const char *entry);
    /// The viewer's log; waits until it ends with `last`.
    QString notesUpTo(const QString &last);
    /// Requests help, closes the window with this answer, and compares the log.
    void quitsTheViewer(int button);

private slots:
    void requestsTheTopicsOfTheMenu();
    void requestsTheIndex();
    void requestsHelpForTheSelectedRow();
    void quitsTheViewerWithTheWindow();
    void quitsTheViewerWithoutSaving();
    void quitsTheViewerAfterSaving();
    void keepsTheViewerWhenTheUserContinues();
    void doesNotStartAViewerToQuit();
    void reportsAMissingViewer();
};

namespace {

const char started[] = "started '--language' 'en-us' '--sessionID' ''\n";

} // namespace

void EditorHelpTest::openWithViewer()
{
    QDir().mkpath(folder() + "/doc/zot");
    QDir().mkpath(folder() + "/HelpViewer");
    QFile::link(HELP_TEST_DOUBLE, folder() + "/HelpViewer/OMBRAHelpViewer.exe");
    qputenv("ZOT_HELP_DIR", QFile::encodeName(folder() + "/doc/zot"));
    qputenv("HELP_DOUBLE_LOG", QFile::encodeName(folder() + "/log"));
    for (const char *variable :
         {"KOA_TEST_HELP_DIR", "ZOT5MONO", "QRP_LOCALE150", "OMBHELP_SESSION_ID", "HELP_DOUBLE"}) {
        qunsetenv(variable);
    }
    open(copyOf("duct.vel"));
}

void EditorHelpTest::choose(const char *entry)
{
    auto *action = editor().findChild<QAction *>(entry);
    if (action == nullptr) {
        qFatal("there is no entry %s", entry);
    }
    QVERIFY(action->isEnabled());
    action->trigger();
}

QString EditorHelpTest::notesUpTo(const QString &last)
{
    const QString log = folder() + "/log";
    const auto notes = [&] { return QFile::exists(log) ? QString(contentOf(log)) : QString(); };
    static_cast<void>(QTest::qWaitFor([&] { return notes().endsWith(last + "\n"); }, 60'000));
    return notes();
}

void EditorHelpTest::quitsTheViewer(int button)
{
    choose("HelpContents");
    answer(button);
    editor().close();
    QVERIFY(!editor().isVisible());
    QCOMPARE(notesUpTo("ended"), QString(started) + "got ZOT:Master Contents\ngot QUIT\nended\n");
}

void EditorHelpTest::requestsTheTopicsOfTheMenu()
{
    openWithViewer();
    for (const char *entry : {"HelpOnEditor", "HelpOnExpertParams", "HelpContents", "HelpTutorials",
                              "HelpSearch", "HelpOnHelp"}) {
        choose(entry);
    }
    QCOMPARE(notesUpTo("got ZOT:Help On Help"), QString(started) + "got ZOT:Def File Editor\n"
                                                                   "got ZOT:Expert Parameters\n"
                                                                   "got ZOT:Master Contents\n"
                                                                   "got ZOT:Tutorials\n"
                                                                   "got ZOT:Search\n"
                                                                   "got ZOT:Help On Help\n");
}

void EditorHelpTest::requestsTheIndex()
{
    openWithViewer();
    editor().helpIndex();
    QCOMPARE(notesUpTo("got ZOT:Master Index"), QString(started) + "got ZOT:Master Index\n");
}

void EditorHelpTest::requestsHelpForTheSelectedRow()
{
    openWithViewer();
    press("F1");
    select("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in");
    press("F1");
    select("/FLOW:Analysis/EXPERT PARAMETERS");
    press("F1");
    select("/FLOW:Analysis/DOMAIN:Duct"); // the rule names a topic
    press("F1");
    select("/FLOW:Analysis/DOMAIN:Duct/BOUNDARY:in/Mass Flow Rate");
    press("F1");
    QCOMPARE(notesUpTo("got ZOT:BOUNDARY#Mass Flow Rate"), QString(started) +
                                                               "got ZOT:Def File Editor\n"
                                                               "got ZOT:BOUNDARY\n"
                                                               "got ZOT:EXPERT PARAMETERS\n"
                                                               "got ZOT:Ducts and rooms\n"
                                                               "got ZOT:BOUNDARY#Mass Flow Rate\n");
}

void EditorHelpTest::quitsTheViewerWithTheWindow()
{
    openWithViewer();
    choose("HelpContents");
    editor().close();
    QCOMPARE(notesUpTo("ended"), QString(started) + "got ZOT:Master Contents\ngot QUIT\nended\n");
}

void EditorHelpTest::quitsTheViewerWithoutSaving()
{
    openWithViewer();
    changeSomething();
    quitsTheViewer(1);
}

void EditorHelpTest::quitsTheViewerAfterSaving()
{
    openWithViewer();
    changeSomething();
    quitsTheViewer(0);
}

void EditorHelpTest::keepsTheViewerWhenTheUserContinues()
{
    openWithViewer();
    changeSomething();
    choose("HelpContents");
    answer(2);
    editor().close();
    choose("HelpTutorials");
    QCOMPARE(notesUpTo("got ZOT:Tutorials"),
             QString(started) + "got ZOT:Master Contents\ngot ZOT:Tutorials\n");
}

void EditorHelpTest::doesNotStartAViewerToQuit()
{
    openWithViewer();
    editor().close();
    QVERIFY(!editor().isVisible());
    QVERIFY(!QFile::exists(folder() + "/log"));
}

void EditorHelpTest::reportsAMissingViewer()
{
    openWithViewer();
    QFile::remove(folder() + "/HelpViewer/OMBRAHelpViewer.exe");
    answer();
    choose("HelpContents");
    QCOMPARE(boxes, QStringList({"Warning: Warning\nDeskhall help server was not successfully "
                                 "started.\n[Ok], Escape"}));
}

VEL_EDITOR_TEST(EditorHelpTest)
#include "Help_test.moc"
