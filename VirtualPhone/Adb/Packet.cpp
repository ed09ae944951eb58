// Packet: headers are checked before their payload is waited for, so that a wrong length cannot hold anything up.
#include "Adb/Packet.h"

#include <QtEndian>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr std::array knownCommands = {PacketCommand::Connect, PacketCommand::Authenticate, PacketCommand::Open,
                                      PacketCommand::Okay,    PacketCommand::Write,        PacketCommand::Close,
                                      PacketCommand::StartTls};

quint32 word(const QByteArray &header, qsizetype index)
{
    return qFromLittleEndian<quint32>(header.constData() + index * 4);
}

} // namespace

quint32 payloadChecksum(const QByteArray &payload)
{
    quint32 sum = 0;
    for (const char byte : payload)
        sum += static_cast<quint8>(byte);
    return sum;
}

QByteArray encode(const Packet &packet, bool withChecksum)
{
    const auto command = static_cast<quint32>(packet.command);
    const std::array<quint32, 6> words = {command,
                                          packet.first,
                                          packet.second,
                                          static_cast<quint32>(packet.payload.size()),
                                          withChecksum ? payloadChecksum(packet.payload) : 0,
                                          ~command};
    QByteArray frame(packetHeaderSize, Qt::Uninitialized);
    for (std::size_t index = 0; index < words.size(); ++index)
        qToLittleEndian(words[index], frame.data() + index * 4);
    return frame + packet.payload;
}

std::optional<Packet> PacketReader::next()
{
    if (!m_error.isEmpty() || m_buffer.size() < packetHeaderSize)
        return std::nullopt;
    const quint32 commandWord = word(m_buffer, 0);
    const auto command = static_cast<PacketCommand>(commandWord);
    if (word(m_buffer, 5) != ~commandWord)
        return fail(u"magic does not match the command"_s);
    if (std::find(knownCommands.begin(), knownCommands.end(), command) == knownCommands.end())
        return fail(u"unknown command 0x%1"_s.arg(commandWord, 8, 16, QLatin1Char('0')));
    const quint32 length = word(m_buffer, 3);
    if (length > maximumPayload)
        return fail(u"payload of %1 bytes"_s.arg(length));
    if (m_buffer.size() < packetHeaderSize + static_cast<qsizetype>(length))
        return std::nullopt;

    Packet packet{command, word(m_buffer, 1), word(m_buffer, 2),
                  m_buffer.mid(packetHeaderSize, static_cast<qsizetype>(length))};
    // A CNXN packet states its own sender's version, so it is checked by that one.
    const bool check = command == PacketCommand::Connect ? packet.first < protocolVersion : m_checksumRequired;
    if (check && word(m_buffer, 4) != payloadChecksum(packet.payload))
        return fail(u"checksum does not match the payload"_s);
    m_buffer.remove(0, packetHeaderSize + static_cast<qsizetype>(length));
    return packet;
}

std::optional<Packet> PacketReader::fail(const QString &message)
{
    m_error = message;
    m_buffer.clear();
    return std::nullopt;
}

} // namespace varda::phone
