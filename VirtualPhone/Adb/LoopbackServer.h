// LoopbackServer: a port that only programs on this computer reach.
#pragma once

#include <QTcpServer>
#include <QTcpSocket>

#include <functional>

namespace varda::phone {

class LoopbackServer : public QTcpServer
{
public:
    /// `take` is handed every socket that connects.
    explicit LoopbackServer(const std::function<void(QTcpSocket *)> &take)
    {
        // What does not fit into the queue is kept waiting for a second by the system.
        setListenBacklogSize(1024);
        connect(this, &QTcpServer::newConnection, this, [this, take] {
            while (QTcpSocket *socket = nextPendingConnection())
                take(socket);
        });
    }

    /// Listens on `port`, or on a free one.
    bool open(quint16 port = 0) { return listen(QHostAddress::LocalHost, port); }
};

} // namespace varda::phone
