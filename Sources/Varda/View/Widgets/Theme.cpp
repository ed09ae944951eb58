// Theme: choosing faces, and the palette built from the colours.
#include "Varda/View/Widgets/Theme.h"

#include <QFontDatabase>

namespace varda::theme {

namespace {

/// `preferred` if it is installed, else the desktop's face for `fallback`.
QString family(const QString &preferred, QFontDatabase::SystemFont fallback)
{
    return QFontDatabase::hasFamily(preferred) ? preferred : QFontDatabase::systemFont(fallback).family();
}

} // namespace

QFont font(int pixels, QFont::Weight weight)
{
    static const QString sans = family(QStringLiteral("Inter"), QFontDatabase::GeneralFont);
    QFont font(sans);
    font.setPixelSize(pixels);
    font.setWeight(weight);
    font.setStyleStrategy(pixels < title2Size ? QFont::PreferNoShaping : QFont::PreferDefault);
    return font;
}

QFont capitals(int pixels)
{
    QFont capitals = font(pixels, QFont::DemiBold);
    capitals.setLetterSpacing(QFont::PercentageSpacing, 104);
    return capitals;
}

QFont monospaced(int pixels)
{
    static const QString fixed = family(QStringLiteral("DejaVu Sans Mono"), QFontDatabase::FixedFont);
    QFont font(fixed);
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    font.setStyleStrategy(QFont::PreferNoShaping);
    font.setPixelSize(pixels);
    return font;
}

QFont relative(const QFont &base, int pixels, QFont::Weight weight)
{
    QFont font = base;
    font.setPixelSize(qRound(base.pixelSize() * pixels / static_cast<double>(bodySize)));
    font.setWeight(weight);
    return font;
}

QPalette palette()
{
    QPalette palette(text, popupBackground, white(0.2), QColor(8, 10, 16), QColor(60, 66, 82), text, mainBackground);
    palette.setColor(QPalette::Window, mainBackground);
    palette.setColor(QPalette::Base, fieldBackground);
    palette.setColor(QPalette::AlternateBase, mainBackground);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, attention);
    palette.setColor(QPalette::PlaceholderText, placeholderText);
    palette.setColor(QPalette::Highlight, selection);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::LinkVisited, accent);
    palette.setColor(QPalette::ToolTipBase, popupBackground);
    palette.setColor(QPalette::ToolTipText, text);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(QPalette::Disabled, role, disabledText);
    return palette;
}

} // namespace varda::theme
