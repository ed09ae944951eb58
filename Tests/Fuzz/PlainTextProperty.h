// PlainTextProperty: what the window shows of a text from outside holds no control character, no line end and nothing
// that reorders the words beside it; anything else is shown as it is. Which characters those are, ICU says.
#pragma once

#include "Fuzz.h"

#include "Varda/View/Widgets/PlainText.h"

#include <unicode/uchar.h>

#include <algorithm>

namespace varda::fuzz {

using namespace Qt::StringLiterals;

inline bool isHidden(QChar c)
{
    const auto code = static_cast<UChar32>(c.unicode());
    const auto type = u_charType(code);
    return type == U_CONTROL_CHAR || type == U_LINE_SEPARATOR || type == U_PARAGRAPH_SEPARATOR ||
           u_hasBinaryProperty(code, UCHAR_BIDI_CONTROL) != 0;
}

/// What stands for a hidden character: one of Unicode's control pictures, or its number.
inline QString standIn(QChar c)
{
    const char32_t picture = c == u'\x7F' ? U'\u2421' : 0x2400 + c.unicode();
    if (c <= u'\x1F' || c == u'\x7F')
        return QString(QChar(picture));
    return u"[U+"_s + QString::number(c.unicode(), 16).rightJustified(4, u'0').toUpper() + u']';
}

inline QString referenceLine(const QString &text)
{
    QString line;
    for (const QChar c : text)
        line += isHidden(c) ? standIn(c) : QString(c);
    return line;
}

/// Several lines as `visibleLine` shows each of them, with tabs and line ends between them.
inline QString lineByLine(const QString &text)
{
    QString result;
    QString line;
    for (const QChar c : text) {
        if (c == u'\n' || c == u'\t' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator) {
            result += visibleLine(line) + c;
            line.clear();
        } else {
            line += c;
        }
    }
    return result + visibleLine(line);
}

/// Throws unless `input` is shown as promised, in one line and in several.
inline void requirePlainText(const QString &input)
{
    const QString line = visibleLine(input);
    require(line == referenceLine(input), "what is hidden is shown by what stands for it, anything else as it is");
    require(std::none_of(line.begin(), line.end(), isHidden), "nothing hidden is left in a line");
    require(visibleLine(line) == line, "what is visible stays");

    QString lines = input;
    lines.replace(u"\r\n"_s, u"\n"_s);
    require(visibleLines(input) == lineByLine(lines), "several lines are shown as each of them is");
}

} // namespace varda::fuzz
