// Tests the whole run of the program. Each test runs it in a separate process; the
// user's actions are prepared before the application exists.
#include "veleditor/tests/EditorTest.h"

#include "common/error.h"
#include "common/version.h"
#include "veleditor/src/Application.h"
#include "veleditor/src/EditParamDialog.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/Startup.h"
#include "veleditor/tests/TreeText.h"

#include <QDir>
#include <QFile>
#include <QMenu>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTextEdit>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <functional>

#include <unistd.h>

using namespace velEditor;

namespace {

// How often a signal arrived with the wait cursor and without it.
volatile std::sig_atomic_t waiting = 0;
volatile std::sig_atomic_t notWaiting = 0;

/// The user's actions when the main window is in its event loop.
std::function<void(Editor &)> inTheLoop;

Editor *mainWindow()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *editor = qobject_cast<Editor *>(window)) {
            return editor;
        }
    }
    return nullptr;
}

// Called for each new application object. A zero timer can fire while the welcome
// label or a start-up box is shown. At that time the window is not visible yet,
// or it is blocked. So this waits until there is no modal dialog any more.
void prepareUse()
{
    auto *timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer] {
        Editor *editor = mainWindow();
        if (editor == nullptr || !editor->isVisible() ||
            QApplication::activeModalWidget() != nullptr ||
            QThread::currentThread()->loopLevel() != 1) {
            return;
        }
        timer->stop();
        timer->deleteLater();
        inTheLoop(*editor);
    });
    timer->start(1);
}

// Throws while the first message box is open, then answers the later ones.
void failInABox()
{
    auto *timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, failed = false]() mutable {
        QWidget *window = QApplication::activeModalWidget();
        if (qobject_cast<QMessageBox *>(window) != nullptr && !failed) {
            failed = true;
            throw error("early");
        }
        if (auto *dialog = qobject_cast<ErrorDialog *>(window)) {
            timer->stop();
            pressButton(*dialog, "Yes");
        }
    });
    timer->start(1);
}

/// The result of a run of the program.
struct Run
{
    int status = -1;
    QString output; ///< standard output, then standard error
};

} // namespace

class StartupTest : public EditorTest
{
    Q_OBJECT

private:
    /// Sets the screen size for the next run of the program.
    void setScreen(int width, int height);
    /// Runs the real program with these arguments and without a display.
    static Run runWithoutDisplay(const QStringList &words);
    /// Runs the program with these arguments.
    Run run(const QStringList &words, std::function<void(Editor &)> use = {});
    /// Uses a copy of the Perl side with these lines added to API.pm.
    void addToPerlSide(const QByteArray &lines);
    /// Uses a Perl side with which the tree can be built only once.
    void breakRebuilds();

private slots:
    void asksForAFile();
    void endsWithoutADisplay();
    void answersHelpAndVersionWithoutADisplay();
    void ignoresTheSignalsOfFailedWrites();
    void opensTheLastArgument();
    void ignoresTheOptionsOfTheToolkit();
    void acceptsSafeModeAnywhere();
    void reportsAFileThatCannotBeLoaded();
    void opensAFileNamedLikeAnOption();
    void asksForAFileWhenThereAreOnlyOptionsOfTheToolkit();
    void endsWithTheStatusOfItsLoop();
    void waitsWithTheWaitCursor();
    void reportsMissingEnvironmentVariables();
    void reportsAMissingBuildLabel();
    void placesTheWindow();
    void keepsTheWindowOnASmallScreen();
    void asksNothingWithoutAnUpgrade();
    void showsWhatWasUpgraded();
    void marksAnUpgradeThatIsNotShown();
    void showsFirstFindings();
    void showsChangesBeforeFindings();
    void savesInEmergency();
    void namesTheCopyAfterTheUnchangedArgument();
    void closesAnOpenMenuWhenItFails();
    void savesInEmergencyToTheSecondArgument();
    void savesInEmergencyDuringADialog();
    void savesInEmergencyBeforeTheLoop();
    void savesNothingWhenTheFirstBuildFails();
    void reportsOtherErrors();
};

