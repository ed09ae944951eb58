// Adb: every command line that Varda gives to adb and scrcpy, and nothing else.
#pragma once

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace varda {

/// One run of a tool: what follows the executable on its command line, and how long it may take.
struct CommandLine
{
    QStringList arguments;
    std::chrono::duration<double> timeout;

    bool operator==(const CommandLine &) const = default;
};

/// adb's command lines. Pure: values in, value out. Texts that a user typed have been trimmed and validated before
/// they come here, so that none begins with a dash or holds a character that a shell on the phone would interpret.
struct Adb
{
    static CommandLine devices();

    static CommandLine install(const QString &serial, const QString &path);

    static CommandLine resolveLauncher(const QString &serial, const QString &package);
    static CommandLine startActivity(const QString &serial, const QString &component);
    static CommandLine forceStop(const QString &serial, const QString &package);
    static CommandLine listPackages(const QString &serial);
    static CommandLine screenshot(const QString &serial);

    static CommandLine processID(const QString &serial, const QString &package);
    /// The latest 350 lines of the log, only of process `pid` if one is given.
    static CommandLine log(const QString &serial, const std::optional<QString> &pid);

    /// The pairing code is not part of it: adb reads the code from standard input.
    static CommandLine pair(const QString &endpoint);
    static CommandLine connect(const QString &endpoint);
};

/// scrcpy's command line. It runs until its window is closed, so there is no time-out.
struct Scrcpy
{
    /// Mirrors device `serial`, called `name` in the window's title, and records to the path `recording` if given.
    static QStringList mirror(const QString &serial, const QString &name, const std::optional<QString> &recording);
};

} // namespace varda
