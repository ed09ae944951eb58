// Connection: one host's connection to the phone: the handshake, the authorisation and the streams.
//
// It knows the protocol and nothing of what the services do: whoever owns it is asked for each stream that the host
// opens.
#pragma once

#include "Adb/Packet.h"
#include "Adb/SecureChannel.h"

#include <QHash>
#include <QObject>
#include <QTcpSocket>

#include <functional>
#include <memory>

namespace varda::phone {

class Stream;

/// How the phone answers a host that connects.
enum class Greeting {
    Accept,    ///< with its banner
    Challenge, ///< with AUTH, again and again, until `Connection::accept` is called
    Silence,   ///< not at all
};

class Connection : public QObject
{
    Q_OBJECT

public:
    /// Takes over `socket`, which must be connected. A host that is given a `channel` has to encrypt and is let in by
    /// it: `greeting` then only tells whether it is answered.
    Connection(QTcpSocket *socket, std::unique_ptr<SecureChannel> channel, Greeting greeting, const QByteArray &banner,
               QObject *parent);
    ~Connection() override;
    Q_DISABLE_COPY_MOVE(Connection)

    /// Lets a host in that has been challenged so far. One that has not shown its key yet comes in when it does.
    void accept();

    /// Opens a stream from the phone to an address on the host, such as "tcp:27183".
    Stream *open(const QByteArray &destination);

    /// Cuts the connection as a pulled cable does.
    void breakOff();

    /// Whether the host has been let in.
    bool isOnline() const { return m_online; }
    bool hasChannel() const { return m_channel != nullptr; }

    /// The largest payload that both sides take, in bytes.
    qsizetype payloadLimit() const { return m_payloadLimit; }

    void send(const Packet &packet);

    /// Asked about every stream that the host opens. False refuses the stream; else the callee owns the conversation.
    std::function<bool(Stream &)> onOpen;

Q_SIGNALS:
    /// A host without authorisation showed its public key: a phone would now ask its owner.
    void authorizationRequested(const QByteArray &publicKey);
    /// The host broke the rules of the protocol; the connection is closed next.
    void violated(const QString &what);
    /// The connection has ended. The object deletes itself afterwards.
    void ended();

private:
    friend class Stream;

    void readPackets();
    /// What the host said in these bytes of the encrypted connection.
    QByteArray decrypted(const QByteArray &wire);
    void handle(const Packet &packet);
    void handleUnencrypted(const Packet &packet);
    /// What arrives from here on is the channel's.
    void startTls();
    void handleConnect(const Packet &packet);
    void handleAuthenticate(const Packet &packet);
    void handleOpen(const Packet &packet);
    void sendBanner();
    void sendToken();
    void violate(const QString &what);
    void forget(const Stream &stream);
    void endStreams();

    QTcpSocket *const m_socket;
    const std::unique_ptr<SecureChannel> m_channel; // null where nothing is encrypted
    Greeting m_greeting;
    const QByteArray m_banner;
    PacketReader m_reader;
    QHash<quint32, Stream *> m_streams;
    quint32 m_lastStream = 0;
    qsizetype m_payloadLimit = maximumPayload;
    bool m_checksums = true; // until the host has told its version
    bool m_keyShown = false;
    bool m_online = false;    ///< the host has been sent the banner
    bool m_encrypted = false; ///< from here on the socket carries the channel
    bool m_broken = false;
};

} // namespace varda::phone
