// ConsolePanel: the heading and the controls in a row, the line in which words are searched for, the text, and its
// footer.
#include "Varda/View/ConsolePanel.h"

#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/ConsoleText.h"
#include "Varda/View/Widgets/FindLine.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Panel.h"
#include "Varda/View/Widgets/Theme.h"
#include "Varda/View/WindowActions.h"
#include "VardaCore/Validation.h"

#include <QAction>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int stackSpacing = 10;
const auto placeholder = u"Device output will appear here. Enter a package ID to limit logs to your running app."_s;

} // namespace

ConsolePanel::ConsolePanel(VardaModel &model, const WindowActions &actions, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_toggle(new Button(Button::Kind::Compact, u"Start logs"_s, std::nullopt, this))
    , m_export(new Button(Button::Kind::Compact, u"Export"_s, std::nullopt, this))
    , m_find(new FindLine(u"Find in console"_s, this))
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
    stack->addWidget(m_find);
    stack->addWidget(m_text);
    stack->addWidget(footer);

    connectFind(actions);
    QObject::connect(m_text, &ConsoleText::lineDoubleClicked, this, [this](const QString &line) {
        if (const QString words = line.trimmed(); Validation::package(words))
            m_model.packageName = words;
    });
}

void ConsolePanel::connectFind(const WindowActions &actions)
{
    setHint(*m_find->previous, u"Previous match"_s, actions.findPrevious);
    setHint(*m_find->next, u"Next match"_s, actions.findNext);
    setHint(*m_find->closing, u"Close (Esc)"_s);
    QObject::connect(actions.find, &QAction::triggered, this, &ConsolePanel::openFind);
    QObject::connect(actions.findNext, &QAction::triggered, this, [this] { goToMatch(true); });
    QObject::connect(actions.findPrevious, &QAction::triggered, this, [this] { goToMatch(false); });
    QObject::connect(m_find, &FindLine::matchAsked, this, &ConsolePanel::goToMatch);
    QObject::connect(m_find->closing, &Button::clicked, this, &ConsolePanel::closeFind);
    QObject::connect(m_find, &FindLine::wordsChanged, this, [this] {
        mark();
        m_text->goToNearestMatch();
    });
    QObject::connect(m_text, &ConsoleText::matchesChanged, this, &ConsolePanel::showCount);
}

void ConsolePanel::openFind()
{
    m_find->open();
    mark();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest); // the page makes room before it is scrolled
    Q_EMIT searched();
}

void ConsolePanel::closeFind()
{
    m_find->dismiss(*m_text);
    mark();
}

/// Opens the line if it is closed.
void ConsolePanel::goToMatch(bool next)
{
    if (m_find->isHidden())
        openFind();
    m_text->goToMatch(next);
    Q_EMIT searched();
}

/// Has the console mark what the line holds. What stands there while there is no output is the window's own text.
void ConsolePanel::mark()
{
    m_text->mark(m_model.logs().isEmpty() ? QString() : m_find->words());
    showCount();
}

void ConsolePanel::showCount()
{
    m_find->showCount(m_text->selectedMatch(), m_text->matchCount());
}

void ConsolePanel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && m_find->isVisible())
        closeFind();
    else
        QWidget::keyPressEvent(event);
}

void ConsolePanel::render(bool listed)
{
    m_toggle->setText(m_model.logging() ? u"Pause logs"_s : u"Start logs"_s);
    if (listed)
        m_text->showList(m_model.logs());
    else
        m_text->showLog(m_model.logs().isEmpty() ? placeholder : m_model.logs());
    mark();
}

} // namespace varda
