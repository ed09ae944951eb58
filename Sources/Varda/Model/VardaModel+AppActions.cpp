// VardaModel: launching and stopping the app under test, listing the installed apps, screenshots.
#include "Varda/Model/VardaModel.h"

#include "Varda/Model/SaveFile.h"
#include "Varda/Model/Tools.h"
#include "VardaCore/Text.h"
#include "VardaCore/ToolError.h"
#include "VardaCore/Validation.h"

#include <QDateTime>
#include <QFileInfo>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr QByteArrayView pngSignature("\x89PNG\r\n\x1a\n", 8);

/// `am start` and `am force-stop` report trouble in their output, with exit status 0.
void throwReportedError(const CommandResult &result)
{
    const QString output = result.checked().text();
    if (output.contains(u"Error:"_s))
        throw ToolError::message(output);
}

QCoro::Task<QString> launchApp(QString serial, QString package)
{
    const CommandResult resolved = co_await runAdb(Adb::resolveLauncher(serial, package));
    const std::optional<QString> component = Validation::component(resolved.checked().text(), package);
    if (!component)
        throw ToolError::message(u"No launchable activity found for "_s + package +
                                 u". Check that the APK is installed and includes a launcher activity."_s);
    const CommandResult started = co_await runAdb(Adb::startActivity(serial, *component));
    throwReportedError(started);
    co_return u"Launched "_s + package + u" on "_s + serial + u'.';
}

QCoro::Task<QString> stopApp(QString serial, QString package)
{
    const CommandResult stopped = co_await runAdb(Adb::forceStop(serial, package));
    throwReportedError(stopped);
    co_return u"Stopped "_s + package + u" on "_s + serial + u'.';
}

QCoro::Task<QString> listPackages(std::shared_ptr<VardaModel> self, QString serial)
{
    const CommandResult listing = co_await runAdb(Adb::listPackages(serial));
    QString packages = listing.checked().text();
    packages.remove(u"package:"_s);
    self->logs = packages;
    self->logging = false; // or the next tick would replace the list by log lines
    co_return u"User-installed package IDs are shown in the console."_s;
}

QCoro::Task<QString> saveScreenshot(QString serial, QString path)
{
    const CommandResult result = co_await runAdb(Adb::screenshot(serial));
    const CommandResult captured = result.checked();
    if (!captured.data.startsWith(pngSignature))
        throw ToolError::message(u"The phone did not return a valid PNG screenshot."_s);
    co_await saveFileInBackground(path, captured.data);
    co_return u"Screenshot saved to "_s + QFileInfo(path).fileName() + u'.';
}

} // namespace

void VardaModel::appAction(bool launch)
{
    const std::optional<AndroidDevice> device = actionTarget();
    if (!device)
        return;
    const QString package = trimmed(packageName());
    if (!Validation::package(package)) {
        error = u"Enter an Android package ID such as com.example.myapp."_s;
        return;
    }
    if (launch)
        run(u"Launching app…"_s, [serial = device->id, package] { return launchApp(serial, package); });
    else
        run(u"Stopping app…"_s, [serial = device->id, package] { return stopApp(serial, package); });
}

void VardaModel::listApps()
{
    const std::optional<AndroidDevice> device = actionTarget();
    if (!device)
        return;
    run(u"Reading installed apps…"_s,
        [self = shared_from_this(), serial = device->id] { return listPackages(self, serial); });
}

void VardaModel::screenshot()
{
    const std::optional<AndroidDevice> device = actionTarget();
    if (!device)
        return;
    const QString name = u"Varda-"_s + QString::number(QDateTime::currentSecsSinceEpoch()) + u".png"_s;
    const std::optional<QString> path = m_dialogs->saveLocation(SaveKind::PngImage, name);
    if (!path)
        return;
    run(u"Capturing phone screenshot…"_s, [serial = device->id, path = *path] { return saveScreenshot(serial, path); });
}

} // namespace varda
