// The base of all tests that drive the real window.
//
// A test class derives from EditorTest, has one private slot for each user
// action, and ends its source with VEL_EDITOR_TEST. Each slot runs in a process
// of its own, since the bridge keeps its one command database for the life of
// the process; the program given a slot's name runs that one alone.
//
// Message boxes are answered by `answer`, in advance and in order, and noted
// down in `boxes`. A box that nobody expected, or an answer that nobody asked
// for, fails the test; so does a dialog that is left waiting.
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

    /// A copy of a file of the tests' data folder, in a folder of its own.
    QString copyOf(const QString &dataFile);
    /// A file with this content there.
    QString newFile(const QString &name, const QByteArray &content);
    /// Opens the window on a file and shows it.
    Editor &open(const QString &file, bool safeMode = false);

    [[nodiscard]] Editor &editor() { return *editor_; }
    [[nodiscard]] VELTree &tree() { return editor_->tree(); }
    [[nodiscard]] QString file() const { return file_; }

    // --- Rows ---------------------------------------------------------------

    /// The row with this database path; fails the test when there is none.
    VELTreeItem &row(const char *path);
    void select(const char *path);
    void doubleClick(const char *path);

    /// Makes the title of duct.vel "Second run", which is not saved then.
    void changeSomething();

    // --- Keys, boxes and dialogs -----------------------------------------------

    /// Presses keys in the main window, as "Ctrl+S".
    void press(const char *keys);

    /// The button that the next unanswered box will have pressed.
    void answer(int button = 0) { answers_.append(button); }

    /// The boxes so far: "Warning: title", the text, "Remark: ..." where there is
    /// one, and on the last line the buttons, as "[&Yes] | &No, Escape": in square
    /// brackets what Return presses, "Escape" where that key closes the box. A
    /// box that is given no buttons reads "Ok".
    QStringList boxes;

    /// Uses the next modal dialog of a class, when it is up.
    template <typename Dialog, typename Use>
    void onDialog(Use use)
    {
        ++awaitedDialogs_;
        auto *timer = new QTimer(this);
        connect(timer, &QTimer::timeout, this, [this, timer, use] {
            auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (dialog == nullptr)
                return;
            timer->stop();
            timer->deleteLater();
            --awaitedDialogs_;
            use(*dialog);
        });
        timer->start(1);
    }

    /// The visible window of a class; null when there is none.
    template <typename Window>
    static Window *visible()
    {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            auto *wanted = qobject_cast<Window *>(window);
            if (wanted != nullptr && wanted->isVisible())
                return wanted;
        }
        return nullptr;
    }

    /// The same where there must be one; else the test ends.
    template <typename Window>
    static Window &shown()
    {
        auto *window = visible<Window>();
        if (window == nullptr)
            qFatal("there is no %s", Window::staticMetaObject.className());
        return *window;
    }

    /// Runs Perl code in the interpreter of the program.
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
    QTimer watch_; ///< looks for dialogs that nobody answers
    QWidget *waiting_ = nullptr;
};

/// Presses the child button with this object name.
void pressButton(QWidget &window, const char *name);

/// Runs each slot of the test in a process of its own; see above. A test that
/// runs the program itself has no application object.
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
