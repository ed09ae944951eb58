// PixelFont: the glyphs, written out as pictures.
#include "Device/PixelFont.h"

#include <QPainter>

#include <algorithm>
#include <array>

namespace varda::phone {

namespace {

constexpr int glyphWidth = 5;
constexpr int glyphHeight = 7;
constexpr int advance = glyphWidth + 1;

using Rows = std::array<quint8, glyphHeight>;

struct Glyph
{
    char16_t character;
    Rows rows; // the highest of the five bits is the leftmost pixel
};

constexpr Rows box = {0b11111, 0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b11111};

// clang-format off
constexpr std::array glyphs = {
    Glyph{u'A', {0b01110, 0b10001, 0b10001, 0b11111, 0b10001, 0b10001, 0b10001}},
    Glyph{u'B', {0b11110, 0b10001, 0b10001, 0b11110, 0b10001, 0b10001, 0b11110}},
    Glyph{u'C', {0b01111, 0b10000, 0b10000, 0b10000, 0b10000, 0b10000, 0b01111}},
    Glyph{u'D', {0b11110, 0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b11110}},
    Glyph{u'E', {0b11111, 0b10000, 0b10000, 0b11110, 0b10000, 0b10000, 0b11111}},
    Glyph{u'F', {0b11111, 0b10000, 0b10000, 0b11110, 0b10000, 0b10000, 0b10000}},
    Glyph{u'G', {0b01111, 0b10000, 0b10000, 0b10011, 0b10001, 0b10001, 0b01111}},
    Glyph{u'H', {0b10001, 0b10001, 0b10001, 0b11111, 0b10001, 0b10001, 0b10001}},
    Glyph{u'I', {0b01110, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100, 0b01110}},
    Glyph{u'J', {0b00111, 0b00001, 0b00001, 0b00001, 0b00001, 0b10001, 0b01110}},
    Glyph{u'K', {0b10001, 0b10010, 0b10100, 0b11000, 0b10100, 0b10010, 0b10001}},
    Glyph{u'L', {0b10000, 0b10000, 0b10000, 0b10000, 0b10000, 0b10000, 0b11111}},
    Glyph{u'M', {0b10001, 0b11011, 0b10101, 0b10101, 0b10001, 0b10001, 0b10001}},
    Glyph{u'N', {0b10001, 0b11001, 0b10101, 0b10101, 0b10011, 0b10001, 0b10001}},
    Glyph{u'O', {0b01110, 0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b01110}},
    Glyph{u'P', {0b11110, 0b10001, 0b10001, 0b11110, 0b10000, 0b10000, 0b10000}},
    Glyph{u'Q', {0b01110, 0b10001, 0b10001, 0b10001, 0b10101, 0b10010, 0b01101}},
    Glyph{u'R', {0b11110, 0b10001, 0b10001, 0b11110, 0b10100, 0b10010, 0b10001}},
    Glyph{u'S', {0b01111, 0b10000, 0b10000, 0b01110, 0b00001, 0b00001, 0b11110}},
    Glyph{u'T', {0b11111, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100, 0b00100}},
    Glyph{u'U', {0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b01110}},
    Glyph{u'V', {0b10001, 0b10001, 0b10001, 0b10001, 0b10001, 0b01010, 0b00100}},
    Glyph{u'W', {0b10001, 0b10001, 0b10001, 0b10101, 0b10101, 0b11011, 0b10001}},
    Glyph{u'X', {0b10001, 0b10001, 0b01010, 0b00100, 0b01010, 0b10001, 0b10001}},
    Glyph{u'Y', {0b10001, 0b10001, 0b01010, 0b00100, 0b00100, 0b00100, 0b00100}},
    Glyph{u'Z', {0b11111, 0b00001, 0b00010, 0b00100, 0b01000, 0b10000, 0b11111}},
    Glyph{u'0', {0b01110, 0b10001, 0b10011, 0b10101, 0b11001, 0b10001, 0b01110}},
    Glyph{u'1', {0b00100, 0b01100, 0b00100, 0b00100, 0b00100, 0b00100, 0b01110}},
    Glyph{u'2', {0b01110, 0b10001, 0b00001, 0b00110, 0b01000, 0b10000, 0b11111}},
    Glyph{u'3', {0b11110, 0b00001, 0b00001, 0b01110, 0b00001, 0b00001, 0b11110}},
    Glyph{u'4', {0b10010, 0b10010, 0b10010, 0b11111, 0b00010, 0b00010, 0b00010}},
    Glyph{u'5', {0b11111, 0b10000, 0b11110, 0b00001, 0b00001, 0b10001, 0b01110}},
    Glyph{u'6', {0b01110, 0b10000, 0b10000, 0b11110, 0b10001, 0b10001, 0b01110}},
    Glyph{u'7', {0b11111, 0b00001, 0b00010, 0b00100, 0b00100, 0b01000, 0b01000}},
    Glyph{u'8', {0b01110, 0b10001, 0b10001, 0b01110, 0b10001, 0b10001, 0b01110}},
    Glyph{u'9', {0b01110, 0b10001, 0b10001, 0b01111, 0b00001, 0b00001, 0b01110}},
    Glyph{u'.', {0b00000, 0b00000, 0b00000, 0b00000, 0b00000, 0b01100, 0b01100}},
    Glyph{u':', {0b00000, 0b01100, 0b01100, 0b00000, 0b01100, 0b01100, 0b00000}},
    Glyph{u',', {0b00000, 0b00000, 0b00000, 0b00000, 0b00110, 0b00100, 0b01000}},
    Glyph{u'-', {0b00000, 0b00000, 0b00000, 0b11111, 0b00000, 0b00000, 0b00000}},
    Glyph{u'_', {0b00000, 0b00000, 0b00000, 0b00000, 0b00000, 0b00000, 0b11111}},
    Glyph{u'/', {0b00001, 0b00001, 0b00010, 0b00100, 0b01000, 0b10000, 0b10000}},
    Glyph{u'%', {0b11001, 0b11001, 0b00010, 0b00100, 0b01000, 0b10011, 0b10011}},
    Glyph{u'!', {0b00100, 0b00100, 0b00100, 0b00100, 0b00100, 0b00000, 0b00100}},
    Glyph{u'?', {0b01110, 0b10001, 0b00001, 0b00110, 0b00100, 0b00000, 0b00100}},
    Glyph{u'@', {0b01110, 0b10001, 0b10111, 0b10101, 0b10111, 0b10000, 0b01110}},
    Glyph{u'(', {0b00010, 0b00100, 0b01000, 0b01000, 0b01000, 0b00100, 0b00010}},
    Glyph{u')', {0b01000, 0b00100, 0b00010, 0b00010, 0b00010, 0b00100, 0b01000}},
};
// clang-format on

Rows rowsOf(QChar character)
{
    const char16_t wanted = character.toUpper().unicode();
    if (wanted == u' ')
        return {};
    const auto *found =
        std::find_if(glyphs.begin(), glyphs.end(), [&](const Glyph &g) { return g.character == wanted; });
    return found == glyphs.end() ? box : found->rows;
}

} // namespace

void drawPixelText(QPainter &painter, QPoint position, const QString &text, int scale, const QColor &colour)
{
    int left = position.x();
    for (const QChar character : text) {
        const Rows rows = rowsOf(character);
        for (int row = 0; row < glyphHeight; ++row) {
            for (int column = 0; column < glyphWidth; ++column) {
                if ((rows.at(static_cast<std::size_t>(row)) >> (glyphWidth - 1 - column) & 1) != 0)
                    painter.fillRect(left + column * scale, position.y() + row * scale, scale, scale, colour);
            }
        }
        left += advance * scale;
    }
}

int pixelTextWidth(const QString &text, int scale)
{
    return static_cast<int>(text.size()) * advance * scale;
}

} // namespace varda::phone
