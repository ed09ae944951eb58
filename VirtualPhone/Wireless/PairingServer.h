// PairingServer: the port that is open while the phone shows a pairing code.
#pragma once

#include "Adb/LoopbackServer.h"
#include "Adb/SecureChannel.h"

#include <functional>
#include <memory>

namespace varda::phone {

class PairingSession;

class PairingServer : public QObject
{
    Q_OBJECT

public:
    /// Makes the channel of a computer that comes.
    using ChannelMaker = std::function<std::unique_ptr<SecureChannel>()>;
    /// May misbehave on a socket that has just connected; true keeps it from being answered.
    using Trouble = std::function<bool(QTcpSocket &)>;

    /// Computers that know `code` are told `introduction`.
    PairingServer(const QString &code, const QByteArray &introduction, ChannelMaker makeChannel, Trouble trouble,
                  QObject *parent);
    ~PairingServer() override;
    Q_DISABLE_COPY_MOVE(PairingServer)

    /// Takes a free port of the loopback address. False where there is none.
    bool listen() { return m_server.open(); }
    quint16 port() const { return m_server.serverPort(); }

Q_SIGNALS:
    /// A computer knew the code, and this is its public key.
    void introduced(const QByteArray &publicKey);
    /// A session went wrong.
    void failed(const QString &problem);
    /// One computer has paired, or too many took another code: nobody is answered any more.
    void usedUp();

private:
    void take(QTcpSocket *socket);
    void end();

    const QString m_code;
    const QByteArray m_introduction;
    const ChannelMaker m_makeChannel;
    const Trouble m_trouble;
    LoopbackServer m_server;
    QList<PairingSession *> m_sessions;
    int m_mistakes = 0;
    bool m_usedUp = false;
};

} // namespace varda::phone
