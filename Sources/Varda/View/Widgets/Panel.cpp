// Panel: only the surface is painted here; the widgets on it are in ordinary layouts.
#include "Varda/View/Widgets/Panel.h"

#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Painting.h"
#include "Varda/View/Widgets/Theme.h"

#include <QPainter>

namespace varda {

namespace {

constexpr int headingIcon = 16;

} // namespace

Surface::Surface(const QColor &fill, const QColor &line, double radius, QWidget *parent)
    : QWidget(parent)
    , m_fill(fill)
    , m_line(line)
    , m_radius(radius)
{
}

void Surface::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    paintRounded(painter, rect(), m_radius, m_fill, m_line);
}

Panel::Panel(const QString &title, Icon icon, QWidget *parent)
    : Surface(theme::panelFill, theme::hairline, theme::panelRadius, parent)
    , m_content(new QVBoxLayout(this))
{
    setAccessibleName(title);
    m_content->setContentsMargins(theme::panelPadding, theme::panelPadding, theme::panelPadding, theme::panelPadding);
    m_content->setSpacing(theme::panelSpacing);
    IconLabel *label = makeHeading(icon, title, this);
    label->setObjectName(QStringLiteral("panelTitle"));
    m_content->addWidget(label);
}

IconLabel *makeHeading(Icon icon, const QString &text, QWidget *parent)
{
    auto *heading = new IconLabel(icon, headingIcon, text, theme::capitals(theme::captionSize), parent);
    setTextColour(*heading, theme::accent);
    return heading;
}

QWidget *makeDivider()
{
    auto *line = new Surface(theme::hairline, Qt::transparent, 0);
    line->setFixedHeight(1);
    return line;
}

QHBoxLayout *makeRow(std::initializer_list<QWidget *> widgets)
{
    auto *row = new QHBoxLayout;
    row->setSpacing(theme::controlSpacing);
    for (QWidget *widget : widgets)
        row->addWidget(widget);
    row->addStretch(1);
    return row;
}

} // namespace varda
