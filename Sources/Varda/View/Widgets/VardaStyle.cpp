// VardaStyle: draws with Fusion, and overrides what the theme does differently.
#include "Varda/View/Widgets/VardaStyle.h"

#include "Varda/View/Widgets/ButtonPainting.h"
#include "Varda/View/Widgets/FocusRing.h"
#include "Varda/View/Widgets/Icon.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Painting.h"
#include "Varda/View/Widgets/Theme.h"

#include <QApplication>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStyleOption>
#include <QToolTip>

namespace varda {

namespace {

constexpr int consoleFrame = 10;
constexpr int fieldPadding = 10;
constexpr int menuMargin = 6;
constexpr int menuItemHeight = 30;
constexpr int minScrollThumb = 36;

bool isFramedField(const QStyleOption *option, const QWidget *widget)
{
    const auto *frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
    return frame && frame->lineWidth > 0 && qobject_cast<const QLineEdit *>(widget);
}

} // namespace

VardaStyle::VardaStyle()
    : QProxyStyle(QStringLiteral("Fusion"))
{
}

void VardaStyle::install()
{
    QApplication::setStyle(new VardaStyle);
    followFocusRing();
    QApplication::setPalette(theme::palette());
    QApplication::setFont(theme::font(theme::bodySize));
    QToolTip::setPalette(theme::palette());
    QToolTip::setFont(theme::font(theme::bodySize - 1));
}

void VardaStyle::polish(QPalette &palette)
{
    palette = theme::palette();
}

int VardaStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return theme::scrollBarExtent;
    case PM_ScrollBarSliderMin:
        return minScrollThumb;
    case PM_ScrollView_ScrollBarSpacing:
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return menuMargin;
    case PM_ToolTipLabelFrameWidth:
        return 8;
    case PM_DefaultFrameWidth:
        if (qobject_cast<const QPlainTextEdit *>(widget))
            return consoleFrame;
        break;
    default:
        break;
    }
    return QProxyStyle::pixelMetric(metric, option, widget);
}

int VardaStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                          QStyleHintReturn *returned) const
{
    switch (hint) {
    case SH_EtchDisabledText:
    case SH_LineEdit_PasswordMaskDelay: // a masked character is never shown in clear, not even for a moment
    case SH_DialogButtonBox_ButtonsHaveIcons:
        return 0;
    case SH_ToolTipLabel_Opacity:
        return 255;
    case SH_ScrollBar_LeftClickAbsolutePosition:
        return 0;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returned);
    }
}

QSize VardaStyle::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &contents,
                                   const QWidget *widget) const
{
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    if (type == CT_PushButton && button)
        return buttonSize(*button, widget);
    if (type == CT_LineEdit && isFramedField(option, widget))
        return {contents.width() + 2 * fieldPadding, qMax(theme::controlHeight, option->fontMetrics.height() + 16)};
    QSize size = QProxyStyle::sizeFromContents(type, option, contents, widget);
    if (type == CT_ComboBox)
        size.setHeight(qMax(size.height(), theme::controlHeight));
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (type == CT_MenuItem && item && item->menuItemType != QStyleOptionMenuItem::Separator)
        size = {size.width() + menuMargin * 2, qMax(size.height(), menuItemHeight)};
    return size;
}

/// For Qt's own file dialog, which is shown if the desktop has none: Qt's icons are shaded pictures in many colours.
QIcon VardaStyle::standardIcon(StandardPixmap standard, const QStyleOption *option, const QWidget *widget) const
{
    switch (standard) {
    case SP_ArrowBack:
    case SP_FileDialogBack:
        return icon(Icon::Back);
    case SP_ArrowForward:
        return icon(Icon::Forward);
    case SP_FileDialogToParent:
        return icon(Icon::Up);
    case SP_FileDialogNewFolder:
        return icon(Icon::NewFolder);
    case SP_FileDialogListView:
        return icon(Icon::List);
    case SP_FileDialogDetailedView:
        return icon(Icon::Details);
    case SP_DirIcon:
    case SP_DirHomeIcon:
    case SP_DirOpenIcon:
    case SP_DirLinkIcon:
        return icon(Icon::Folder);
    case SP_FileIcon:
    case SP_FileLinkIcon:
        return icon(Icon::Document);
    case SP_ComputerIcon:
    case SP_DriveHDIcon:
        return icon(Icon::Desktop);
    default:
        return QProxyStyle::standardIcon(standard, option, widget);
    }
}

