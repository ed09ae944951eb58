// CommandLines: what several tests expect adb to be called with, spelled out argument by argument, and its listing.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace varda::test {

/// Lists the devices.
inline QStringList listingLine()
{
    using namespace Qt::StringLiterals;
    return {u"devices"_s, u"-l"_s};
}

/// What adb answers to that, with one row per device.
inline QByteArray listingOf(const QByteArray &rows)
{
    return "List of devices attached\n" + rows + "\n";
}

/// Asks which activity of the app its launcher icon starts.
inline QStringList resolveLine(const QString &serial, const QString &package)
{
    using namespace Qt::StringLiterals;
    const QStringList intent{u"-a"_s, u"android.intent.action.MAIN"_s, u"-c"_s, u"android.intent.category.LAUNCHER"_s};
    return QStringList{u"-s"_s, serial, u"shell"_s, u"cmd"_s, u"package"_s, u"resolve-activity"_s, u"--brief"_s} +
           intent + QStringList{u"-p"_s, package};
}

/// Stops the app.
inline QStringList forceStopLine(const QString &serial, const QString &package)
{
    using namespace Qt::StringLiterals;
    return {u"-s"_s, serial, u"shell"_s, u"am"_s, u"force-stop"_s, package};
}

/// Reads the latest log of the whole device.
inline QStringList logLine(const QString &serial)
{
    using namespace Qt::StringLiterals;
    return {u"-s"_s, serial, u"logcat"_s, u"-d"_s, u"-t"_s, u"350"_s, u"-v"_s, u"threadtime"_s};
}

} // namespace varda::test
