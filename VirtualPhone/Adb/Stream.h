// Stream: the phone's end of one of the byte streams that a connection carries.
//
// Flow control is per stream and per packet: each side may have one packet on its way and waits for its OKAY. What
// the host sent is acknowledged when it is read, so a service that does not read makes the host wait.
#pragma once

#include <QByteArray>
#include <QObject>

namespace varda::phone {

class Connection;

class Stream : public QObject
{
    Q_OBJECT

public:
    Stream(Connection &connection, quint32 id, const QByteArray &destination);

    Connection &connection() const { return m_connection; }
    quint32 id() const { return m_id; }
    /// What the stream leads to: the service's name, or the host's address for a stream that the phone opened.
    QByteArray destination() const { return m_destination; }
    bool isOpen() const { return m_state == State::Open; }

    /// Takes what has arrived, and lets the host send more.
    QByteArray read();

    /// Queues bytes for the host. Ignored once the stream is closing.
    void write(const QByteArray &bytes);
    /// Bytes that the host has not been sent yet.
    qsizetype queued() const { return m_outgoing.size(); }

    /// Closes once everything written has been acknowledged.
    void finish();
    /// Closes now and forgets what is queued.
    void close();

    /// Breaks the whole connection as soon as so many bytes have passed in one direction. -1 means never.
    void setBreakAfter(qint64 bytes);

    qint64 bytesReceived() const { return m_received; }
    qint64 bytesSent() const { return m_sent; }

Q_SIGNALS:
    /// The host accepted a stream that the phone asked for.
    void opened();
    void readyRead();
    /// Everything written has been sent and acknowledged.
    void drained();
    /// The stream has ended, whoever ended it. The last signal; the object deletes itself afterwards.
    void closed();

private:
    friend class Connection;
    enum class State { Opening, Open, Closed };

    void accept(quint32 remote);
    void handleOkay(quint32 remote);
    void handleWrite(const QByteArray &bytes);
    /// Ends the stream without a word to the host.
    void end();
    void sendNext();
    void breakIfDue();

    Connection &m_connection;
    const quint32 m_id;
    quint32 m_remote = 0;
    const QByteArray m_destination;
    State m_state = State::Opening;
    QByteArray m_incoming;
    QByteArray m_outgoing;
    bool m_unacknowledged = false; // the host owes an OKAY
    bool m_owing = false;          // the phone owes an OKAY
    bool m_finishing = false;
    qint64 m_breakAfter = -1;
    qint64 m_received = 0;
    qint64 m_sent = 0;
};

} // namespace varda::phone
