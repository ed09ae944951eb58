// Icon: each icon is rendered once for each size and colour and kept in the pixmap cache.
#include "Varda/View/Widgets/Icon.h"

#include "Varda/View/Widgets/Theme.h"

#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <cmath>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

/// The name of the icon's file. Without a default, so that the compiler notices an icon without a name.
QLatin1StringView nameOf(Icon icon)
{
    switch (icon) {
    case Icon::Product:
        return "product"_L1;
    case Icon::Phone:
        return "phone"_L1;
    case Icon::Desktop:
        return "desktop"_L1;
    case Icon::Refresh:
        return "refresh"_L1;
    case Icon::Wifi:
        return "wifi"_L1;
    case Icon::Shield:
        return "shield"_L1;
    case Icon::Check:
        return "check"_L1;
    case Icon::Warning:
        return "warning"_L1;
    case Icon::Box:
        return "box"_L1;
    case Icon::Windows:
        return "windows"_L1;
    case Icon::Play:
        return "play"_L1;
    case Icon::Camera:
        return "camera"_L1;
    case Icon::Terminal:
        return "terminal"_L1;
    case Icon::Menu:
        return "menu"_L1;
    case Icon::Drop:
        return "drop"_L1;
    case Icon::File:
        return "file"_L1;
    case Icon::Back:
        return "back"_L1;
    case Icon::Forward:
        return "forward"_L1;
    case Icon::Up:
        return "up"_L1;
    case Icon::Folder:
        return "folder"_L1;
    case Icon::NewFolder:
        return "new-folder"_L1;
    case Icon::List:
        return "list"_L1;
    case Icon::Details:
        return "details"_L1;
    case Icon::Document:
        return "document"_L1;
    case Icon::Install:
        return "install"_L1;
    case Icon::Stop:
        return "stop"_L1;
    case Icon::Record:
        return "record"_L1;
    case Icon::Export:
        return "export"_L1;
    case Icon::Down:
        return "down"_L1;
    case Icon::Close:
        return "close"_L1;
    case Icon::Find:
        return "find"_L1;
    }
    return {};
}

QString resource(QLatin1StringView name)
{
    return u":/varda/icons/"_s + name + u".svg"_s;
}

/// `icon` as `pixels` by `pixels` device pixels of `colour`.
QPixmap tinted(Icon icon, int pixels, const QColor &colour)
{
    const QLatin1StringView name = nameOf(icon);
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
    for (const int size : {16, 24, 32, 48, 64, 128}) {
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
