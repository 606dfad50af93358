// Listening ports, connections, and the requests in the bytes that they receive.
#include "help/viewer/Listener.h"

#include <QHostInfo>
#include <QTcpSocket>

namespace velHelp {

namespace {

constexpr qint64 readSize = 64 * 1024;
/// Attempts to find a port that is free at all addresses.
constexpr int portTries = 20;

QList<QHostAddress> ownAddresses()
{
    QList<QHostAddress> addresses{QHostAddress(QHostAddress::LocalHost)};
    for (const QHostAddress &address :
         QHostInfo::fromName(QHostInfo::localHostName()).addresses()) {
        if (address.protocol() == QAbstractSocket::IPv4Protocol && !addresses.contains(address)) {
            addresses.append(address);
        }
    }
    return addresses;
}

// A connection from this computer to one of its own addresses has that address at
// both ends.
bool isFromHere(const QTcpSocket &client)
{
    return client.peerAddress().isLoopback() || client.peerAddress() == client.localAddress();
}

void refuse(QTcpSocket &client)
{
    client.abort();
    client.deleteLater();
}

} // namespace

Listener::Listener()
{
    for (int tries = 0; tries < portTries && !listenOn(0); ++tries) {
        servers_.clear();
    }
}

Listener::~Listener() = default;

quint16 Listener::port() const
{
    return servers_.empty() ? quint16(0) : servers_.front()->serverPort();
}

// The name may have an address that this computer does not have. Listening there
// fails, and no client can use it. So the listener tries again only if a port is
// in use.
bool Listener::listenOn(quint16 port)
{
    for (const QHostAddress &address : ownAddresses()) {
        auto server = std::make_unique<QTcpServer>();
        QTcpServer *listening = server.get();
        connect(listening, &QTcpServer::newConnection, this,
                [this, listening] { acceptFrom(*listening); });
        if (!server->listen(address, port)) {
            if (servers_.empty() || server->serverError() == QAbstractSocket::AddressInUseError) {
                return false;
            }
            continue;
        }
        port = server->serverPort();
        servers_.push_back(std::move(server));
    }
    return true;
}

void Listener::acceptFrom(QTcpServer &server)
{
    while (QTcpSocket *client = server.nextPendingConnection()) {
        if (isFromHere(*client) && clients_ < mostClients) {
            serve(*client);
        } else {
            refuse(*client);
        }
    }
}

void Listener::serve(QTcpSocket &client)
{
    ++clients_;
    client.setReadBufferSize(readSize);
    auto reader = std::make_shared<LineReader>();
    connect(&client, &QTcpSocket::readyRead, this,
            [this, &client, reader] { readFrom(client, *reader); });
    connect(&client, &QTcpSocket::disconnected, this, [this, &client] {
        client.deleteLater();
        --clients_;
        if (clients_ == 0) {
            emit deserted();
        }
    });
}

void Listener::readFrom(QTcpSocket &client, LineReader &reader)
{
    std::optional<Request> last;
    for (const QByteArray &line : reader.feed(client.readAll())) {
        const std::optional<Request> request = parseRequest(line);
        if (!request) {
            continue;
        }
        last = request;
        if (request->kind == Request::Quit) {
            break;
        }
    }
    if (last) {
        emit requested(*last);
    }
}

} // namespace velHelp
