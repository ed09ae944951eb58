// AttachedPhone: see the header.
#include "AttachedPhone.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace varda::bench {

namespace {

using namespace Qt::StringLiterals;

constexpr int longestWait = 20'000; // ms

/// A port of the loopback address that nobody listens on at this moment.
quint16 freePort()
{
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (::bind(descriptor, generic, size) != 0 || ::getsockname(descriptor, generic, &size) != 0)
        qFatal("No port is free");
    ::close(descriptor);
    return ntohs(address.sin_port);
}

void stage(const QString &from, const QString &to)
{
    QDir().mkpath(QFileInfo(to).path());
    QFile::remove(to);
    if (!QFile::link(from, to))
        qFatal("Cannot link %s", qUtf8Printable(to));
}

} // namespace

AttachedPhone::AttachedPhone(const QString &home, Adb kind)
    : m_adb(home + u"/lib/varda/Tools/platform-tools/adb"_s)
{
    const QString directory = QFileInfo(m_adb).path();
    if (QFileInfo(directory).isSymLink())
        QFile::remove(directory);
    // adb finds its libraries from where it really lies.
    const QFileInfo real(QStringLiteral(STAGED_ADB));
    if (kind == Adb::StandIn || !real.isExecutable()) {
        stage(QStringLiteral(STAND_IN_ADB), m_adb);
        m_name = u"stand-in for adb"_s;
        return;
    }
    QFile::remove(m_adb);
    QDir().rmdir(directory);
    stage(real.path(), directory);
    connectRealPhone();
}

void AttachedPhone::connectRealPhone()
{
    for (const char *variable : {"HOME", "TMPDIR"})
        qputenv(variable, QFile::encodeName(m_scratch.path()));
    qputenv("ANDROID_ADB_SERVER_PORT", QByteArray::number(freePort()));
    m_phone.start(QStringLiteral(VIRTUAL_PHONE), {u"--until-stdin-closes"_s});
    if (!m_phone.waitForReadyRead(longestWait))
        qFatal("The simulated phone does not start");
    const QString endpoint = QString::fromUtf8(m_phone.readLine()).simplified().section(u' ', 1);
    adb({u"connect"_s, endpoint});
    if (!adb({u"-s"_s, endpoint, u"wait-for-device"_s, u"shell"_s, u"echo"_s, u"attached"_s}).contains(u"attached"))
        qFatal("The simulated phone does not answer");
    const QString version = adb({u"version"_s}).section(u'\n', 1, 1).section(u' ', 1);
    m_name = u"adb "_s + version + u", simulated phone"_s;
}

AttachedPhone::~AttachedPhone()
{
    if (m_phone.state() == QProcess::NotRunning)
        return;
    adb({u"kill-server"_s});
    m_phone.closeWriteChannel();
    m_phone.waitForFinished(longestWait);
}

/// What adb prints for `arguments`.
QString AttachedPhone::adb(const QStringList &arguments) const
{
    QProcess run;
    run.start(m_adb, arguments);
    if (!run.waitForFinished(longestWait))
        qFatal("adb does not answer");
    return QString::fromUtf8(run.readAllStandardOutput());
}

} // namespace varda::bench
