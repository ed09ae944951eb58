// Stage: a temporary folder shaped like an installation, and an environment that keeps everything inside it.
#include "Stage.h"

#include "Support/Wait.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace varda::test {

namespace {

QByteArray readProcessFile(qint64 pid, const QString &name)
{
    QFile file{u"/proc/%1/%2"_s.arg(pid).arg(name)};
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray{};
}

} // namespace

Stage::Stage(const Programs &programs)
    : server{programs.adb}
    , error{install(programs)}
{
    process.setProcessEnvironment(environment());
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setWorkingDirectory(home());
    QObject::connect(&process, &QProcess::finished, &process,
                     [this](int code, QProcess::ExitStatus status) { judgeEnd(code, status); });
}

Stage::~Stage()
{
    if (process.state() != QProcess::NotRunning) {
        process.terminate();
        if (!process.waitForFinished(guardMilliseconds))
            process.kill();
        process.waitForFinished();
    }
    killServer();
    // Only these lived with this stage's environment, so only what was started here is ended.
    for (const qint64 pid : processIds())
        kill(static_cast<pid_t>(pid), SIGKILL);
}

QString Stage::install(const Programs &programs)
{
    for (const QString &program : {programs.varda, programs.adb}) {
        if (!QFileInfo{program}.isExecutable())
            return program + u" is no executable file; build it, and fill the tools tree by Scripts/stage-tools"_s;
    }
    const QDir root{server.folder()};
    for (const QString &path : {u"bin"_s, u"lib/varda/Tools/scrcpy"_s}) {
        if (!root.mkpath(path))
            return u"cannot create "_s + root.filePath(path);
    }
    // adb finds its libraries from where it really lies, so a link to its folder serves.
    const QString tools = QFileInfo{programs.adb}.absolutePath();
    if (!QFile::link(tools, root.filePath(u"lib/varda/Tools/platform-tools"_s)))
        return u"cannot link "_s + tools;
    // Varda looks for its tools beside where it really lies, so it is copied.
    if (!QFile::copy(programs.varda, root.filePath(u"bin/varda"_s)))
        return u"cannot copy "_s + programs.varda;
    if (!programs.scrcpy.isEmpty() && !QFile::copy(programs.scrcpy, scrcpyPath()))
        return u"cannot copy "_s + programs.scrcpy;
    return {};
}

QProcessEnvironment Stage::environment() const
{
    QProcessEnvironment all = server.environment();
    all.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
    all.insert(u"QT_QPA_PLATFORM"_s, u"xcb"_s);
    for (const QString &name : {u"XDG_CONFIG_HOME"_s, u"XDG_CACHE_HOME"_s, u"XDG_DATA_HOME"_s, u"XDG_STATE_HOME"_s})
        all.remove(name);
    return all;
}

bool Stage::startVarda()
{
    process.start(server.folder() + u"/bin/varda"_s, QStringList{});
    return process.waitForStarted();
}

void Stage::judgeEnd(int code, QProcess::ExitStatus status) const
{
    if (status == QProcess::NormalExit && code == 0)
        return;
    const QString how =
        status == QProcess::CrashExit ? u"Varda was ended by signal %1"_s : u"Varda ended with status %1"_s;
    const QByteArray message = (how.arg(code) + keepCore()).toLocal8Bit();
    QTest::failOnWarning(message.constData());
    qWarning("%s", message.constData());
}

/// Where the system writes cores to the working directory, they would go with the stage.
QString Stage::keepCore() const
{
    const QStringList cores = QDir{home()}.entryList({u"core*"_s}, QDir::Files);
    const QString kept =
        QCoreApplication::applicationDirPath() + u"/core."_s + QString::number(QCoreApplication::applicationPid());
    const bool moved = !cores.isEmpty() && QFile::rename(home(cores.first()), kept);
    return moved ? u"; its core: "_s + kept : QString{};
}

QString Stage::adb(const QStringList &arguments) const
{
    const AdbServer::Result result = server.run(arguments);
    return QString::fromUtf8(result.output + result.error);
}

QString Stage::home(const QString &name) const
{
    return name.isEmpty() ? server.home() : server.home() + u'/' + name;
}

QStringList Stage::leftovers() const
{
    const QDir temporary{server.temporary()};
    // adb's server keeps its log there by itself.
    QStringList left = temporary.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    left.removeIf([](const QString &name) { return name.startsWith(u"adb."_s) && name.endsWith(u".log"_s); });
    return left + processes();
}

QStringList Stage::processes() const
{
    QStringList all;
    for (const qint64 pid : processIds())
        all << QString::number(pid) + u' ' +
                   QString::fromLocal8Bit(readProcessFile(pid, u"cmdline"_s)).replace(QChar{u'\0'}, u' ').trimmed();
    return all;
}

QList<qint64> Stage::processIds() const
{
    const QByteArray mark = "TMPDIR=" + QFile::encodeName(server.temporary());
    QList<qint64> ids;
    const QStringList entries = QDir{u"/proc"_s}.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool number = false;
        const qint64 pid = entry.toLongLong(&number);
        if (number && readProcessFile(pid, u"environ"_s).split('\0').contains(mark))
            ids << pid;
    }
    return ids;
}

} // namespace varda::test
