// Icon: rendering, tinting and caching.
#include "Varda/View/Widgets/Icon.h"

#include "Varda/View/Widgets/Theme.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <array>
#include <cmath>

namespace varda {
namespace {

using namespace Qt::StringLiterals;

constexpr std::array names{"product", "phone", "desktop", "refresh",    "wifi",   "shield",   "check",
                           "warning", "box",   "windows", "play",       "camera", "terminal", "menu",
                           "install", "stop",  "record",  "export",     "drop",   "file",     "back",
                           "forward", "up",    "folder",  "new-folder", "list",   "details",  "document"};

QString resource(QLatin1StringView name)
{
    return u":/varda/icons/"_s + name + u".svg"_s;
}

/// `icon` as `pixels` by `pixels` device pixels of `colour`.
QPixmap tinted(Icon icon, int pixels, const QColor &colour)
{
    const auto name = QLatin1StringView(names.at(static_cast<std::size_t>(icon)));
    const QString key = u"varda-icon/"_s + name + u'/' + QString::number(pixels) + u'/' + colour.name(QColor::HexArgb);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    pixmap = QPixmap(pixels, pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(resource(name)).render(&painter);
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
    QIcon icon;
    QSvgRenderer renderer(resource("varda"_L1));
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter);
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace varda
