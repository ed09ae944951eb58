// SystemLog: the phone's log, a ring of lines that grows by itself as a phone's does.
//
// Some of its texts are not ASCII and some are not well-formed UTF-8: apps may log any bytes, and a host must cope.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QTimer>

#include <optional>

namespace varda::phone {

struct LogLine
{
    QDateTime time;
    qint64 pid = 0;
    qint64 tid = 0;
    char level = 'I';
    QByteArray tag;
    QByteArray message;

    /// In logcat's "threadtime" format, with a line feed:
    /// "11-20 23:51:44.123  1234  1250 I ActivityManager: message".
    QByteArray threadTime() const;
};

class SystemLog : public QObject
{
    Q_OBJECT

public:
    explicit SystemLog(QObject *parent);

    void append(qint64 pid, char level, const QByteArray &tag, const QByteArray &message);

    /// The latest `count` lines, of process `pid` only where one is given.
    QList<LogLine> tail(qsizetype count, std::optional<qint64> pid) const;

    /// Whether the phone writes lines of its own accord; on by default.
    void setChatty(bool chatty);

Q_SIGNALS:
    void appended(const LogLine &line);
    /// The phone wrote a line of its own accord: the moment for an app to do so, too.
    void chatted();

private:
    void chat();

    QList<LogLine> m_lines;
    QTimer m_timer;
    qsizetype m_nextPhrase = 0;
};

} // namespace varda::phone
