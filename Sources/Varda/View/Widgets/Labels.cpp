// Labels: Qt's label neither elides its text nor remembers its height, and has no room for an icon beside its text.
#include "Varda/View/Widgets/Labels.h"

#include "Varda/View/Widgets/FocusRing.h"
#include "Varda/View/Widgets/Painting.h"
#include "Varda/View/Widgets/PlainText.h"
#include "Varda/View/Widgets/Theme.h"

#include <QAbstractTextDocumentLayout>
#include <QEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QWheelEvent>

#include <algorithm>
#include <iterator>
#include <memory>

namespace varda {

namespace {

/// Tools end what they say with a line feed, which would show as an empty line.
QString withoutTrailingSpace(const QString &text)
{
    const auto last = std::find_if_not(text.crbegin(), text.crend(), [](QChar c) { return c.isSpace(); });
    return text.first(std::distance(last, text.crend()));
}

/// The bottom of the last line of `document` that does not reach below `limit`.
double endOfLastWholeLine(const QTextDocument &document, double limit)
{
    double end = 0;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        const double top = document.documentLayout()->blockBoundingRect(block).top();
        for (int i = 0; i < block.layout()->lineCount(); ++i) {
            const double bottom = top + block.layout()->lineAt(i).rect().bottom();
            if (bottom > limit)
                return end;
            end = bottom;
        }
    }
    return end;
}

} // namespace

void setTextColour(QWidget &widget, const QColor &colour)
{
    QPalette palette = widget.palette();
    palette.setColor(QPalette::WindowText, colour);
    palette.setColor(QPalette::Text, colour);
    widget.setPalette(palette);
}

TextLabel::TextLabel(const QString &text, const QFont &font, QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setFont(font);
    setText(text);
}

QSize TextLabel::sizeHint() const
{
    const QSize size = wordWrap() ? QSize(0, fontMetrics().height()) : measured().size();
    return size.grownBy(contentsMargins());
}

int TextLabel::heightForWidth(int width) const
{
    if (!wordWrap())
        return QLabel::heightForWidth(width);
    const QMargins margins = contentsMargins();
    const int height = measured().heightForWidth(qMax(0, width - margins.left() - margins.right()));
    return qMax(height + margins.top() + margins.bottom(), minimumHeight());
}

MeasuredText &TextLabel::measured() const
{
    m_measured.set(text(), font());
    return m_measured;
}

QLabel *makeText(const QString &text, const QFont &font, const QColor &colour, QWidget *parent)
{
    auto *label = new TextLabel(text, font, parent);
    label->setWordWrap(true);
    setTextColour(*label, colour);
    return label;
}

IconLabel::IconLabel(Icon icon, int iconSize, const QString &text, const QFont &font, QWidget *parent)
    : TextLabel(text, font, parent)
    , m_icon(icon)
    , m_iconSize(iconSize)
{
    setContentsMargins(iconSize + qMax(6, iconSize * 2 / 5), 0, 0, 0);
    setMinimumHeight(iconSize);
}

void IconLabel::setIconColour(const QColor &colour)
{
    m_iconColour = colour;
    update();
}

void IconLabel::paintEvent(QPaintEvent *event)
{
    TextLabel::paintEvent(event);
    QPainter painter(this);
    paintIcon(painter, m_icon, QRectF(0, (height() - m_iconSize) / 2.0, m_iconSize, m_iconSize),
              m_iconColour.value_or(palette().color(QPalette::WindowText)));
}

ElidedLabel::ElidedLabel(Qt::TextElideMode mode, QWidget *parent)
    : QLabel(parent)
    , m_mode(mode)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void ElidedLabel::setLine(const QString &text, const QString &whole)
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
    setFont(font);
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
    QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void TextBlock::setMessage(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    setPlainText(visibleLines(withoutTrailingSpace(text)));
    forgetHeight();
    if (QAccessible::isActive()) {
        QAccessibleEvent named(this, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&named);
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
}

void TextBlock::setMaximumTextHeight(int pixels)
{
    m_maximumHeight = pixels + 2 * inset;
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    verticalScrollBar()->setSingleStep(fontMetrics().height());
    forgetHeight();
}

/// Measured on a copy, so that layouts can ask before the text itself is laid out, and the reader's place stays.
int TextBlock::heightForWidth(int width) const
{
    if (width == m_measuredWidth)
        return m_height;
    const std::unique_ptr<QTextDocument> copy(document()->clone());
    copy->documentLayout()->setPaintDevice(viewport());
    copy->setTextWidth(width);
    const double maxHeight = m_maximumHeight.value_or(QWIDGETSIZE_MAX);
    const double height = copy->documentLayout()->blockBoundingRect(copy->lastBlock()).bottom() + inset;
    m_height = static_cast<int>(std::ceil(height <= maxHeight ? height : endOfLastWholeLine(*copy, maxHeight)));
    m_measuredWidth = width;
    return m_height;
}

QSize TextBlock::sizeHint() const
{
    return {minimumSizeHint().width(), heightForWidth(width())};
}

void TextBlock::forgetHeight()
{
    m_measuredWidth = -1;
    updateGeometry();
}

void TextBlock::resizeEvent(QResizeEvent *event)
{
    QTextEdit::resizeEvent(event);
    if (event->oldSize().width() != event->size().width())
        updateGeometry();
}

void TextBlock::paintEvent(QPaintEvent *event)
{
    QTextEdit::paintEvent(event);
    if (!showsFocus(*this))
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

} // namespace varda
