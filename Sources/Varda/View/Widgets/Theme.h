// Theme: every colour, size and font of the window, and nothing that draws. Sizes are device-independent pixels.
#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

namespace varda::theme {

/// White with an opacity from 0 to 1: the surfaces and lines of a dark window are layers of white.
constexpr QColor white(double opacity)
{
    return {255, 255, 255, qRound(opacity * 255.0)};
}

/// `colour` with another opacity, from 0 to 1.
inline QColor faded(QColor colour, double opacity)
{
    return {colour.red(), colour.green(), colour.blue(), qRound(opacity * 255.0)};
}

// Colours. Text on any of the backgrounds below has a contrast of 4.5 : 1 or more (WCAG 2.1, level AA), but for the
// text of a disabled control.
inline constexpr QColor accent{66, 217, 207};
inline constexpr QColor attention{255, 165, 76};
inline constexpr QColor sideBackground{14, 19, 31};
inline constexpr QColor mainBackground{19, 24, 38};
inline constexpr QColor consoleBackground{9, 12, 20};
inline constexpr QColor fieldBackground{11, 15, 25};
inline constexpr QColor popupBackground{30, 37, 55};
inline constexpr QColor popupLine = white(0.14);
inline constexpr QColor text = white(0.94);
inline constexpr QColor secondaryText = white(0.64);
inline constexpr QColor placeholderText = white(0.55);
inline constexpr QColor disabledText = white(0.36);
inline constexpr QColor consoleText = white(0.85);
inline constexpr QColor textOnAccent{4, 30, 32};
inline constexpr QColor selection{24, 96, 104};
inline constexpr QColor panelFill = white(0.035);
inline constexpr QColor hairline = white(0.09);
inline constexpr QColor controlFill = white(0.08);
inline constexpr QColor controlHover = white(0.13);
inline constexpr QColor controlPressed = white(0.05);
inline constexpr QColor disabledFill = white(0.04);
inline constexpr QColor accentHover{104, 231, 222};
inline constexpr QColor accentPressed{48, 178, 170};
inline constexpr QColor rowFill = white(0.03);
inline constexpr QColor rowHover = white(0.07);
inline const QColor matchFill = faded(attention, 0.20);
inline const QColor matchLine = faded(attention, 0.60); // 4.1 : 1 on the console
inline const QColor hintFill = faded(accent, 0.10);
inline const QColor hintLine = faded(accent, 0.28);
inline const QColor rowSelected = faded(accent, 0.15);
inline const QColor rowSelectedHover = faded(accent, 0.22);

// Lines that show where a control is, what it is, or in which state it is, have a contrast of 3 : 1 or more (WCAG 2.1,
// 1.4.11). Behind each, the least of its contrasts: a control's to the ground around it, the others' to what they stand
// on.
inline constexpr QColor fieldLine = white(0.40);         // 3.2 : 1 on a panel
inline constexpr QColor controlLine = white(0.32);       // 3.2 : 1 on a panel, while pressed
inline constexpr QColor dropLine = white(0.36);          // 3.2 : 1 in its zone
inline constexpr QColor scrollThumb = white(0.36);       // 3.3 : 1 on the console
inline constexpr QColor scrollThumbActive = white(0.52); // 5.6 : 1 in the main column
inline constexpr QColor selectionMark = accent;          // 6.6 : 1 on a selected row under the pointer

// Text sizes.
inline constexpr int tagSize = 9;
inline constexpr int captionSize = 10;
inline constexpr int consoleSize = 11;
inline constexpr int bodySize = 13;
inline constexpr int title2Size = 17;
inline constexpr int largeTitleSize = 26;
inline constexpr int heroSize = 32;

// Window and rhythm.
inline constexpr int windowWidth = 1180;
inline constexpr int windowHeight = 820;
inline constexpr int minimumWindowWidth = 980;
inline constexpr int minimumWindowHeight = 700;
inline constexpr int sideWidth = 272;
inline constexpr int sidePadding = 22;
inline constexpr int sideSpacing = 20;
inline constexpr int mainPadding = 30;
inline constexpr int mainSpacing = 22;
inline constexpr int panelPadding = 20;
inline constexpr int panelSpacing = 15;
inline constexpr int panelRadius = 16;
inline constexpr int rowRadius = 12;
inline constexpr int controlRadius = 9;
inline constexpr int controlHeight = 36;
inline constexpr int compactControlHeight = 28;
inline constexpr int controlPadding = 16;
inline constexpr int controlSpacing = 10;
inline constexpr int consoleHeight = 220;
inline constexpr int scrollBarExtent = 10;
inline constexpr int statusDot = 7;
inline constexpr double focusRing = 2.0;

/// The window's sans-serif face ("Inter" if installed, else the desktop's own) at `pixels`. Titles are shaped. Smaller
/// text is set letter by letter, without kerning, ligatures and contextual forms: a fine sans shows "64 x86" from
/// outside with a multiplication sign otherwise, kerning hardly shows at that size, and shaping was a seventh of the
/// start.
QFont font(int pixels, QFont::Weight weight = QFont::Normal);
/// The bold face of headings in capitals, which stand a little apart.
QFont capitals(int pixels);
/// The fixed-pitch face at `pixels`, set letter by letter.
QFont monospaced(int pixels);
/// `base` brought from body size to `pixels`, so that a widget that paints several sizes follows its own font.
QFont relative(const QFont &base, int pixels, QFont::Weight weight = QFont::Normal);

/// The dark palette that all widgets start from, file dialogs and menus included.
QPalette palette();

} // namespace varda::theme
