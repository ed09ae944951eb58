// PairingSession: the phone's side of one computer's try to pair: an encrypted channel, a key from the code, then each
// side's introduction under that key.
#pragma once

#include "Adb/SecureChannel.h"

#include <QObject>
#include <QTcpSocket>

#include <memory>
#include <optional>

namespace varda::phone {

class PairingCipher;

class PairingSession : public QObject
{
    Q_OBJECT

public:
    /// Takes over `socket`, which must be connected. `introduction` is what a computer is told that knows the code.
    PairingSession(QTcpSocket *socket, std::unique_ptr<SecureChannel> channel, const QString &code,
                   const QByteArray &introduction, QObject *parent);
    ~PairingSession() override;
    Q_DISABLE_COPY_MOVE(PairingSession)

Q_SIGNALS:
    /// The computer knows the code, and this is its public key.
    void introduced(const QByteArray &publicKey);
    /// The computer took another code for the phone's.
    void mistaken();
    /// The session is over, however it went. The object deletes itself afterwards.
    void ended(const QString &problem);

private:
    enum class Kind : quint8 { Agreement = 0, Introduction = 1 };

    void read();
    /// The payload of the next complete frame, which must be of that kind; nothing when bytes are missing or wrong.
    std::optional<QByteArray> takeFrame(Kind kind);
    void readIntroduction(const QByteArray &payload);
    void write(Kind kind, const QByteArray &payload);
    void end(const QString &problem);

    QTcpSocket *const m_socket;
    const std::unique_ptr<SecureChannel> m_channel;
    const QString m_code;
    const QByteArray m_introduction;
    QByteArray m_incoming;
    std::unique_ptr<PairingCipher> m_cipher; // once the channel is open
    bool m_agreed = false;                   // the cipher has its key
    bool m_over = false;
};

} // namespace varda::phone
