// PlainText: hidden characters become pictures or numbers, and what goes into a tooltip is escaped.
#include "Varda/View/Widgets/PlainText.h"

#include <QWidget>

#include <algorithm>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype tipWidth = 72; // characters; longer lines are left to wrap

bool isBidiControl(QChar c)
{
    const char16_t u = c.unicode();
    return u == 0x061C || u == 0x200E || u == 0x200F || (u >= 0x202A && u <= 0x202E) || (u >= 0x2066 && u <= 0x2069);
}

bool isLineSeparator(QChar c)
{
    return c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

bool isHidden(QChar c)
{
    return c.category() == QChar::Other_Control || isLineSeparator(c) || isBidiControl(c);
}

QString visible(QChar c)
{
    const char16_t u = c.unicode();
    if (u < 0x20)
        return QChar(static_cast<char16_t>(0x2400 + u));
    if (u == 0x7F)
        return u"\u2421"_s;
    return u"[U+%1]"_s.arg(uint(u), 4, 16, QLatin1Char('0')).toUpper();
}

template <typename Keep>
QString replaced(const QString &text, Keep keep)
{
    if (std::none_of(text.begin(), text.end(), [&](QChar c) { return isHidden(c) && !keep(c); }))
        return text;
    QString result;
    result.reserve(text.size() + 16);
    for (const QChar c : text) {
        if (isHidden(c) && !keep(c))
            result += visible(c);
        else
            result += c;
    }
    return result;
}

} // namespace

QString visibleLine(const QString &text)
{
    return replaced(text, [](QChar) { return false; });
}

QString visibleLines(const QString &text)
{
    QString lines = text;
    lines.replace(u"\r\n"_s, u"\n"_s);
    return replaced(lines, [](QChar c) { return c == u'\n' || c == u'\t' || isLineSeparator(c); });
}

void setPlainToolTip(QWidget *widget, const QString &text)
{
    const QString plain = visibleLines(text);
    const QStringList lines = plain.split(u'\n');
    const bool fits =
        std::all_of(lines.begin(), lines.end(), [](const QString &line) { return line.size() <= tipWidth; });
    const QString space = fits ? u"pre"_s : u"pre-wrap"_s;
    const QString markUp =
        plain.isEmpty() ? QString()
                        : u"<div style=\"white-space: "_s + space + u"\">"_s + plain.toHtmlEscaped() + u"</div>"_s;
    if (widget->toolTip() == markUp)
        return;
    widget->setToolTip(markUp);
    widget->setAccessibleDescription(plain);
}

} // namespace varda
