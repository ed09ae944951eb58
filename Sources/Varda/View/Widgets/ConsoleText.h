// ConsoleText: one snapshot of the device's log, which can be read, searched and copied while it is replaced.
#pragma once

#include <QPlainTextEdit>
#include <QTextBlock>

#include <optional>

namespace varda {

/// Scrolls in both directions and never wraps. A log is followed at its end until the user scrolls away from it, and
/// again once they come back to it; only the user's scrolling changes that. A list starts at its top. If the new text
/// continues the former one, lines read and selected stay as they are.
///
/// Words that are searched for are marked, and the match that was gone to is selected. It keeps a followed log where it
/// is, until the user scrolls to the end or the search ends.
class ConsoleText final : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit ConsoleText(QWidget *parent = nullptr);

    /// Does nothing if `text` stands already.
    void showLog(const QString &text);
    void showList(const QString &text);

    /// Marks every place where `words` stand, whatever their case; an empty text ends the search.
    void mark(const QString &words);
    /// Goes to the first match from where the user is, or to the last one if none follows.
    void goToNearestMatch();
    /// Goes to the next match or to the one before; beyond the last comes the first.
    void goToMatch(bool next);

    qsizetype matchCount() const { return m_matches.size(); }
    /// The number of the selected match, from 1 on; 0 if none is selected.
    qsizetype selectedMatch() const;

Q_SIGNALS:
    /// The matches, or which of them is selected, may be others than before.
    void matchesChanged();
    void lineDoubleClicked(const QString &line);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void replace(const QString &text);
    void nameEastAsianFont(const QString &text);
    void noticeScrolling();
    void place(int row);
    std::optional<int> advance(const QString &text);
    std::optional<int> replaceAll(const QString &text);
    void findMatches();
    void select(qsizetype match);
    QTextCursor placeInSight(bool fromTop) const;
    void paintMarks(QPainter &painter, const QTextBlock &block, const QPointF &offset) const;

    QString m_text;
    QString m_words;      ///< what is searched for
    QList<int> m_matches; ///< where each match begins in the document, in order
    int m_row = 0;        ///< where the text was last placed, of `m_end` rows that it could scroll then
    int m_end = 0;
    bool m_isList = false;
    bool m_following = true;
    bool m_atMatch = false; ///< a match that was gone to holds the text where it is
    bool m_placing = false;
};

} // namespace varda