Run StartupTest::run(const QStringList &words, std::function<void(Editor &)> use)
{
    inTheLoop = use ? std::move(use) : [](Editor &editor) { editor.close(); };
    qAddPreRoutine(prepareUse);

    QByteArrayList texts{"veleditor"};
    for (const QString &word : words) {
        texts.append(word.toUtf8());
    }
    std::vector<char *> argv;
    for (QByteArray &text : texts) {
        argv.push_back(text.data());
    }
    argv.push_back(nullptr);

    const QString files[] = {folder() + "/stdout", folder() + "/stderr"};
    std::fflush(nullptr);
    const int before[] = {dup(STDOUT_FILENO), dup(STDERR_FILENO)};
    for (int i = 0; i < 2; ++i) {
        std::FILE *file = std::fopen(qPrintable(files[i]), "w");
        dup2(fileno(file), i + 1);
        std::fclose(file);
    }
    Run result;
    result.status = runEditor(static_cast<int>(argv.size()) - 1, argv.data());
    std::fflush(nullptr);
    for (int i = 0; i < 2; ++i) {
        dup2(before[i], i + 1);
        result.output += QString::fromUtf8(contentOf(files[i]));
    }
    // Messages of the toolkit about this platform, which the test framework prints.
    static const QRegularExpression toolkit("^Q(WARN|DEBUG|INFO) .*\n",
                                            QRegularExpression::MultilineOption);
    result.output.remove(toolkit);
    return result;
}

void StartupTest::addToPerlSide(const QByteArray &lines)
{
    const QString real = qEnvironmentVariable("ZOT5_VEL_PARSER");
    const QString own = folder() + "/perl";
    QVERIFY(QDir().mkpath(own + "/VEL"));
    for (const char *folderName : {"", "/VEL"}) {
        const QDir from(real + folderName);
        for (const QString &name : from.entryList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            if (name != "API.pm" && name != "VEL") {
                QVERIFY(QFile::link(from.filePath(name), own + folderName + '/' + name));
            }
        }
    }
    QByteArray api = contentOf(real + "/API.pm");
    api.replace("\n1;\n", "\nno warnings;\n" + lines + "\n1;\n");
    newFile("perl/API.pm", api);
    qputenv("ZOT5_VEL_PARSER", own.toUtf8());
}

void StartupTest::breakRebuilds()
{
    addToPerlSide("my $asked = 0;\n"
                  "sub isItemExpert { my ($self, $path) = @_;\n"
                  "    $self->{database}->deleteObj($path)\n"
                  "        if $path eq '/FLOW:Analysis/DOMAIN:Duct' && $asked++;\n"
                  "    return 0; }");
}

void StartupTest::asksForAFile()
{
    const Run result = run({});
    QCOMPARE(result.output, QString("veleditor: must specify a vel file\n"));
    QCOMPARE(result.status, 0);
}

Run StartupTest::runWithoutDisplay(const QStringList &words)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "xcb");
    environment.remove("DISPLAY");
    QProcess program;
    program.setProcessEnvironment(environment);
    program.start(qEnvironmentVariable("VEL_SOURCE_DIR") + "/veledit", words);
    Run result;
    if (program.waitForFinished() && program.exitStatus() == QProcess::NormalExit) {
        result.status = program.exitCode();
    }
    result.output = QString::fromUtf8(program.readAllStandardOutput());
    result.output += QString::fromUtf8(program.readAllStandardError());
    return result;
}

void StartupTest::endsWithoutADisplay()
{
    const Run result = runWithoutDisplay({copyOf("duct.vel")});
    QCOMPARE(result.status, 1);
    QVERIFY(result.output.contains("could not connect to display"));
}

