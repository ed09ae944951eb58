// ConsoleText: where a snapshot goes on from the one before, only the lines that differ are touched.
#include "Varda/View/Widgets/ConsoleText.h"

#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"

#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextCursor>

namespace varda {

namespace {

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

} // namespace

ConsoleText::ConsoleText(QWidget *parent)
    : QPlainTextEdit(parent)
{
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setLineWrapMode(QPlainTextEdit::NoWrap);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFont(theme::literal(theme::monospaced(theme::consoleSize)));
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
}

/// The user has scrolled if the text is not where it was last placed. The bar does not signal every one of its moves.
void ConsoleText::noticeScrolling()
{
    const int row = verticalScrollBar()->value();
    if (row != m_row)
        m_following = m_isList || row >= m_end;
}

/// Goes to the end of a log that is followed, else to `row`.
void ConsoleText::place(int row)
{
    const QScopedValueRollback placing(m_placing, true);
    QScrollBar *bar = verticalScrollBar();
    const bool toEnd = m_following && !m_isList;
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

/// Shows `text` and stays at the end or at the same lines.
void ConsoleText::replace(const QString &text)
{
    const QScopedValueRollback placing(m_placing, true);
    const int row = verticalScrollBar()->value();
    const int column = horizontalScrollBar()->value();

    // Whatever comes into view has its lines laid out at once. With updates off only the place where this ends does,
    // not the start of the text on the way there.
    viewport()->setUpdatesEnabled(false);
    const std::optional<int> dropped = advance(text);
    if (!dropped)
        setPlainText(text);
    m_text = text;

    place(row - dropped.value_or(0));
    horizontalScrollBar()->setValue(column);
    viewport()->setUpdatesEnabled(true);
}

/// Turns the shown text into `text` by dropping lines at its start and adding at its end, if that is how they differ;
/// answers how many lines went.
std::optional<int> ConsoleText::advance(const QString &text)
{
    // The document keeps CR LF as one separator, so that positions in it would not be those of the text.
    if (m_text.contains(u'\r') || text.contains(u'\r'))
        return std::nullopt;
    const auto start = overlap(m_text, text);
    if (!start)
        return std::nullopt;
    const int before = blockCount();
    QTextCursor edit(document());
    edit.setPosition(static_cast<int>(*start), QTextCursor::KeepAnchor);
    edit.removeSelectedText();
    const int dropped = before - blockCount();
    edit.movePosition(QTextCursor::End);
    edit.insertText(text.sliced(m_text.size() - *start));
    return dropped;
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
