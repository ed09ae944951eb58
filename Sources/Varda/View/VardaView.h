// VardaView: the workspace window.
//
// It shows the model and calls it; it keeps nothing of its own. Every announced change leads to one `render()` on the
// next turn of the event loop, which sets every widget from the model and touches only what differs.
#pragma once

#include "Varda/Model/VardaModel.h"
#include "Varda/View/Attention.h"
#include "Varda/View/Widgets/FocusReturn.h"

#include <QWidget>

class QMenu;

namespace varda {

class WindowActions;
class ErrorAlert;
class MainColumn;
class SideColumn;
class WirelessSheet;

class VardaView final : public QWidget
{
    Q_OBJECT

public:
    explicit VardaView(std::shared_ptr<VardaModel> model, QWidget *parent = nullptr);
    ~VardaView() override;
    Q_DISABLE_COPY_MOVE(VardaView)

    /// The application menu. It lists the window's own commands; the shell adds About and Quit.
    QMenu *applicationMenu() const;

    /// Has `action`'s keys work in the window and in the sheet and the alert over it.
    void addEverywhere(QAction *action);

Q_SIGNALS:
    /// The user closed the window.
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void scheduleRender();
    void render();
    void presentDialogs();
    QWidget *alertHost() const;

    const std::shared_ptr<VardaModel> m_model;
    WindowActions *m_actions;
    SideColumn *m_side;
    MainColumn *m_main;
    WirelessSheet *m_sheet;
    ErrorAlert *m_alert;
    FocusReturn m_windowFocus;
    FocusReturn m_sheetFocus;
    Attention m_attention;
    bool m_renderScheduled = false;
};

} // namespace varda
