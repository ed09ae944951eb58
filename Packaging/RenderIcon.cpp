// Draws the program's icon, an SVG, as the PNG files of the icon theme's standard sizes:
//
//   render-icon ICON.svg hicolor-folder
//
// Qt draws the window's icon from the same file, so both look alike, and no other renderer is needed to build.
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

namespace {

// The sizes that the hicolor theme names for applications and that desktops ask for, in pixels.
constexpr int sizes[] = {16, 22, 24, 32, 48, 64, 128, 256, 512};

bool render(QSvgRenderer &icon, int size, const QString &path)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    icon.render(&painter);
    painter.end();
    return QDir().mkpath(QFileInfo(path).path()) && image.save(path, "PNG");
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 3) {
        std::fputs("usage: render-icon ICON.svg FOLDER\n", stderr);
        return 2;
    }
    QSvgRenderer icon(arguments.at(1));
    if (!icon.isValid()) {
        std::fprintf(stderr, "render-icon: %s is no SVG\n", qUtf8Printable(arguments.at(1)));
        return 1;
    }
    for (const int size : sizes) {
        const QString path = QStringLiteral("%1/%2x%2/apps/varda.png").arg(arguments.at(2)).arg(size);
        if (!render(icon, size, path)) {
            std::fprintf(stderr, "render-icon: cannot write %s\n", qUtf8Printable(path));
            return 1;
        }
    }
    return 0;
}
