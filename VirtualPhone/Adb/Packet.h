// Packet: the frames of the ADB wire protocol, as bytes and as values. Pure; knows nothing of sockets.
//
// A frame is a header of six little-endian 32-bit words (command, two arguments, length of the payload, checksum of the
// payload, command with all bits inverted) followed by the payload.
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <utility>

namespace varda::phone {

/// The commands' values are their four letters, read as a little-endian number.
enum class PacketCommand : quint32 {
    Connect = 0x4e584e43,      // CNXN(version, maximum payload, banner)
    Authenticate = 0x48545541, // AUTH(kind, 0, data)
    Open = 0x4e45504f,         // OPEN(sender's stream, 0, service)
    Okay = 0x59414b4f,         // OKAY(sender's stream, receiver's stream)
    Write = 0x45545257,        // WRTE(sender's stream, receiver's stream, data)
    Close = 0x45534c43,        // CLSE(sender's stream, receiver's stream)
    StartTls = 0x534c5453,     // STLS(version, 0)
};

/// First argument of an AUTH packet.
enum class AuthenticationKind : quint32 { Token = 1, Signature = 2, PublicKey = 3 };

constexpr quint32 protocolVersionWithChecksum = 0x01000000;
/// From this version on the checksum word is not looked at.
constexpr quint32 protocolVersion = 0x01000001;
/// The largest payload that this side takes, in bytes: what adb itself announces.
constexpr quint32 maximumPayload = 1024 * 1024;
constexpr quint32 startTlsVersion = 0x01000000;
constexpr qsizetype packetHeaderSize = 24;

struct Packet
{
    PacketCommand command = PacketCommand::Connect;
    quint32 first = 0;
    quint32 second = 0;
    QByteArray payload;

    bool operator==(const Packet &) const = default;
};

/// The sum of the payload's bytes, modulo 2^32: the protocol calls it a CRC.
quint32 payloadChecksum(const QByteArray &payload);

/// The frame of `packet`. The checksum word is 0 unless `withChecksum` is set.
QByteArray encode(const Packet &packet, bool withChecksum);

/// Cuts a byte stream into packets. After an error it stays in that state: the connection is to be closed.
class PacketReader
{
public:
    void append(const QByteArray &bytes) { m_buffer += bytes; }

    /// The next complete packet, or nothing when more bytes are needed or the stream is broken (see `error`).
    std::optional<Packet> next();

    /// The bytes that have not been cut into packets; to look at, and to take away.
    const QByteArray &rest() const { return m_buffer; }
    QByteArray takeRest() { return std::exchange(m_buffer, {}); }

    /// What was wrong with the stream; empty while it is well formed.
    QString error() const { return m_error; }

    /// Whether packets are checked against their checksum word: only with a peer of the older protocol version.
    void setChecksumRequired(bool required) { m_checksumRequired = required; }

private:
    std::optional<Packet> fail(const QString &message);

    QByteArray m_buffer;
    QString m_error;
    bool m_checksumRequired = false;
};

} // namespace varda::phone
