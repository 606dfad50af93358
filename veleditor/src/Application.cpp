// Keeps the first error, and ends the event loops because of it.
#include "veleditor/src/Application.h"

#include <QDialog>

#include <utility>

namespace velEditor {

namespace {

void closePopups()
{
    while (QWidget *popup = QApplication::activePopupWidget()) {
        if (!popup->close()) {
            popup->hide();
        }
    }
}

void rejectDialogs()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        auto *dialog = qobject_cast<QDialog *>(window);
        if (dialog != nullptr && dialog->isVisible()) {
            dialog->reject();
        }
    }
}

} // namespace

Application::Application(int &argc, char **argv) : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("veleditor"));
}

bool Application::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (...) {
        keep(std::current_exception());
    }
    return false;
}

// `exit` is only for the main loop. Without a main loop, it would make every
// later dialog return at once, including the dialog of the emergency save.
void Application::keep(std::exception_ptr error)
{
    if (!error_) {
        error_ = std::move(error);
    }
    closePopups();
    rejectDialogs();
    if (running_) {
        exit(0);
    }
}

int Application::run()
{
    rethrow();
    running_ = true;
    hasRun_ = true;
    const int result = exec();
    running_ = false;
    rethrow();
    return result;
}

// The toolkit itself closes the windows in no defined order.
void Application::closeAllWindows()
{
    const QWidgetList windows = topLevelWidgets();
    for (QWidget *window : windows) {
        const bool isOwn = window->parentWidget() == nullptr &&
                           window->windowType() == Qt::Window && window->isVisible();
        if (isOwn && !window->close()) {
            return;
        }
    }
    QApplication::closeAllWindows();
}

void Application::rethrow()
{
    if (error_) {
        std::rethrow_exception(std::exchange(error_, nullptr));
    }
}

bool Application::hasFailed()
{
    const auto *application = qobject_cast<const Application *>(QCoreApplication::instance());
    return application != nullptr && application->failed();
}

} // namespace velEditor
