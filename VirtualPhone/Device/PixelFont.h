// PixelFont: capital letters, digits and a little punctuation as 5 by 7 pixels, so that the phone can write on its
// screen in a program that has no fonts. Letters are capitalised; what the font lacks is drawn as a box.
#pragma once

#include <QColor>
#include <QPoint>
#include <QString>

class QPainter;

namespace varda::phone {

/// Draws `text` with its upper left corner at `position`; each pixel of the font is `scale` pixels wide and high.
void drawPixelText(QPainter &painter, QPoint position, const QString &text, int scale, const QColor &colour);

/// Width of `text` in pixels at that scale.
int pixelTextWidth(const QString &text, int scale);

} // namespace varda::phone
