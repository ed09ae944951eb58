// Painting: shapes that several widgets draw.
#pragma once

#include <QColor>
#include <QRect>

class QPainter;

namespace varda {

/// Fills `rect` with `colour`, a few rows at a time.
void fillRows(QPainter &painter, const QRect &rect, const QColor &colour);

/// Fills `shape` with `fill` and lines its inside with `line`, which may be transparent, `width` wide.
void paintRounded(QPainter &painter, const QRectF &shape, double radius, const QColor &fill, const QColor &line,
                  double width = 1.0);

} // namespace varda
