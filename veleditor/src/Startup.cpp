// The start of the editor, its session, and how an error ends it.
#include "veleditor/src/Startup.h"

#include "common/error.h"
#include "common/version.h"
#include "common/writeSignals.h"
#include "veleditor/src/Application.h"
#include "veleditor/src/Boxes.h"
#include "veleditor/src/Document.h"
#include "veleditor/src/Editor.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/ScreenPlace.h"
#include "veleditor/src/Text.h"
#include "veleditor/src/UpgradeNotice.h"
#include "veleditor/src/VELTree.h"
#include "veleditor/src/WaitCursor.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include <unistd.h>

namespace velEditor {

namespace {

/// The output of `--help`.
constexpr char helpText[] =
    "usage: veledit [-safe] FILE\n"
    "\n"
    "Shows a VEL command file as a tree and lets you change it by the rules of rule\n"
    "libraries. FILE is the last argument. Options of the toolkit, such as -style, may\n"
    "precede it.\n"
    "\n"
    "  -safe      edit only what may change while the solver runs on the file\n"
    "  --help     print this text, if it is the only argument\n"
    "  --version  print the version, if it is the only argument\n"
    "\n"
    "To open a file with the name --help, write ./--help.\n";

/// The answer to an argument that is the only one; null if it is a file name.
const char *answerTo(std::string_view word)
{
    if (word == "--help") {
        return helpText;
    }
    if (word == "--version") {
        return "veledit " VEL_VERSION "\n";
    }
    return nullptr;
}

/// Upgrades the data to the current version of the language and offers to show the
/// changes.
void upgrade(Application &application, Editor &editor)
{
    const Message changes = callWaiting([&] { return editor.document().upgrade(); });
    if (!changes) {
        return;
    }
    const bool showChanges =
        askYesNo(&editor, Editor::tr("Command File Updated."),
                 Editor::tr("The Command File has been updated to be consistent with\nthis "
                            "version of OMBRA ZOT.\n\nDo you want to see the changes made?"));
    application.rethrow();
    if (showChanges) {
        showUpgradeMessages(editor, *changes);
    }
    editor.tree().setModified();
    editor.tree().buildTree();
    editor.document().announceUpgrade(*changes);
}

void validateFirst(Application &application, Editor &editor)
{
    const Message findings = callWaiting([&] { return editor.document().validate(); });
    if (!findings) {
        return;
    }
    MessageBox box;
    box.icon = QMessageBox::Warning;
    box.title = Editor::tr("Command File Validation Errors");
    box.text = Editor::tr("Errors were encountered during initial Command File validation.\n"
                          "Please examine the Command File Errors panel to see the errors.");
    box.buttons = QStringList{Editor::tr("Continue")};
    static_cast<void>(ask(&editor, box));
    application.rethrow();
    (new ErrorDialog(&editor, QStringLiteral("Errors"), *findings, false))->showBeside(editor);
}

int runSession(Application &application, std::unique_ptr<Editor> &editor,
               const std::string &fileName, bool safeMode)
{
    editor = std::make_unique<Editor>(nullptr, nullptr, fileName, safeMode);
    application.rethrow();
    showOnScreen(*editor, QRect(100, 100, 800, 600));
    upgrade(application, *editor);
    validateFirst(application, *editor);
    return application.run();
}

/// Whether the platform has a screen on which a box can be seen.
bool hasScreen()
{
    const QString platform = QGuiApplication::platformName();
    return platform != QLatin1String("offscreen") && platform != QLatin1String("minimal");
}

/// Shows a failure of the start in a box, too, if standard error is not a terminal: a
/// program started from a desktop does not have a console.
void showWithoutConsole(const Application &application, const std::string &text)
{
    if (application.hasRun() || ::isatty(STDERR_FILENO) != 0 || !hasScreen()) {
        return;
    }
    reportFailure(nullptr, Editor::tr("Command File Editor"), fromBytes(text));
}

/// Saves the emergency copy. Returns the text that it has printed.
std::string saveInEmergency(Editor &editor, const std::string &fileName)
{
    std::string announcement = "Attempting to save VEL to " + fileName;
    std::fprintf(stderr, "%s\n", announcement.c_str());
    editor.save(fileName);
    return announcement;
}

QtMessageHandler usualMessages = nullptr;

// Without a display the toolkit prints the reason and aborts. Printing is enough.
void endInsteadOfAborting(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type != QtFatalMsg) {
        usualMessages(type, context, text);
        return;
    }
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    std::_Exit(1);
}

bool isSafeMode(int argc, char **argv)
{
    for (int i = 0; i < argc; ++i) {
        if (std::string_view(argv[i]) == "-safe") {
            return true;
        }
    }
    return false;
}

} // namespace

int runEditor(int argc, char **argv)
{
    // The name of the emergency copy is made from the first argument as given; the
    // file to edit is the last argument that the toolkit leaves. They differ if options
    // precede the file name. Users rely on both.
    const std::string emergencyName = std::string(argc > 1 ? argv[1] : "") + ".emergency";
    ignoreWriteSignals();
    if (const char *answer = argc == 2 ? answerTo(argv[1]) : nullptr) {
        return std::fputs(answer, stdout) >= 0 && std::fflush(stdout) == 0 ? 0 : 1;
    }
    usualMessages = qInstallMessageHandler(endInsteadOfAborting);
    Application application(argc, argv);
    qInstallMessageHandler(usualMessages);
    if (argc < 2) {
        std::printf("%s: must specify a vel file\n", argc > 0 ? argv[0] : "veleditor");
        return 0;
    }

    std::unique_ptr<Editor> editor;
    std::string report;
    bool savesData = false;
    try {
        return runSession(application, editor, argv[argc - 1], isSafeMode(argc, argv));
    } catch (const fileError &failure) {
        report = "File error encountered:\n" + failure.message();
    } catch (const error &failure) {
        report = "Error encountered:\n" + failure.message();
        savesData = true;
    } catch (...) {
        report = "Unexpected error encountered.";
    }
    std::fprintf(stderr, "%s\n", report.c_str());
    if (savesData && editor != nullptr) {
        report += '\n' + saveInEmergency(*editor, emergencyName);
    }
    showWithoutConsole(application, report);
    return 0;
}

} // namespace velEditor
