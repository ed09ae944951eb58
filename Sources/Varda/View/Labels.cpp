// Labels: measuring, eliding and painting.
#include "Varda/View/Labels.h"

#include "Varda/View/PlainText.h"
#include "Varda/View/Theme.h"
#include "Varda/View/VardaStyle.h"

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QHash>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace varda {
namespace {

/// A text that wraps. Layouts ask for a width's height again and again, and a label would set its lines each time.
class Paragraph final : public QLabel
{
public:
    explicit Paragraph(QWidget *parent)
        : QLabel(parent)
    {
        setWordWrap(true);
    }

    int heightForWidth(int width) const override
    {
        if (m_measured != text() || m_heights.size() >= keptHeights)
            m_heights.clear();
        m_measured = text();
        const auto known = m_heights.constFind(width);
        return known != m_heights.cend() ? *known : *m_heights.insert(width, QLabel::heightForWidth(width));
    }

protected:
    bool event(QEvent *event) override
    {
        const auto type = event->type();
        if (type == QEvent::FontChange || type == QEvent::StyleChange || type == QEvent::ContentsRectChange)
            m_heights.clear();
        return QLabel::event(event);
    }

private:
    static constexpr qsizetype keptHeights = 8;

    mutable QHash<int, int> m_heights; ///< by width
    mutable QString m_measured;        ///< the text that they are of
};

} // namespace

void setTextColour(QWidget &widget, const QColor &colour)
{
    QPalette palette = widget.palette();
    palette.setColor(QPalette::WindowText, colour);
    palette.setColor(QPalette::Text, colour);
    widget.setPalette(palette);
}

QLabel *makeText(const QString &text, const QFont &font, const QColor &colour, QWidget *parent)
{
    auto *label = new Paragraph(parent);
    label->setTextFormat(Qt::PlainText);
    label->setFont(font);
    label->setText(text);
    setTextColour(*label, colour);
    return label;
}

IconLabel::IconLabel(Icon icon, int iconSize, const QString &text, const QFont &font, QWidget *parent)
    : QLabel(parent)
    , m_icon(icon)
    , m_iconPerPixel(static_cast<double>(iconSize) / font.pixelSize())
{
    setTextFormat(Qt::PlainText);
    setFont(font);
    setText(text);
    makeRoom();
}

void IconLabel::setIconColour(const QColor &colour)
{
    m_iconColour = colour;
    update();
}

int IconLabel::scaledIcon() const
{
    return static_cast<int>(std::lround(font().pixelSize() * m_iconPerPixel));
}

void IconLabel::makeRoom()
{
    const int icon = scaledIcon();
    setContentsMargins(icon + qMax(6, icon * 2 / 5), 0, 0, 0);
    setMinimumHeight(icon);
}

void IconLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        makeRoom();
}

void IconLabel::paintEvent(QPaintEvent *event)
{
    QLabel::paintEvent(event);
    QPainter painter(this);
    const int size = scaledIcon();
    paintIcon(painter, m_icon, QRectF(0, (height() - size) / 2.0, size, size),
              m_iconColour.value_or(palette().color(QPalette::WindowText)));
}

ElidedLabel::ElidedLabel(Qt::TextElideMode mode, QWidget *parent)
    : QLabel(parent)
    , m_mode(mode)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::show(const QString &text, const QString &whole)
{
    setText(visibleLine(text));
    setPlainToolTip(this, whole.isEmpty() ? text : whole);
}

QSize ElidedLabel::sizeHint() const
{
    return {fontMetrics().horizontalAdvance(text()) + 2, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {qMin(sizeHint().width(), fontMetrics().horizontalAdvance(QStringLiteral("…")) * 2), sizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), m_mode, width()));
}

TextBlock::TextBlock(const QFont &font, const QColor &colour, QAccessible::Role role, QWidget *parent)
    : QTextEdit(parent)
    , m_role(role)
{
    setFont(theme::literal(font));
    setTextColour(*this, colour);
    setFrameShape(QFrame::NoFrame);
    viewport()->setAutoFillBackground(false);
    document()->setDocumentMargin(inset);
    setUndoRedoEnabled(false);
    setAcceptRichText(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    QObject::connect(document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
                     &TextBlock::fitHeight);
    fitHeight();
}

void TextBlock::show(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    setPlainText(visibleLines(text));
    if (QAccessible::isActive()) {
        QAccessibleEvent named(this, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&named);
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
}

void TextBlock::setMaximumTextHeight(int pixels)
{
    m_maximumHeight = pixels;
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    fitHeight();
}

void TextBlock::fitHeight()
{
    const int text = static_cast<int>(std::ceil(document()->size().height()));
    const int least = fontMetrics().height() + 2 * inset;
    setFixedHeight(qMax(least, m_maximumHeight ? qMin(text, *m_maximumHeight) : text));
}

void TextBlock::paintEvent(QPaintEvent *event)
{
    QTextEdit::paintEvent(event);
    if (!VardaStyle::showsFocus(*this))
        return;
    QPainter painter(viewport());
    paintRounded(painter, viewport()->rect(), inset, Qt::transparent, theme::accent, 1.5);
}

void TextBlock::focusInEvent(QFocusEvent *event)
{
    QTextEdit::focusInEvent(event);
    viewport()->update();
}

void TextBlock::focusOutEvent(QFocusEvent *event)
{
    QTextEdit::focusOutEvent(event);
    viewport()->update();
}

void TextBlock::wheelEvent(QWheelEvent *event)
{
    if (m_maximumHeight)
        QTextEdit::wheelEvent(event);
    else
        event->ignore();
}

void TextBlock::changeEvent(QEvent *event)
{
    QTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        fitHeight();
}

} // namespace varda
