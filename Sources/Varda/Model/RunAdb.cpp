// RunAdb: one run of the packaged adb.
#include "Varda/Model/RunAdb.h"

#include "Varda/Model/ToolLocation.h"
#include "VardaCore/CommandRunner.h"

#include <utility>

namespace varda {

QCoro::Task<CommandResult> runAdb(const CommandLine &line, std::optional<QString> input)
{
    return CommandRunner::run(ToolLocation::adb(), line.arguments, std::move(input), line.timeout);
}

} // namespace varda
