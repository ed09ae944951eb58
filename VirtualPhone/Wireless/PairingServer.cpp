// PairingServer: a few computers at a time, and few wrong codes.
#include "Wireless/PairingServer.h"

#include "Wireless/PairingSession.h"

#include <utility>

namespace varda::phone {

namespace {

constexpr int maxMistakes = 3;
/// Of more computers than that the one that came first has to go: nobody can keep others out by saying nothing.
constexpr qsizetype maxSessions = 16;

} // namespace

PairingServer::PairingServer(const QString &code, const QByteArray &introduction, ChannelMaker makeChannel,
                             Trouble trouble, QObject *parent)
    : QObject(parent)
    , m_code(code)
    , m_introduction(introduction)
    , m_makeChannel(std::move(makeChannel))
    , m_trouble(std::move(trouble))
    , m_server([this](QTcpSocket *socket) { take(socket); })
{
}

PairingServer::~PairingServer()
{
    qDeleteAll(std::exchange(m_sessions, {}));
}

void PairingServer::take(QTcpSocket *socket)
{
    if (m_trouble(*socket))
        return;
    auto *session = new PairingSession(socket, m_makeChannel(), m_code, m_introduction, this);
    m_sessions.append(session);
    connect(session, &PairingSession::ended, this, [this, session](const QString &problem) {
        m_sessions.removeOne(session);
        if (!problem.isEmpty())
            Q_EMIT failed(problem);
        if (m_mistakes == maxMistakes)
            end();
    });
    connect(session, &PairingSession::mistaken, this, [this] { ++m_mistakes; });
    connect(session, &PairingSession::introduced, this, [this](const QByteArray &publicKey) {
        if (!m_usedUp)
            Q_EMIT introduced(publicKey);
        end();
    });
    if (m_sessions.size() > maxSessions)
        delete m_sessions.takeFirst();
}

void PairingServer::end()
{
    if (std::exchange(m_usedUp, true))
        return;
    m_server.pauseAccepting();
    Q_EMIT usedUp();
}

} // namespace varda::phone
