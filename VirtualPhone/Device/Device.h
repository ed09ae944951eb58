// Device: what the phone is and holds: its names, its apps and their processes, its log and its touch screen.
#pragma once

#include "Device/FileStore.h"
#include "Device/SystemLog.h"

#include <QList>
#include <QObject>
#include <QPoint>
#include <QSize>
#include <QString>

namespace varda::phone {

struct App
{
    QString package;
    QString activity; ///< full class name of the launcher activity; empty for an app without one
    bool system = false;
    qint64 pid = 0; ///< 0 while it does not run
};

/// A place where the screen was touched, in pixels of the phone's screen.
struct Touch
{
    QPoint position;
    bool down = false;
    bool any = false; ///< false until the screen has been touched
};

/// What the screen of wireless debugging says. Empty is what is not to be seen.
struct WirelessScreen
{
    QString connection; ///< address
    QString pairing;    ///< address
    QString code;
};

class Device : public QObject
{
    Q_OBJECT

public:
    Device(const QString &model, QSize screen, QObject *parent);

    QString model() const { return m_model; }
    /// The model with everything but letters and digits replaced by "_", as phones name themselves towards adb.
    QString identifier() const;
    QSize screen() const { return m_screen; }

    const QList<App> &apps() const { return m_apps; }
    /// The app of that name, or null.
    const App *app(const QString &package) const;
    /// Adds or replaces an app. An empty activity means the package's ".MainActivity", "none" an app without one.
    void install(const QString &package, const QString &activity = {});
    bool uninstall(const QString &package);

    /// Makes the app run and come to the front. False when it ran already. The app must be installed.
    bool launch(const QString &package);
    void stop(const QString &package);
    /// The package in front; empty for the home screen.
    QString foreground() const { return m_foreground; }

    Touch touch() const { return m_touch; }
    void setTouch(const Touch &touch) { m_touch = touch; }
    /// What was typed last; shown on the screen.
    QString typed() const { return m_typed; }
    void setTyped(const QString &text) { m_typed = text; }
    const WirelessScreen &wireless() const { return m_wireless; }
    void setWireless(const WirelessScreen &screen) { m_wireless = screen; }
    /// Leaves the app in front without ending it, as the Back and Home keys do.
    void goHome() { m_foreground.clear(); }

    SystemLog &log() { return m_log; }
    FileStore &files() { return m_files; }

private:
    void logAsForegroundApp();
    App *find(const QString &package);

    const QString m_model;
    const QSize m_screen;
    QList<App> m_apps;
    QString m_foreground;
    Touch m_touch;
    QString m_typed;
    WirelessScreen m_wireless;
    qint64 m_lastPid;
    SystemLog m_log;
    FileStore m_files;
};

/// The class named by a component's second part: ".Main" of package "a.b" is "a.b.Main".
QString activityClass(const QString &package, const QString &activity);

} // namespace varda::phone
