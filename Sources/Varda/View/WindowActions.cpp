// WindowActions: each action has its keys and calls the model.
#include "Varda/View/WindowActions.h"

#include "Varda/View/Widgets/Icon.h"
#include "Varda/View/Widgets/PlainText.h"

#include <QAction>
#include <QMenu>
#include <QPushButton>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

QAction *makeAction(QWidget &window, const QString &name, Icon icon, const QString &text,
                    const QList<QKeySequence> &keys)
{
    auto *action = new QAction(varda::icon(icon), text, &window);
    action->setObjectName(name);
    action->setShortcuts(keys);
    window.addAction(action);
    return action;
}

} // namespace

WindowActions::WindowActions(VardaModel &model, QWidget &window)
    : QObject(&window)
    , chooseBuild(makeAction(window, u"chooseAction"_s, Icon::Box, u"Choose APK"_s, {QKeySequence(u"Ctrl+O"_s)}))
    , refresh(makeAction(window, u"refreshAction"_s, Icon::Refresh, u"Refresh devices"_s,
                         {QKeySequence(u"F5"_s), QKeySequence(u"Ctrl+R"_s)}))
    , wireless(makeAction(window, u"wirelessAction"_s, Icon::Wifi, u"Connect over Wi-Fi"_s,
                          {QKeySequence(u"Ctrl+Shift+W"_s)}))
    , exportLogs(makeAction(window, u"exportAction"_s, Icon::Terminal, u"Export console"_s,
                            {QKeySequence(u"Ctrl+S"_s), QKeySequence(u"Ctrl+E"_s)}))
    , find(makeAction(window, u"findAction"_s, Icon::Find, u"Find in console"_s, {QKeySequence(u"Ctrl+F"_s)}))
    , findNext(makeAction(window, u"findNextAction"_s, Icon::Down, u"Next match"_s, {QKeySequence(u"F3"_s)}))
    , findPrevious(
          makeAction(window, u"findPreviousAction"_s, Icon::Up, u"Previous match"_s, {QKeySequence(u"Shift+F3"_s)}))
    , m_model(model)
{
    QObject::connect(chooseBuild, &QAction::triggered, this, [this] { m_model.chooseAPK(); });
    QObject::connect(refresh, &QAction::triggered, this, [this] { m_model.startRefresh(); });
    QObject::connect(wireless, &QAction::triggered, this, [this] { m_model.wireless = true; });
    QObject::connect(exportLogs, &QAction::triggered, this, [this] { m_model.exportLogs(); });
}

void WindowActions::render()
{
    refresh->setEnabled(!m_model.busy());
    wireless->setEnabled(!m_model.busy());
    exportLogs->setEnabled(!m_model.logs().isEmpty());
}

void WindowActions::addTo(QMenu &menu) const
{
    menu.addActions({chooseBuild, refresh, wireless, exportLogs, find, findNext, findPrevious});
}

void setHint(QPushButton &button, const QString &words, const QAction *action)
{
    setPlainToolTip(&button,
                    action ? words + u" (" + action->shortcut().toString(QKeySequence::NativeText) + u')' : words);
}

} // namespace varda
