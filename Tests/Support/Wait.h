// The one way in which a test waits, and the one time limit.
#pragma once

#include <QCoreApplication>
#include <QCoroTask>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <functional>
#include <stdexcept>

namespace varda {

/// No test waits for anything longer than this; long, for the machine may be busy.
constexpr std::chrono::seconds guardTime{60};
/// The same in milliseconds, as QProcess takes it.
constexpr int guardMilliseconds = 60'000;

/// Lets the event loop turn until `condition` holds. False when it does not hold within `guard`, and at once when the
/// test fails meanwhile. A look that takes long, such as one at another program's window, is taken less often.
inline bool eventually(const std::function<bool()> &condition, std::chrono::milliseconds guard = guardTime)
{
    const QDeadlineTimer deadline(guard);
    const bool failedBefore = QTest::currentTestFailed();
    for (;;) {
        QElapsedTimer look;
        look.start();
        if (condition())
            return true;
        if (deadline.hasExpired() || (!failedBefore && QTest::currentTestFailed()))
            return false;
        QTest::qWait(static_cast<int>(std::clamp<qint64>(4 * look.elapsed(), 10, 250)));
    }
}

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
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { ++m_turns; });
        m_timer.start(std::chrono::milliseconds(1));
    }

    /// How often the timer has fired.
    int turns() const { return m_turns; }

private:
    QTimer m_timer;
    int m_turns = 0;
};

} // namespace varda

/// Like QVERIFY, for what becomes true soon.
#define VERIFY_SOON(condition) QVERIFY2(varda::eventually([&] { return static_cast<bool>(condition); }), #condition)
/// Like QCOMPARE, for what becomes equal soon.
#define COMPARE_SOON(actual, expected)                                                                                 \
    do {                                                                                                               \
        varda::eventually([&] { return (actual) == (expected); });                                                     \
        QCOMPARE(actual, expected);                                                                                    \
    } while (false)
