// Takes requests from programs on this machine.
//
// It listens on 127.0.0.1 and, at the same port, on the addresses that this
// computer's name stands for, since that is what clients connect to; of these,
// connections from other machines are closed unread. Nothing is ever sent.
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
    /// More connections than this are refused.
    static constexpr int mostClients = 16;

    /// Finds a free port; `port` is 0 when there is none.
    Listener();
    ~Listener() override;

    [[nodiscard]] quint16 port() const;
    [[nodiscard]] bool hasClients() const { return clients_ > 0; }

signals:
    /// The last of the requests that have come together; earlier ones would
    /// not be seen anyway.
    void requested(const velHelp::Request &request);
    /// The last client has gone.
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
