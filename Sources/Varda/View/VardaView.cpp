// VardaView: builds its widgets once and then only updates them; one function decides which dialog is in front.
#include "Varda/View/VardaView.h"

#include "Varda/View/ErrorAlert.h"
#include "Varda/View/MainColumn.h"
#include "Varda/View/SideColumn.h"
#include "Varda/View/Widgets/Theme.h"
#include "Varda/View/WindowActions.h"
#include "Varda/View/WirelessSheet.h"

#include <QAction>
#include <QApplication>
#include <QHBoxLayout>
#include <QMenu>

#include <utility>

namespace varda {

using namespace Qt::StringLiterals;

VardaView::VardaView(std::shared_ptr<VardaModel> model, QWidget *parent)
    : QWidget(parent)
    , m_model(std::move(model))
    , m_actions(new WindowActions(*m_model, *this))
    , m_side(new SideColumn(*m_model, *m_actions, this))
    , m_main(new MainColumn(*m_model, *m_actions, this))
    , m_sheet(new WirelessSheet(*m_model, this))
    , m_alert(new ErrorAlert(this))
    , m_windowFocus(this, m_main)
    , m_sheetFocus(m_sheet, m_sheet)
    , m_attention(this)
{
    setObjectName(u"workspace"_s);
    setWindowTitle(u"Varda"_s);
    setMinimumSize(theme::minimumWindowWidth, theme::minimumWindowHeight);
    resize(theme::windowWidth, theme::windowHeight);
    auto *columns = new QHBoxLayout(this);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(0);
    columns->addWidget(m_side);
    columns->addWidget(m_main, 1);
    m_main->setFocus(); // keys scroll; nothing is pressed by accident

    QObject::connect(m_model.get(), &VardaModel::objectWillChange, this, &VardaView::scheduleRender);
    QObject::connect(m_alert, &QDialog::finished, this, [this] { m_model->error = std::nullopt; });
    render();
}

VardaView::~VardaView() = default;

QMenu *VardaView::applicationMenu() const
{
    return m_side->applicationMenu();
}

void VardaView::addEverywhere(QAction *action)
{
    for (QWidget *window : std::initializer_list<QWidget *>{this, m_sheet, m_alert})
        window->addAction(action);
}

void VardaView::closeEvent(QCloseEvent *event)
{
    QWidget::closeEvent(event);
    Q_EMIT closed();
}

/// Tab brings what it leads to into view. Qt would move the focus on from a control that is disabled in the same way,
/// one control after the other; there it waits for `FocusReturn` instead.
bool VardaView::focusNextPrevChild(bool next)
{
    if (const QWidget *left = focusWidget(); left && !left->isEnabled())
        return false;
    const bool moved = QWidget::focusNextPrevChild(next);
    m_main->showFocus();
    return moved;
}

void VardaView::scheduleRender()
{
    if (std::exchange(m_renderScheduled, true))
        return;
    QMetaObject::invokeMethod(this, &VardaView::render, Qt::QueuedConnection);
}

void VardaView::render()
{
    m_renderScheduled = false;
    m_windowFocus.before();
    m_sheetFocus.before();
    m_actions->render();
    m_side->render();
    m_main->render();
    presentDialogs();
    m_windowFocus.after();
    m_sheetFocus.after();
    m_attention.render(m_model->busy());
}

/// The alert is above the sheet, the sheet above the window. A dialog that is hidden hides the dialogs above it, so the
/// alert is hidden first and then shown above whatever is in front.
void VardaView::presentDialogs()
{
    const auto error = m_model->error();
    if (!error || m_model->wireless() != m_sheet->isVisible())
        m_alert->withdraw();
    m_sheet->render();
    if (error)
        m_alert->present(*error, alertHost());
}

/// The window below the alert: a file dialog if one is open, else the sheet, else the main window.
QWidget *VardaView::alertHost() const
{
    QWidget *modal = QApplication::activeModalWidget();
    if (modal && modal != m_alert && modal->isVisible())
        return modal;
    return m_sheet->isVisible() ? static_cast<QWidget *>(m_sheet) : m_main->window();
}

} // namespace varda
