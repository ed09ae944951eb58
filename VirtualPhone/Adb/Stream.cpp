// Stream: keeps what cannot be sent yet, one packet at a time on its way.
#include "Adb/Stream.h"

#include "Adb/Connection.h"

#include <utility>

namespace varda::phone {

Stream::Stream(Connection &connection, quint32 id, const QByteArray &destination)
    : QObject(&connection)
    , m_connection(connection)
    , m_id(id)
    , m_destination(destination)
{
}

QByteArray Stream::read()
{
    QByteArray bytes = std::exchange(m_incoming, {});
    if (std::exchange(m_owing, false) && isOpen())
        m_connection.send({PacketCommand::Okay, m_id, m_remote, {}});
    return bytes;
}

void Stream::write(const QByteArray &bytes)
{
    if (m_state == State::Closed || m_finishing)
        return;
    m_outgoing += bytes;
    sendNext();
}

void Stream::finish()
{
    m_finishing = true;
    if (isOpen() && m_outgoing.isEmpty() && !m_unacknowledged)
        close();
}

void Stream::close()
{
    if (m_state == State::Closed)
        return;
    m_connection.send({PacketCommand::Close, m_id, m_remote, {}});
    end();
}

void Stream::setBreakAfter(qint64 bytes)
{
    m_breakAfter = bytes;
    breakIfDue();
}

void Stream::accept(quint32 remote)
{
    m_remote = remote;
    m_state = State::Open;
    m_connection.send({PacketCommand::Okay, m_id, m_remote, {}});
    if (m_outgoing.isEmpty() && m_finishing)
        close();
    else
        sendNext();
}

void Stream::handleOkay(quint32 remote)
{
    if (m_state == State::Opening) {
        m_remote = remote;
        m_state = State::Open;
        Q_EMIT opened();
        sendNext();
        return;
    }
    m_unacknowledged = false;
    if (!m_outgoing.isEmpty())
        sendNext();
    else if (m_finishing)
        close();
    else
        Q_EMIT drained();
}

void Stream::handleWrite(const QByteArray &bytes)
{
    m_incoming += bytes;
    m_owing = true;
    m_received += bytes.size();
    breakIfDue();
    if (isOpen())
        Q_EMIT readyRead();
}

void Stream::end()
{
    if (std::exchange(m_state, State::Closed) == State::Closed)
        return;
    m_outgoing.clear();
    m_connection.forget(*this);
    Q_EMIT closed();
    deleteLater();
}

void Stream::sendNext()
{
    if (!isOpen() || m_unacknowledged || m_outgoing.isEmpty())
        return;
    qsizetype size = qMin(m_outgoing.size(), m_connection.payloadLimit());
    if (m_breakAfter >= 0)
        size = qMin(size, qMax<qsizetype>(1, m_breakAfter - m_sent));
    m_unacknowledged = true;
    m_sent += size;
    m_connection.send({PacketCommand::Write, m_id, m_remote, m_outgoing.left(size)});
    m_outgoing.remove(0, size);
    breakIfDue();
}

void Stream::breakIfDue()
{
    if (m_breakAfter >= 0 && (m_received >= m_breakAfter || m_sent >= m_breakAfter))
        m_connection.breakOff();
}

} // namespace varda::phone
