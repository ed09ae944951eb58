// Painting: antialiased, with outlines that stay inside their shape.
#include "Varda/View/Widgets/Painting.h"

#include <QPainter>

namespace varda {

void paintRounded(QPainter &painter, const QRectF &rect, double radius, const QColor &fill, const QColor &line,
                  double width)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(rect, radius, radius);
    if (line.alpha() > 0) {
        const double inset = width / 2;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(line, width));
        painter.drawRoundedRect(rect.adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
    }
    painter.restore();
}

} // namespace varda
