// Labels: the texts of the window. All of them show plain text, whatever it holds.
#pragma once

#include "Varda/View/Widgets/Icon.h"
#include "Varda/View/Widgets/MeasuredText.h"

#include <QAccessible>
#include <QLabel>
#include <QTextEdit>

#include <optional>

namespace varda {

/// Gives the text of `widget` the colour `colour`.
void setTextColour(QWidget &widget, const QColor &colour);

/// A label of plain text that measures it when it has to. Layouts ask for heights again and again, and QLabel sets the
/// lines anew each time; and it sets them up to five times to find a good width for a text that wraps, which takes any
/// width here.
class TextLabel : public QLabel
{
    Q_OBJECT

public:
    TextLabel(const QString &text, const QFont &font, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    int heightForWidth(int width) const override;

private:
    MeasuredText &measured() const;

    mutable MeasuredText m_measured;
};

/// A text of the program's own that wraps at its words.
QLabel *makeText(const QString &text, const QFont &font, const QColor &colour, QWidget *parent = nullptr);

/// A one-line label with a decorative icon before it, which screen readers ignore. QLabel shows a picture or a text,
/// not both.
class IconLabel final : public TextLabel
{
    Q_OBJECT

public:
    IconLabel(Icon icon, int iconSize, const QString &text, const QFont &font, QWidget *parent = nullptr);

    /// The icon has the text's colour otherwise.
    void setIconColour(const QColor &colour);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Icon m_icon;
    const int m_iconSize;
    std::optional<QColor> m_iconColour;
};

/// One line of a text that came from outside, of any length: what does not fit is elided, and the tooltip holds it all.
/// It never makes its window wider.
class ElidedLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(Qt::TextElideMode mode, QWidget *parent = nullptr);

    /// Shows `text` made visible; the tooltip shows `whole` if that is more.
    void setLine(const QString &text, const QString &whole = {});

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Qt::TextElideMode m_mode;
};

/// Selectable text from outside, of any length and any number of lines. It breaks wherever it has to, so that it never
/// makes its window wider. It is as high as its text, or as the whole lines that the maximum has room for, and scrolls.
/// Space at the end of a text is not shown.
class TextBlock final : public QTextEdit
{
    Q_OBJECT

public:
    /// `role` tells a screen reader what the text is; each new text is announced.
    TextBlock(const QFont &font, const QColor &colour, QAccessible::Role role, QWidget *parent = nullptr);

    /// The text as it was given.
    const QString &shown() const { return m_text; }
    QAccessible::Role role() const { return m_role; }

    /// Does nothing if `text` is shown already, so that a selection survives.
    void setMessage(const QString &text);
    void setMaximumTextHeight(int pixels);

    /// How far the text is inset from the widget's edges, where the focus ring runs. Layouts do not count it.
    static constexpr int inset = 4;

    QSize minimumSizeHint() const override { return {40, 0}; }
    QSize sizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void forgetHeight();

    const QAccessible::Role m_role;
    QString m_text;
    std::optional<int> m_maximumHeight;
    mutable int m_measuredWidth = -1; ///< what `m_height` is for; -1 for nothing
    mutable int m_height = 0;
};

} // namespace varda
