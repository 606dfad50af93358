// Joins the listener, the pages and the window.
#include "help/viewer/Viewer.h"

#include "help/viewer/Environment.h"

#include <QApplication>
#include <QTimer>

#include <chrono>
#include <cstdio>

namespace velHelp {

namespace {

constexpr std::chrono::seconds clientLimit(60);

/// Prints a step for debugging. Not on standard output, which the client reads.
void trace(const QString &line)
{
    static const bool isOn = environment::isDebugged();
    if (isOn) {
        std::fprintf(stderr, "velhelp: %s\n", qPrintable(line));
    }
}

} // namespace

Viewer::Viewer(const QString &folder, const QString &language)
    : folder_(folder), language_(language)
{
    connect(&listener_, &Listener::requested, this, &Viewer::handle);
    connect(&listener_, &Listener::deserted, this, &Viewer::endIfUnused);
    auto *timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, &Viewer::endIfUnused);
    timer->start(clientLimit);
}

// The listener closes its connections; their signals must not arrive any more.
Viewer::~Viewer()
{
    listener_.disconnect(this);
}

void Viewer::handle(const Request &request)
{
    if (request.kind == Request::Quit) {
        QCoreApplication::exit(0);
    } else {
        show(request.topic, request.section);
    }
}

void Viewer::show(const QString &topic, const QString &section)
{
    if (window_ == nullptr) {
        topics_ = std::make_unique<Topics>(folder_, language_);
        window_ = std::make_unique<Window>(*topics_);
        connect(window_.get(), &Window::closed, this, [this] {
            trace(QStringLiteral("closed"));
            if (!listener_.hasClients()) {
                QCoreApplication::exit(0);
            }
        });
    }
    window_->comeForward(); // first, because places in the page depend on its width
    window_->showTopic(topic, section);
    trace(QLatin1String("showing ") + window_->windowTitle());
}

void Viewer::endIfUnused()
{
    if (!listener_.hasClients() && !isOpen()) {
        QCoreApplication::exit(0);
    }
}

} // namespace velHelp
