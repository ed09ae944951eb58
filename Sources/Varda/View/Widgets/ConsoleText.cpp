// ConsoleText: where a snapshot goes on from the one before, only the lines that differ are touched.
#include "Varda/View/Widgets/ConsoleText.h"

#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Painting.h"
#include "Varda/View/Widgets/Theme.h"

#include <QGlyphRun>
#include <QMouseEvent>
#include <QPainter>
#include <QRawFont>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStringMatcher>
#include <QTextCursor>
#include <QTextLayout>

#include <algorithm>

namespace varda {

namespace {

using namespace Qt::StringLiterals;

constexpr int longLine = 500;               // characters
constexpr qsizetype lengthInSight = 20'000; // characters at the end of a log, about
constexpr double markRadius = 2;

/// `text` with line ends of one character, as the document counts them.
QString withShortLineEnds(QString text)
{
    return text.replace("\r\n"_L1, "\n"_L1);
}

/// How many characters to drop from the start of `former`, whole lines only, so that the rest begins `next`. Absent
/// where the two have nothing in common.
std::optional<qsizetype> overlap(const QString &former, const QString &next)
{
    for (qsizetype start = 0; start < former.size();) {
        if (QStringView(next).startsWith(QStringView(former).sliced(start)))
            return start;
        const qsizetype lineEnd = former.indexOf(u'\n', start);
        if (lineEnd < 0)
            break;
        start = lineEnd + 1;
    }
    return std::nullopt;
}

/// In Unicode's blocks from the radicals to the ideographs, or a Hangul syllable.
bool isEastAsian(QChar letter)
{
    const char16_t code = letter.unicode();
    return (code >= 0x2E80 && code < 0xA000) || (code >= 0xAC00 && code < 0xD7B0);
}

/// The family of the font in which Qt shows `letter` in a text in `font`.
QString fallbackFamily(const QFont &font, QChar letter)
{
    QTextLayout layout(letter, font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    const QList<QGlyphRun> runs = layout.glyphRuns();
    return runs.isEmpty() ? font.family() : runs.constFirst().rawFont().familyName();
}

/// The text in one case, as long as it was; letters outside the BMP keep theirs. Qt 6.8 finds nothing outside the BMP
/// where it ignores case itself.
QString inOneCase(QString text)
{
    for (QChar &character : text)
        character = character.toCaseFolded();
    return text;
}

} // namespace

ConsoleText::ConsoleText(QWidget *parent)
    : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    QFont font = theme::monospaced(theme::consoleSize);
    font.setHintingPreference(QFont::PreferNoHinting); // which takes most of the time to draw an ideograph
    setFont(font);
    setFixedHeight(theme::consoleHeight);
    document()->setDocumentMargin(2);
    setTextColour(*this, theme::consoleText);
    viewport()->setAutoFillBackground(false);

    // A horizontal bar that comes or goes, a taller line and a resize change how many lines fit.
    QObject::connect(verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] {
        if (m_placing)
            return;
        noticeScrolling();
        place(verticalScrollBar()->value());
    });
    QObject::connect(this, &QPlainTextEdit::selectionChanged, this, &ConsoleText::matchesChanged);
}

/// The user has scrolled if the text is not where it was last placed. The bar does not signal every one of its moves.
void ConsoleText::noticeScrolling()
{
    const int row = verticalScrollBar()->value();
    if (row == m_row)
        return;
    m_following = m_isList || row >= m_end;
    m_atMatch = m_atMatch && !m_following;
}

/// Goes to the end of a log that is followed and not held at a match, else to `row`.
void ConsoleText::place(int row)
{
    const QScopedValueRollback placing(m_placing, true);
    QScrollBar *bar = verticalScrollBar();
    const bool toEnd = m_following && !m_isList && !m_atMatch;
    // Lines that come into view may bring the horizontal bar, which moves the end on.
    do
        bar->setValue(toEnd ? bar->maximum() : row);
    while (toEnd && bar->value() < bar->maximum());
    m_row = bar->value();
    m_end = bar->maximum();
    m_following = m_following || m_row == m_end; // a text that became so short has its end in sight
}

void ConsoleText::showList(const QString &text)
{
    m_isList = true;
    m_following = true; // the log that comes next
    m_atMatch = false;
    replace(text);
    place(0);
}

void ConsoleText::showLog(const QString &text)
{
    if (text == m_text)
        return;
    noticeScrolling();
    m_isList = false;
    replace(text);
}

