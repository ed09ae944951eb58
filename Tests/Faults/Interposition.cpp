// Each interposed call either fails as arranged or goes to the next definition, the C library's or a sanitizer's.
#include "Interposition.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace varda::test {

namespace {

struct Fault
{
    std::atomic<int> call = -1;
    std::atomic<int> error = 0;
    std::atomic<int> skip = 0;
    std::atomic<int> times = 0;
    std::atomic<int> hits = 0;
};

Fault fault;
using Counts = std::array<std::atomic<int>, callKinds>;

Counts counts;
Counts countsOfMainThread;
std::atomic<long long> skippedNanoseconds = 0;
std::atomic<bool> skippingIdleTime = false;

/// Counts the call; whether it is to fail, with errno set.
bool fails(Call call)
{
    const int kind = static_cast<int>(call);
    ++counts[static_cast<size_t>(kind)];
    if (::gettid() == ::getpid())
        ++countsOfMainThread[static_cast<size_t>(kind)];
    if (fault.call != kind || fault.skip-- > 0 || fault.times-- <= 0)
        return false;
    ++fault.hits;
    errno = fault.error;
    return true;
}

bool concerns(const char *path)
{
    return std::strstr(path, "/varda-") || std::strstr(path, "/saved");
}

bool concerns(int descriptor)
{
    std::array<char, 32> link = {};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    std::array<char, 4096> target = {};
    if (::readlink(link.data(), target.data(), target.size() - 1) < 0)
        return false;
    return concerns(target.data()) || std::strncmp(target.data(), "pipe:", 5) == 0;
}

/// The definition of a call that this one hides.
template <typename Function>
Function *next(const char *name)
{
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

bool hasChild()
{
    siginfo_t information = {};
    return ::waitid(P_ALL, 0, &information, WEXITED | WNOHANG | WNOWAIT) == 0;
}

/// In milliseconds: a wait in which nothing happens for so long is idle. A worker that is at work is done by then.
constexpr int shortWait = 1;

bool maySkip(long long milliseconds)
{
    return skippingIdleTime && milliseconds > shortWait && ::gettid() == ::getpid();
}

/// Ends a wait that a timer would end, and has the clock say that it took its time.
bool skipsWait(long long nanoseconds)
{
    if (hasChild())
        return false;
    skippedNanoseconds += nanoseconds;
    return true;
}

} // namespace

void injectFault(Call call, int error, int skip, int times)
{
    fault.call = -1;
    fault.error = error;
    fault.skip = skip;
    fault.times = times;
    fault.hits = 0;
    fault.call = static_cast<int>(call);
}

int clearFault()
{
    fault.call = -1;
    return fault.hits;
}

void countCalls()
{
    for (Counts *each : {&counts, &countsOfMainThread}) {
        for (std::atomic<int> &count : *each)
            count = 0;
    }
}

int callsMade(Call call)
{
    return counts[static_cast<size_t>(call)];
}

int callsMadeByMainThread(Call call)
{
    return countsOfMainThread[static_cast<size_t>(call)];
}

void skipTime(std::chrono::nanoseconds time)
{
    skippedNanoseconds += time.count();
}

void skipIdleTime(bool on)
{
    skippingIdleTime = on;
}

} // namespace varda::test

using varda::test::Call;
using varda::test::concerns;
using varda::test::fails;
using varda::test::next;

