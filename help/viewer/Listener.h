// Receives requests from programs on this computer.
//
// It listens on 127.0.0.1 and, at the same port, on the addresses of this
// computer's name, because clients connect to that name. It closes connections
// from other computers without reading from them. It never sends anything.
#pragma once

#include "help/viewer/Request.h"

#include <QObject>
#include <QTcpServer>

#include <memory>
#include <vector>

class QTcpSocket;

namespace velHelp {

class Listener : public QObject
{
    Q_OBJECT

public:
    /// Further connections are refused.
    static constexpr int mostClients = 16;

    /// Listens on a free port; `port` is 0 if there is none.
    Listener();
    ~Listener() override;

    [[nodiscard]] quint16 port() const;
    [[nodiscard]] bool hasClients() const { return clients_ > 0; }

signals:
    /// The last of the requests that arrived together; nobody would see the
    /// pages of the earlier ones.
    void requested(const velHelp::Request &request);
    /// The last client has disconnected.
    void deserted();

private:
    bool listenOn(quint16 port);
    void acceptFrom(QTcpServer &server);
    void serve(QTcpSocket &client);
    void readFrom(QTcpSocket &client, LineReader &reader);

    std::vector<std::unique_ptr<QTcpServer>> servers_;
    int clients_ = 0;
};

} // namespace velHelp
