// FocusRing: one event filter notes for the whole application whether a key or the pointer was used last.
#include "Varda/View/Widgets/FocusRing.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QWidget>

#include <utility>

namespace varda {

namespace {

class LastInput final : public QObject
{
public:
    using QObject::QObject;

    bool wasKey() const { return m_key; }

    bool eventFilter(QObject *, QEvent *event) override
    {
        // A shortcut works from anywhere and asks nobody where the focus is.
        constexpr auto shortcut = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
        const bool clicked = event->type() == QEvent::MouseButtonPress;
        const bool typed =
            event->type() == QEvent::KeyPress && !(static_cast<QKeyEvent *>(event)->modifiers() & shortcut);
        if ((clicked || typed) && std::exchange(m_key, typed) != typed) {
            if (QWidget *focused = QApplication::focusWidget())
                focused->window()->update();
        }
        return false;
    }

private:
    bool m_key = false;
};

QPointer<LastInput> lastInput;

} // namespace

void followFocusRing()
{
    if (lastInput)
        return;
    lastInput = new LastInput(qApp);
    qApp->installEventFilter(lastInput);
}

bool showsFocus(const QWidget &widget)
{
    return widget.hasFocus() && lastInput && lastInput->wasKey();
}

} // namespace varda
