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
};

} // namespace varda
