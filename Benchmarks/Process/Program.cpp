// Program: see the header.
#include "Program.h"

#include <QDir>
#include <QFile>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace varda::bench {

namespace {

using namespace Qt::StringLiterals;

constexpr int longestStart = 30'000; // ms

double toSeconds(const timespec &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

QString contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The number in the line that begins with `word` and a colon.
double numberAfter(const QString &text, const QString &word)
{
    for (const QString &line : text.split(u'\n')) {
        if (line.startsWith(word + u':'))
            return line.sliced(word.size() + 1).simplified().section(u' ', 0, 0).toDouble();
    }
    qFatal("No %s is to be had", qUtf8Printable(word));
}

} // namespace

Program::Program(const QString &path, const QString &argument)
{
    std::array<int, 2> pipe = {};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0)
        qFatal("No pipe: %s", std::strerror(errno));
    m_frame = pipe[0];
    // The descriptor is the child's alone: it is inherited by this start only.
    ::fcntl(pipe[1], F_SETFD, 0);
    qputenv("FIRST_FRAME_DESCRIPTOR", QByteArray::number(pipe[1]));
    qputenv("LD_PRELOAD", FIRST_FRAME);
    std::string name = QFile::encodeName(path).toStdString();
    std::string first = argument.toStdString();
    std::array<char *, 3> arguments{name.data(), first.empty() ? nullptr : first.data(), nullptr};
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    m_started = toSeconds(now);
    const int failure = ::posix_spawn(&m_pid, name.c_str(), nullptr, nullptr, arguments.data(), environ);
    qunsetenv("LD_PRELOAD");
    qunsetenv("FIRST_FRAME_DESCRIPTOR");
    ::close(pipe[1]);
    if (failure != 0)
        qFatal("%s: %s", name.c_str(), std::strerror(failure));
}

Program::~Program()
{
    ::kill(m_pid, SIGTERM);
    ::waitpid(m_pid, nullptr, 0);
    ::close(m_frame);
}

FirstFrame Program::firstFrame()
{
    pollfd frame{m_frame, POLLIN, 0};
    std::array<timespec, 2> readings = {};
    if (::poll(&frame, 1, longestStart) != 1 || ::read(m_frame, readings.data(), sizeof readings) != sizeof readings)
        qFatal("No picture comes");
    return {toSeconds(readings[0]) - m_started, toSeconds(readings[1])};
}

QString Program::file(const QString &name) const
{
    return contents(u"/proc/%1/%2"_s.arg(m_pid).arg(name));
}

Memory Program::memory() const
{
    constexpr double kibibyte = 1024;
    const QString sums = file(u"smaps_rollup"_s);
    return {numberAfter(sums, u"Rss"_s) * kibibyte, numberAfter(sums, u"Pss"_s) * kibibyte,
            numberAfter(sums, u"Private_Dirty"_s) * kibibyte};
}

std::int64_t Program::descriptors() const
{
    return QDir(u"/proc/%1/fd"_s.arg(m_pid)).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

double Program::cpuSeconds() const
{
    clockid_t clock = {};
    timespec time = {};
    if (::clock_getcpuclockid(m_pid, &clock) != 0 || ::clock_gettime(clock, &time) != 0)
        qFatal("The program has ended");
    return toSeconds(time);
}

/// The fields of proc_pid_stat(5) from the third on.
QStringList Program::statistics() const
{
    return file(u"stat"_s).section(u')', -1).simplified().split(u' ');
}

double Program::childrenSeconds() const
{
    const QStringList fields = statistics();
    constexpr int firstNumber = 3;
    const double ticks = fields.value(16 - firstNumber).toDouble() + fields.value(17 - firstNumber).toDouble();
    return ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

std::uint64_t Program::childrenFaults() const
{
    constexpr int firstNumber = 3;
    return statistics().value(11 - firstNumber).toULongLong();
}

std::map<int, std::uint64_t> Program::sleeps() const
{
    std::map<int, std::uint64_t> counts;
    const QDir threads(u"/proc/%1/task"_s.arg(m_pid));
    for (const QString &thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString status = contents(threads.filePath(thread + u"/status"_s));
        if (!status.isEmpty()) // it may have ended just now
            counts[thread.toInt()] = static_cast<std::uint64_t>(numberAfter(status, u"voluntary_ctxt_switches"_s));
    }
    return counts;
}

QString stageVarda(const QString &home)
{
    const QString path = home + u"/bin/varda"_s;
    QFile::remove(path);
    std::filesystem::create_hard_link(VARDA, path.toStdString());
    return path;
}

void forgetDesktop()
{
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    qunsetenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON");
}

} // namespace varda::bench