void StartupTest::answersHelpAndVersionWithoutADisplay()
{
    const Run help = runWithoutDisplay({"--help"});
    QCOMPARE(help.status, 0);
    QVERIFY2(help.output.startsWith("usage: veledit [-safe] FILE\n"), qPrintable(help.output));
    for (const char *option : {"-safe", "--help", "--version"}) {
        QVERIFY2(help.output.contains(QLatin1String("\n  ") + option), option);
    }

    const Run version = runWithoutDisplay({"--version"});
    QCOMPARE(version.status, 0);
    QCOMPARE(version.output, QString("veledit " VEL_VERSION "\n"));

    // With another argument, the last one is a file name.
    QCOMPARE(runWithoutDisplay({"-safe", "--help"}).status, 1);
}

void StartupTest::ignoresTheSignalsOfFailedWrites()
{
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
        std::signal(signal, SIG_DFL);
    }
    run({copyOf("duct.vel")});
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
        QVERIFY(std::signal(signal, SIG_IGN) == SIG_IGN);
    }
}

void StartupTest::opensTheLastArgument()
{
    const QString file = copyOf("duct.vel");
    QString title;
    const Run result = run({"first", "-second", file}, [&](Editor &editor) {
        title = editor.windowTitle();
        editor.close();
    });
    QCOMPARE(title, file);
    QCOMPARE(result.output, QString());
    QCOMPARE(result.status, 0);
}

void StartupTest::ignoresTheOptionsOfTheToolkit()
{
    const QString file = copyOf("duct.vel");
    QString title;
    run({file, "-style", "fusion"}, [&](Editor &editor) {
        title = editor.windowTitle();
        editor.close();
    });
    QCOMPARE(title, file);
}

void StartupTest::acceptsSafeModeAnywhere()
{
    const QString file = copyOf("duct.vel");
    QString title;
    run({"-safe", file}, [&](Editor &editor) {
        title = editor.windowTitle();
        editor.close();
    });
    QCOMPARE(title, file + " - Safe Mode");
}

void StartupTest::reportsAFileThatCannotBeLoaded()
{
    // After the file name, -safe is a file name.
    const Run result = run({copyOf("duct.vel"), "-safe"});
    QCOMPARE(result.status, 0);
    QVERIFY2(result.output.startsWith("File error encountered:\nreadTextFile: -safe: open failed"),
             qPrintable(result.output));
    QVERIFY(!QFile::exists("-safe.emergency"));
}

// The last argument is always the file; it also counts as an option.
void StartupTest::opensAFileNamedLikeAnOption()
{
    newFile("-safe", "FLOW: A\nEND\n");
    QVERIFY(QDir::setCurrent(folder()));
    QString title;
    run({"-safe"}, [&](Editor &editor) {
        title = editor.windowTitle();
        editor.close();
    });
    QCOMPARE(title, QString("-safe - Safe Mode"));
}

void StartupTest::asksForAFileWhenThereAreOnlyOptionsOfTheToolkit()
{
    const Run result = run({"-style", "fusion"});
    QCOMPARE(result.output, QString("veleditor: must specify a vel file\n"));
    QCOMPARE(result.status, 0);
}

void StartupTest::endsWithTheStatusOfItsLoop()
{
    const Run result = run({copyOf("duct.vel")}, [](Editor &) { QCoreApplication::exit(3); });
    QCOMPARE(result.status, 3);
}

// The rules send a signal while they upgrade and validate; the handler checks the
// cursor.
void StartupTest::waitsWithTheWaitCursor()
{
    addToPerlSide("require VEL::Upgrade; require VEL::Validate;\n"
                  "my ($upgrade, $validate) = (\\&VEL::Upgrade::run, "
                  "\\&VEL::Validate::validateObject);\n"
                  "*VEL::Upgrade::run = sub { kill USR1 => $$; goto &$upgrade };\n"
                  "*VEL::Validate::validateObject = sub { kill USR1 => $$; goto &$validate };");
    std::signal(SIGUSR1, [](int) {
        const QCursor *cursor = QApplication::overrideCursor();
        const bool waits = cursor != nullptr && cursor->shape() == Qt::WaitCursor;
        volatile std::sig_atomic_t &count = waits ? waiting : notWaiting;
        count = count + 1;
    });
    bool isOver = false;
    run({copyOf("duct.vel")}, [&](Editor &editor) {
        isOver = QApplication::overrideCursor() == nullptr;
        editor.close();
    });
    QVERIFY(waiting >= 2);
    QCOMPARE(static_cast<int>(notWaiting), 0);
    QVERIFY(isOver);
}

