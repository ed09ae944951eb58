// SideColumn: the header with the application menu, the list, and what stands below it.
#include "Varda/View/SideColumn.h"

#include "Varda/View/DeviceList.h"
#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Painting.h"
#include "Varda/View/Widgets/Panel.h"
#include "Varda/View/Widgets/Theme.h"
#include "Varda/View/WindowActions.h"

#include <QMenu>
#include <QPainter>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int productIcon = 26;
constexpr int noteIcon = 18;
constexpr int headerGap = 6;
constexpr int listGap = 10;

} // namespace

SideColumn::SideColumn(VardaModel &model, const WindowActions &actions, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_menu(new QMenu(this))
{
    setObjectName(u"sideColumn"_s);
    setFixedWidth(theme::sideWidth);
    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(theme::sidePadding, theme::sidePadding, theme::sidePadding, theme::sidePadding);
    stack->setSpacing(theme::sideSpacing);
    addHeader(*stack, actions);
    stack->addWidget(makeDivider());
    addDevices(*stack, actions);
    stack->addStretch(1);
    addTrustNote(*stack);
}

void SideColumn::addHeader(QVBoxLayout &stack, const WindowActions &actions)
{
    auto *product =
        new IconLabel(Icon::Product, productIcon, u"Varda"_s, theme::font(theme::title2Size, QFont::Bold), this);
    product->setObjectName(u"productLabel"_s);
    product->setIconColour(theme::accent);

    auto *menuButton = new Button(Button::Kind::Bare, {}, Icon::Menu, this);
    menuButton->setObjectName(u"menuButton"_s);
    menuButton->setAccessibleName(u"Main menu"_s);
    setHint(*menuButton, u"Main menu"_s);
    m_menu->setObjectName(u"applicationMenu"_s);
    actions.addTo(*m_menu);
    QObject::connect(menuButton, &Button::clicked, this, [this, menuButton] {
        m_menu->popup(menuButton->mapToGlobal(QPoint(0, menuButton->height() + 4)));
    });

    QLabel *tag =
        makeText(u"HALVEX / ANDROID WORKSPACE"_s, theme::capitals(theme::tagSize), theme::secondaryText, this);
    tag->setObjectName(u"productTag"_s);

    auto *title = new QHBoxLayout;
    title->addWidget(product);
    title->addStretch(1);
    title->addWidget(menuButton);
    auto *header = new QVBoxLayout;
    header->setSpacing(headerGap);
    header->addLayout(title);
    header->addWidget(tag);
    stack.addLayout(header);
}

void SideColumn::addDevices(QVBoxLayout &stack, const WindowActions &actions)
{
    QFont devicesFont = theme::capitals(theme::captionSize);
    devicesFont.setWeight(QFont::Bold);
    QLabel *heading = makeText(u"DEVICES"_s, devicesFont, theme::secondaryText, this);
    heading->setWordWrap(false);
    heading->setObjectName(u"devicesHeading"_s);
    auto *refresh = new Button(Button::Kind::Bare, {}, Icon::Refresh, this);
    refresh->setObjectName(u"refreshButton"_s);
    refresh->setAccessibleName(u"Refresh devices"_s);
    tie(*refresh, u"Refresh devices"_s, actions.refresh);

    m_devices = new DeviceList(m_model, refresh, this);

    auto *wireless = new Button(Button::Kind::Secondary, u"Connect over Wi-Fi"_s, Icon::Wifi, this);
    wireless->setObjectName(u"wirelessButton"_s);
    wireless->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    tie(*wireless, u"Pair or connect a phone on your network"_s, actions.wireless);

    auto *title = new QHBoxLayout;
    title->addWidget(heading);
    title->addStretch(1);
    title->addWidget(refresh);
    auto *list = new QVBoxLayout;
    list->setSpacing(listGap);
    list->addLayout(title);
    list->addWidget(m_devices);
    stack.addLayout(list);
    stack.addWidget(wireless);
}

void SideColumn::addTrustNote(QVBoxLayout &stack)
{
    auto *title = new IconLabel(Icon::Shield, noteIcon, u"Real hardware. Real results."_s,
                                theme::font(theme::bodySize, QFont::DemiBold), this);
    title->setObjectName(u"trustTitle"_s);
    title->setWordWrap(true);
    title->setIconColour(theme::accent);
    QLabel *note =
        makeText(u"USB first. Authorize this Mac on your phone, then install and test your own development APKs."_s,
                 theme::font(theme::captionSize), theme::secondaryText, this);
    note->setObjectName(u"trustText"_s);
    auto *notes = new QVBoxLayout;
    notes->setSpacing(headerGap);
    notes->addWidget(title);
    notes->addWidget(note);
    stack.addLayout(notes);
}

void SideColumn::render()
{
    m_devices->render();
}

void SideColumn::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), theme::sideBackground);
    fillRows(painter, QRect(width() - 1, 0, 1, height()), theme::white(0.05));
}

} // namespace varda
