#include "veleditor/src/Startup.h"

#include "common/error.h"
#include "veleditor/src/Application.h"
#include "veleditor/src/Boxes.h"
#include "veleditor/src/Editor.h"
#include "veleditor/src/MessageDialog.h"
#include "veleditor/src/VELTree.h"
#include "veleditor/src/WaitCursor.h"
#include "velparser/api/velparser.h"

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace velEditor {

namespace {

/// Shown beside the main window's corner, not over it.
void showBeside(const Editor &editor, QDialog &dialog)
{
    dialog.move(editor.pos() + QPoint(50, 50));
    dialog.show();
    dialog.repaint();
}

/// Brings the data up to the current version of the language and offers to
/// show what that changed.
void upgrade(Application &application, Editor &editor)
{
    const char *changes = callWaiting(velparser::updateSolverVEL);
    if (changes == nullptr)
        return;
    const std::string messages = std::string("The following changes were made:\n\n") + changes;
    const bool showChanges =
        askYesNo(&editor, Editor::tr("Command File Updated."),
                 Editor::tr("The Command File has been updated to be consistent with\nthis "
                            "version of OMBRA ZOT.\n\nDo you want to see the changes made?"));
    application.rethrow();
    if (showChanges)
        showBeside(editor, *new VELUpgradeMessagesDialog(
                               &editor, QStringLiteral("Command File Updates"), messages));
    editor.tree().setModified();
    editor.tree().buildTree();
}

void validateFirst(Application &application, Editor &editor)
{
    const char *findings = callWaiting(velparser::validateVELDataH);
    if (findings == nullptr)
        return;
    const std::string messages = findings;
    MessageBox box;
    box.icon = QMessageBox::Warning;
    box.title = Editor::tr("Command File Validation Errors");
    box.text = Editor::tr("Errors were encountered during initial Command File validation.\n"
                          "Please examine the Command File Errors panel to see the errors.");
    box.buttons = QStringList{Editor::tr("Continue")};
    static_cast<void>(ask(&editor, box));
    application.rethrow();
    showBeside(editor, *new ErrorDialog(&editor, QStringLiteral("Errors"), messages, false));
}

int runSession(Application &application, std::unique_ptr<Editor> &editor,
               const std::string &fileName, bool safeMode)
{
    editor = std::make_unique<Editor>(nullptr, nullptr, fileName, safeMode);
    application.rethrow();
    editor->setGeometry(100, 100, 800, 600);
    editor->show();
    upgrade(application, *editor);
    validateFirst(application, *editor);
    return application.run();
}

void saveInEmergency(Editor *editor, const std::string &fileName)
{
    if (editor == nullptr)
        return;
    std::fprintf(stderr, "Attempting to save VEL to %s\n", fileName.c_str());
    editor->save(fileName);
}

QtMessageHandler usualMessages = nullptr;

// A toolkit that finds no display tells why and aborts; the telling is enough.
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
        if (std::string_view(argv[i]) == "-safe")
            return true;
    }
    return false;
}

} // namespace

int runEditor(int argc, char **argv)
{
    // Kept: the emergency copy takes the second word as it was given, the file
    // to edit is the last that the toolkit leaves. They differ when options
    // precede the file name.
    const std::string emergencyName = std::string(argc > 1 ? argv[1] : "") + ".emergency";
    usualMessages = qInstallMessageHandler(endInsteadOfAborting);
    Application application(argc, argv);
    qInstallMessageHandler(usualMessages);
    if (argc < 2) {
        std::printf("%s: must specify a vel file\n", argc > 0 ? argv[0] : "veleditor");
        return 0;
    }

    std::unique_ptr<Editor> editor;
    try {
        return runSession(application, editor, argv[argc - 1], isSafeMode(argc, argv));
    } catch (const fileError &failure) {
        std::fprintf(stderr, "File error encountered:\n%s\n", failure.message().c_str());
    } catch (const error &failure) {
        std::fprintf(stderr, "Error encountered:\n%s\n", failure.message().c_str());
        saveInEmergency(editor.get(), emergencyName);
    } catch (...) {
        std::fprintf(stderr, "Unexpected error encountered.\n");
    }
    return 0;
}

} // namespace velEditor
