// Icon: the window's line icons, in the colour of the text that they stand beside.
#pragma once

#include <QColor>
#include <QIcon>
#include <QRectF>

class QPainter;

namespace varda {

/// What an icon means. Each has an SVG file in Icons/, which CompileIcons.cpp turns into numbers: all but the last on a
/// grid of 24 by 24 with strokes of 1.75.
enum class Icon {
    Product, ///< a phone that sends and receives
    Phone,
    Desktop, ///< an emulator
    Refresh,
    Wifi,
    Shield,  ///< a shield with a tick
    Check,   ///< a filled circle with a tick: ready
    Warning, ///< a filled triangle: not ready
    Box,     ///< a build to deploy
    Windows, ///< a window over a window: the live phone
    Play,    ///< an app in its window
    Camera,
    Terminal,
    Menu,
    Install, ///< an arrow into a phone
    Stop,
    Record,
    Export, ///< an arrow out of a tray
    Drop,   ///< an arrow into a tray
    File,   ///< the chosen build
    Back,
    Forward,
    Up,
    Down,
    Folder,
    NewFolder,
    List,
    Details,
    Document,
    Close,
    Find,  ///< a lens
    Varda, ///< the program's own, in colours
};

/// Draws `icon` into the square `target` in `colour`, crisp at the painter's own scale.
void paintIcon(QPainter &painter, Icon icon, const QRectF &target, const QColor &colour);

/// `icon` for a button or a menu, in the text colour of the palette; the style tints it anew for each state.
QIcon icon(Icon icon);

/// The program's own icon, in colours.
QIcon applicationIcon();

} // namespace varda
