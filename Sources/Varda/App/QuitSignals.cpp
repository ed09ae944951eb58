// QuitSignals: the signal handler writes one byte into a pipe that the event loop reads, and does nothing else.
#include "Varda/App/QuitSignals.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace varda {

namespace {

constexpr std::array caught{SIGTERM, SIGINT, SIGHUP};

/// To read from and to write to. Made once and never closed: a signal may come on any thread and at any moment, also
/// while the program is ending, which it must not cut short.
std::array<int, 2> ends{-1, -1};

/// Async-signal-safe: write(2) and nothing else.
void report(int)
{
    const int saved = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(ends[1], &byte, 1);
    errno = saved;
}

void drain()
{
    std::array<char, 16> bytes{};
    while (::read(ends[0], bytes.data(), bytes.size()) > 0) {
    }
}

} // namespace

QuitSignals::QuitSignals(QObject *parent)
    : QObject(parent)
{
    if (ends[0] < 0 && ::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the signals then end the program at once, as they do by default
    drain();
    auto *notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    QObject::connect(notifier, &QSocketNotifier::activated, this, [this] {
        drain();
        Q_EMIT received();
    });
    struct sigaction action = {};
    action.sa_handler = report;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : caught) {
        struct sigaction former = {};
        ::sigaction(signal, nullptr, &former);
        if (former.sa_handler != SIG_IGN) // as nohup has it
            ::sigaction(signal, &action, nullptr);
    }
}

} // namespace varda
