// RunAdb: one run of the packaged adb.
#include "Varda/Model/RunAdb.h"

#include "Varda/Model/ToolLocation.h"
#include "VardaCore/CommandRunner.h"

namespace varda {

QCoro::Task<CommandResult> runAdb(CommandLine line, std::optional<QString> input)
{
    return CommandRunner::run(ToolLocation::adb(), line.arguments, input, line.timeout);
}

} // namespace varda
