// MainColumn: everything right of the devices, from the headline to the set-up note, in one vertical scroll.
#pragma once

#include "Varda/Model/VardaModel.h"

#include <QScrollArea>

#include <optional>

class QVBoxLayout;

namespace varda {

class ApplicationPanel;
class AuthorizationWarning;
class WindowActions;
class ConsolePanel;
class DeployPanel;
class DeviceCard;
class HintBlock;
class LivePhonePanel;
class StatusLine;

/// The status line stands under the console, but stays at the foot of the window while its place is further down: an
/// action's outcome is always in sight.
class MainColumn final : public QScrollArea
{
    Q_OBJECT

public:
    MainColumn(VardaModel &model, const WindowActions &actions, QWidget *parent = nullptr);

    void render();

    /// Scrolls the control that has the focus out from under the edges and the floating status line.
    void showFocus();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool focusNextPrevChild(bool next) override;

private:
    void addHeader(QVBoxLayout &stack);
    void placeStatus();
    void reveal(const QWidget &widget, int margin);
    void showConsole();

    VardaModel &m_model;
    DeviceCard *m_card = nullptr;
    AuthorizationWarning *m_warning = nullptr;
    HintBlock *m_deviceHint = nullptr;
    DeployPanel *m_deploy = nullptr;
    LivePhonePanel *m_livePhone = nullptr;
    ApplicationPanel *m_application = nullptr;
    ConsolePanel *m_console = nullptr;
    QWidget *m_statusPlace = nullptr; ///< holds the status line's room in the stack
    StatusLine *m_status = nullptr;
    std::optional<int>
        m_listAskedAt; ///< where the page stood when the list of apps was asked for, until that has ended
};

} // namespace varda
