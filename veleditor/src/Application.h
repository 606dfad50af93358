// The application object: the place where errors end that were thrown while an
// event was handled.
//
// The toolkit cannot carry an exception through its event loops. The first
// error is therefore caught where the event was delivered and kept; open
// dialogs are rejected, so that the loops that wait for them end; the main loop
// is left; and `run` throws the error on, out of all loops. `main` handles it.
#pragma once

#include <QApplication>

#include <exception>

namespace velEditor {

class Application : public QApplication
{
    Q_OBJECT

public:
    /// Takes the toolkit's own options out of `argc` and `argv`, which must
    /// outlive the object.
    Application(int &argc, char **argv);

    bool notify(QObject *receiver, QEvent *event) override;

    /// Runs the event loop and gives its result. Throws the error that was
    /// kept meanwhile.
    int run();

    /// Closes the windows that belong to no other, and then the rest. As soon
    /// as one declines, those that are left stay: dialogs do not close before
    /// the user has agreed to close the window that they belong to.
    static void closeAllWindows();

    /// Throws the kept error, if there is one, and forgets it. To be called
    /// after a dialog was run outside `run`.
    void rethrow();

    /// Whether `run` has begun.
    [[nodiscard]] bool hasRun() const { return hasRun_; }

    /// An error is kept: nothing must be asked of the user any more.
    [[nodiscard]] bool failed() const { return error_ != nullptr; }

    /// Whether the running application, of whatever class, has failed.
    [[nodiscard]] static bool hasFailed();

private:
    void keep(std::exception_ptr error);

    std::exception_ptr error_;
    bool running_ = false;
    bool hasRun_ = false;
};

} // namespace velEditor
