// YuvPicture: integer arithmetic, one row after the other.
#include "Mirror/YuvPicture.h"

namespace varda::phone {

namespace {

// The factors of ITU-R BT.601, times 256.
char lumaOf(QRgb p)
{
    return static_cast<char>(((66 * qRed(p) + 129 * qGreen(p) + 25 * qBlue(p) + 128) >> 8) + 16);
}
char blueOf(QRgb p)
{
    return static_cast<char>(((-38 * qRed(p) - 74 * qGreen(p) + 112 * qBlue(p) + 128) >> 8) + 128);
}
char redOf(QRgb p)
{
    return static_cast<char>(((112 * qRed(p) - 94 * qGreen(p) - 18 * qBlue(p) + 128) >> 8) + 128);
}

} // namespace

YuvPicture::YuvPicture(const QImage &image)
    : luma(static_cast<qsizetype>(image.width()) * image.height(), Qt::Uninitialized)
    , blue(luma.size() / 4, Qt::Uninitialized)
    , red(luma.size() / 4, Qt::Uninitialized)
{
    const int width = image.width();
    char *nextLuma = luma.data();
    char *nextBlue = blue.data();
    char *nextRed = red.data();
    for (int row = 0; row < image.height(); ++row) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(row));
        for (int column = 0; column < width; ++column)
            *nextLuma++ = lumaOf(line[column]);
        for (int column = 0; row % 2 == 0 && column < width; column += 2) {
            *nextBlue++ = blueOf(line[column]);
            *nextRed++ = redOf(line[column]);
        }
    }
}

} // namespace varda::phone
