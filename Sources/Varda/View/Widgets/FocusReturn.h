// FocusReturn: gives the keyboard back to a control that was disabled while it had the focus.
#pragma once

#include <QPointer>
#include <QWidget>

namespace varda {

/// Qt moves the focus of a widget that is disabled on to the next one, where the next key would press something else
/// and the user loses their place. Here the focus waits on a widget that no key presses, and goes back as soon as the
/// control is enabled, unless the user has gone elsewhere. Call `before` and `after` around changes of controls.
class FocusReturn final
{
public:
    FocusReturn(QWidget *window, QWidget *waitingPlace)
        : m_window(window)
        , m_waitingPlace(waitingPlace)
    {
    }

    void before() { m_focused = m_window->focusWidget(); }

    void after()
    {
        if (m_focused && !m_focused->isEnabled()) {
            m_displaced = m_focused;
            m_waitingPlace->setFocus();
        } else if (m_displaced && m_displaced->isEnabled()) {
            if (m_window->focusWidget() == m_waitingPlace)
                m_displaced->setFocus();
            m_displaced.clear();
        }
    }

private:
    QWidget *const m_window;
    QWidget *const m_waitingPlace;
    QPointer<QWidget> m_focused;
    QPointer<QWidget> m_displaced;
};

} // namespace varda
