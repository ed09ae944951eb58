// Painting: antialiased, with outlines that stay inside their shape. Qt has other threads fill what has a hundred spans
// or more, as every large rounded shape does, and waits for them, which takes longer than to fill it at once. So only
// the corners are painted as such, a few rows at a time, and kept; the rest are rectangles of whole pixels.
#include "Varda/View/Widgets/Painting.h"

#include <QPainter>
#include <QPixmapCache>

#include <cmath>
#include <optional>

namespace varda {

namespace {

using namespace Qt::StringLiterals;

// So many rows of a corner and of a rectangle have less than a hundred spans, on a screen of twice the scale, too.
constexpr int cornerRows = 8;
constexpr int rectRows = 32;

struct Look
{
    double radius = 0;
    QColor fill;
    QColor line;
    double width = 0;

    Look scaled(int scale) const { return {radius * scale, fill, line, width * scale}; }
};

void paintPath(QPainter &painter, const QRectF &rect, const Look &look)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.fill);
    painter.drawRoundedRect(rect, look.radius, look.radius);
    if (look.width > 0) {
        const double inset = look.width / 2;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(look.line, look.width));
        painter.drawRoundedRect(rect.adjusted(inset, inset, -inset, -inset), look.radius - inset, look.radius - inset);
    }
}

/// The four corners of a shape, `side` large each, without anything between them. All four are one, mirrored.
QPixmap corners(int side, int scale, const Look &look)
{
    const QString key = u"varda-corners/"_s + QString::number(scale) + u'/' + QString::number(look.radius) + u'/' +
                        look.fill.name(QColor::HexArgb) + u'/' + look.line.name(QColor::HexArgb) + u'/' +
                        QString::number(look.width);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    const int pixels = side * scale;
    QImage corner(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    corner.fill(Qt::transparent);
    QPainter painter(&corner);
    for (int y = 0; y < pixels; y += cornerRows) {
        painter.setClipRect(0, y, pixels, cornerRows);
        paintPath(painter, QRectF(0, 0, 2 * pixels, 2 * pixels), look.scaled(scale));
    }
    painter.end();
    pixmap = QPixmap(2 * pixels, 2 * pixels);
    pixmap.fill(Qt::transparent);
    painter.begin(&pixmap);
    for (const bool right : {false, true}) {
        for (const bool bottom : {false, true}) {
            painter.setTransform(
                {right ? -1.0 : 1.0, 0, 0, bottom ? -1.0 : 1.0, right ? 2.0 * pixels : 0, bottom ? 2.0 * pixels : 0});
            painter.drawImage(0, 0, corner);
        }
    }
    painter.end();
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

void paintCorners(QPainter &painter, const QRect &rect, int side, int scale, const Look &look)
{
    if (side == 0)
        return;
    const QPixmap pixmap = corners(side, scale, look);
    const int pixels = side * scale;
    for (const bool right : {false, true}) {
        for (const bool bottom : {false, true}) {
            const QPoint place(right ? rect.x() + rect.width() - side : rect.x(),
                               bottom ? rect.y() + rect.height() - side : rect.y());
            const QPoint source(right ? pixels : 0, bottom ? pixels : 0);
            painter.drawPixmap(QRect(place, QSize(side, side)), pixmap, QRect(source, QSize(pixels, pixels)));
        }
    }
}

/// What lies between the corners, and the four straight parts of the line on it.
void paintStraightParts(QPainter &painter, const QRect &rect, int side, const Look &look)
{
    const auto fill = [&](int left, int top, int width, int height, const QColor &colour) {
        fillRows(painter, QRect(rect.x() + left, rect.y() + top, width, height), colour);
    };
    const int across = rect.width() - 2 * side;
    const int down = rect.height() - 2 * side;
    const int line = static_cast<int>(look.width);
    fill(side, 0, across, side, look.fill);
    fill(0, side, rect.width(), down, look.fill);
    fill(side, side + down, across, side, look.fill);
    fill(side, 0, across, line, look.line);
    fill(side, rect.height() - line, across, line, look.line);
    fill(0, side, line, down, look.line);
    fill(rect.width() - line, side, line, down, look.line);
}

/// By how much `painter` enlarges, if it leaves whole pixels whole.
std::optional<int> wholeScale(const QPainter &painter)
{
    const QTransform &transform = painter.deviceTransform();
    const auto whole = [](double value) { return value == std::floor(value); };
    if (transform.type() > QTransform::TxScale || transform.m11() != transform.m22() || transform.m11() < 1 ||
        !whole(transform.m11()) || !whole(transform.dx()) || !whole(transform.dy()))
        return std::nullopt;
    return static_cast<int>(transform.m11());
}

} // namespace

void fillRows(QPainter &painter, const QRect &rect, const QColor &colour)
{
    for (int y = rect.y(); y < rect.y() + rect.height(); y += rectRows)
        painter.fillRect(rect & QRect(rect.x(), y, rect.width(), rectRows), colour);
}

void paintRounded(QPainter &painter, const QRectF &shape, double radius, const QColor &fill, const QColor &line,
                  double width)
{
    const Look look{radius, fill, line, line.alpha() > 0 ? width : 0};
    const std::optional<int> scale = wholeScale(painter);
    const QRect rect = shape.toRect();
    const int thickness = static_cast<int>(look.width);
    const int side = qMax(static_cast<int>(std::ceil(radius)), thickness);
    painter.save();
    if (scale && rect == shape && thickness == look.width && 2 * side <= qMin(rect.width(), rect.height())) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        paintStraightParts(painter, rect, side, look);
        paintCorners(painter, rect, side, *scale, look);
    } else {
        paintPath(painter, shape, look);
    }
    painter.restore();
}

} // namespace varda
