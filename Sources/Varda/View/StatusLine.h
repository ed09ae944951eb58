// StatusLine: what the program is doing, or has done.
#pragma once

#include <QWidget>

#include <optional>

class QTimer;

namespace varda {

class TextBlock;

/// An arc as small as the text beside it, which turns only while it is shown. Qt has a wide bar for this, and no arc.
class Spinner final : public QWidget
{
    Q_OBJECT

public:
    explicit Spinner(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QTimer *m_timer;
    int m_step = 0;
};

/// The status text after a spinner while busy, and below it what helps, if that is known. Both can be selected.
class StatusLine final : public QWidget
{
    Q_OBJECT

public:
    explicit StatusLine(QWidget *parent = nullptr);

    void setStatus(const QString &status, bool busy, const std::optional<QString> &hint);

    /// How far its text is from its upper and lower edges.
    static constexpr int verticalPadding = 12;

    /// Is at most so high; what does not fit scrolls inside.
    void limitHeight(int pixels);

    /// While it floats over other content it paints a ground of its own.
    void setFloating(bool floating);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Spinner *m_spinner;
    TextBlock *m_text;
    TextBlock *m_hint;
    int m_limit = 0;
    bool m_floating = false;
};

} // namespace varda
