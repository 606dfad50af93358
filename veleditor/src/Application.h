// The application object: it catches errors that are thrown while an event is
// handled.
//
// The toolkit cannot pass an exception through its event loops. So the application
// catches the first error and keeps it, rejects open dialogs to end their loops,
// and leaves the main loop. Then `run` throws the error again, outside all loops.
// `main` handles it.
#pragma once

#include <QApplication>

#include <exception>

namespace velEditor {

class Application : public QApplication
{
    Q_OBJECT

public:
    /// Removes the toolkit's options from `argc` and `argv`, which must outlive the
    /// object.
    Application(int &argc, char **argv);

    bool notify(QObject *receiver, QEvent *event) override;

    /// Runs the event loop and returns its result. Throws the kept error, if there
    /// is one.
    int run();

    /// Closes the windows without a parent, then all others. Stops if a window
    /// refuses: a dialog must not close before the user has agreed to close its
    /// parent window.
    static void closeAllWindows();

    /// Throws the kept error, if there is one, and forgets it. Call it after running
    /// a dialog outside `run`.
    void rethrow();

    /// Whether `run` has begun.
    [[nodiscard]] bool hasRun() const { return hasRun_; }

    /// Whether there is a kept error. If so, ask the user nothing more.
    [[nodiscard]] bool failed() const { return error_ != nullptr; }

    /// Whether the running application, of this or another class, has failed.
    [[nodiscard]] static bool hasFailed();

private:
    void keep(std::exception_ptr error);

    std::exception_ptr error_;
    bool running_ = false;
    bool hasRun_ = false;
};

} // namespace velEditor
