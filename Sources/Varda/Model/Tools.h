// Tools: where the tools that Varda runs are, and one run of adb.
#pragma once

#include "Varda/Model/Adb.h"
#include "VardaCore/CommandResult.h"

#include <QCoroTask>
#include <QString>

#include <optional>

namespace varda {

/// Absolute paths below the resource directory, `../lib/varda` as seen from the program's own directory, in a build
/// tree as in an installed one. Computed anew by each call. A missing resource directory is a broken installation and
/// ends the process; a missing tool is reported where it is used.
struct ToolLocation
{
    static QString adb();
    static QString scrcpy();
    /// The file that scrcpy sends to the phone; it is beside scrcpy.
    static QString scrcpyServer();
};

/// Runs adb with `line`, and `input` and a line feed on its standard input if given. Throws what the command runner
/// throws; a non-zero exit is in the result. On a thread with a running event loop.
QCoro::Task<CommandResult> runAdb(const CommandLine &line, std::optional<QString> input = std::nullopt);

} // namespace varda
