// Commands run by the program's own runner, from start to result on the event loop.
#pragma once

#include "VardaCore/CommandRunner.h"

#include <QCoroTask>

#include <string>
#include <vector>

namespace varda::bench {

/// A run of the program at the path `command.front()` that has begun; ends the benchmark program should it fail.
inline QCoro::Task<CommandResult> start(const std::vector<std::string> &command)
{
    QStringList arguments;
    for (const std::string &argument : command)
        arguments << QString::fromStdString(argument);
    const QString executable = arguments.takeFirst();
    return CommandRunner::run(executable, arguments, std::nullopt, std::chrono::minutes(5));
}

inline CommandResult run(const std::vector<std::string> &command)
{
    return QCoro::waitFor(start(command)).checked();
}

} // namespace varda::bench
