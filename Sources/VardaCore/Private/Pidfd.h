// The descriptor of a process, which stays with that process when its number has passed to another.
#pragma once

#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

namespace varda {

// The C library's own declarations of these two calls (2.36) lack C linkage.

/// -1 if the kernel has no pidfd. The descriptor is close-on-exec.
inline int openPidfd(pid_t pid)
{
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
}

/// `process` is a pidfd, or the process's directory below /proc. Async-signal-safe.
inline bool sendSignal(int process, int number)
{
    return ::syscall(SYS_pidfd_send_signal, process, number, nullptr, 0) == 0;
}

} // namespace varda
