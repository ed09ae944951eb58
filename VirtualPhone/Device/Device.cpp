// Device: an app that is started gets a process ID that no app had before.
#include "Device/Device.h"

#include <QRegularExpression>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr qint64 firstAppPid = 8400;
constexpr qint64 systemServerPid = 812;
constexpr qint64 pidStep = 37;
constexpr qsizetype tagLength = 23; // the longest that Android's log takes everywhere

} // namespace

QString activityClass(const QString &package, const QString &activity)
{
    return activity.startsWith(u'.') ? package + activity : activity;
}

Device::Device(const QString &model, QSize screen, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_screen(screen)
    , m_apps({{u"android"_s, {}, true, systemServerPid},
              {u"com.android.systemui"_s, {}, true, 1430},
              {u"com.android.settings"_s, u"com.android.settings.Settings"_s, true, 0}})
    , m_lastPid(firstAppPid)
    , m_log(this)
{
    connect(&m_log, &SystemLog::chatted, this, &Device::logAsForegroundApp);
}

QString Device::identifier() const
{
    static const QRegularExpression other(u"[^A-Za-z0-9]"_s);
    return QString(m_model).replace(other, u"_"_s);
}

const App *Device::app(const QString &package) const
{
    const auto found = std::find_if(m_apps.begin(), m_apps.end(), [&](const App &a) { return a.package == package; });
    return found == m_apps.end() ? nullptr : &*found;
}

void Device::logAsForegroundApp()
{
    const App *front = app(m_foreground);
    if (front != nullptr && front->pid != 0)
        m_log.append(front->pid, 'D', front->package.toUtf8().right(tagLength), "onDraw: alles in Ordnung, 60 fps");
}

App *Device::find(const QString &package)
{
    const auto found = std::find_if(m_apps.begin(), m_apps.end(), [&](const App &a) { return a.package == package; });
    return found == m_apps.end() ? nullptr : &*found;
}

void Device::install(const QString &package, const QString &activity)
{
    stop(package);
    QString className = activity.isEmpty() ? u".MainActivity"_s : activity;
    if (className == "none"_L1)
        className.clear();
    const App installed{package, activityClass(package, className), false, 0};
    if (App *known = find(package))
        *known = installed;
    else
        m_apps.append(installed);
    m_log.append(systemServerPid, 'I', "PackageManager", "Installed " + package.toUtf8());
}

bool Device::uninstall(const QString &package)
{
    stop(package);
    return m_apps.removeIf([&](const App &a) { return a.package == package; }) > 0;
}

bool Device::launch(const QString &package)
{
    App *app = find(package);
    m_foreground = package;
    if (app == nullptr || app->pid != 0)
        return false;
    m_lastPid += pidStep;
    app->pid = m_lastPid;
    const QByteArray name = package.toUtf8();
    m_log.append(systemServerPid, 'I', "ActivityManager",
                 "Start proc " + QByteArray::number(app->pid) + ':' + name + " for top-activity");
    m_log.append(app->pid, 'I', "Zygote", "Process " + QByteArray::number(app->pid) + " crossed fork");
    m_log.append(app->pid, 'D', name.right(tagLength), "onCreate: Willkommen, übliche Prüfung läuft ✓");
    m_log.append(app->pid, 'I', "Choreographer", "Skipped 31 frames! " + name + " may be doing too much work");
    return true;
}

void Device::stop(const QString &package)
{
    App *app = find(package);
    if (app == nullptr || app->pid == 0)
        return;
    m_log.append(systemServerPid, 'I', "ActivityManager",
                 "Force stopping " + package.toUtf8() + ": pid " + QByteArray::number(app->pid));
    app->pid = 0;
    if (m_foreground == package)
        m_foreground.clear();
}

} // namespace varda::phone
