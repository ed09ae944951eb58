// DeviceCard: its texts are labels, its icon is painted.
#include "Varda/View/DeviceCard.h"

#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"

#include <QPainter>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int iconSize = 28;
constexpr int iconGap = 16;
constexpr int lineGap = 4;
constexpr int warningIcon = 20;
constexpr int warningPadding = 16;

} // namespace

DeviceCard::DeviceCard(QWidget *parent)
    : Surface(theme::panelFill, theme::hairline, theme::panelRadius, parent)
    , m_name(new ElidedLabel(Qt::ElideRight, this))
    , m_transport(new QLabel(this))
    , m_state(new ElidedLabel(Qt::ElideRight, this))
{
    setObjectName(u"deviceCard"_s);
    m_name->setObjectName(u"deviceName"_s);
    m_name->setFont(theme::font(theme::bodySize, QFont::Bold));
    m_transport->setObjectName(u"deviceTransport"_s);
    m_transport->setTextFormat(Qt::PlainText);
    m_transport->setFont(theme::font(theme::bodySize));
    setTextColour(*m_transport, theme::secondaryText);
    m_state->setObjectName(u"deviceState"_s);
    m_state->setFont(theme::font(theme::bodySize, QFont::DemiBold));

    auto *first = new QHBoxLayout;
    first->setSpacing(theme::controlSpacing);
    first->addWidget(m_name, 0);
    first->addWidget(m_transport, 0);
    first->addStretch(1);
    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(theme::panelPadding + iconSize + iconGap, theme::panelPadding, theme::panelPadding,
                              theme::panelPadding);
    stack->setSpacing(lineGap);
    stack->addLayout(first);
    stack->addWidget(m_state);
}

void DeviceCard::setDevice(const AndroidDevice &device)
{
    if (device == m_device)
        return;
    m_device = device;
    m_name->setLine(device.name);
    m_transport->setText(device.transport());
    m_state->setLine(device.ready() ? u"Ready for testing"_s : device.state);
    setTextColour(*m_state, device.ready() ? theme::accent : theme::attention);
    update();
}

void DeviceCard::paintEvent(QPaintEvent *event)
{
    Surface::paintEvent(event);
    QPainter painter(this);
    paintIcon(painter, m_device.ready() ? Icon::Check : Icon::Warning,
              QRectF(theme::panelPadding, (height() - iconSize) / 2.0, iconSize, iconSize),
              m_device.ready() ? theme::accent : theme::attention);
}

AuthorizationWarning::AuthorizationWarning(QWidget *parent)
    : Surface(theme::faded(theme::attention, 0.14), theme::faded(theme::attention, 0.35), theme::rowRadius, parent)
{
    setObjectName(u"authorizationWarning"_s);
    QLabel *text = makeText(u"Unlock your Android phone and approve the “Allow USB debugging?” prompt for this Mac. "
                            "Varda cannot approve it for you."_s,
                            theme::font(theme::bodySize), theme::text, this);
    text->setObjectName(u"authorizationText"_s);
    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(2 * warningPadding + warningIcon, warningPadding, warningPadding, warningPadding);
    stack->addWidget(text);
}

void AuthorizationWarning::paintEvent(QPaintEvent *event)
{
    Surface::paintEvent(event);
    QPainter painter(this);
    paintIcon(painter, Icon::Warning,
              QRectF(warningPadding + 4, (height() - warningIcon) / 2.0, warningIcon, warningIcon), theme::attention);
}

} // namespace varda