/// Names the font for East Asian letters as the second one, once there are such letters at the end. Qt would look into
/// each font that comes before it, for every single letter again.
void ConsoleText::nameEastAsianFont(const QString &text)
{
    if (font().families().size() > 1)
        return;
    const QStringView end = QStringView(text).last(std::min(text.size(), lengthInSight));
    const auto letter = std::ranges::find_if(end, isEastAsian);
    if (letter == end.end())
        return;
    QFont named = font();
    named.setFamilies(named.families() << fallbackFamily(named, *letter));
    setFont(named);
}

/// Shows `text` and stays at the end or at the same lines.
void ConsoleText::replace(const QString &text)
{
    const QScopedValueRollback placing(m_placing, true);
    const int row = verticalScrollBar()->value();
    const int column = horizontalScrollBar()->value();

    // Whatever comes into view has its lines laid out at once. With updates off only the place where this ends does,
    // not the start of the text on the way there.
    viewport()->setUpdatesEnabled(false);
    nameEastAsianFont(text);
    std::optional<int> dropped = advance(text);
    if (!dropped)
        dropped = replaceAll(text);
    m_text = text;
    if (!m_words.isEmpty())
        findMatches();

    place(row - dropped.value_or(0));
    horizontalScrollBar()->setValue(column);
    viewport()->setUpdatesEnabled(true);
}

/// Turns the shown text into `text` by dropping lines at its start and adding at its end, if that is how they differ;
/// answers how many lines went.
std::optional<int> ConsoleText::advance(const QString &text)
{
    const QString former = withShortLineEnds(m_text);
    const QString next = withShortLineEnds(text);
    const auto start = overlap(former, next);
    if (!start)
        return std::nullopt;
    const int before = blockCount();
    QTextCursor edit(document());
    edit.setPosition(static_cast<int>(*start), QTextCursor::KeepAnchor);
    edit.removeSelectedText();
    const int dropped = before - blockCount();
    edit.movePosition(QTextCursor::End);
    edit.insertText(next.sliced(former.size() - *start));
    return dropped;
}

/// Shows `text` anew, with the selection on the line where it was if that line still stands; answers how many lines
/// went before it. A log that goes on is no continuation if a divider ("--------- beginning of main") stays at its
/// start.
std::optional<int> ConsoleText::replaceAll(const QString &text)
{
    const QTextCursor former = textCursor();
    const QTextBlock start = document()->findBlock(former.selectionStart());
    const QString line = start.text();
    const int number = start.blockNumber();
    const int column = former.selectionStart() - start.position();
    const int length = former.selectionEnd() - former.selectionStart();
    setPlainText(text);
    if (length == 0 || column + length > line.size())
        return std::nullopt;
    for (QTextBlock block = document()->firstBlock(); block.isValid(); block = block.next()) {
        if (block.text() != line)
            continue;
        QTextCursor again(block);
        again.setPosition(block.position() + column);
        again.setPosition(block.position() + column + length, QTextCursor::KeepAnchor);
        setTextCursor(again);
        return number - block.blockNumber();
    }
    return std::nullopt;
}

void ConsoleText::mark(const QString &words)
{
    if (words == m_words)
        return;
    m_words = words;
    m_atMatch = m_atMatch && !words.isEmpty();
    findMatches();
}

void ConsoleText::findMatches()
{
    m_matches.clear();
    const QStringMatcher matcher(inOneCase(m_words));
    for (QTextBlock block = document()->begin(); block.isValid() && !m_words.isEmpty(); block = block.next()) {
        const QString line = inOneCase(block.text());
        for (qsizetype at = matcher.indexIn(line); at >= 0; at = matcher.indexIn(line, at + m_words.size()))
            m_matches.append(block.position() + static_cast<int>(at));
    }
    viewport()->update();
    Q_EMIT matchesChanged();
}

qsizetype ConsoleText::selectedMatch() const
{
    const QTextCursor cursor = textCursor();
    const auto found = std::lower_bound(m_matches.begin(), m_matches.end(), cursor.selectionStart());
    const bool selected = found != m_matches.end() && *found == cursor.selectionStart() &&
                          cursor.selectionEnd() - cursor.selectionStart() == m_words.size();
    return selected ? found - m_matches.begin() + 1 : 0;
}

/// The user's cursor if it is in sight, else the beginning or the end of what is.
QTextCursor ConsoleText::placeInSight(bool fromTop) const
{
    const QTextCursor cursor = textCursor();
    const QTextCursor top(firstVisibleBlock());
    const QTextCursor bottom = cursorForPosition(viewport()->rect().bottomRight());
    const bool inSight = cursor.blockNumber() >= top.blockNumber() && cursor.blockNumber() <= bottom.blockNumber();
    if (inSight)
        return cursor;
    return fromTop ? top : bottom;
}

