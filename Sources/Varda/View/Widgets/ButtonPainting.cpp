// ButtonPainting: one look for each kind and state, in the colours of the theme.
#include "Varda/View/Widgets/ButtonPainting.h"

#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/FocusRing.h"
#include "Varda/View/Widgets/Painting.h"
#include "Varda/View/Widgets/Theme.h"

#include <QPainter>
#include <QStyleOption>

namespace varda {

namespace {

using Kind = Button::Kind;

constexpr int buttonIcon = 16;
constexpr int iconGap = 8;

struct ButtonLook
{
    QColor fill;
    QColor line;
    QColor text;
};

Kind kindOf(const QStyleOptionButton &option, const QWidget *widget)
{
    if (const auto *button = qobject_cast<const Button *>(widget))
        return button->kind();
    return option.features.testFlag(QStyleOptionButton::DefaultButton) ? Kind::Primary : Kind::Secondary;
}

int widthOfText(const QStyleOptionButton &option, const QWidget *widget)
{
    const auto *button = qobject_cast<const Button *>(widget);
    return button ? button->textWidth() : option.fontMetrics.size(Qt::TextShowMnemonic, option.text).width();
}

ButtonLook lookOf(Kind kind, QStyle::State state)
{
    const bool enabled = state.testFlag(QStyle::State_Enabled);
    const bool pressed = enabled && state.testFlag(QStyle::State_Sunken);
    const bool hovered = enabled && state.testFlag(QStyle::State_MouseOver);
    const auto inState = [&](const QColor &normal, const QColor &underPointer, const QColor &down) {
        if (pressed)
            return down;
        return hovered ? underPointer : normal;
    };
    const QColor textColour = enabled ? theme::text : theme::disabledText;
    switch (kind) {
    case Kind::Primary:
        if (!enabled)
            return {theme::disabledFill, Qt::transparent, textColour};
        return {inState(theme::accent, theme::accentHover, theme::accentPressed), Qt::transparent, theme::textOnAccent};
    case Kind::Secondary:
    case Kind::Compact:
        if (!enabled)
            return {theme::disabledFill, Qt::transparent, textColour};
        return {inState(theme::controlFill, theme::controlHover, theme::controlPressed), theme::controlLine,
                textColour};
    case Kind::Bare:
        return {inState(Qt::transparent, theme::controlHover, theme::controlPressed), Qt::transparent, textColour};
    case Kind::Link:
        return {Qt::transparent, Qt::transparent, hovered ? theme::accentHover : theme::accent};
    }
    return {};
}

} // namespace

QSize buttonSize(const QStyleOptionButton &option, const QWidget *widget)
{
    const Kind kind = kindOf(option, widget);
    if (kind == Kind::Bare)
        return {theme::compactControlHeight, theme::compactControlHeight};
    const int textWidth = widthOfText(option, widget);
    const int textHeight = option.fontMetrics.height();
    if (kind == Kind::Link)
        return {textWidth + 8, textHeight + 8};
    const bool compact = kind == Kind::Compact;
    const int height = compact ? theme::compactControlHeight : theme::controlHeight;
    const int padding = compact ? theme::controlPadding - 4 : theme::controlPadding;
    const int iconWidth = option.icon.isNull() ? 0 : buttonIcon + iconGap;
    return {iconWidth + textWidth + 2 * padding, qMax(height, textHeight + (compact ? 10 : 16))};
}

void paintButton(const QStyleOptionButton &option, QPainter &painter, const QWidget *widget)
{
    const Kind kind = kindOf(option, widget);
    const ButtonLook look = lookOf(kind, option.state);
    const bool focused = widget && showsFocus(*widget);
    const QRectF whole = option.rect;
    QRectF body = whole;
    if (focused) {
        // A ring in the accent colour would vanish on the accent: it stands clear of a filled button.
        paintRounded(painter, whole, theme::controlRadius, Qt::transparent, theme::accent, theme::focusRing);
        const double gap = kind == Kind::Primary ? theme::focusRing + 1.5 : theme::focusRing;
        body = whole.adjusted(gap, gap, -gap, -gap);
    }
    paintRounded(painter, body, theme::controlRadius - (whole.height() - body.height()) / 2, look.fill,
                 focused ? QColor(Qt::transparent) : look.line);

    painter.save();
    QFont font = painter.font();
    font.setUnderline(kind == Kind::Link);
    painter.setFont(font);
    painter.setPen(look.text);
    const int textWidth = widthOfText(option, widget);
    const int iconSize = option.icon.isNull() ? 0 : buttonIcon;
    const int gap = iconSize && textWidth ? iconGap : 0;
    int x = option.rect.x() + (option.rect.width() - iconSize - gap - textWidth) / 2;
    if (iconSize) {
        const qreal scale = painter.device()->devicePixelRatio();
        QPixmap shape = option.icon.pixmap(QSize(iconSize, iconSize), scale);
        QPainter tint(&shape);
        tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
        tint.fillRect(shape.rect(), look.text);
        tint.end();
        painter.drawPixmap(QRect(x, option.rect.y() + (option.rect.height() - iconSize) / 2, iconSize, iconSize),
                           shape);
        x += iconSize + gap;
    }
    painter.drawText(QRect(x, option.rect.y(), textWidth + 2, option.rect.height()),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextHideMnemonic, option.text);
    painter.restore();
}

} // namespace varda
