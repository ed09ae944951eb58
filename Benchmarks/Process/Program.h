// Program: another program with a window, run on the display of this one and looked at from outside (proc(5)).
#pragma once

#include <QString>

#include <cstdint>
#include <map>
#include <optional>

#include <sys/types.h>

namespace varda::bench {

/// What a process holds, in bytes.
struct Memory
{
    double resident;     ///< shared pages whole
    double proportional; ///< shared pages by the share in them
    double own;          ///< pages that it has written to
};

/// What a program took from its start to its first picture.
struct FirstFrame
{
    double seconds;
    double cpuSeconds; ///< of all its threads
};

/// A run of the program at `path` with `argument`, if that is not empty, which is asked to end and waited for when the
/// object goes. Ends this program where it does not start.
class Program
{
public:
    explicit Program(const QString &path, const QString &argument = {});
    Q_DISABLE_COPY_MOVE(Program)
    ~Program();

    /// Waits until it has handed its first picture over to the display.
    FirstFrame firstFrame();

    Memory memory() const;
    std::int64_t descriptors() const;
    /// Of all its threads, those that have ended included.
    double cpuSeconds() const;
    /// Of the children that it has waited for, in hundredths.
    double childrenSeconds() const;
    /// Grows with every child that it has waited for.
    std::uint64_t childrenFaults() const;
    /// By thread: how often it has slept.
    std::map<int, std::uint64_t> sleeps() const;

private:
    QString file(const QString &name) const;
    QStringList statistics() const;

    pid_t m_pid = -1;
    int m_frame = -1; ///< the end of a pipe that brings the first frame's time
    double m_started = 0;
};

/// A copy of `varda` in `home`/bin, beside the tools that are staged in `home`; answers its path.
QString stageVarda(const QString &home);

/// Leaves this process's children to themselves: no session bus, and no screen reader to serve.
void forgetDesktop();

} // namespace varda::bench
