// Button: VardaStyle paints it; here are only its size policy and its keys.
#include "Varda/View/Widgets/Button.h"

#include "Varda/View/Widgets/Theme.h"

#include <QKeyEvent>

namespace varda {

Button::Button(Kind kind, const QString &text, std::optional<Icon> icon, QWidget *parent)
    : QPushButton(text, parent)
    , m_kind(kind)
{
    setFont(theme::font(theme::bodySize, QFont::DemiBold));
    setAutoDefault(false);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    if (kind == Kind::Link)
        setCursor(Qt::PointingHandCursor);
    if (icon)
        setIcon(varda::icon(*icon));
}

void Button::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && !event->isAutoRepeat())
        click();
    else
        QPushButton::keyPressEvent(event);
}

} // namespace varda