void StartupTest::reportsAMissingBuildLabel()
{
    qunsetenv("ZOTBUILDID");
    const Run result = run({copyOf("duct.vel")});
    QCOMPARE(result.output, QString("ZOTBUILDID not set; some features will not be available\n"));
}

void StartupTest::reportsMissingEnvironmentVariables()
{
    qunsetenv("ZOT5ROOT");
    qunsetenv("ZOTBUILDID");
    const Run result = run({copyOf("duct.vel")});
    QCOMPARE(result.output, QString("ZOT5ROOT not set; some features will not be available\n"
                                    "ZOTBUILDID not set; some features will not be available\n"));
}

void StartupTest::setScreen(int width, int height)
{
    const QString configuration =
        newFile("screen.json", QString(R"({"screens": [{"name": "one", "x": 0, "y": 0, "width": %1,
            "height": %2, "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})")
                                   .arg(width)
                                   .arg(height)
                                   .toUtf8());
    qputenv("QT_QPA_PLATFORM", QFile::encodeName("offscreen:configfile=" + configuration));
}

// The window and its frame are within the screen.
void StartupTest::keepsTheWindowOnASmallScreen()
{
    setScreen(683, 384);
    QRect geometry;
    run({copyOf("duct.vel")}, [&](Editor &editor) {
        geometry = editor.geometry();
        editor.close();
    });
    const QRect screen(0, 0, 683, 384);
    QVERIFY2(screen.contains(geometry), qPrintable(QDebug::toString(geometry)));
    QVERIFY(geometry.top() >= 20); // room for a title bar
    QVERIFY(geometry.width() > 640);
    QVERIFY(geometry.height() > 310);
}

void StartupTest::placesTheWindow()
{
    setScreen(1024, 768);
    QRect geometry;
    run({copyOf("duct.vel")}, [&](Editor &editor) {
        geometry = editor.geometry();
        editor.close();
    });
    QCOMPARE(geometry, QRect(100, 100, 800, 600));
}

void StartupTest::asksNothingWithoutAnUpgrade()
{
    bool modified = true;
    run({copyOf("duct.vel")}, [&](Editor &editor) {
        modified = editor.tree().isModified();
        editor.close();
    });
    QVERIFY(!modified);
    QVERIFY(boxes.isEmpty());
}

void StartupTest::showsWhatWasUpgraded()
{
    const QString file = copyOf("old.vel");
    answer(0);
    answer(1); // quit without saving
    QString messages;
    QString name;
    QPoint place;
    bool modal = true;
    run({file}, [&](Editor &editor) {
        if (auto *dialog = visible<VELUpgradeMessagesDialog>()) {
            messages = dialog->findChild<QTextEdit *>()->toPlainText();
            name = dialog->objectName();
            place = dialog->pos() - editor.pos();
            modal = dialog->isModal();
        }
        editor.close();
    });
    QCOMPARE(
        boxes.first(),
        QString(
            "Question: Command File Updated.\nThe Command File has been updated to be consistent "
            "with\nthis version of OMBRA ZOT.\n\nDo you want to see the changes "
            "made?\nYes | [No], Escape"));
    QCOMPARE(name, QString("Command File Updates"));
    QVERIFY2(messages.startsWith("The following changes were made:\n\n"), qPrintable(messages));
    QVERIFY2(messages.contains("Run Mode"), qPrintable(messages));
    QCOMPARE(place, QPoint(50, 50));
    QVERIFY(!modal);
}

