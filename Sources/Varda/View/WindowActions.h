// WindowActions: the window's keyboard shortcuts, as actions that the application menu lists and whose keys the
// tooltips of the buttons name.
#pragma once

#include "Varda/Model/VardaModel.h"

class QAction;
class QMenu;
class QPushButton;

namespace varda {

/// The conditions in which each action is enabled stand here and nowhere else: its button follows it.
class WindowActions final : public QObject
{
    Q_OBJECT

public:
    /// The actions' keys work in `window`.
    WindowActions(VardaModel &model, QWidget &window);

    void render();

    /// Lists the actions at the top of `menu`, in groups.
    void addTo(QMenu &menu) const;

    QAction *const chooseBuild;
    QAction *const install;
    QAction *const livePhone; ///< opens the live phone, and ends it
    QAction *const record;
    QAction *const launch;
    QAction *const stopApp;
    QAction *const list;
    QAction *const screenshot;
    QAction *const logs; ///< turns the console on and off
    QAction *const exportLogs;
    QAction *const refresh;
    QAction *const wireless;
    /// These three are the console's, which does them.
    QAction *const find;
    QAction *const findNext;
    QAction *const findPrevious;

private:
    VardaModel &m_model;
};

/// What the button of the live phone says.
QString livePhoneLabel(bool running);

/// Has `button` do what `action` does, and be enabled if it is. Its tooltip says `words` and the key.
void tie(QPushButton &button, const QString &words, QAction *action);

/// Gives `button` a tooltip that says what it does and by which key.
void setHint(QPushButton &button, const QString &words, const QAction *action = nullptr);

} // namespace varda
