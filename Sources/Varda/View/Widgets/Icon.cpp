// Icon: each icon is rendered once for each size and colour and kept in the pixmap cache.
#include "Varda/View/Widgets/Icon.h"

#include "IconPictures.h"
#include "Varda/View/Widgets/Theme.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmapCache>

#include <cmath>
#include <cstddef>
#include <span>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

QPainterPath path(std::span<const IconPoint> outline)
{
    const auto point = [&](std::size_t index) { return QPointF(outline[index].x, outline[index].y); };
    QPainterPath path;
    for (std::size_t index = 0; index < outline.size(); ++index) {
        switch (outline[index].kind) {
        case IconPoint::Kind::Move:
            path.moveTo(point(index));
            break;
        case IconPoint::Kind::Line:
            path.lineTo(point(index));
            break;
        case IconPoint::Kind::Curve:
            path.cubicTo(point(index), point(index + 1), point(index + 2));
            index += 2;
            break;
        }
    }
    return path;
}

QBrush brush(const IconShape &shape)
{
    if (shape.topColour == shape.bottomColour)
        return QColor::fromRgba(shape.topColour);
    QLinearGradient gradient(0, shape.top, 0, shape.bottom);
    gradient.setColorAt(0, QColor::fromRgba(shape.topColour));
    gradient.setColorAt(1, QColor::fromRgba(shape.bottomColour));
    return gradient;
}

QPixmap drawn(const IconPicture &picture, int pixels)
{
    QPixmap pixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const double scale = pixels / static_cast<double>(picture.extent);
    painter.scale(scale, scale);
    for (const IconShape &shape : picture.shapes) {
        if (shape.width > 0)
            painter.strokePath(path(shape.outline),
                               {brush(shape), shape.width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin});
        else
            painter.fillPath(path(shape.outline), brush(shape));
    }
    return pixmap;
}

/// `icon` as `pixels` by `pixels` device pixels of `colour`.
QPixmap tinted(Icon icon, int pixels, const QColor &colour)
{
    const QString key = u"varda-icon/"_s + QString::number(qToUnderlying(icon)) + u'/' + QString::number(pixels) +
                        u'/' + colour.name(QColor::HexArgb);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = drawn(pictureOf(icon), pixels);
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), colour);
    painter.end();
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

class LineIconEngine final : public QIconEngine
{
public:
    explicit LineIconEngine(Icon shown)
        : m_icon(shown)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        paintIcon(*painter, m_icon, rect, mode == QIcon::Disabled ? theme::disabledText : theme::text);
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State) override
    {
        return tinted(m_icon, qMin(size.width(), size.height()),
                      mode == QIcon::Disabled ? theme::disabledText : theme::text);
    }

    QIconEngine *clone() const override { return new LineIconEngine(m_icon); }

private:
    const Icon m_icon;
};

/// Draws the icon when a window asks for it, and keeps no picture: the largest would be 64 KiB.
class ProgramIconEngine final : public QIconEngine
{
public:
    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        painter->drawPixmap(rect, pixmap(rect.size() * painter->device()->devicePixelRatio(), mode, state));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode, QIcon::State) override
    {
        return drawn(pictureOf(Icon::Varda), qMin(size.width(), size.height()));
    }

    /// What window managers are given to choose from.
    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override
    {
        return {{16, 16}, {24, 24}, {32, 32}, {48, 48}, {64, 64}, {128, 128}};
    }

    QIconEngine *clone() const override { return new ProgramIconEngine; }
};

} // namespace

void paintIcon(QPainter &painter, Icon icon, const QRectF &target, const QColor &colour)
{
    const double scale = painter.device()->devicePixelRatio();
    const int pixels = qMax(1, static_cast<int>(std::lround(target.width() * scale)));
    QPixmap pixmap = tinted(icon, pixels, colour);
    pixmap.setDevicePixelRatio(scale);
    // On whole device pixels, or the strokes blur.
    const QPointF corner(std::round(target.x() * scale) / scale, std::round(target.y() * scale) / scale);
    painter.drawPixmap(corner, pixmap);
}

QIcon icon(Icon icon)
{
    return QIcon(new LineIconEngine(icon));
}

QIcon applicationIcon()
{
    return QIcon(new ProgramIconEngine);
}

} // namespace varda
