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
    action->setAutoRepeat(false); // a key that is held would open and end the live phone in turn
    window.addAction(action);
    return action;
}

} // namespace

WindowActions::WindowActions(VardaModel &model, QWidget &window)
    : QObject(&window)
    , chooseBuild(makeAction(window, u"chooseAction"_s, Icon::Box, u"Choose APK"_s, {QKeySequence(u"Ctrl+O"_s)}))
    , install(
          makeAction(window, u"installAction"_s, Icon::Install, u"Install on device"_s, {QKeySequence(u"Ctrl+I"_s)}))
    , livePhone(makeAction(window, u"livePhoneAction"_s, Icon::Windows, {}, {QKeySequence(u"Ctrl+M"_s)}))
    , record(makeAction(window, u"recordAction"_s, Icon::Record, u"Record test"_s, {QKeySequence(u"Ctrl+Shift+M"_s)}))
    , launch(makeAction(window, u"launchAction"_s, Icon::Play, u"Launch app"_s, {QKeySequence(u"Ctrl+L"_s)}))
    , stopApp(makeAction(window, u"stopAction"_s, Icon::Stop, u"Stop app"_s, {QKeySequence(u"Ctrl+Shift+L"_s)}))
    , list(makeAction(window, u"listAction"_s, Icon::List, u"List apps"_s, {QKeySequence(u"Ctrl+Shift+A"_s)}))
    , screenshot(makeAction(window, u"screenshotAction"_s, Icon::Camera, u"Screenshot"_s, {QKeySequence(u"Ctrl+P"_s)}))
    , logs(makeAction(window, u"logsAction"_s, Icon::Terminal, {}, {QKeySequence(u"Ctrl+T"_s)}))
    , exportLogs(makeAction(window, u"exportAction"_s, Icon::Export, u"Export console"_s,
                            {QKeySequence(u"Ctrl+S"_s), QKeySequence(u"Ctrl+E"_s)}))
    , refresh(makeAction(window, u"refreshAction"_s, Icon::Refresh, u"Refresh devices"_s,
                         {QKeySequence(u"F5"_s), QKeySequence(u"Ctrl+R"_s)}))
    , wireless(makeAction(window, u"wirelessAction"_s, Icon::Wifi, u"Connect over Wi-Fi"_s,
                          {QKeySequence(u"Ctrl+Shift+W"_s)}))
    , find(makeAction(window, u"findAction"_s, Icon::Find, u"Find in console"_s, {QKeySequence(u"Ctrl+F"_s)}))
    , findNext(makeAction(window, u"findNextAction"_s, Icon::Down, u"Next match"_s, {QKeySequence(u"F3"_s)}))
    , findPrevious(
          makeAction(window, u"findPreviousAction"_s, Icon::Up, u"Previous match"_s, {QKeySequence(u"Shift+F3"_s)}))
    , m_model(model)
{
    QObject::connect(chooseBuild, &QAction::triggered, this, [this] { m_model.chooseAPK(); });
    QObject::connect(refresh, &QAction::triggered, this, [this] { m_model.startRefresh(); });
    QObject::connect(wireless, &QAction::triggered, this, [this] { m_model.wireless = true; });
    QObject::connect(install, &QAction::triggered, this, [this] { m_model.install(); });
    QObject::connect(livePhone, &QAction::triggered, this, [this] { m_model.mirrorPhone(false); });
    QObject::connect(record, &QAction::triggered, this, [this] { m_model.mirrorPhone(true); });
    QObject::connect(launch, &QAction::triggered, this, [this] { m_model.appAction(true); });
    QObject::connect(stopApp, &QAction::triggered, this, [this] { m_model.appAction(false); });
    QObject::connect(list, &QAction::triggered, this, [this] { m_model.listApps(); });
    QObject::connect(screenshot, &QAction::triggered, this, [this] { m_model.screenshot(); });
    QObject::connect(logs, &QAction::triggered, this, [this] { m_model.logging = !m_model.logging(); });
    QObject::connect(exportLogs, &QAction::triggered, this, [this] { m_model.exportLogs(); });
}

void WindowActions::render()
{
    const bool takesActions = m_model.takesActions();
    const bool mirroring = m_model.mirrorRunning();
    install->setEnabled(takesActions && m_model.apk().has_value());
    livePhone->setText(livePhoneLabel(mirroring));
    livePhone->setEnabled(takesActions || mirroring);
    record->setEnabled(takesActions && !mirroring);
    for (QAction *action : {launch, stopApp, list, screenshot})
        action->setEnabled(takesActions);
    logs->setText(m_model.logging() ? u"Pause logs"_s : u"Start logs"_s);
    logs->setEnabled(m_model.deviceReady());
    exportLogs->setEnabled(!m_model.logs().isEmpty());
    refresh->setEnabled(!m_model.busy());
    wireless->setEnabled(!m_model.busy());
}

void WindowActions::addTo(QMenu &menu) const
{
    menu.addActions({chooseBuild, install});
    menu.addSeparator();
    menu.addActions({livePhone, record, screenshot});
    menu.addSeparator();
    menu.addActions({launch, stopApp, list});
    menu.addSeparator();
    menu.addActions({logs, exportLogs, find, findNext, findPrevious});
    menu.addSeparator();
    menu.addActions({refresh, wireless});
}

QString livePhoneLabel(bool running)
{
    return running ? u"Stop live phone"_s : u"Open live phone"_s;
}

void tie(QPushButton &button, const QString &words, QAction *action)
{
    setHint(button, words, action);
    QObject::connect(&button, &QPushButton::clicked, action, &QAction::trigger);
    QObject::connect(action, &QAction::enabledChanged, &button, &QPushButton::setEnabled);
}

void setHint(QPushButton &button, const QString &words, const QAction *action)
{
    setPlainToolTip(&button,
                    action ? words + u" (" + action->shortcut().toString(QKeySequence::NativeText) + u')' : words);
}

} // namespace varda
