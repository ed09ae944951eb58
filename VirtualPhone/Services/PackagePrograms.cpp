// PackagePrograms: `pm` and `cmd package`: what is installed, and which activity launches it.
#include "Services/Programs.h"

#include "Phone.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

constexpr auto launcherMatch = "priority=0 preferredOrder=0 match=0x108000 specificIndex=-1 isDefault=false\n";

/// `resolve-activity [--brief] -a ACTION -c CATEGORY -p PACKAGE`
void resolveActivity(const Invocation &invocation)
{
    const QStringList &arguments = invocation.arguments;
    const QString package = arguments.contains(u"-p"_s) ? arguments.value(arguments.indexOf(u"-p"_s) + 1) : QString();
    const App *app = invocation.phone.device().app(package);
    if (app == nullptr || app->activity.isEmpty()) {
        invocation.channel.output("No activity found\n");
    } else {
        // The short form drops the package from the class where the class lies in it.
        const bool inPackage = app->activity.startsWith(package + u'.');
        const QString activity = inPackage ? app->activity.mid(package.size()) : app->activity;
        invocation.channel.output(launcherMatch + package.toUtf8() + '/' + activity.toUtf8() + '\n');
    }
    invocation.channel.exit(0);
}

/// `list packages [-3] [-s] [FILTER]`
void listPackages(const Invocation &invocation)
{
    const QStringList options = invocation.arguments.mid(2);
    QString filter;
    for (const QString &option : options) {
        if (!option.startsWith(u'-'))
            filter = option;
    }
    for (const App &app : invocation.phone.device().apps()) {
        const bool excluded = (options.contains(u"-3"_s) && app.system) || (options.contains(u"-s"_s) && !app.system);
        if (!excluded && app.package.contains(filter))
            invocation.channel.output("package:" + app.package.toUtf8() + '\n');
    }
    invocation.channel.exit(0);
}

void uninstall(const Invocation &invocation)
{
    const bool done = invocation.phone.device().uninstall(invocation.arguments.last());
    invocation.channel.output(done ? "Success\n" : "Failure [DELETE_FAILED_INTERNAL_ERROR]\n");
    invocation.channel.exit(done ? 0 : 1);
}

} // namespace

void runPackageManager(const Invocation &invocation)
{
    const QString command = invocation.arguments.value(0);
    if (command == "install"_L1)
        return runInstall(invocation);
    if (command == "uninstall"_L1 && invocation.arguments.size() >= 2)
        return uninstall(invocation);
    if (command == "resolve-activity"_L1)
        return resolveActivity(invocation);
    if (command == "list"_L1 && invocation.arguments.value(1) == "packages"_L1)
        return listPackages(invocation);
    invocation.channel.error("Unknown command: " + command.toUtf8() + '\n');
    invocation.channel.exit(255);
}

void runCmd(const Invocation &invocation)
{
    Invocation inner{invocation.arguments.mid(1), invocation.environment, invocation.channel, invocation.phone,
                     invocation.record};
    const QString service = invocation.arguments.value(0);
    if (service == "package"_L1)
        return runPackageManager(inner);
    if (service == "activity"_L1)
        return runActivityManager(inner);
    invocation.channel.error("cmd: Can't find service: " + service.toUtf8() + '\n');
    invocation.channel.exit(20);
}

} // namespace varda::phone
