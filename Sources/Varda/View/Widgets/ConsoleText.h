// ConsoleText: one snapshot of the device's log, which can be read and copied while it is replaced.
#pragma once

#include <QPlainTextEdit>

#include <optional>

namespace varda {

/// Scrolls in both directions and never wraps. A log is followed at its end until the user scrolls away from it, and
/// again once they come back to it; only the user's scrolling changes that. A list starts at its top. If the new text
/// continues the former one, lines read and selected stay as they are.
class ConsoleText final : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit ConsoleText(QWidget *parent = nullptr);

    /// Does nothing if `text` stands already.
    void showLog(const QString &text);
    void showList(const QString &text);

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void replace(const QString &text);
    void noticeScrolling();
    void place(int row);
    std::optional<int> advance(const QString &text);

    QString m_text;
    int m_row = 0; ///< where the text was last placed, of `m_end` rows that it could scroll then
    int m_end = 0;
    bool m_isList = false;
    bool m_following = true;
    bool m_placing = false;
};

} // namespace varda
