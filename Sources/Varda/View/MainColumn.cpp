// MainColumn: the stack of panels, and the status line, which floats while its place is out of sight.
#include "Varda/View/MainColumn.h"

#include "Varda/Model/Hints.h"
#include "Varda/View/ConsolePanel.h"
#include "Varda/View/DeviceCard.h"
#include "Varda/View/StatusLine.h"
#include "Varda/View/Widgets/HintBlock.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"
#include "Varda/View/WindowActions.h"
#include "Varda/View/WorkPanels.h"

#include <QAction>
#include <QEvent>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int headerGap = 7;
constexpr int focusMargin = 24;
constexpr int badgePadding = 8;
constexpr int maxStatusShare = 3; // of the column's height: one part in so many

/// "LOCAL BUILD / 0.1" in a frame of its own.
QWidget *makeBadge()
{
    auto *badge = new Surface(theme::faded(theme::accent, 0.10), theme::faded(theme::accent, 0.30), 6);
    QLabel *text = makeText(u"LOCAL BUILD / 0.1"_s, theme::monospaced(theme::captionSize), theme::accent, badge);
    text->setObjectName(u"badge"_s);
    text->setWordWrap(false);
    auto *row = new QHBoxLayout(badge);
    row->setContentsMargins(badgePadding, badgePadding / 2, badgePadding, badgePadding / 2);
    row->addWidget(text);
    badge->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return badge;
}

/// What helps if `device` cannot be worked with. A phone that does not trust this computer has a warning of its own.
std::optional<QString> hintForDevice(const AndroidDevice &device)
{
    if (device.ready() || device.state == u"unauthorized")
        return std::nullopt;
    return hintFor(u"device "_s + device.state);
}

/// What helps if the status tells why the devices cannot be listed. An action's own status is passed over: its failure
/// is in the alert, and the names of files in it may hold any words.
std::optional<QString> hintForListing(const QString &status, bool busy)
{
    constexpr std::array named{QStringView(u"Installing "), QStringView(u"Installed "),
                               QStringView(u"Screenshot saved to ")};
    const auto startsStatus = [&](QStringView words) { return status.startsWith(words); };
    if (busy || std::any_of(named.begin(), named.end(), startsStatus))
        return std::nullopt;
    return hintFor(status);
}

} // namespace

MainColumn::MainColumn(VardaModel &model, const WindowActions &actions, QWidget *parent)
    : QScrollArea(parent)
    , m_model(model)
{
    setObjectName(u"mainColumn"_s);
    setAccessibleName(u"Workspace"_s);
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn); // within the padding; invisible if nothing scrolls
    setFocusPolicy(Qt::ClickFocus);                    // keys scroll it from wherever the focus is

    auto *column = new QWidget;
    setWidget(column); // while it is empty: QScrollArea takes its present size, which is not the final one
    auto *stack = new QVBoxLayout(column);
    stack->setContentsMargins(theme::mainPadding, theme::mainPadding, theme::mainPadding - theme::scrollBarExtent,
                              theme::mainPadding);
    stack->setSpacing(theme::mainSpacing);
    addHeader(*stack);
    stack->addWidget(m_card = new DeviceCard(column));
    stack->addWidget(m_warning = new AuthorizationWarning(column));
    stack->addWidget(m_deviceHint = new HintBlock(u"deviceHint"_s, column));
    stack->addWidget(m_deploy = new DeployPanel(model, actions, column));
    stack->addWidget(m_livePhone = new LivePhonePanel(actions, column));
    stack->addWidget(m_application = new ApplicationPanel(model, actions, column));
    stack->addWidget(m_console = new ConsolePanel(model, actions, column));
    stack->addWidget(m_statusPlace = new QWidget(column));
    QLabel *note = makeText(u"USB setup: Android Settings → About phone → tap Build number 7 times → Developer options "
                            "→ USB debugging. Use a data cable, unlock the phone and allow this computer. An emulator "
                            "is shown separately and is never presented as a real phone test."_s,
                            theme::font(theme::captionSize), theme::secondaryText, column);
    note->setObjectName(u"setupNote"_s);
    stack->addWidget(note);
    stack->addStretch(1);
    m_card->hide();
    m_warning->hide();
    viewport()->setAutoFillBackground(false);
    column->setAutoFillBackground(false);

    QObject::connect(m_console, &ConsolePanel::started, this, &MainColumn::showConsole);
    QObject::connect(m_console, &ConsolePanel::searched, this, &MainColumn::showConsole);
    QObject::connect(actions.list, &QAction::triggered, this, [this] { m_listAskedAt = verticalScrollBar()->value(); });

    m_status = new StatusLine(viewport());
    m_status->installEventFilter(this);
    m_statusPlace->installEventFilter(this);
}