void StartupTest::marksAnUpgradeThatIsNotShown()
{
    const QString file = copyOf("old.vel");
    answer(1); // do not show the changes
    answer(1); // quit without saving
    QString title;
    QString text;
    bool dialog = true;
    run({file}, [&](Editor &editor) {
        title = editor.windowTitle();
        text = treeText(editor.tree());
        dialog = visible<VELUpgradeMessagesDialog>() != nullptr;
        editor.close();
    });
    QCOMPARE(title, file + " - Modified");
    QVERIFY2(text.contains("    Run Mode = Steady *\n"), qPrintable(text));
    QVERIFY(!dialog);
}

void StartupTest::showsFirstFindings()
{
    answer();
    QString name;
    QString messages;
    QPoint place;
    bool modal = true;
    run({newFile("bad.vel", "FLOW: A\nDOMAIN: D\nEND\nEND\n")}, [&](Editor &editor) {
        if (auto *dialog = visible<ErrorDialog>()) {
            name = dialog->objectName();
            messages = dialog->findChild<QTextEdit *>()->toPlainText();
            place = dialog->pos() - editor.pos();
            modal = dialog->isModal();
        }
        editor.close();
    });
    QCOMPARE(boxes,
             QStringList(
                 "Warning: Command File Validation Errors\nErrors were encountered during initial "
                 "Command File validation.\nPlease examine the Command File Errors panel "
                 "to see the errors.\n[Continue]"));
    QCOMPARE(name, QString("Errors"));
    QVERIFY2(messages.contains("required parameter \"Kind\" is missing"), qPrintable(messages));
    QCOMPARE(place, QPoint(50, 50));
    QVERIFY(!modal);
}

void StartupTest::savesInEmergency()
{
    const QString file = copyOf("duct.vel");
    const QByteArray before = contentOf(file);
    breakRebuilds();
    const Run result = run({file}, [](Editor &editor) { editor.tree().buildTree(); });
    QCOMPARE(
        result.output,
        QString("Error encountered:\ngetChildList : getChildList: unable to find the requested "
                "path\nAttempting to save VEL to " +
                file + ".emergency\n"));
    QCOMPARE(result.status, 0);
    QVERIFY(contentOf(file + ".emergency").startsWith("LANGUAGE:\n  Version = 2.1\nEND\nFLOW:"));
    QCOMPARE(contentOf(file + ".emergency.bak"), before);
    QVERIFY(!QFile::exists(file)); // the loaded file was moved
}

void StartupTest::showsChangesBeforeFindings()
{
    answer(0); // show the changes
    answer();  // the findings
    answer(1); // quit without saving
    QStringList shown;
    run({newFile("old.vel", "LANGUAGE:\nVersion = 2.0\nEND\n"
                            "FLOW: A\nMode = Steady\nDOMAIN: D\nEND\nEND\n")},
        [&](Editor &editor) {
            for (const auto *dialog : editor.findChildren<MessageDialog *>()) {
                shown.append(dialog->windowTitle());
            }
            editor.close();
        });
    QCOMPARE(boxes.size(), 3);
    QVERIFY(boxes[0].startsWith("Question: Command File Updated.\n"));
    QVERIFY(boxes[1].startsWith("Warning: Command File Validation Errors\n"));
    QVERIFY(boxes[2].startsWith("Warning: Unsaved Changes\n"));
    QCOMPARE(shown, QStringList({"VEL Upgrade Messages", "Command File Errors"}));
}

// The name is the first argument unchanged, even if it is an option of the
// toolkit.
void StartupTest::namesTheCopyAfterTheUnchangedArgument()
{
    const QString file = copyOf("duct.vel");
    breakRebuilds();
    QVERIFY(QDir::setCurrent(folder()));
    const Run result =
        run({"-style", "fusion", file}, [](Editor &editor) { editor.tree().buildTree(); });
    QVERIFY2(result.output.endsWith("Attempting to save VEL to -style.emergency\n"),
             qPrintable(result.output));
    QVERIFY(QFile::exists("-style.emergency"));
}

