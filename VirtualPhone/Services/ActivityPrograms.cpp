// ActivityPrograms: `am` and `pidof`: apps started, stopped and looked up, with Android's words.
#include "Services/Programs.h"

#include "Phone.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr int launchMilliseconds = 312;
constexpr int waitMilliseconds = 325;

/// The argument after `option`, or nothing.
QString valueOf(const QStringList &arguments, const QString &option)
{
    const qsizetype index = arguments.indexOf(option);
    return index < 0 ? QString() : arguments.value(index + 1);
}

void startActivity(const Invocation &invocation)
{
    CommandChannel &channel = invocation.channel;
    const QString component = valueOf(invocation.arguments, u"-n"_s);
    const bool waits = invocation.arguments.contains(u"-W"_s);
    const QString package = component.section(u'/', 0, 0);
    const QString activity = component.section(u'/', 1);
    if (package.isEmpty() || activity.isEmpty()) {
        channel.error(
            "\nException occurred while executing 'start':\njava.lang.IllegalArgumentException: Bad component "
            "name: " +
            component.toUtf8() + '\n');
        return channel.exit(255);
    }
    channel.output("Starting: Intent { cmp=" + component.toUtf8() + " }\n");
    Device &device = invocation.phone.device();
    const App *app = device.app(package);
    const QString className = activityClass(package, activity);
    if (app == nullptr || app->activity != className) {
        const QByteArray text =
            u"Error type 3\nError: Activity class {%1/%2} does not exist.\n"_s.arg(package, className).toUtf8();
        // Waiting makes `am` report to standard output, and either way it calls that a success.
        waits ? channel.output(text) : channel.error(text);
        return channel.exit(0);
    }
    const bool cold = device.launch(package);
    if (!cold)
        channel.output("Warning: Activity not started, its current task has been brought to the front\n");
    if (waits) {
        const QString timing = cold ? u"TotalTime: %1\nWaitTime: %2\n"_s.arg(launchMilliseconds).arg(waitMilliseconds)
                                    : u"TotalTime: 0\nWaitTime: 2\n"_s;
        channel.output(u"Status: ok\nLaunchState: %1\nActivity: %2\n%3Complete\n"_s
                           .arg(cold ? u"COLD"_s : u"UNKNOWN (0)"_s, component, timing)
                           .toUtf8());
    }
    channel.exit(0);
}

} // namespace

void runActivityManager(const Invocation &invocation)
{
    const QString command = invocation.arguments.value(0);
    if (command == "start"_L1 || command == "start-activity"_L1)
        return startActivity(invocation);
    if (command == "force-stop"_L1 && invocation.arguments.size() == 2) {
        // Android is silent about packages that it does not know.
        invocation.phone.device().stop(invocation.arguments.at(1));
        return invocation.channel.exit(0);
    }
    invocation.channel.error("Unknown command: " + command.toUtf8() + '\n');
    invocation.channel.exit(255);
}

void runPidof(const Invocation &invocation)
{
    QByteArrayList pids;
    for (const QString &name : invocation.arguments) {
        const App *app = invocation.phone.device().app(name);
        if (app != nullptr && app->pid != 0)
            pids.append(QByteArray::number(app->pid));
    }
    if (!pids.isEmpty())
        invocation.channel.output(pids.join(' ') + '\n');
    invocation.channel.exit(pids.isEmpty() ? 1 : 0);
}

} // namespace varda::phone
