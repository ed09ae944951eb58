// Painting: shapes that several widgets draw.
#pragma once

#include <QColor>
#include <QRectF>

class QPainter;

namespace varda {

/// Fills `rect` with `fill` and lines its inside with `line`, which may be transparent, `width` wide.
void paintRounded(QPainter &painter, const QRectF &rect, double radius, const QColor &fill, const QColor &line,
                  double width = 1.0);

} // namespace varda