void StartupTest::closesAnOpenMenuWhenItFails()
{
    const QString file = copyOf("duct.vel");
    bool wasOpen = false;
    const Run result = run({file}, [&](Editor &editor) {
        editor.findChild<QMenu *>("FileMenu")->popup(editor.pos());
        wasOpen = QApplication::activePopupWidget() != nullptr;
        throw error("meanwhile");
    });
    QVERIFY(wasOpen);
    QCOMPARE(result.output,
             "Error encountered:\nmeanwhile\nAttempting to save VEL to " + file + ".emergency\n");
    QVERIFY(QFile::exists(file + ".emergency"));
}

void StartupTest::savesInEmergencyToTheSecondArgument()
{
    const QString file = copyOf("duct.vel");
    breakRebuilds();
    QVERIFY(QDir::setCurrent(folder()));
    const Run result = run({"-safe", file}, [](Editor &editor) { editor.tree().buildTree(); });
    QVERIFY(result.output.endsWith("Attempting to save VEL to -safe.emergency\n"));
    QVERIFY(QFile::exists("-safe.emergency"));
    QVERIFY(QFile::exists("-safe.emergency.bak"));
    QVERIFY(!QFile::exists(file));
}

// The error is thrown while a dialog runs its own event loop; the emergency save then
// asks a question.
void StartupTest::savesInEmergencyDuringADialog()
{
    const QString file = newFile("bad.vel", "FLOW: Analysis\nTitle = x\nDOMAIN: Duct\nKind = No\n"
                                            "END\nDOMAIN: Other\nEND\nEND\n");
    breakRebuilds();
    answer(); // the first findings
    bool returned = false;
    const Run result = run({file}, [&](Editor &editor) {
        VELTreeItem *flow = VELTreeItem::from(editor.tree().topLevelItem(0)->child(0));
        onDialog<EditParamDialog>([&](EditParamDialog &) {
            QMetaObject::invokeMethod(&editor.tree(), "buildTree", Qt::QueuedConnection);
            onDialog<ErrorDialog>([](ErrorDialog &dialog) { pressButton(dialog, "Yes"); });
        });
        editor.tree().editParam(VELTreeItem::from(flow->child(0)));
        returned = true;
    });
    QVERIFY(returned);
    QVERIFY2(result.output.startsWith("Error encountered:\n"), qPrintable(result.output));
    QVERIFY(QFile::exists(file + ".emergency"));
    QVERIFY(contentOf(file + ".emergency").contains("  DOMAIN: Other\n"));
}

// The error is thrown while a box of the start is open; the emergency save must still
// ask its question.
void StartupTest::savesInEmergencyBeforeTheLoop()
{
    const QString file = newFile("old.vel", "LANGUAGE:\nVersion = 2.0\nEND\n"
                                            "FLOW: A\nMode = Steady\nDOMAIN: D\nEND\nEND\n");
    setBoxAnswers({}); // use the real boxes
    qAddPreRoutine(failInABox);
    const Run result = run({file});
    QCOMPARE(result.output, QString("Error encountered:\nearly\nAttempting to save VEL to " + file +
                                    ".emergency\n"));
    QVERIFY(contentOf(file + ".emergency").contains("Run Mode = Steady"));
}

void StartupTest::savesNothingWhenTheFirstBuildFails()
{
    const QString file = copyOf("duct.vel");
    addToPerlSide("sub isItemExpert { my ($self, $path) = @_;\n"
                  "    $self->{database}->deleteObj($path) if $path =~ /Duct$/;\n"
                  "    return 0; }");
    const Run result = run({file});
    QCOMPARE(result.output,
             QString("Error encountered:\ngetChildList : getChildList: unable to find "
                     "the requested path\n"));
    QVERIFY(QFile::exists(file));
    QVERIFY(!QFile::exists(file + ".emergency"));
}

void StartupTest::reportsOtherErrors()
{
    const QString file = copyOf("duct.vel");
    const Run result = run({file}, [](Editor &) { throw 42; });
    QCOMPARE(result.output, QString("Unexpected error encountered.\n"));
    QCOMPARE(result.status, 0);
    QVERIFY(!QFile::exists(file + ".emergency"));
}

VEL_STARTUP_TEST(StartupTest)
#include "Startup_test.moc"
