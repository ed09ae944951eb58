// Screen: everything is laid out anew for each picture.
#include "Device/Screen.h"

#include "Device/Device.h"
#include "Device/PixelFont.h"

#include <QPainter>
#include <QTime>

#include <cmath>
#include <numbers>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

// The layout is for a screen of 720 pixels in width and grows with it.
constexpr int designWidth = 720;
constexpr int framesPerTurn = 60;

const QColor backdrop(24, 32, 48);
const QColor appBackdrop(238, 240, 245);
const QColor accent(66, 133, 244);
const QColor bright(245, 247, 250);
const QColor dark(30, 34, 42);
const QColor dot(230, 60, 60);

/// A value that runs from 0 to `range` and back as `step` grows.
int bounce(qint64 step, qint64 range)
{
    const qint64 position = step % (2 * qMax<qint64>(1, range));
    return static_cast<int>(position < range ? position : 2 * range - position);
}

class ScreenPainter
{
public:
    ScreenPainter(QImage &image, const Device &device, qint64 frame)
        : m_painter(&image)
        , m_device(device)
        , m_frame(frame)
        , m_width(image.width())
        , m_height(image.height())
    {
    }

    void paint()
    {
        const bool home = m_device.foreground().isEmpty();
        m_painter.fillRect(0, 0, m_width, m_height, home ? backdrop : appBackdrop);
        paintStatusBar();
        paintTitle(home);
        paintClock(home ? bright : dark);
        paintSquare();
        paintWireless();
        paintTyped();
        paintTouch();
    }

private:
    int scaled(int length) const { return qMax(1, length * m_width / designWidth); }

    void text(int left, int top, const QString &words, int scale, const QColor &colour)
    {
        drawPixelText(m_painter, {left, top}, words, scaled(scale), colour);
    }

    void paintStatusBar()
    {
        m_painter.fillRect(0, 0, m_width, scaled(56), dark);
        text(scaled(24), scaled(16), QTime::currentTime().toString(u"HH:mm"_s), 3, bright);
        const QString battery = u"87%"_s;
        text(m_width - scaled(24) - pixelTextWidth(battery, scaled(3)), scaled(16), battery, 3, bright);
    }

    void paintTitle(bool home)
    {
        if (!home)
            m_painter.fillRect(0, scaled(56), m_width, scaled(120), accent);
        // A package name may be longer than the screen is wide: its end tells apps apart.
        const qsizetype fitting = m_width / pixelTextWidth(u"X"_s, scaled(4)) - 2;
        const QString title = home ? m_device.model() : m_device.foreground().right(fitting);
        text(scaled(32), scaled(100), title, 4, bright);
    }

    void paintWireless()
    {
        const WirelessScreen &wireless = m_device.wireless();
        if (wireless.connection.isEmpty())
            return;
        const bool pairing = !wireless.code.isEmpty();
        m_painter.fillRect(scaled(24), scaled(192), m_width - scaled(48), scaled(pairing ? 240 : 100), bright);
        text(scaled(40), scaled(206), u"WIRELESS DEBUGGING"_s, 3, accent);
        text(scaled(40), scaled(244), u"ADDRESS "_s + wireless.connection, 4, dark);
        if (!pairing)
            return;
        text(scaled(40), scaled(294), u"PAIRING "_s + wireless.pairing, 4, dark);
        text(scaled(40), scaled(348), wireless.code, 8, dark);
    }

    void paintClock(const QColor &colour)
    {
        const QPoint centre(m_width / 2, m_height * 2 / 5);
        const int radius = m_width / 4;
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setPen(QPen(colour, scaled(8)));
        m_painter.setBrush(Qt::NoBrush);
        m_painter.drawEllipse(centre, radius, radius);
        const double angle = 2 * std::numbers::pi * static_cast<double>(m_frame % framesPerTurn) / framesPerTurn;
        const QPointF tip(std::sin(angle) * radius * 0.85, -std::cos(angle) * radius * 0.85);
        m_painter.setPen(QPen(accent, scaled(10)));
        m_painter.drawLine(QPointF(centre), QPointF(centre) + tip);
        m_painter.setRenderHint(QPainter::Antialiasing, false);
    }

    void paintSquare()
    {
        const int side = scaled(96);
        const int left = bounce(m_frame * scaled(9), m_width - side);
        m_painter.fillRect(left, m_height * 3 / 4, side, side, accent);
        text(scaled(32), m_height - scaled(80), u"FRAME %1"_s.arg(m_frame, 6, 10, QLatin1Char('0')), 4,
             m_device.foreground().isEmpty() ? bright : dark);
    }

    void paintTyped()
    {
        if (m_device.typed().isEmpty())
            return;
        const qsizetype fitting = m_width / pixelTextWidth(u"X"_s, scaled(4)) - 2;
        m_painter.fillRect(scaled(24), m_height * 2 / 3 - scaled(20), m_width - scaled(48), scaled(68), Qt::white);
        text(scaled(40), m_height * 2 / 3, m_device.typed().right(fitting), 4, dark);
    }

    void paintTouch()
    {
        const Touch touch = m_device.touch();
        if (!touch.any)
            return;
        m_painter.setRenderHint(QPainter::Antialiasing);
        m_painter.setPen(QPen(Qt::white, scaled(6)));
        m_painter.setBrush(touch.down ? dot : dot.darker(130));
        const int radius = scaled(touch.down ? 44 : 32);
        m_painter.drawEllipse(touch.position, radius, radius);
    }

    QPainter m_painter;
    const Device &m_device;
    const qint64 m_frame;
    const int m_width;
    const int m_height;
};

} // namespace

QImage paintScreen(const Device &device, qint64 frame)
{
    QImage image(device.screen(), QImage::Format_RGB32);
    ScreenPainter(image, device, frame).paint();
    return image;
}

} // namespace varda::phone
