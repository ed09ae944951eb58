// WireHost: the host's side of the wire protocol, packet by packet, for tests. It answers nothing by itself.
#pragma once

#include "Adb/Packet.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QList>
#include <QTcpSocket>

class WireHost
{
public:
    explicit WireHost(quint16 port)
    {
        m_socket.connectToHost(QHostAddress::LocalHost, port);
        m_socket.waitForConnected(guard);
    }

    void send(const varda::phone::Packet &packet, bool withChecksum = false)
    {
        sendBytes(varda::phone::encode(packet, withChecksum));
    }

    void sendBytes(const QByteArray &bytes)
    {
        m_socket.write(bytes);
        m_socket.flush();
    }

    /// The phone's next packet, or nothing when the connection ended or the guard time has passed.
    std::optional<varda::phone::Packet> receive()
    {
        QElapsedTimer clock;
        clock.start();
        for (;;) {
            if (std::optional<varda::phone::Packet> packet = m_reader.next())
                return packet;
            if (m_socket.bytesAvailable() == 0 && !m_socket.waitForReadyRead(guard - static_cast<int>(clock.elapsed())))
                return std::nullopt;
            m_reader.append(m_socket.readAll());
        }
    }

    /// All packets up to and including the first that `isLast` accepts; shorter when it never comes.
    template <typename Predicate>
    QList<varda::phone::Packet> receiveUntil(Predicate isLast)
    {
        QList<varda::phone::Packet> packets;
        while (const std::optional<varda::phone::Packet> packet = receive()) {
            packets.append(*packet);
            if (isLast(*packet))
                break;
        }
        return packets;
    }

    /// Greets the phone and returns its answer.
    std::optional<varda::phone::Packet> greet(quint32 version = varda::phone::protocolVersion,
                                              quint32 payload = varda::phone::maximumPayload)
    {
        send({varda::phone::PacketCommand::Connect, version, payload, QByteArray("host::\0", 7)}, true);
        return receive();
    }

    /// Whether the phone ends the connection, whatever it sends before.
    bool isDisconnected()
    {
        while (receive()) {
        }
        return m_socket.state() == QAbstractSocket::UnconnectedState;
    }

private:
    static constexpr int guard = 5'000; // milliseconds

    QTcpSocket m_socket;
    varda::phone::PacketReader m_reader;
};
