// Umbrella of the core's public interface, and nothing more.
#pragma once

#include "VardaCore/AndroidDevice.h"
#include "VardaCore/CommandResult.h"
#include "VardaCore/CommandRunner.h"
#include "VardaCore/ToolError.h"
#include "VardaCore/Validation.h"
