// CommandChannel: takes the packets of the shell protocol apart and puts them together.
#include "Shell/CommandChannel.h"

#include "Adb/Stream.h"

#include <QtEndian>

namespace varda::phone {

namespace {

enum Kind : quint8 { StandardInput = 0, StandardOutput = 1, StandardError = 2, Exit = 3 };

constexpr qsizetype headerSize = 5;
constexpr int exitCodeMask = 0xff;

} // namespace

CommandChannel::CommandChannel(Stream &stream, ShellProtocol protocol)
    : QObject(&stream)
    , m_stream(stream)
    , m_protocol(protocol)
{
}

void CommandChannel::output(const QByteArray &bytes)
{
    m_outputDigest.addData(bytes);
    write(StandardOutput, bytes);
}

void CommandChannel::error(const QByteArray &bytes)
{
    write(StandardError, bytes);
}

void CommandChannel::finish(int code)
{
    if (m_protocol == ShellProtocol::Packets)
        write(Exit, QByteArray(1, static_cast<char>(code & exitCodeMask)));
    m_stream.finish();
}

void CommandChannel::startReading()
{
    connect(&m_stream, &Stream::readyRead, this, &CommandChannel::takeInput);
    takeInput();
}

void CommandChannel::write(quint8 kind, const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    if (m_protocol == ShellProtocol::Raw) {
        m_stream.write(bytes);
        return;
    }
    QByteArray header(headerSize, Qt::Uninitialized);
    header[0] = static_cast<char>(kind);
    qToLittleEndian(static_cast<quint32>(bytes.size()), header.data() + 1);
    m_stream.write(header + bytes);
}

void CommandChannel::takeInput()
{
    const QByteArray bytes = m_stream.read();
    if (bytes.isEmpty())
        return;
    if (m_protocol == ShellProtocol::Raw) {
        Q_EMIT input(bytes);
        return;
    }
    m_packets += bytes;
    while (m_packets.size() >= headerSize) {
        const auto length = static_cast<qsizetype>(qFromLittleEndian<quint32>(m_packets.constData() + 1));
        if (m_packets.size() - headerSize < length)
            break;
        const bool isInput = m_packets.at(0) == static_cast<char>(StandardInput);
        const QByteArray content = m_packets.mid(headerSize, length);
        m_packets.remove(0, headerSize + length);
        if (isInput && !content.isEmpty())
            Q_EMIT input(content);
    }
}

} // namespace varda::phone
