// SecureChannel: encryption between a socket and what is said over it. It does no input or output itself: bytes from
// the wire go in, bytes for the wire come out, so it never blocks.
#pragma once

#include <QByteArray>
#include <QString>

namespace varda::phone {

class SecureChannel
{
public:
    SecureChannel() = default;
    virtual ~SecureChannel() = default;
    Q_DISABLE_COPY_MOVE(SecureChannel)

    /// Takes bytes from the wire. False when the channel has ended; what is left for the wire is still to be sent.
    virtual bool receive(const QByteArray &wire) = 0;
    /// Encrypts bytes for the other side. The channel must be open.
    virtual void send(const QByteArray &plain) = 0;

    /// What has to go on the wire next. To be asked after each of the two above.
    virtual QByteArray takeWire() = 0;
    /// What the other side said since the last call.
    virtual QByteArray takePlain() = 0;

    /// Whether both sides have proved who they are.
    virtual bool isOpen() const = 0;
    /// Bytes that only the two sides of this channel know; `label` tells uses apart, to its last byte. The channel must
    /// be open.
    virtual QByteArray sharedSecret(const QByteArray &label, qsizetype size) const = 0;
    /// Why the channel failed; empty while it works and after an orderly end.
    virtual QString errorString() const = 0;
};

} // namespace varda::phone
