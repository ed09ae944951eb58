// Attention: an action begins with the first render that is busy, and ends with the first that is not.
#include "Varda/View/Attention.h"

#include <QApplication>

#include <utility>

namespace varda {

void Attention::render(bool busy, Clock::time_point now)
{
    if (busy) {
        m_busySince = m_busySince.value_or(now);
        return;
    }
    const auto since = std::exchange(m_busySince, std::nullopt);
    if (since && now - *since > patience && !QApplication::activeWindow())
        QApplication::alert(m_window);
}

} // namespace varda
