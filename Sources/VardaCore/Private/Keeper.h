// Keeps a command to its time-out when the program that ran it has ended.
#pragma once

#include <chrono>

#include <sys/types.h>

namespace varda {

/// Between SIGTERM and SIGKILL for a command past its time-out.
constexpr std::chrono::milliseconds terminationGrace{300};

/// Leaves `child`, an unreaped child of this process, to a process of its own, the keeper, which outlives this one: if
/// the child has not ended at `deadline`, it gets SIGTERM, and SIGKILL after `terminationGrace`. The keeper ends with
/// the child. It holds nothing up: it leads a session of its own without a terminal, has no file open but the
/// descriptor of the child, and its directory is the root. If no process can be made, the child runs on unattended.
///
/// Call it when this process is about to end, on the last thread that still works: from then on only the system may
/// reap the child.
void leaveToKeeper(pid_t child, std::chrono::steady_clock::time_point deadline) noexcept;

} // namespace varda
