// Programs: the table of all programs, and the few that need no file of their own.
#include "Services/Programs.h"

#include "Phone.h"

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

void runEcho(const Invocation &invocation)
{
    invocation.channel.output(invocation.arguments.join(u' ').toUtf8() + '\n');
    invocation.channel.exit(0);
}

void runExit(const Invocation &invocation)
{
    invocation.channel.exit(invocation.arguments.value(0).toInt());
}

/// Copies standard input to standard output, for ever.
void runCat(const Invocation &invocation)
{
    CommandChannel *channel = &invocation.channel;
    QObject::connect(channel, &CommandChannel::input, channel, &CommandChannel::output);
    channel->startReading();
}

void runGetprop(const Invocation &invocation)
{
    const Device &device = invocation.phone.device();
    const QMap<QString, QString> properties = {{u"ro.build.version.sdk"_s, u"34"_s},
                                               {u"ro.product.device"_s, device.identifier()},
                                               {u"ro.product.model"_s, device.model()},
                                               {u"ro.product.name"_s, device.identifier().toLower()}};
    if (!invocation.arguments.isEmpty()) {
        invocation.channel.output(properties.value(invocation.arguments.first()).toUtf8() + '\n');
    } else {
        for (auto entry = properties.begin(); entry != properties.end(); ++entry)
            invocation.channel.output(u"[%1]: [%2]\n"_s.arg(entry.key(), entry.value()).toUtf8());
    }
    invocation.channel.exit(0);
}

} // namespace

Program findProgram(const QString &name)
{
    static const QMap<QString, Program> programs = {
        {u"am"_s, runActivityManager},
        {u"app_process"_s, runAppProcess},
        {u"cat"_s, runCat},
        {u"cmd"_s, runCmd},
        {u"echo"_s, runEcho},
        {u"exit"_s, runExit},
        {u"getprop"_s, runGetprop},
        {u"logcat"_s, runLogcat},
        {u"pidof"_s, runPidof},
        {u"pm"_s, runPackageManager},
        {u"screencap"_s, runScreencap},
    };
    return programs.value(name, nullptr);
}

} // namespace varda::phone
