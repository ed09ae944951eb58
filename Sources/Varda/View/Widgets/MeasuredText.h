// MeasuredText: the sizes of one of the program's own texts.
#pragma once

#include <QHash>
#include <QTextLayout>

namespace varda {

/// A plain text that is shaped no more often than its sizes need: what Qt measures as a string, it shapes each time.
class MeasuredText
{
public:
    /// What was measured is kept if both are what they were.
    void set(const QString &text, const QFont &font);

    /// As one line.
    QSize size();
    /// The height of the lines if none is wider than `width` without need.
    int heightForWidth(int width);

private:
    void fit(int lineWidth);

    QTextLayout m_layout;
    int m_lineWidth = -1; ///< for which it is laid out; -1 if it is not
    double m_width = 0;   ///< of the longest line
    double m_height = 0;
    QHash<int, int> m_heights; ///< by width
};

} // namespace varda
