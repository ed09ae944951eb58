// WirelessSheet: the two steps one below the other; however it is closed, the model is told in one place.
#include "Varda/View/WirelessSheet.h"

#include "Varda/View/TextFields.h"
#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Panel.h"
#include "Varda/View/Widgets/Theme.h"

#include <QLineEdit>
#include <QVBoxLayout>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int sheetWidth = 560;
constexpr int padding = 30;
constexpr int spacing = 18;
constexpr int maxStatusHeight = 112;

} // namespace

WirelessSheet::WirelessSheet(VardaModel &model, QWidget *window)
    : FittedDialog(sheetWidth, window)
    , m_model(model)
{
    setObjectName(u"wirelessSheet"_s);
    setWindowTitle(u"Go wireless"_s);
    setWindowModality(Qt::WindowModal);
    QObject::connect(this, &QDialog::finished, this, [this] { m_model.wireless = false; });
}

void WirelessSheet::build()
{
    m_pairingEndpoint =
        makeField(u"pairingEndpointField"_s, u"Pairing address"_s, u"Pairing address · 192.168.1.50:37123"_s, this);
    m_pairingCode = makeField(u"pairingCodeField"_s, u"Pairing code"_s, u"Six-digit pairing code"_s, this);
    m_pair = new Button(Button::Kind::Secondary, u"Pair this Mac"_s, std::nullopt, this);
    m_connectEndpoint = makeField(u"connectEndpointField"_s, u"Connection address"_s,
                                  u"Connection address · 192.168.1.50:42137"_s, this);
    m_connect = new Button(Button::Kind::Secondary, u"Connect phone"_s, std::nullopt, this);
    m_status = new TextBlock(theme::font(theme::captionSize), theme::secondaryText, QAccessible::StatusBar, this);

    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(padding, padding, padding, padding);
    stack->setSpacing(spacing);
    addHeader(*stack);
    addPairing(*stack);
    stack->addWidget(makeDivider());
    addConnection(*stack);
    stack->addWidget(m_status);
    m_status->setObjectName(u"sheetStatusText"_s);
    m_status->setMaximumTextHeight(maxStatusHeight);

    bindText(*m_pairingEndpoint, m_model.pairingEndpoint);
    bindText(*m_pairingCode, m_model.pairingCode);
    bindText(*m_connectEndpoint, m_model.connectEndpoint);
    QObject::connect(m_pair, &Button::clicked, this, [this] { m_model.pair(); });
    QObject::connect(m_connect, &Button::clicked, this, [this] { m_model.connect(); });
    QObject::connect(m_pairingCode, &QLineEdit::returnPressed, m_pair, &Button::click);
    QObject::connect(m_connectEndpoint, &QLineEdit::returnPressed, m_connect, &Button::click);
}

void WirelessSheet::addHeader(QVBoxLayout &stack)
{
    QLabel *title = makeText(u"Go wireless."_s, theme::font(theme::largeTitleSize, QFont::Bold), theme::text, this);
    title->setWordWrap(false);
    title->setObjectName(u"sheetTitle"_s);
    auto *done = new Button(Button::Kind::Secondary, u"Done"_s, std::nullopt, this);
    done->setObjectName(u"doneButton"_s);
    QObject::connect(done, &Button::clicked, this, &QDialog::accept);
    auto *header = new QHBoxLayout;
    header->addWidget(title);
    header->addStretch(1);
    header->addWidget(done);
    stack.addLayout(header);
    QLabel *introduction =
        makeText(u"Android 11+ · same Wi-Fi network. On the phone, open Developer options → Wireless "
                 "debugging. Pairing and connection use different ports."_s,
                 theme::font(theme::bodySize), theme::secondaryText, this);
    introduction->setObjectName(u"sheetText"_s);
    stack.addWidget(introduction);
}

void WirelessSheet::addPairing(QVBoxLayout &stack)
{
    QLabel *heading =
        makeText(u"1. Pair with pairing code"_s, theme::font(theme::bodySize, QFont::Bold), theme::text, this);
    heading->setObjectName(u"pairHeading"_s);
    m_pair->setObjectName(u"pairButton"_s);
    // The code is a secret: shown as dots, kept out of input histories, and never copied.
    m_pairingCode->setEchoMode(QLineEdit::Password);
    m_pairingCode->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhHiddenText | Qt::ImhNoPredictiveText |
                                       Qt::ImhPreferNumbers);
    stack.addWidget(heading);
    stack.addWidget(m_pairingEndpoint);
    stack.addWidget(m_pairingCode);
    stack.addWidget(m_pair);
}

void WirelessSheet::addConnection(QVBoxLayout &stack)
{
    QLabel *heading = makeText(u"2. Connect using the main screen’s address"_s,
                               theme::font(theme::bodySize, QFont::Bold), theme::text, this);
    heading->setObjectName(u"connectHeading"_s);
    m_connect->setObjectName(u"connectButton"_s);
    stack.addWidget(heading);
    stack.addWidget(m_connectEndpoint);
    stack.addWidget(m_connect);
}

void WirelessSheet::render()
{
    if (m_model.wireless())
        ensureBuilt();
    if (!layout())
        return;
    renderText(*m_pairingEndpoint, m_model.pairingEndpoint);
    renderText(*m_pairingCode, m_model.pairingCode);
    renderText(*m_connectEndpoint, m_model.connectEndpoint);
    m_pair->setEnabled(!m_model.busy());
    m_connect->setEnabled(!m_model.busy());
    m_status->setMessage(m_model.status());
    if (m_model.wireless() == isVisible())
        return;
    if (isVisible()) {
        hide();
        return;
    }
    m_pairingEndpoint->setFocus();
    open();
}

} // namespace varda
