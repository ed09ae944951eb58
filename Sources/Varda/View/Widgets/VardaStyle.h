// VardaStyle: how controls look. Fusion, so that the window is the same on every desktop, with buttons, text fields,
// scroll bars and the console's frame drawn from the theme.
#pragma once

#include <QProxyStyle>

class QStyleOptionSlider;

namespace varda {

class VardaStyle final : public QProxyStyle
{
    Q_OBJECT

public:
    VardaStyle();

    /// Dresses the application: this style, the theme's palette and its body font, whatever the desktop prefers.
    static void install();

    /// Whether `widget` has the focus and shows it: after a key, but not after a click, which needs no ring to say
    /// where it went.
    static bool showsFocus(const QWidget &widget);

    /// Follows which of keyboard and pointer was used last.
    bool eventFilter(QObject *watched, QEvent *event) override;

    using QProxyStyle::polish;
    void polish(QPalette &palette) override;
    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returned) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &contents,
                           const QWidget *widget) const override;
    QIcon standardIcon(StandardPixmap standard, const QStyleOption *option, const QWidget *widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption *option, const QWidget *widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl part,
                         const QWidget *widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                            const QWidget *widget) const override;

private:
    void drawScrollBar(const QStyleOptionSlider &option, QPainter &painter) const;

    bool m_keyboardUsedLast = false;
};

} // namespace varda
