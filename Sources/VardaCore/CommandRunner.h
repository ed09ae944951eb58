// Runs one short-lived command to its end and captures what it wrote.
#pragma once

#include "VardaCore/CommandResult.h"

#include <QCoroTask>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace varda {

/// Runs external programs. Calls share nothing; any number may be in flight at once.
///
/// Usage: `const CommandResult result = co_await CommandRunner::run(adb, arguments, std::nullopt, 20s);`, usually
/// followed by `result.checked()`, because a non-zero exit status is a result here, not an error.
///
/// Threads: call it on a thread that runs an event loop; the command starts during the call and the result arrives
/// through that loop. File and launch work is done on worker threads, and no thread is held while the child runs.
struct CommandRunner
{
    /// Runs the program at the absolute path `executable` with `arguments`, verbatim and without a shell, in the
    /// environment and working directory of this process.
    ///
    /// `input` is written to the child's standard input with one line feed added, then the stream is closed; without it
    /// the standard input is the null device. `timeout` counts from the moment the child is launched and its input is
    /// written; at zero or less the child is ended unless it has already exited. A child past its time-out gets
    /// SIGTERM, and SIGKILL 300 ms later; processes that it started itself are left alone.
    ///
    /// Throws a ToolError when the child ran past `timeout` or wrote more than 32 MiB to standard output, and
    /// std::system_error (see `describe`) when a file cannot be made or read, the child cannot be launched, or its
    /// input cannot be written; in the last case the child is left to end on its own. No other outcome leaves a child
    /// behind, and none leaves a file.
    ///
    /// Dropping the returned task does not shorten the command: it ends by exiting or by its time-out.
    static QCoro::Task<CommandResult> run(QString executable, QStringList arguments, std::optional<QString> input,
                                          std::chrono::duration<double> timeout);
};

} // namespace varda
