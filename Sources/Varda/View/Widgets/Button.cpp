// Button: VardaStyle measures and paints it; here are the width of its text, its size policy and its keys.
#include "Varda/View/Widgets/Button.h"

#include "Varda/View/Widgets/Theme.h"

#include <QKeyEvent>
#include <QStyleOptionButton>

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

int Button::textWidth() const
{
    m_label.set(text(), font());
    return m_label.size().width();
}

/// Without Qt's own measuring of the text, which the style does not need.
QSize Button::sizeHint() const
{
    ensurePolished();
    QStyleOptionButton option;
    initStyleOption(&option);
    return style()->sizeFromContents(QStyle::CT_PushButton, &option, {}, this);
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
