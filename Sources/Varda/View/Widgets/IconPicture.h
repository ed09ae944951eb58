// IconPicture: an icon's drawing as numbers. CompileIcons.cpp writes them from the SVG files in Icons/ when the program
// is built: the program reads no SVG, and loads no library that does.
#pragma once

#include <QRgb>

#include <span>

namespace varda {

/// One step of an outline, to a point in the icon's own coordinates.
struct IconPoint
{
    enum class Kind : unsigned char {
        Move, ///< begins a subpath
        Line,
        Curve, ///< a Bézier curve: two control points and its end follow each other as three of these
    };

    Kind kind;
    float x;
    float y;
};

/// An outline that is filled by the odd-even rule, or drawn as a line with round ends and joins.
struct IconShape
{
    std::span<const IconPoint> outline;
    float width;       ///< of the line; 0 for a shape that is filled
    QRgb topColour;    ///< not premultiplied, as is the other
    QRgb bottomColour; ///< another than the first for a gradient
    float top;         ///< where a gradient begins
    float bottom;      ///< where it ends
};

struct IconPicture
{
    float extent; ///< the width and height of the coordinates
    std::span<const IconShape> shapes;
};

} // namespace varda
