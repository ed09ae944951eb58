// The keeper is a fork without an exec, so that it needs no program of its own. After a fork of a process with several
// threads only async-signal-safe functions may be called, so it calls no others. Each keeper has one child: a program
// that ends has few commands in flight, usually none.
#include "Private/Keeper.h"

#include "Private/Descriptor.h"
#include "Private/Pidfd.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <limits>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace varda {

using namespace std::chrono_literals;

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// How often a child is checked if the kernel has no pidfd.
constexpr auto lookInterval = 50ms;

/// The keeper's descriptor of the child: its pidfd, or its directory below /proc. Both tell that the child has ended
/// even if its number has passed to another process.
constexpr int childDescriptor = 0;

struct Ward
{
    pid_t pid;
    bool hasPidfd;
};

bool ended(const Ward &ward, milliseconds patience)
{
    if (ward.hasPidfd) {
        pollfd exit = {childDescriptor, POLLIN, 0};
        return ::poll(&exit, 1, static_cast<int>(patience.count())) > 0;
    }
    if (::faccessat(childDescriptor, "stat", F_OK, 0) != 0)
        return true;
    ::poll(nullptr, 0, static_cast<int>(std::min<milliseconds>(patience, lookInterval).count()));
    return false;
}

/// Waits until the child ends or `time` comes, and tells whether it has ended.
bool endsBefore(const Ward &ward, Clock::time_point time)
{
    constexpr milliseconds max(std::numeric_limits<int>::max());
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(time - Clock::now());
        if (ended(ward, std::clamp(left, 0ms, max)))
            return true;
        if (left <= 0ms)
            return false;
    }
}

void signalWard(const Ward &ward, int number)
{
    // A system that filters one of the calls may filter the other.
    if (!sendSignal(childDescriptor, number) && errno != ESRCH && !ended(ward, 0ms))
        ::kill(ward.pid, number);
}

/// Gives up all that the fork has inherited.
void detach(int descriptor)
{
    for (const int number : {SIGHUP, SIGINT, SIGTERM})
        ::signal(number, SIG_DFL);
    ::setsid();
    [[maybe_unused]] const int ignored = ::chdir("/");
    ::prctl(PR_SET_NAME, "varda-keeper");
    ::dup2(descriptor, childDescriptor);
    ::closefrom(childDescriptor + 1);
}

[[noreturn]] void keep(const Ward &ward, int descriptor, Clock::time_point deadline)
{
    detach(descriptor);
    if (!endsBefore(ward, deadline)) {
        signalWard(ward, SIGTERM);
        if (!endsBefore(ward, Clock::now() + terminationGrace))
            signalWard(ward, SIGKILL);
    }
    ::_exit(0);
}

} // namespace

void leaveToKeeper(pid_t child, Clock::time_point deadline) noexcept
{
    Descriptor descriptor(openPidfd(child));
    const Ward ward = {child, bool(descriptor)};
    if (!descriptor) {
        std::array<char, 32> path = {};
        std::snprintf(path.data(), path.size(), "/proc/%d", child);
        descriptor = Descriptor(::open(path.data(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    }
    if (descriptor && ::fork() == 0)
        keep(ward, descriptor.get(), deadline);
}

} // namespace varda
