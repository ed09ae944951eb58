// Programs: the programs in the phone's search path, by name. Each family has a file of its own.
#pragma once

#include "Services/ShellService.h"

namespace varda::phone {

/// The program of that name, or null.
Program findProgram(const QString &name);

// ActivityPrograms.cpp
void runActivityManager(const Invocation &invocation);
void runPidof(const Invocation &invocation);

// PackagePrograms.cpp
void runPackageManager(const Invocation &invocation);
/// `cmd SERVICE …`: the services "package" and "activity" are the package and the activity manager's.
void runCmd(const Invocation &invocation);

// InstallProgram.cpp
/// `install [-r …] -S SIZE`: reads SIZE bytes from standard input. A fault's output takes the place of "Success".
void runInstall(const Invocation &invocation);

// LogcatProgram.cpp
void runLogcat(const Invocation &invocation);

// AppProcessProgram.cpp
void runAppProcess(const Invocation &invocation);

// ScreencapProgram.cpp
void runScreencap(const Invocation &invocation);

} // namespace varda::phone
