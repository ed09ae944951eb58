// Steps: every command of every action of the model, as a place where something can go wrong.
#include "Steps.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace varda::test {

namespace {

const QString package = u"com.example.app"_s;
const QString endpoint = u"192.168.1.50:37123"_s;
constexpr QByteArrayView png("\x89PNG\r\n\x1a\n....", 12);

} // namespace

Outcome outcomeOf(const VardaModel &model)
{
    return {model.error(), model.status(), model.logs(), model.logging()};
}

Steps::Steps(const QString &serial, const QString &scratch)
{
    const Command list{Adb::devices().arguments,
                       "List of devices attached\n" + serial.toUtf8() + "\tdevice model:Pixel_7\n"};
    add(u"list devices"_s, {list}, Report::StatusLine, {},
        [this](VardaModel &model, DialogScript &) { await(model.refresh()); });
    addActions(serial, scratch);
    addWireless(list);
    addConsole(serial);
}

void Steps::addActions(const QString &serial, const QString &scratch)
{
    const QString build = scratch + u"/build.apk"_s;
    add(u"install"_s, {{Adb::install(serial, build).arguments, "Performing Streamed Install\nSuccess\n"}},
        Report::Alert, u"Installing build.apk…"_s, [build](VardaModel &model, DialogScript &) {
            model.apk = QUrl::fromLocalFile(build);
            model.install();
        });
    add(u"launch: find activity"_s,
        {{Adb::resolveLauncher(serial, package).arguments, "priority=0\ncom.example.app/.Main\n"},
         {Adb::startActivity(serial, u"com.example.app/.Main"_s).arguments, "Status: ok\n"}},
        Report::Alert, u"Launching app…"_s, [](VardaModel &model, DialogScript &) {
            model.packageName = package;
            model.appAction(true);
        });
    addSecond(u"launch: start activity"_s, Report::Alert);
    add(u"stop app"_s, {{Adb::forceStop(serial, package).arguments, "\n"}}, Report::Alert, u"Stopping app…"_s,
        [](VardaModel &model, DialogScript &) {
            model.packageName = package;
            model.appAction(false);
        });
    add(u"list apps"_s, {{Adb::listPackages(serial).arguments, "package:com.example.app\n"}}, Report::Alert,
        u"Reading installed apps…"_s, [](VardaModel &model, DialogScript &) { model.listApps(); });
    add(u"screenshot"_s, {{Adb::screenshot(serial).arguments, png.toByteArray()}}, Report::Alert,
        u"Capturing phone screenshot…"_s, [scratch](VardaModel &model, DialogScript &dialogs) {
            dialogs.locations = {scratch + u"/saved.png"_s};
            model.screenshot();
        });
}

void Steps::addWireless(const Command &list)
{
    add(u"pair"_s, {{Adb::pair(endpoint).arguments, "Successfully paired to 192.168.1.50:37123\n", true}},
        Report::Alert, u"Pairing with your Android phone…"_s, [](VardaModel &model, DialogScript &) {
            model.pairingEndpoint = endpoint;
            model.pairingCode = u"482916"_s;
            model.pair();
        });
    add(u"connect"_s, {{Adb::connect(endpoint).arguments, "connected to 192.168.1.50:37123\n"}, list}, Report::Alert,
        u"Connecting over Wi-Fi…"_s, [](VardaModel &model, DialogScript &) {
            model.connectEndpoint = endpoint;
            model.connect();
        });
    addSecond(u"connect: list devices"_s, Report::Nowhere);
}

void Steps::addConsole(const QString &serial)
{
    const auto read = [this](VardaModel &model, const QString &filter) {
        model.packageName = filter;
        model.logging = true;
        await(model.readLogs());
    };
    add(u"console"_s, {{Adb::log(serial, std::nullopt).arguments, "line\n"}}, Report::Console, {},
        [read](VardaModel &model, DialogScript &) { read(model, {}); });
    add(u"app console: find process"_s,
        {{Adb::processID(serial, package).arguments, "4242\n"},
         {Adb::log(serial, u"4242"_s).arguments, "line of the app\n"}},
        Report::Console, {}, [read](VardaModel &model, DialogScript &) { read(model, package); });
    addSecond(u"app console: read log"_s, Report::Console);
}

const Step &Steps::named(const QString &name) const
{
    return *std::find_if(m_steps.begin(), m_steps.end(), [&name](const Step &step) { return step.name == name; });
}

void Steps::add(const QString &name, const QList<Command> &commands, Report report, const QString &working,
                const Start &start)
{
    m_steps.append({name, commands, 0, report, working, [this, start](VardaModel &model, DialogScript &dialogs) {
                        awaitNothing();
                        start(model, dialogs);
                    }});
}

/// The second command of the action that was added last.
void Steps::addSecond(const QString &name, Report report)
{
    Step second = m_steps.last();
    second.name = name;
    second.index = 1;
    second.report = report;
    m_steps.append(second);
}

} // namespace varda::test
