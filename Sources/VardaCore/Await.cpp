// The notifier and the timer are armed on suspension and disarmed before the coroutine is scheduled, so it resumes
// once.
#include "VardaCore/Await.h"

#include <algorithm>
#include <limits>

namespace varda {

namespace {

using std::chrono::milliseconds;

/// How long a timer has to run from now to end no earlier than `deadline`. A timer counts its milliseconds in an int;
/// after a longer wait the caller looks at the clock and waits again.
milliseconds timeUntil(Readiness::Clock::time_point deadline)
{
    constexpr milliseconds max(std::numeric_limits<int>::max());
    const auto left = std::chrono::ceil<milliseconds>(deadline - Readiness::Clock::now());
    return std::clamp(left, milliseconds::zero(), max);
}

} // namespace

Readiness::Readiness(int descriptor, QSocketNotifier::Type type, Clock::time_point deadline)
    : m_deadline(deadline)
{
    if (descriptor >= 0) {
        m_notifier.emplace(descriptor, type);
        m_notifier->setEnabled(false);
        QObject::connect(&*m_notifier, &QSocketNotifier::activated, &*m_notifier, [this] { finish(); });
    }
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { finish(); });
}

void Readiness::start(std::coroutine_handle<> coroutine)
{
    m_resumption.suspend(coroutine);
    if (m_notifier)
        m_notifier->setEnabled(true);
    if (m_deadline != Clock::time_point::max())
        m_timer.start(timeUntil(m_deadline));
}

void Readiness::finish()
{
    if (m_notifier)
        m_notifier->setEnabled(false);
    m_timer.stop();
    m_resumption.schedule();
}

} // namespace varda
