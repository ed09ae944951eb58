// Makes system calls of the program under test fail on request, and time pass without waiting.
//
// A test program that links Interposition defines these calls itself (open, mkdir, read, poll, clock_gettime, …), which
// puts its definitions before the C library's for all its libraries. Nothing in the product knows of it.
#pragma once

#include <chrono>

namespace varda::test {

/// The calls that can be made to fail. Those about files count only below capture directories ("/varda-…") and below
/// "/saved", `Write` and `Read` also for pipes, so that neither Qt nor the test meets the fault.
enum class Call {
    MakeDirectory, ///< mkdir
    ChangeMode,    ///< chmod, fchmod
    Open,          ///< open
    Inspect,       ///< lstat, fstat
    Pipe,          ///< pipe2
    Duplicate,     ///< fcntl(F_DUPFD_CLOEXEC)
    Spawn,         ///< posix_spawn
    OpenPidfd,     ///< pidfd_open
    Write,         ///< write
    Read,          ///< read
    Wait,          ///< waitpid
    Remove,        ///< unlinkat
    CreateThread,  ///< pthread_create
};
constexpr int callKinds = 13;

/// Has the call number `skip` (from 0) of this kind from now on, and the `times - 1` after it, fail with `error`. One
/// fault at a time; thread-safe.
void injectFault(Call call, int error, int skip = 0, int times = 1);

/// No more faults. Gives how many calls failed since the last `injectFault`.
int clearFault();

/// How many calls of this kind there have been since `countCalls()`; faulty ones count.
void countCalls();
int callsMade(Call call);
/// How many of these the main thread made itself.
int callsMadeByMainThread(Call call);

/// Has the monotonic clock jump ahead: what waits for a deadline sees it pass.
void skipTime(std::chrono::nanoseconds time);

/// While on, a wait of the main thread in which nothing happens for a millisecond ends, and the clock jumps to the
/// timer that would have ended it; a wait while a child process lives takes its time.
void skipIdleTime(bool on);

} // namespace varda::test
