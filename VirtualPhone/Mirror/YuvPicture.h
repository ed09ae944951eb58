// YuvPicture: a picture as encoders want it: one plane of brightness, and two of colour at half the resolution.
#pragma once

#include <QByteArray>
#include <QImage>

namespace varda::phone {

/// BT.601 with limited range, which players assume where a stream does not say.
struct YuvPicture
{
    /// `image` is in format RGB32 and has an even width and height. Colour is taken from every second pixel.
    explicit YuvPicture(const QImage &image);

    QByteArray luma;
    QByteArray blue;
    QByteArray red;
};

} // namespace varda::phone