extern "C" {

int mkdir(const char *path, mode_t mode) noexcept
{
    static auto *const real = next<int(const char *, mode_t)>("mkdir");
    return concerns(path) && fails(Call::MakeDirectory) ? -1 : real(path, mode);
}

int chmod(const char *path, mode_t mode) noexcept
{
    static auto *const real = next<int(const char *, mode_t)>("chmod");
    return concerns(path) && fails(Call::ChangeMode) ? -1 : real(path, mode);
}

int fchmod(int descriptor, mode_t mode) noexcept
{
    static auto *const real = next<int(int, mode_t)>("fchmod");
    return concerns(descriptor) && fails(Call::ChangeMode) ? -1 : real(descriptor, mode);
}

int open(const char *path, int flags, ...)
{
    static auto *const real = next<int(const char *, int, ...)>("open");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return concerns(path) && fails(Call::Open) ? -1 : real(path, flags, mode);
}

int open64(const char *path, int flags, ...)
{
    static auto *const real = next<int(const char *, int, ...)>("open64");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return concerns(path) && fails(Call::Open) ? -1 : real(path, flags, mode);
}

int lstat(const char *path, struct stat *attributes) noexcept
{
    static auto *const real = next<int(const char *, struct stat *)>("lstat");
    return concerns(path) && fails(Call::Inspect) ? -1 : real(path, attributes);
}

int fstat(int descriptor, struct stat *attributes) noexcept
{
    static auto *const real = next<int(int, struct stat *)>("fstat");
    return concerns(descriptor) && fails(Call::Inspect) ? -1 : real(descriptor, attributes);
}

int pipe2(int *ends, int flags) noexcept
{
    static auto *const real = next<int(int *, int)>("pipe2");
    return fails(Call::Pipe) ? -1 : real(ends, flags);
}

int fcntl(int descriptor, int command, ...)
{
    static auto *const real = next<int(int, int, ...)>("fcntl");
    va_list rest;
    va_start(rest, command);
    void *const argument = va_arg(rest, void *);
    va_end(rest);
    const bool duplicates = command == F_DUPFD_CLOEXEC && concerns(descriptor);
    return duplicates && fails(Call::Duplicate) ? -1 : real(descriptor, command, argument);
}

int posix_spawn(pid_t *pid, const char *path, const posix_spawn_file_actions_t *actions,
                const posix_spawnattr_t *attributes, char *const arguments[], char *const environment[])
{
    static auto *const real = next<decltype(posix_spawn)>("posix_spawn");
    // It returns its error number.
    return fails(Call::Spawn) ? errno : real(pid, path, actions, attributes, arguments, environment);
}

long syscall(long number, ...) noexcept
{
    static auto *const real = next<long(long, ...)>("syscall");
    va_list rest;
    va_start(rest, number);
    std::array<long, 6> arguments = {};
    for (long &argument : arguments)
        argument = va_arg(rest, long);
    va_end(rest);
    if (number == SYS_pidfd_open && fails(Call::OpenPidfd))
        return -1;
    return real(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]);
}

ssize_t write(int descriptor, const void *bytes, size_t size)
{
    static auto *const real = next<ssize_t(int, const void *, size_t)>("write");
    return concerns(descriptor) && fails(Call::Write) ? -1 : real(descriptor, bytes, size);
}

ssize_t read(int descriptor, void *bytes, size_t size)
{
    static auto *const real = next<ssize_t(int, void *, size_t)>("read");
    return concerns(descriptor) && fails(Call::Read) ? -1 : real(descriptor, bytes, size);
}

pid_t waitpid(pid_t pid, int *status, int options)
{
    static auto *const real = next<pid_t(pid_t, int *, int)>("waitpid");
    return fails(Call::Wait) ? -1 : real(pid, status, options);
}

int unlinkat(int directory, const char *path, int flags) noexcept
{
    static auto *const real = next<int(int, const char *, int)>("unlinkat");
    return (concerns(path) || concerns(directory)) && fails(Call::Remove) ? -1 : real(directory, path, flags);
}

int pthread_create(pthread_t *thread, const pthread_attr_t *attributes, void *(*routine)(void *), void *argument)
{
    static auto *const real = next<decltype(pthread_create)>("pthread_create");
    // It returns its error number.
    return fails(Call::CreateThread) ? errno : real(thread, attributes, routine, argument);
}

int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    static auto *const real = next<int(clockid_t, timespec *)>("clock_gettime");
    const int result = real(clock, time);
    const long long skipped = varda::test::skippedNanoseconds;
    if (result == 0 && clock == CLOCK_MONOTONIC && skipped != 0) {
        const long long nanoseconds = time->tv_nsec + skipped;
        time->tv_sec += nanoseconds / 1'000'000'000;
        time->tv_nsec = nanoseconds % 1'000'000'000;
    }
    return result;
}

int poll(pollfd *descriptors, nfds_t count, int milliseconds)
{
    static auto *const real = next<int(pollfd *, nfds_t, int)>("poll");
    if (!varda::test::maySkip(milliseconds))
        return real(descriptors, count, milliseconds);
    const int ready = real(descriptors, count, varda::test::shortWait);
    return ready != 0 || varda::test::skipsWait(milliseconds * 1'000'000LL) ? ready
                                                                            : real(descriptors, count, milliseconds);
}

int ppoll(pollfd *descriptors, nfds_t count, const timespec *timeout, const sigset_t *mask)
{
    static auto *const real = next<int(pollfd *, nfds_t, const timespec *, const sigset_t *)>("ppoll");
    const long long nanoseconds = timeout ? timeout->tv_sec * 1'000'000'000LL + timeout->tv_nsec : -1;
    if (!varda::test::maySkip(nanoseconds / 1'000'000))
        return real(descriptors, count, timeout, mask);
    const timespec briefly = {0, varda::test::shortWait * 1'000'000L};
    const int ready = real(descriptors, count, &briefly, mask);
    return ready != 0 || varda::test::skipsWait(nanoseconds) ? ready : real(descriptors, count, timeout, mask);
}
}
