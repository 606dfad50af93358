// The viewer as a whole: it receives requests, shows topics in its window, and
// ends the program when nobody needs it any more.
//
// The program ends
// - on QUIT;
// - when the user closes the window and no client is connected (otherwise the
//   window is only hidden, and the next request shows it again);
// - when the last client disconnects and the window is not visible;
// - when nobody has connected within a minute after the start.
#pragma once

#include "help/viewer/Listener.h"
#include "help/viewer/Window.h"

namespace velHelp {

class Viewer : public QObject
{
    Q_OBJECT

public:
    /// Starts to listen; the window is made when the first page is shown.
    Viewer(const QString &folder, const QString &language);
    ~Viewer() override;

    [[nodiscard]] quint16 port() const { return listener_.port(); }

    void show(const QString &topic, const QString &section);

private:
    void handle(const Request &request);
    void endIfUnused();
    [[nodiscard]] bool isOpen() const { return window_ != nullptr && window_->isVisible(); }

    Listener listener_;
    QString folder_;
    QString language_;
    std::unique_ptr<Topics> topics_;
    std::unique_ptr<Window> window_;
};

} // namespace velHelp
