// Attention: renders come with every change, so that the first and the last of an action bound it.
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
