// The viewer as a whole: requests come in, the window shows topics, and the
// program ends when nobody needs it any more.
//
// That is: on QUIT; when the user closes the window while no client is
// connected (otherwise the window is only hidden and the next request brings it
// back); when the last client goes while no window is open; and when nobody has
// connected within a minute of the start.
#pragma once

#include "help/viewer/Listener.h"
#include "help/viewer/Window.h"

namespace velHelp {

class Viewer : public QObject
{
    Q_OBJECT

public:
    /// Listens at once; the window is made with the first page.
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
