// FindLine: the line over a text in which words are searched for.
#pragma once

#include <QPointer>
#include <QWidget>

class QLabel;
class QLineEdit;

namespace varda {

class Button;

/// Return goes to the next match, Shift+Return to the one before. The words stay in the field while the line is closed.
class FindLine final : public QWidget
{
    Q_OBJECT

public:
    /// `name` tells what is searched, on the screen and to a screen reader. The line is closed at first.
    explicit FindLine(const QString &name, QWidget *parent = nullptr);

    /// Shows the line and gives it the focus, all words selected.
    void open();
    /// Hides the line. If the focus is in it, it goes back to where it was, or else to `fallback`.
    void dismiss(QWidget &fallback);

    /// What is searched for; empty while the line is closed.
    QString words() const;

    /// Shows how many matches there are, and which of them is selected, from 1 on; 0 for none.
    void showCount(qsizetype selected, qsizetype count);

    Button *const previous;
    Button *const next;
    Button *const closing;

Q_SIGNALS:
    void wordsChanged();
    void matchAsked(bool next);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QLineEdit *m_field;
    QLabel *m_count;
    QPointer<QWidget> m_focusedBefore;
};

} // namespace varda
