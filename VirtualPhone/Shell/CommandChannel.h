// CommandChannel: what a program on the phone has instead of file descriptors: standard input, output and error and an
// exit status, over a stream. Over a raw stream output and error are one and there is no exit status; over the shell
// protocol (service "shell,v2") each is a kind of packet: one byte of kind, four of length (little endian), the bytes.
#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QObject>

namespace varda::phone {

class Stream;

enum class ShellProtocol { Raw, Packets };

class CommandChannel : public QObject
{
    Q_OBJECT

public:
    CommandChannel(Stream &stream, ShellProtocol protocol);

    Stream &stream() const { return m_stream; }

    void output(const QByteArray &bytes);
    void error(const QByteArray &bytes);
    /// The program has ended. What follows is the shell's business.
    void exit(int code) { Q_EMIT exited(code); }

    /// Tells the host the exit status and closes the stream once all has been sent.
    void finish(int code);

    /// Starts taking standard input; until then the host's bytes stay where they are and the host waits.
    void startReading();

    /// SHA-256 digest of all that was written with `output`.
    QByteArray outputDigest() const { return m_outputDigest.result(); }

Q_SIGNALS:
    void input(const QByteArray &bytes);
    void exited(int code);

private:
    void write(quint8 kind, const QByteArray &bytes);
    void takeInput();

    Stream &m_stream;
    const ShellProtocol m_protocol;
    QByteArray m_packets;
    QCryptographicHash m_outputDigest{QCryptographicHash::Sha256};
};

} // namespace varda::phone
