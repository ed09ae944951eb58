// Watches a child through a pidfd on the event loop. If the kernel has no pidfd, the child is checked every 50 ms
// instead.
#include "VardaCore/ChildProcess.h"

#include "Private/Descriptor.h"
#include "Private/Pidfd.h"
#include "Private/Spawn.h"
#include "VardaCore/Await.h"

#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace varda {

using namespace std::chrono_literals;

namespace {

constexpr auto pollInterval = 50ms;

/// The status of a child whose status the system could not tell.
constexpr qint32 unknownStatus = -1;

/// Waits for `pid` without or, with WNOHANG, instead of blocking. Absent while the child runs.
std::optional<qint32> reap(pid_t pid, int options)
{
    int status = 0;
    pid_t reaped = 0;
    do {
        reaped = ::waitpid(pid, &status, options);
    } while (reaped < 0 && errno == EINTR);
    if (reaped == 0)
        return std::nullopt;
    if (reaped < 0)
        return unknownStatus;
    return WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
}

} // namespace

/// Shared between the object and what waits for it. No child once `abandoned`; reaped once there is a `status`.
struct ChildProcess::State
{
    bool running()
    {
        if (!status && !abandoned)
            status = reap(pid, WNOHANG);
        return !status && !abandoned;
    }

    void signal(int number)
    {
        if (!running())
            return;
        // Until it is reaped, the identifier cannot have passed to another process.
        if (!pidfd || !sendSignal(pidfd.get(), number))
            ::kill(pid, number);
    }

    static QCoro::Task<bool> exit(std::shared_ptr<State> state, Clock::time_point deadline)
    {
        while (state->running()) {
            const Clock::time_point now = Clock::now();
            if (now >= deadline)
                co_return false;
            const Clock::time_point next = state->pidfd ? deadline : std::min(deadline, now + pollInterval);
            Readiness change(state->pidfd.get(), QSocketNotifier::Read, next);
            co_await change;
        }
        co_return true;
    }

    pid_t pid = -1;
    /// Empty if the kernel has no pidfd.
    Descriptor pidfd;
    std::optional<qint32> status;
    bool abandoned = false;
};

/// Reports one exit from the event loop and then deletes itself; its parent may delete it before.
class ChildProcess::ExitWatch final : public QObject
{
public:
    ExitWatch(QObject *parent, std::shared_ptr<State> state, std::function<void(qint32)> report)
        : QObject(parent)
        , m_state(std::move(state))
        , m_report(std::move(report))
    {
        if (m_state->pidfd) {
            m_notifier.emplace(m_state->pidfd.get(), QSocketNotifier::Read);
            connect(&*m_notifier, &QSocketNotifier::activated, this, [this] { check(); });
        } else {
            connect(&m_timer, &QTimer::timeout, this, [this] { check(); });
            m_timer.start(pollInterval);
        }
    }

private:
    void check()
    {
        if (m_state->running())
            return;
        if (m_notifier)
            m_notifier->setEnabled(false);
        m_timer.stop();
        deleteLater();
        // The report may destroy this object.
        const std::function<void(qint32)> report = std::move(m_report);
        if (const std::optional<qint32> status = m_state->status)
            report(*status);
    }

    std::shared_ptr<State> m_state;
    std::function<void(qint32)> m_report;
    std::optional<QSocketNotifier> m_notifier;
    QTimer m_timer;
};

ChildProcess ChildProcess::launch(const ChildDescription &description)
{
    auto state = std::make_shared<State>();
    state->pid = spawn(description);
    state->pidfd = Descriptor(openPidfd(state->pid));
    return ChildProcess(std::move(state));
}

ChildProcess::ChildProcess(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

ChildProcess &ChildProcess::operator=(ChildProcess &&other) noexcept
{
    ChildProcess taken(std::move(other));
    std::swap(m_state, taken.m_state);
    return *this;
}

ChildProcess::~ChildProcess()
{
    if (!m_state || !m_state->running())
        return;
    m_state->signal(SIGKILL);
    m_state->status = reap(m_state->pid, 0);
}

pid_t ChildProcess::pid() const
{
    return m_state->pid;
}

bool ChildProcess::running() const
{
    return m_state->running();
}

std::optional<qint32> ChildProcess::status() const
{
    return m_state->status;
}

void ChildProcess::terminate() const
{
    m_state->signal(SIGTERM);
}

void ChildProcess::kill() const
{
    m_state->signal(SIGKILL);
}

QCoro::Task<bool> ChildProcess::waitForExit(Clock::time_point deadline) const
{
    return State::exit(m_state, deadline);
}

void ChildProcess::onExit(QObject *context, std::function<void(qint32)> report) const
{
    new ExitWatch(context, m_state, std::move(report));
}

void ChildProcess::abandon()
{
    if (!m_state->running())
        return;
    m_state->abandoned = true;
    try {
        std::thread([pid = m_state->pid] { reap(pid, 0); }).detach();
    } catch (const std::system_error &) {
        // If no thread can be started, its entry in the process table stays until this process ends.
    }
}

} // namespace varda
