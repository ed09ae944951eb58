// Connection: packets in the order in which they arrive; a host that breaks the rules is cut off.
#include "Adb/Connection.h"

#include "Adb/Stream.h"

#include <QRandomGenerator>

#include <utility>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr int tokenWords = 5;       // 20 bytes, the length of a SHA-1 digest
constexpr char tlsHandshake = 0x16; // first byte of a host's TLS; no packet begins with it

QByteArray withoutTerminator(QByteArray text)
{
    while (text.endsWith('\0'))
        text.chop(1);
    return text;
}

} // namespace

Connection::Connection(QTcpSocket *socket, std::unique_ptr<SecureChannel> channel, Greeting greeting,
                       const QByteArray &banner, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_channel(std::move(channel))
    , m_greeting(greeting)
    , m_banner(banner)
{
    m_socket->setParent(this);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(m_socket, &QTcpSocket::readyRead, this, &Connection::readPackets);
    connect(m_socket, &QTcpSocket::disconnected, this, &Connection::breakOff);
}

Connection::~Connection()
{
    m_socket->disconnect(this);
}

void Connection::accept()
{
    m_greeting = Greeting::Accept;
    if (m_keyShown && !m_online)
        sendBanner();
}

Stream *Connection::open(const QByteArray &destination)
{
    auto *stream = new Stream(*this, ++m_lastStream, destination);
    m_streams.insert(stream->id(), stream);
    send({PacketCommand::Open, stream->id(), 0, destination + '\0'});
    return stream;
}

void Connection::breakOff()
{
    if (std::exchange(m_broken, true))
        return;
    m_socket->flush();
    m_socket->abort();
    endStreams();
    Q_EMIT ended();
    deleteLater();
}

void Connection::send(const Packet &packet)
{
    if (m_broken)
        return;
    QByteArray bytes = encode(packet, m_checksums);
    if (m_encrypted) {
        m_channel->send(bytes);
        bytes = m_channel->takeWire();
    }
    m_socket->write(bytes);
}

void Connection::readPackets()
{
    if (m_broken)
        return;
    const QByteArray bytes = m_socket->readAll();
    m_reader.append(m_encrypted ? decrypted(bytes) : bytes);
    if (m_greeting == Greeting::Silence)
        return;
    // adb says STLS and begins with TLS in two threads: at times the former is never sent.
    if (m_channel && !m_encrypted && m_reader.rest().startsWith(tlsHandshake))
        startTls();
    while (!m_broken) {
        const std::optional<Packet> packet = m_reader.next();
        if (!packet)
            break;
        handle(*packet);
    }
    if (!m_reader.error().isEmpty() && !m_broken)
        violate(m_reader.error());
}

QByteArray Connection::decrypted(const QByteArray &wire)
{
    const bool wasOpen = m_channel->isOpen();
    const bool alive = m_channel->receive(wire);
    m_socket->write(m_channel->takeWire());
    if (!wasOpen && m_channel->isOpen())
        sendBanner();
    if (!alive && !m_channel->errorString().isEmpty())
        Q_EMIT violated(m_channel->errorString());
    if (!alive)
        breakOff();
    return m_channel->takePlain();
}

void Connection::handle(const Packet &packet)
{
    if (m_channel && !m_encrypted)
        return handleUnencrypted(packet);
    if (packet.command == PacketCommand::Connect)
        return handleConnect(packet);
    if (packet.command == PacketCommand::Authenticate)
        return handleAuthenticate(packet);
    if (packet.command == PacketCommand::StartTls)
        return violate(u"TLS was not offered"_s);
    if (!m_online)
        return; // a host that is not let in is not answered
    if (packet.command == PacketCommand::Open)
        return handleOpen(packet);

    Stream *stream = m_streams.value(packet.second);
    if (stream == nullptr || (stream->m_remote != 0 && stream->m_remote != packet.first)) {
        // The stream has gone: a late packet is normal, and data for it is answered so that the host stops.
        if (packet.command == PacketCommand::Write)
            send({PacketCommand::Close, 0, packet.first, {}});
        return;
    }
    switch (packet.command) {
    case PacketCommand::Okay:
        return stream->handleOkay(packet.first);
    case PacketCommand::Write:
        return stream->handleWrite(packet.payload);
    default:
        return stream->end();
    }
}

void Connection::handleUnencrypted(const Packet &packet)
{
    if (packet.command == PacketCommand::Connect)
        return handleConnect(packet);
    if (packet.command != PacketCommand::StartTls)
        return violate(u"not encrypted"_s);
    startTls();
}

void Connection::startTls()
{
    m_encrypted = true;
    m_reader.append(decrypted(m_reader.takeRest()));
}

void Connection::handleConnect(const Packet &packet)
{
    endStreams();
    m_online = false;
    m_checksums = packet.first < protocolVersion;
    m_reader.setChecksumRequired(m_checksums);
    m_payloadLimit = qBound<qsizetype>(1, packet.second, maximumPayload);
    if (m_channel && !m_encrypted)
        send({PacketCommand::StartTls, startTlsVersion, 0, {}});
    else if (m_greeting == Greeting::Challenge)
        sendToken();
    else
        sendBanner();
}

void Connection::handleAuthenticate(const Packet &packet)
{
    if (m_online)
        return;
    if (m_greeting == Greeting::Accept)
        return sendBanner();
    if (packet.first == static_cast<quint32>(AuthenticationKind::Signature))
        return sendToken(); // no signature is known: the host tries its next key, and at last shows its public one
    if (packet.first == static_cast<quint32>(AuthenticationKind::PublicKey)) {
        m_keyShown = true;
        Q_EMIT authorizationRequested(withoutTerminator(packet.payload));
    }
}

void Connection::handleOpen(const Packet &packet)
{
    if (packet.first == 0)
        return violate(u"stream without a number"_s);
    auto *stream = new Stream(*this, ++m_lastStream, withoutTerminator(packet.payload));
    m_streams.insert(stream->id(), stream);
    stream->m_remote = packet.first;
    if (!onOpen || !onOpen(*stream)) {
        send({PacketCommand::Close, 0, packet.first, {}});
        stream->end();
    } else if (stream->m_state == Stream::State::Opening) {
        stream->accept(packet.first);
    }
}

void Connection::sendBanner()
{
    m_online = true;
    send({PacketCommand::Connect, protocolVersion, maximumPayload, m_banner});
}

void Connection::sendToken()
{
    QByteArray token(tokenWords * 4LL, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32 *>(token.data()), tokenWords);
    send({PacketCommand::Authenticate, static_cast<quint32>(AuthenticationKind::Token), 0, token});
}

void Connection::violate(const QString &what)
{
    Q_EMIT violated(what);
    breakOff();
}

void Connection::forget(const Stream &stream)
{
    m_streams.remove(stream.id());
}

void Connection::endStreams()
{
    const QHash<quint32, Stream *> streams = std::exchange(m_streams, {});
    for (Stream *stream : streams)
        stream->end();
}

} // namespace varda::phone
