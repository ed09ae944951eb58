// Waiting for asynchronous work in a test, with a guard time.
#pragma once

#include <QCoreApplication>
#include <QCoroTask>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <stdexcept>

namespace varda {

/// No test waits for anything longer than this.
constexpr std::chrono::seconds guardTime{60};

/// Turns the event loop until `task` has finished; gives its result or throws what it threw. Throws std::runtime_error,
/// which fails the test, when the guard time passes first.
template <typename T>
T resultOf(QCoro::Task<T> task, std::chrono::milliseconds guard = guardTime)
{
    const QDeadlineTimer deadline(guard);
    QTimer wakeUp;
    wakeUp.start(guard);
    while (!task.isReady()) {
        if (deadline.hasExpired())
            throw std::runtime_error("the guard time has passed");
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return task.operator co_await().await_resume();
}

/// Shows that the event loop kept turning: its timer is due every millisecond.
class LoopMonitor
{
public:
    LoopMonitor()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            ++m_turns;
            m_longestGap = std::max(m_longestGap, std::chrono::milliseconds(m_gap.restart()));
        });
        m_gap.start();
        m_timer.start(std::chrono::milliseconds(1));
    }

    /// How often the timer has fired.
    int turns() const { return m_turns; }

    /// The longest time between two firings.
    std::chrono::milliseconds longestGap() const { return m_longestGap; }

private:
    QTimer m_timer;
    QElapsedTimer m_gap;
    int m_turns = 0;
    std::chrono::milliseconds m_longestGap{0};
};

} // namespace varda