QRect VardaStyle::subElementRect(SubElement element, const QStyleOption *option, const QWidget *widget) const
{
    if (element == SE_LineEditContents && isFramedField(option, widget))
        return option->rect.adjusted(fieldPadding, 0, -fieldPadding, 0);
    // Layouts line a text up by its letters; its focus ring reaches into the space around them.
    if (element == SE_FrameLayoutItem && qobject_cast<const TextBlock *>(widget))
        return option->rect.marginsRemoved(QMargins() + TextBlock::inset);
    return QProxyStyle::subElementRect(element, option, widget);
}

QRect VardaStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                                 const QWidget *widget) const
{
    const auto *slider = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control != CC_ScrollBar || !slider)
        return QProxyStyle::subControlRect(control, option, part, widget);

    // No arrows: the groove is the whole bar.
    const bool horizontal = slider->orientation == Qt::Horizontal;
    const int length = horizontal ? slider->rect.width() : slider->rect.height();
    const qint64 range = qint64(slider->maximum) - slider->minimum;
    int thumb = length;
    if (range > 0) {
        const qint64 share = qint64(slider->pageStep) * length / (range + slider->pageStep);
        thumb = qBound(qMin(minScrollThumb, length), static_cast<int>(share), length);
    }
    const int start = sliderPositionFromValue(slider->minimum, slider->maximum, slider->sliderPosition, length - thumb,
                                              slider->upsideDown);
    const auto along = [&](int from, int size) {
        return horizontal ? QRect(from, 0, size, slider->rect.height()) : QRect(0, from, slider->rect.width(), size);
    };
    switch (part) {
    case SC_ScrollBarGroove:
        return along(0, length);
    case SC_ScrollBarSlider:
        return along(start, thumb);
    case SC_ScrollBarSubPage:
        return along(0, start);
    case SC_ScrollBarAddPage:
        return along(start + thumb, length - start - thumb);
    default:
        return {};
    }
}

void VardaStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                               const QWidget *widget) const
{
    if (element == PE_PanelMenu || element == PE_PanelTipLabel) {
        painter->fillRect(option->rect, theme::popupBackground);
        paintRounded(*painter, option->rect, 0, Qt::transparent, theme::popupLine);
        return;
    }
    if (element == PE_FrameMenu)
        return;
    const bool focused = option->state.testFlag(State_HasFocus);
    if ((element == PE_PanelLineEdit || element == PE_FrameLineEdit) && isFramedField(option, widget)) {
        paintRounded(*painter, option->rect, theme::controlRadius, theme::fieldBackground,
                     focused ? theme::accent : theme::fieldLine, focused ? theme::focusRing : 1.0);
        return;
    }
    if (element == PE_PanelLineEdit && qobject_cast<const QLineEdit *>(widget))
        return; // a line edit inside a combination box: the box draws the frame
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void VardaStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                             const QWidget *widget) const
{
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    if (element == CE_PushButton && button) {
        paintButton(*button, *painter, widget);
        return;
    }
    if (element == CE_ShapedFrame && qobject_cast<const QPlainTextEdit *>(widget)) {
        const bool focused = showsFocus(*widget);
        paintRounded(*painter, option->rect, theme::rowRadius, theme::consoleBackground,
                     focused ? theme::accent : theme::hairline, focused ? theme::focusRing : 1.0);
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void VardaStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                                    const QWidget *widget) const
{
    const auto *slider = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control == CC_ScrollBar && slider)
        drawScrollBar(*slider, *painter);
    else
        QProxyStyle::drawComplexControl(control, option, painter, widget);
}

void VardaStyle::drawScrollBar(const QStyleOptionSlider &option, QPainter &painter) const
{
    if (option.maximum <= option.minimum)
        return;
    const bool active = option.state.testFlag(State_MouseOver) || option.state.testFlag(State_Sunken);
    const QRectF thumb = subControlRect(CC_ScrollBar, &option, SC_ScrollBarSlider, nullptr);
    const QRectF inner = thumb.adjusted(2, 2, -2, -2);
    paintRounded(painter, inner, qMin(inner.width(), inner.height()) / 2,
                 active ? theme::scrollThumbActive : theme::scrollThumb, Qt::transparent);
}

} // namespace varda
