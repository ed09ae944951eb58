// StatusLine: a spinner while an action is in flight, and the text, which can be selected.
#include "Varda/View/StatusLine.h"

#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"

#include <QPainter>
#include <QTimer>
#include <QVBoxLayout>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int spinnerSize = 14;
constexpr double spinnerDiameter = 11; // to the middle of its stroke
constexpr int spinnerSteps = 24;
constexpr int spinnerInterval = 40; // ms
constexpr double spinnerStroke = 1.75;
constexpr int hintGap = 8;

} // namespace

Spinner::Spinner(QWidget *parent)
    : QWidget(parent)
    , m_timer(new QTimer(this))
{
    setAccessibleName(u"Working"_s);
    setFixedWidth(spinnerSize);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Ignored); // the text alone makes the line high
    m_timer->setInterval(spinnerInterval);
    QObject::connect(m_timer, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % spinnerSteps;
        update();
    });
}

void Spinner::showEvent(QShowEvent *)
{
    m_timer->start();
}

void Spinner::hideEvent(QHideEvent *)
{
    m_timer->stop();
}

void Spinner::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QRectF circle(0, 0, spinnerDiameter, spinnerDiameter);
    circle.moveCenter(QRectF(rect()).center());
    painter.setPen(QPen(theme::white(0.16), spinnerStroke));
    painter.drawEllipse(circle);
    painter.setPen(QPen(theme::accent, spinnerStroke, Qt::SolidLine, Qt::RoundCap));
    constexpr int degree = 16;
    painter.drawArc(circle, (90 - 360 * m_step / spinnerSteps) * degree, -100 * degree);
}

StatusLine::StatusLine(QWidget *parent)
    : QWidget(parent)
    , m_spinner(new Spinner(this))
    , m_text(new TextBlock(theme::font(theme::captionSize), theme::text, QAccessible::StatusBar, this))
    , m_hint(new TextBlock(theme::font(theme::captionSize), theme::accent, QAccessible::StaticText, this))
{
    setObjectName(u"statusLine"_s);
    m_spinner->setObjectName(u"busyIndicator"_s);
    m_spinner->hide();
    m_text->setObjectName(u"statusText"_s);

    m_hint->setObjectName(u"statusHint"_s);
    m_hint->hide();

    auto *row = new QHBoxLayout;
    row->setSpacing(theme::controlSpacing);
    row->addWidget(m_spinner);
    row->addWidget(m_text, 1);
    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(theme::mainPadding, verticalPadding, theme::mainPadding, verticalPadding);
    stack->setSpacing(hintGap);
    stack->addLayout(row);
    stack->addWidget(m_hint);
}

void StatusLine::setStatus(const QString &status, bool busy, const std::optional<QString> &hint)
{
    m_spinner->setVisible(busy);
    m_text->setMessage(status);
    if (hint)
        m_hint->setMessage(*hint);
    m_hint->setVisible(hint.has_value());
}

void StatusLine::limitHeight(int pixels)
{
    if (pixels == m_limit)
        return;
    m_limit = pixels;
    const int lineHeight = m_text->fontMetrics().lineSpacing();
    m_text->setMaximumTextHeight((pixels - 2 * verticalPadding) / lineHeight * lineHeight); // whole lines
}

void StatusLine::setFloating(bool floating)
{
    if (floating == m_floating)
        return;
    m_floating = floating;
    update();
}

void StatusLine::paintEvent(QPaintEvent *)
{
    if (!m_floating)
        return;
    QPainter painter(this);
    painter.fillRect(rect(), theme::mainBackground);
    painter.fillRect(QRect(theme::mainPadding, 0, width() - 2 * theme::mainPadding, 1), theme::hairline);
}

} // namespace varda
