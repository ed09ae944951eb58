// WindowActions: the window's keyboard shortcuts, as actions that the application menu lists and whose keys the
// tooltips of the buttons name.
#pragma once

#include "Varda/Model/VardaModel.h"

class QAction;
class QMenu;
class QPushButton;

namespace varda {

/// Each action does what its button does, and is enabled in the same conditions.
class WindowActions final : public QObject
{
    Q_OBJECT

public:
    /// The actions' keys work in `window`.
    WindowActions(VardaModel &model, QWidget &window);

    void render();

    /// Lists the actions at the top of `menu`.
    void addTo(QMenu &menu) const;

    QAction *const chooseBuild;
    QAction *const refresh;
    QAction *const wireless;
    QAction *const exportLogs;
    /// These three are the console's, which does them.
    QAction *const find;
    QAction *const findNext;
    QAction *const findPrevious;

private:
    VardaModel &m_model;
};

/// Gives `button` a tooltip that says what it does and by which key.
void setHint(QPushButton &button, const QString &words, const QAction *action = nullptr);

} // namespace varda
