// QuitSignals: a signal handler may do next to nothing, so that it writes a byte into a pipe that the event loop reads.
#include "Varda/QuitSignals.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace varda {
namespace {

constexpr std::array caught{SIGTERM, SIGINT, SIGHUP};

std::array<int, 2> ends{-1, -1}; // read, write
std::array<struct sigaction, caught.size()> former;

/// Async-signal-safe: write(2) and nothing else.
void report(int)
{
    const int saved = errno;
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(ends[1], &byte, 1);
    errno = saved;
}

} // namespace

QuitSignals::QuitSignals(QObject *parent)
    : QObject(parent)
{
    if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the signals then end the program at once, as they do by default
    auto *notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    QObject::connect(notifier, &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> bytes{};
        while (::read(ends[0], bytes.data(), bytes.size()) > 0) {
        }
        Q_EMIT received();
    });
    struct sigaction action = {};
    action.sa_handler = report;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < caught.size(); ++i) {
        ::sigaction(caught.at(i), nullptr, &former.at(i));
        if (former.at(i).sa_handler != SIG_IGN)
            ::sigaction(caught.at(i), &action, nullptr);
    }
}

QuitSignals::~QuitSignals()
{
    if (ends[0] < 0)
        return;
    for (std::size_t i = 0; i < caught.size(); ++i)
        ::sigaction(caught.at(i), &former.at(i), nullptr);
    ::close(ends[0]);
    ::close(ends[1]);
    ends = {-1, -1};
}

} // namespace varda