void MainColumn::addHeader(QVBoxLayout &stack)
{
    QLabel *headline =
        makeText(u"Your Android. On your Mac."_s, theme::font(theme::heroSize, QFont::Bold), theme::text);
    headline->setObjectName(u"headline"_s);
    QLabel *tagline =
        makeText(u"Deploy. Control. Inspect. Repeat."_s, theme::font(theme::bodySize), theme::secondaryText);
    tagline->setObjectName(u"tagline"_s);
    auto *header = new QVBoxLayout;
    header->setSpacing(headerGap);
    header->addWidget(makeBadge(), 0, Qt::AlignLeft);
    header->addWidget(headline);
    header->addWidget(tagline);
    stack.addLayout(header);
}

void MainColumn::render()
{
    const auto selected = m_model.selected();
    if (selected)
        m_card->setDevice(*selected);
    m_card->setVisible(selected.has_value());
    m_warning->setVisible(selected && selected->state == u"unauthorized");
    m_deviceHint->setHint(selected ? hintForDevice(*selected) : std::nullopt);
    m_deploy->render();
    m_livePhone->render();
    m_application->render();
    m_status->setStatus(m_model.status(), m_model.busy(), hintForListing(m_model.status(), m_model.busy()));

    const bool listingEnded = m_listAskedAt && !m_model.busy();
    const bool listed = listingEnded && !m_model.logging() && !m_model.error();
    m_console->render(listed);
    if (listed && verticalScrollBar()->value() == *m_listAskedAt)
        showConsole();
    if (listingEnded)
        m_listAskedAt.reset();
}

bool MainColumn::eventFilter(QObject *watched, QEvent *event)
{
    const bool statusGrew = watched == m_status && event->type() == QEvent::LayoutRequest;
    const bool placeMoved =
        watched == m_statusPlace && (event->type() == QEvent::Move || event->type() == QEvent::Resize);
    if (statusGrew || placeMoved)
        placeStatus();
    return QScrollArea::eventFilter(watched, event);
}

void MainColumn::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    placeStatus();
}

void MainColumn::scrollContentsBy(int dx, int dy)
{
    QScrollArea::scrollContentsBy(dx, dy);
    placeStatus();
}

/// Puts the status line on its place in the stack, or at the foot of the column if that is out of sight.
void MainColumn::placeStatus()
{
    if (!m_status)
        return;
    m_status->limitHeight(viewport()->height() / maxStatusShare);
    const int width = viewport()->width() + theme::scrollBarExtent;
    m_status->resize(width, m_status->height());
    m_status->layout()->activate();
    const int height = m_status->layout()->sizeHint().height();
    // Before its text is laid out, the line may be lower than its paddings.
    m_statusPlace->setFixedHeight(std::max(height - 2 * StatusLine::verticalPadding, 0));
    const int place = m_statusPlace->mapTo(viewport(), QPoint(0, -StatusLine::verticalPadding)).y();
    const int foot = viewport()->height() - height;
    const bool floating = place > foot;
    m_status->setGeometry(0, floating ? foot : place, width, height);
    m_status->setFloating(floating);
    m_status->raise();
}

/// Not QScrollArea's, which would scroll as well when Qt itself moves the focus. VardaView shows what Tab leads to.
bool MainColumn::focusNextPrevChild(bool next)
{
    return QWidget::focusNextPrevChild(next); // NOLINT(bugprone-parent-virtual-call)
}

void MainColumn::showFocus()
{
    const QWidget *focused = widget()->focusWidget();
    if (focused && focused->hasFocus() && widget()->isAncestorOf(focused))
        reveal(*focused, focusMargin);
}

void MainColumn::showConsole()
{
    const QRect sight(0, 0, viewport()->width(), viewport()->height() - m_status->height());
    if (!sight.contains(QRect(m_console->mapTo(viewport(), QPoint(0, 0)), m_console->size())))
        reveal(*m_console, theme::mainSpacing);
}

/// Scrolls as little as needed to bring `widget` into view, `margin` away from the edges and the floating status line.
void MainColumn::reveal(const QWidget &widget, int margin)
{
    const int top = widget.mapTo(this->widget(), QPoint(0, 0)).y() - margin;
    const int bottom = top + widget.height() + 2 * margin + m_status->height();
    QScrollBar *bar = verticalScrollBar();
    if (bottom > bar->value() + viewport()->height())
        bar->setValue(bottom - viewport()->height());
    if (top < bar->value())
        bar->setValue(top);
}

} // namespace varda
