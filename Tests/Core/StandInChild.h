// The description of a child that runs the stand-in program.
#pragma once

#include "Support/StandIn.h"
#include "VardaCore/ChildProcess.h"

#include <QString>

namespace varda {

/// A child that behaves as `arguments` say and writes to the null device.
inline ChildDescription standInThat(const QString &arguments)
{
    ChildDescription description;
    description.executable = standIn();
    description.arguments = arguments.split(QLatin1Char(' '));
    description.standardInput = StandardStream::nullDevice();
    description.standardOutput = StandardStream::nullDevice();
    description.standardError = StandardStream::nullDevice();
    return description;
}

} // namespace varda
