// ConsolePanel: the heading and the controls in a row, the text below them, and its footer.
#include "Varda/View/ConsolePanel.h"

#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/ConsoleText.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Panel.h"
#include "Varda/View/Widgets/Theme.h"
#include "Varda/View/WindowActions.h"

#include <QAction>
#include <QVBoxLayout>

namespace varda {
namespace {

using namespace Qt::StringLiterals;

constexpr int stackSpacing = 10;
const auto placeholder = u"Device output will appear here. Enter a package ID to limit logs to your running app."_s;

} // namespace

ConsolePanel::ConsolePanel(VardaModel &model, const WindowActions &actions, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_toggle(new Button(Button::Kind::Compact, u"Start logs"_s, std::nullopt, this))
    , m_export(new Button(Button::Kind::Compact, u"Export"_s, std::nullopt, this))
    , m_text(new ConsoleText(this))
{
    setObjectName(u"consolePanel"_s);
    m_toggle->setObjectName(u"logsButton"_s);
    m_export->setObjectName(u"exportButton"_s);
    m_text->setObjectName(u"consoleText"_s);
    m_text->setAccessibleName(u"Device console"_s);
    tie(*m_toggle, u"Read the phone’s log every 2.5 seconds"_s, actions.logs);
    tie(*m_export, u"Save what the console shows"_s, actions.exportLogs);
    QObject::connect(actions.logs, &QAction::triggered, this, [this] {
        if (m_model.logging())
            Q_EMIT started();
    });

    IconLabel *heading = makeHeading(Icon::Terminal, u"DEVICE CONSOLE"_s, this);
    heading->setObjectName(u"consoleHeading"_s);
    QLabel *footer = makeText(u"Latest 350 lines · refreshes every 2.5s"_s, theme::font(theme::captionSize),
                              theme::secondaryText, this);
    footer->setObjectName(u"consoleFooter"_s);

    auto *title = new QHBoxLayout;
    title->setSpacing(8);
    title->addWidget(heading);
    title->addStretch(1);
    title->addWidget(m_toggle);
    title->addWidget(m_export);
    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(stackSpacing);
    stack->addLayout(title);
    stack->addWidget(m_text);
    stack->addWidget(footer);
}

void ConsolePanel::render(bool listed)
{
    m_toggle->setText(m_model.logging() ? u"Pause logs"_s : u"Start logs"_s);
    if (listed)
        m_text->showList(m_model.logs());
    else
        m_text->showLog(m_model.logs().isEmpty() ? placeholder : m_model.logs());
}

} // namespace varda
