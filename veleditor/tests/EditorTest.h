// The base class of all tests that use the real window.
//
// A test class derives from EditorTest, has one private slot for each user action, and
// ends its source with VEL_EDITOR_TEST. Each slot runs in a separate process, because
// the bridge keeps its command database for the life of the process. The program runs
// only one slot if its name is given as an argument.
//
// `answer` gives the answers to message boxes in advance and in order; `boxes` records
// the boxes. The test fails if there is an unexpected box, an answer that was not
// used, or a dialog that stays open.
#pragma once

#include "veleditor/src/Boxes.h"
#include "veleditor/src/Editor.h"
#include "veleditor/src/VELTree.h"

#include <QApplication>
#include <QObject>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

namespace velEditor {

class EditorTest : public QObject
{
    Q_OBJECT

protected:
    // --- The window ---------------------------------------------------------

    /// Copies a file of the tests' data folder to a new folder.
    QString copyOf(const QString &dataFile);
    /// Writes a file with this content to the same folder.
    QString newFile(const QString &name, const QByteArray &content);
    /// Opens the window on a file and shows it.
    Editor &open(const QString &file, bool safeMode = false);

    [[nodiscard]] Editor &editor() { return *editor_; }
    [[nodiscard]] VELTree &tree() { return editor_->tree(); }
    [[nodiscard]] QString file() const { return file_; }

    // --- Rows ---------------------------------------------------------------

    /// The row with this database path; fails the test if there is none.
    VELTreeItem &row(const char *path);
    void select(const char *path);
    void doubleClick(const char *path);

    /// Changes the title of duct.vel to "Second run", without saving.
    void changeSomething();

    // --- Keys, boxes and dialogs -----------------------------------------------

    /// Presses keys such as "Ctrl+S" in the main window.
    void press(const char *keys);

    /// Sets the button that answers the next box without an answer.
    void answer(int button = 0) { answers_.append(button); }

    /// The boxes so far: "Warning: title", the text, "Details: ..." if there are
    /// details, and on the last line the buttons, such as "[&Yes] | &No, Escape".
    /// Square brackets mark the button that Return presses; "Escape" means that this
    /// key closes the box. For a box without buttons the line has "Ok".
    QStringList boxes;

    /// Uses the next modal dialog of a class when it is shown.
    template <typename Dialog, typename Use>
    void onDialog(Use use)
    {
        ++awaitedDialogs_;
        auto *timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [this, timer, use] {
            auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (dialog == nullptr) {
                return;
            }
            timer->stop();
            timer->deleteLater();
            --awaitedDialogs_;
            use(*dialog);
        });
        timer->start(1);
    }

    /// The visible window of a class; null if there is none.
    template <typename Window>
    static Window *visible()
    {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            auto *wanted = qobject_cast<Window *>(window);
            if (wanted != nullptr && wanted->isVisible()) {
                return wanted;
            }
        }
        return nullptr;
    }

    /// The same; ends the test if there is none.
    template <typename Window>
    static Window &shown()
    {
        auto *window = visible<Window>();
        if (window == nullptr) {
            qFatal("there is no %s", Window::staticMetaObject.className());
        }
        return *window;
    }

    /// Runs Perl code in the program's interpreter.
    void runPerl(const QByteArray &code);

    static QByteArray contentOf(const QString &file);
    [[nodiscard]] QString folder() const { return folder_.path(); }

private slots:
    void init();
    void cleanup();

private:
    void rejectWaitingDialog();

    QTemporaryDir folder_;
    QString file_;
    std::unique_ptr<Editor> editor_;
    QList<int> answers_;
    int awaitedDialogs_ = 0;
    QTimer watch_; ///< checks for dialogs without an answer
    QWidget *waiting_ = nullptr;
};

/// Presses the child button with this object name.
void pressButton(QWidget &window, const char *name);

/// Runs each slot of the test in a separate process; see above. A test that runs the
/// program itself does not have an application object.
int runEditorTest(QObject &test, int argc, char **argv, bool withApplication);

} // namespace velEditor

#define VEL_TEST_MAIN(Class, withApplication)                                                      \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        Class test;                                                                                \
        return velEditor::runEditorTest(test, argc, argv, withApplication);                        \
    }

#define VEL_EDITOR_TEST(Class) VEL_TEST_MAIN(Class, true)

/// For a test that calls `runEditor`.
#define VEL_STARTUP_TEST(Class) VEL_TEST_MAIN(Class, false)
