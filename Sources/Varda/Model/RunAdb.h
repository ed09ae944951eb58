// RunAdb: one run of the packaged adb.
#pragma once

#include "Varda/Model/Adb.h"
#include "VardaCore/CommandResult.h"

#include <QCoroTask>

#include <optional>

namespace varda {

/// Runs adb with `line`, and `input` and a line feed on its standard input where given. Throws what the command runner
/// throws; a non-zero exit is in the result. On a thread with a running event loop.
QCoro::Task<CommandResult> runAdb(const CommandLine &line, std::optional<QString> input = std::nullopt);

} // namespace varda
