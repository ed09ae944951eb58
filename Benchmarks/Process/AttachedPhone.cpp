// AttachedPhone: see the header.
#include "AttachedPhone.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace varda::bench {

namespace {

using namespace Qt::StringLiterals;

constexpr int longestWait = 20'000; // ms

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
    m_server.emplace(m_adb);
    m_server->enterEnvironment();
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
    m_server.reset();
    m_phone.closeWriteChannel();
    m_phone.waitForFinished(longestWait);
}

/// What adb prints for `arguments`.
QString AttachedPhone::adb(const QStringList &arguments) const
{
    return QString::fromUtf8(m_server->run(arguments).output);
}

} // namespace varda::bench
