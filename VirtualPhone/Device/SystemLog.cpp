// SystemLog: chats by a timer, and keeps the latest lines only.
#include "Device/SystemLog.h"

#include <array>
#include <chrono>

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr qsizetype capacity = 5'000;
constexpr qsizetype linesAtStart = 400;
constexpr auto chatInterval = 700ms;

struct Phrase
{
    qint64 pid;
    char level;
    const char *tag;
    const char *message;
};

// The last two are ill-formed on purpose: a Latin-1 umlaut, and a sequence that breaks off.
constexpr std::array phrases = {
    Phrase{812, 'D', "BatteryService", "level:87 scale:100 status:3 voltage:4187"},
    Phrase{812, 'I', "ActivityTaskManager", "Displayed com.android.launcher3/.Launcher: +318ms"},
    Phrase{1190, 'D', "WifiHAL", "rssi -58 dBm, linkspeed 433 Mbps"},
    Phrase{812, 'W', "InputDispatcher", "slow event: Grüße aus der Küche"},
    Phrase{1430, 'I', "ThermalService", "skin 31.4°C, battery 29.0°C"},
    Phrase{1430, 'V', "天気", "東京は晴れ、気温22度"},
    Phrase{1190, 'E', "GnssLocation", "no fix 🛰 after 30 s"},
    Phrase{2044, 'I', "chatty", "uid=10057 expire 3 lines"},
    Phrase{2044, 'W', "Encoding", "latin-1 \xfc and stray \xff\xfe"},
    Phrase{2044, 'W', "Encoding", "cut short \xe2\x82"},
};

} // namespace

QByteArray LogLine::threadTime() const
{
    const QByteArray head = u"%1 %2 %3 %4 "_s.arg(time.toString(u"MM-dd HH:mm:ss.zzz"_s))
                                .arg(pid, 5)
                                .arg(tid, 5)
                                .arg(QLatin1Char(level))
                                .toLatin1();
    return head + tag.leftJustified(8, ' ') + ": " + message + '\n';
}

SystemLog::SystemLog(QObject *parent)
    : QObject(parent)
    , m_timer(this)
{
    for (qsizetype index = 0; index < linesAtStart; ++index)
        chat();
    const QDateTime now = QDateTime::currentDateTime();
    for (qsizetype index = 0; index < linesAtStart; ++index)
        m_lines[index].time = now.addMSecs((index - linesAtStart) * std::chrono::milliseconds(chatInterval).count());
    connect(&m_timer, &QTimer::timeout, this, &SystemLog::chat);
    setChatty(true);
}

void SystemLog::append(qint64 pid, char level, const QByteArray &tag, const QByteArray &message)
{
    if (m_lines.size() >= capacity)
        m_lines.removeFirst();
    m_lines.append({QDateTime::currentDateTime(), pid, pid + m_lines.size() % 7, level, tag, message});
    Q_EMIT appended(m_lines.last());
}

QList<LogLine> SystemLog::tail(qsizetype count, std::optional<qint64> pid) const
{
    QList<LogLine> result;
    for (auto line = m_lines.crbegin(); line != m_lines.crend() && result.size() < count; ++line) {
        if (!pid || line->pid == *pid)
            result.prepend(*line);
    }
    return result;
}

void SystemLog::setChatty(bool chatty)
{
    if (chatty)
        m_timer.start(chatInterval);
    else
        m_timer.stop();
}

void SystemLog::chat()
{
    const Phrase &phrase = phrases.at(static_cast<std::size_t>(m_nextPhrase) % phrases.size());
    ++m_nextPhrase;
    append(phrase.pid, phrase.level, phrase.tag, phrase.message);
    Q_EMIT chatted();
}

} // namespace varda::phone
