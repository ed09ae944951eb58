// MeasuredText: lays the lines out as QPainter::drawText() does.
#include "Varda/View/Widgets/MeasuredText.h"

#include <QFontMetricsF>

#include <cmath>

namespace varda {

namespace {

constexpr int oneLine = 0x01000000;
constexpr qsizetype keptHeights = 8;

} // namespace

void MeasuredText::set(const QString &text, const QFont &font)
{
    if (text == m_layout.text() && font == m_layout.font())
        return;
    m_layout.setText(text);
    m_layout.setFont(font);
    m_layout.clearLayout();
    m_lineWidth = -1;
    m_heights.clear();
}

QSize MeasuredText::size()
{
    fit(oneLine);
    return {static_cast<int>(std::ceil(m_width)), static_cast<int>(std::ceil(m_height))};
}

int MeasuredText::heightForWidth(int width)
{
    if (const auto known = m_heights.constFind(width); known != m_heights.cend())
        return *known;
    if (m_heights.size() >= keptHeights)
        m_heights.clear();
    fit(width);
    return *m_heights.insert(width, static_cast<int>(std::ceil(m_height)));
}

/// Lays the text out in lines of `lineWidth`, unless it lies so already: one line that fits is the same for any width.
void MeasuredText::fit(int lineWidth)
{
    if (lineWidth == m_lineWidth || (m_layout.lineCount() == 1 && m_width <= lineWidth))
        return;
    m_lineWidth = lineWidth;
    const double leading = QFontMetricsF(m_layout.font()).leading();
    m_width = 0;
    m_height = -leading;
    m_layout.beginLayout();
    for (QTextLine line = m_layout.createLine(); line.isValid(); line = m_layout.createLine()) {
        line.setLineWidth(lineWidth);
        m_height = std::ceil(m_height + leading);
        line.setPosition(QPointF(0, m_height));
        m_height += line.height();
        m_width = qMax(m_width, line.naturalTextWidth());
    }
    m_layout.endLayout();
}

} // namespace varda
