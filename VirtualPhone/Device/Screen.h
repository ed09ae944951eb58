// Screen: paints what the phone's screen shows. No font and no display are needed: text is drawn from a pixel font.
#pragma once

#include <QImage>

namespace varda::phone {

class Device;

/// The screen of `device` as picture number `frame` of a movie: a clock hand and a bouncing square move with the
/// number; the app in front, wireless debugging, the latest touch and the latest text typed come from the device.
/// Format RGB32.
QImage paintScreen(const Device &device, qint64 frame);

} // namespace varda::phone