void ConsoleText::goToNearestMatch()
{
    if (m_matches.isEmpty())
        return;
    const auto found =
        std::lower_bound(m_matches.begin(), m_matches.end(), placeInSight(true).selectionStart()) - m_matches.begin();
    select(qMin(found, m_matches.size() - 1));
}

void ConsoleText::goToMatch(bool next)
{
    if (m_matches.isEmpty())
        return;
    const QTextCursor place = placeInSight(next);
    const int from = next ? place.selectionEnd() : place.selectionStart();
    const auto found = std::lower_bound(m_matches.begin(), m_matches.end(), from) - m_matches.begin();
    const qsizetype count = m_matches.size();
    select(next ? found % count : (found + count - 1) % count);
}

/// Selects the match and scrolls as far as it takes to have it in sight: to the middle if it was far away.
void ConsoleText::select(qsizetype match)
{
    noticeScrolling();
    const QScopedValueRollback placing(m_placing, true);
    QTextCursor start(document());
    start.setPosition(m_matches.at(match));
    QTextCursor whole = start;
    whole.setPosition(start.position() + static_cast<int>(m_words.size()), QTextCursor::KeepAnchor);
    const QTextCursor bottom = cursorForPosition(viewport()->rect().bottomRight());
    const bool inSight =
        start.blockNumber() >= firstVisibleBlock().blockNumber() && start.blockNumber() <= bottom.blockNumber();
    setTextCursor(whole); // brings the match's end into sight
    if (!inSight)
        centerCursor();

    const QRect place = cursorRect(start) | cursorRect(whole);
    QScrollBar *columns = horizontalScrollBar();
    const int width = viewport()->width();
    if (place.left() < 0)
        columns->setValue(columns->value() + place.right() < width ? 0 : columns->value() + place.left() - width / 3);
    m_atMatch = true;
    m_row = verticalScrollBar()->value();
    m_end = verticalScrollBar()->maximum();
}

/// The marks lie under the text. Only those in sight are looked for, so that their number costs nothing.
void ConsoleText::paintEvent(QPaintEvent *event)
{
    if (!m_matches.isEmpty()) {
        QPainter painter(viewport());
        painter.setRenderHint(QPainter::Antialiasing);
        for (QTextBlock block = firstVisibleBlock(); block.isValid(); block = block.next()) {
            const QRectF place = blockBoundingGeometry(block).translated(contentOffset());
            if (place.top() > event->rect().bottom())
                break;
            paintMarks(painter, block, place.topLeft());
        }
    }
    QPlainTextEdit::paintEvent(event);
}

/// Paints the marks of the line that `block` is, the place of which is `offset`. Matches without a gap are one mark.
void ConsoleText::paintMarks(QPainter &painter, const QTextBlock &block, const QPointF &offset) const
{
    const QTextLayout &layout = *block.layout();
    int from = 0;
    int to = block.length();
    if (layout.lineCount() == 1 && to > longLine) {
        const int left = layout.lineAt(0).xToCursor(-offset.x());
        const int right = layout.lineAt(0).xToCursor(viewport()->width() - offset.x());
        from = qMin(left, right) - static_cast<int>(m_words.size());
        to = qMax(left, right);
    }
    const int length = static_cast<int>(m_words.size());
    auto match = std::lower_bound(m_matches.begin(), m_matches.end(), block.position() + from);
    while (match != m_matches.end() && *match < block.position() + to) {
        const int start = *match - block.position();
        int end = start;
        for (; match != m_matches.end() && *match == block.position() + end; ++match)
            end += length;
        const QTextLine line = layout.lineForTextPosition(start);
        if (!line.isValid())
            return;
        const double left = line.cursorToX(start);
        const double right = line.cursorToX(qMin(end, line.textStart() + line.textLength()));
        const QRectF mark(qMin(left, right), line.y(), qAbs(right - left), line.height());
        paintRounded(painter, mark.translated(offset).adjusted(-1, 0, 1, 0), markRadius, theme::matchFill,
                     theme::matchLine);
    }
}

void ConsoleText::mouseDoubleClickEvent(QMouseEvent *event)
{
    QPlainTextEdit::mouseDoubleClickEvent(event);
    const QTextBlock block = cursorForPosition(event->pos()).block();
    const bool onLine = blockBoundingGeometry(block).translated(contentOffset()).bottom() > event->position().y();
    if (event->button() == Qt::LeftButton && onLine)
        Q_EMIT lineDoubleClicked(block.text());
}

void ConsoleText::focusInEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusInEvent(event);
    update();
}

void ConsoleText::focusOutEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusOutEvent(event);
    update();
}

} // namespace varda
