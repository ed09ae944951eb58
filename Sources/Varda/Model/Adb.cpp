// Adb: one function for each command line; the time-outs go by how long the phone may take to answer.
#include "Varda/Model/Adb.h"

namespace varda {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// For a command with a short answer, from the phone or from adb's server.
constexpr auto shortCommand = 20s;
/// `devices` and `logcat -d` run on every tick: a stuck one must not hold the tick up for long.
constexpr auto tickCommand = 8s;
/// A large build over a slow Wi-Fi link.
constexpr auto installCommand = 180s;
/// Pairing waits for the phone's side to agree.
constexpr auto pairCommand = 40s;

QStringList onDevice(const QString &serial, const QStringList &arguments)
{
    return QStringList{u"-s"_s, serial} + arguments;
}

} // namespace

CommandLine Adb::devices()
{
    return {{u"devices"_s, u"-l"_s}, tickCommand};
}

CommandLine Adb::install(const QString &serial, const QString &path)
{
    return {onDevice(serial, {u"install"_s, u"-r"_s, path}), installCommand};
}

CommandLine Adb::resolveLauncher(const QString &serial, const QString &package)
{
    return {onDevice(serial, {u"shell"_s, u"cmd"_s, u"package"_s, u"resolve-activity"_s, u"--brief"_s, u"-a"_s,
                              u"android.intent.action.MAIN"_s, u"-c"_s, u"android.intent.category.LAUNCHER"_s, u"-p"_s,
                              package}),
            shortCommand};
}

CommandLine Adb::startActivity(const QString &serial, const QString &component)
{
    return {onDevice(serial, {u"shell"_s, u"am"_s, u"start"_s, u"-W"_s, u"-n"_s, component}), shortCommand};
}

CommandLine Adb::forceStop(const QString &serial, const QString &package)
{
    return {onDevice(serial, {u"shell"_s, u"am"_s, u"force-stop"_s, package}), shortCommand};
}

CommandLine Adb::listPackages(const QString &serial)
{
    return {onDevice(serial, {u"shell"_s, u"pm"_s, u"list"_s, u"packages"_s, u"-3"_s}), shortCommand};
}

CommandLine Adb::screenshot(const QString &serial)
{
    return {onDevice(serial, {u"exec-out"_s, u"screencap"_s, u"-p"_s}), shortCommand};
}

CommandLine Adb::processID(const QString &serial, const QString &package)
{
    return {onDevice(serial, {u"shell"_s, u"pidof"_s, package}), shortCommand};
}

CommandLine Adb::log(const QString &serial, const std::optional<QString> &pid)
{
    QStringList arguments = onDevice(serial, {u"logcat"_s, u"-d"_s, u"-t"_s, u"350"_s, u"-v"_s, u"threadtime"_s});
    if (pid)
        arguments << u"--pid"_s << *pid;
    return {arguments, tickCommand};
}

CommandLine Adb::pair(const QString &endpoint)
{
    return {{u"pair"_s, endpoint}, pairCommand};
}

CommandLine Adb::connect(const QString &endpoint)
{
    return {{u"connect"_s, endpoint}, shortCommand};
}

QStringList Scrcpy::mirror(const QString &serial, const QString &name, const std::optional<QString> &recording)
{
    QStringList arguments{u"--serial"_s, serial, u"--window-title"_s, u"Varda · "_s + name, u"--max-size"_s, u"1920"_s};
    if (recording)
        arguments << u"--record"_s << *recording;
    return arguments;
}

} // namespace varda
