// PairingSession: frames of a version, a kind, a length and a payload.
#include "Wireless/PairingSession.h"

#include "Wireless/PairingCipher.h"

#include <QtEndian>

#include <utility>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr quint8 frameVersion = 1;
constexpr qsizetype frameHeaderSize = 6;
constexpr quint32 maxFrameSize = 2 * 8192;

const auto secretLabel = QByteArrayLiteral("adb-label\0"); // its terminator counts
constexpr qsizetype secretSize = 64;

// An introduction is one byte that says what follows, and text, filled up with zeros.
constexpr qsizetype introductionSize = 8192;
constexpr char publicKeyFollows = 0;
constexpr char phoneNameFollows = 1;

} // namespace

PairingSession::PairingSession(QTcpSocket *socket, std::unique_ptr<SecureChannel> channel, const QString &code,
                               const QByteArray &introduction, QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_channel(std::move(channel))
    , m_code(code)
    , m_introduction(introduction)
{
    m_socket->setParent(this);
    connect(m_socket, &QTcpSocket::readyRead, this, &PairingSession::read);
    connect(m_socket, &QTcpSocket::disconnected, this, [this] { end(u"the computer went away"_s); });
}

PairingSession::~PairingSession()
{
    m_socket->disconnect(this);
}

void PairingSession::read()
{
    const bool alive = m_channel->receive(m_socket->readAll());
    m_socket->write(m_channel->takeWire());
    m_incoming += m_channel->takePlain();
    if (!m_cipher && m_channel->isOpen()) {
        m_cipher =
            std::make_unique<PairingCipher>(m_code.toLatin1() + m_channel->sharedSecret(secretLabel, secretSize));
        write(Kind::Agreement, m_cipher->message());
    }
    if (m_cipher && !m_agreed) {
        const std::optional<QByteArray> message = takeFrame(Kind::Agreement);
        if (message && !m_cipher->agree(*message))
            return end(u"no agreement about a key"_s);
        m_agreed = message.has_value();
    }
    if (m_agreed && !m_over) {
        if (const std::optional<QByteArray> payload = takeFrame(Kind::Introduction))
            return readIntroduction(*payload);
    }
    if (!alive)
        end(m_channel->errorString());
}

std::optional<QByteArray> PairingSession::takeFrame(Kind kind)
{
    if (m_incoming.size() < frameHeaderSize)
        return std::nullopt;
    const auto length = qFromBigEndian<quint32>(m_incoming.constData() + 2);
    if (m_incoming.at(0) != frameVersion || m_incoming.at(1) != static_cast<char>(kind) || length > maxFrameSize) {
        end(u"a frame that does not belong here"_s);
        return std::nullopt;
    }
    if (m_incoming.size() < frameHeaderSize + static_cast<qsizetype>(length))
        return std::nullopt;
    const QByteArray payload = m_incoming.mid(frameHeaderSize, length);
    m_incoming.remove(0, frameHeaderSize + static_cast<qsizetype>(length));
    return payload;
}

void PairingSession::readIntroduction(const QByteArray &payload)
{
    const std::optional<QByteArray> introduction = m_cipher->open(payload);
    if (!introduction) {
        Q_EMIT mistaken();
        return end(u"wrong code"_s);
    }
    if (introduction->size() != introductionSize || introduction->at(0) != publicKeyFollows)
        return end(u"no public key"_s);
    // Only who knows the code is told anything.
    const QByteArray answer = phoneNameFollows + m_introduction;
    write(Kind::Introduction, m_cipher->seal(answer.leftJustified(introductionSize, '\0')));
    Q_EMIT introduced(introduction->mid(1, introduction->indexOf('\0', 1) - 1));
    end({});
}

void PairingSession::write(Kind kind, const QByteArray &payload)
{
    QByteArray header(frameHeaderSize, Qt::Uninitialized);
    header[0] = frameVersion;
    header[1] = static_cast<char>(kind);
    qToBigEndian(static_cast<quint32>(payload.size()), header.data() + 2);
    m_channel->send(header + payload);
    m_socket->write(m_channel->takeWire());
}

void PairingSession::end(const QString &problem)
{
    if (std::exchange(m_over, true))
        return;
    m_socket->disconnect(this);
    m_socket->flush();
    m_socket->abort();
    Q_EMIT ended(problem);
    deleteLater();
}

} // namespace varda::phone
