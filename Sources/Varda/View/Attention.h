// Attention: tells a user who went to another window that an action has ended.
#pragma once

#include <chrono>
#include <optional>

class QWidget;

namespace varda {

/// Has the desktop mark a window when an action that took long has ended, however it ended, while no window of the
/// program has the focus.
class Attention
{
public:
    using Clock = std::chrono::steady_clock;

    /// The user is likely to have watched an action that took no longer.
    static constexpr std::chrono::seconds patience{5};

    explicit Attention(QWidget *window)
        : m_window(window)
    {
    }

    /// Tells whether an action is in flight at the time `now`.
    void render(bool busy, Clock::time_point now = Clock::now());

private:
    QWidget *const m_window;
    std::optional<Clock::time_point> m_busySince;
};

} // namespace varda
