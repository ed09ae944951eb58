// ControlCommands: one small function per command, in a table with the number of its words.
#include "Control/ControlCommands.h"

#include "Phone.h"
#include "Shell/ShellSyntax.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <array>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

using Words = QStringList;

QString ok(const QString &value = {})
{
    return value.isEmpty() ? u"ok"_s : u"ok "_s + value;
}
QString failed(const QString &reason)
{
    return u"error: "_s + reason;
}

std::optional<quint16> toPort(const QString &word)
{
    bool isNumber = false;
    const quint16 number = word.toUShort(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

QString changeState(Phone &phone, const Words &words)
{
    if (words.isEmpty())
        return ok(stateName(phone.state()));
    const std::optional<PhoneState> state = phoneState(words.first());
    if (!state)
        return failed(u"no such state"_s);
    phone.setState(*state);
    return ok();
}

QString authorize(Phone &phone, const Words &)
{
    phone.authorize();
    return ok();
}

QString drop(Phone &phone, const Words &)
{
    const qsizetype count = phone.connections();
    phone.breakConnections();
    return ok(QString::number(count));
}

QString refuse(Phone &phone, const Words &words)
{
    if (words.first() != "on"_L1 && words.first() != "off"_L1)
        return failed(u"\"on\" or \"off\""_s);
    return phone.setRefusing(words.first() == "on"_L1) ? ok() : failed(u"the port is taken"_s);
}

QString wireless(Phone &phone, const Words &words)
{
    if (words.first() == "off"_L1) {
        phone.wireless().turnOff();
        phone.breakWirelessConnections();
        return ok();
    }
    if (words.first() != "on"_L1)
        return failed(u"\"on\" or \"off\""_s);
    const QString problem = phone.wireless().turnOn();
    return problem.isEmpty() ? ok(phone.device().wireless().connection) : failed(problem);
}

QString showPairingCode(Phone &phone, const Words &words)
{
    static const QRegularExpression sixDigits(u"^[0-9]{6}$"_s);
    if (!words.isEmpty() && !sixDigits.match(words.first()).hasMatch())
        return failed(u"six digits expected"_s);
    if (!phone.wireless().showCode(words.value(0)))
        return failed(u"wireless debugging is off"_s);
    const WirelessScreen &screen = phone.device().wireless();
    return ok(screen.code + u' ' + screen.pairing);
}

QString forgetComputers(Phone &phone, const Words &)
{
    phone.wireless().forgetComputers();
    phone.breakWirelessConnections();
    return ok();
}

QString latency(Phone &phone, const Words &words)
{
    bool isNumber = false;
    const int milliseconds = words.first().toInt(&isNumber);
    if (!isNumber || milliseconds < 0)
        return failed(u"milliseconds expected"_s);
    phone.faults().latency = std::chrono::milliseconds(milliseconds);
    return ok();
}

QString addFault(Phone &phone, const Words &words)
{
    const QString problem = phone.faults().add(words.first(), words.mid(1));
    return problem.isEmpty() ? ok() : failed(problem);
}

QString removeFault(Phone &phone, const Words &words)
{
    phone.faults().remove(words.value(0));
    return ok();
}

QString installApp(Phone &phone, const Words &words)
{
    phone.device().install(words.first(), words.value(1));
    return ok();
}

QString uninstallApp(Phone &phone, const Words &words)
{
    return phone.device().uninstall(words.first()) ? ok() : failed(u"not installed"_s);
}

QString installsAs(Phone &phone, const Words &words)
{
    phone.setInstallsAs(words.first());
    return ok();
}

QString startApp(Phone &phone, const Words &words)
{
    if (phone.device().app(words.first()) == nullptr)
        return failed(u"not installed"_s);
    phone.device().launch(words.first());
    return ok(QString::number(phone.device().app(words.first())->pid));
}

QString stopApp(Phone &phone, const Words &words)
{
    phone.device().stop(words.first());
    return ok();
}

QString writeLog(Phone &phone, const Words &words)
{
    const App *front = phone.device().app(phone.device().foreground());
    phone.device().log().append(front != nullptr ? front->pid : 1, 'I', unescaped(words.first()),
                                unescaped(words.at(1)));
    return ok();
}

QString chatter(Phone &phone, const Words &words)
{
    phone.device().log().setChatty(words.first() == "on"_L1);
    return ok();
}

QString announce(Phone &phone, const Words &words)
{
    const std::optional<quint16> port = toPort(words.first());
    if (!port)
        return failed(u"port expected"_s);
    phone.announce(*port);
    return ok();
}

QString status(Phone &phone, const Words &)
{
    QJsonObject processes;
    for (const App &app : phone.device().apps()) {
        if (app.pid != 0)
            processes.insert(app.package, app.pid);
    }
    const Touch touch = phone.device().touch();
    const WirelessScreen &wireless = phone.device().wireless();
    const QJsonObject report = {{u"state"_s, stateName(phone.state())},
                                {u"port"_s, phone.port()},
                                {u"serial"_s, phone.serial()},
                                {u"connections"_s, phone.connections()},
                                {u"foreground"_s, phone.device().foreground()},
                                {u"processes"_s, processes},
                                {u"pairing"_s, wireless.pairing},
                                {u"connection"_s, wireless.connection},
                                {u"computers"_s, QJsonArray::fromStringList(phone.wireless().computers())},
                                {u"typed"_s, phone.device().typed()},
                                {u"touch"_s, QJsonArray{touch.position.x(), touch.position.y()}}};
    return ok(QString::fromUtf8(QJsonDocument(report).toJson(QJsonDocument::Compact)));
}

QString quit(Phone &, const Words &)
{
    QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit, Qt::QueuedConnection);
    return ok();
}

struct Control
{
    const char *name;
    qsizetype minWords;
    qsizetype maxWords;
    QString (*run)(Phone &, const Words &);
    const char *help;
};

constexpr std::array controls = {
    Control{"state", 0, 1, changeState, "[device|unauthorized|recovery|sideload|offline]: tell or change the state"},
    Control{"authorize", 0, 0, authorize, ": let the waiting hosts in, and every later one"},
    Control{"drop", 0, 0, drop, ": break all connections now; replies how many there were"},
    Control{"refuse", 1, 1, refuse, "on|off: refuse new connections"},
    Control{"wireless", 1, 1, wireless, "on|off: wireless debugging; \"on\" replies the address to connect to"},
    Control{"pair", 0, 1, showPairingCode, "[CODE]: show a pairing code; replies it and the address to pair with"},
    Control{"forget", 0, 0, forgetComputers, ": no computer is paired any more"},
    Control{"latency", 1, 1, latency, "MS: delay every service"},
    Control{"on", 2, 3, addFault,
            "PATTERN ACTION: misbehave in services whose name contains PATTERN. Actions: hang, refuse, garble, "
            "latency MS, drop BYTES, flood BYTES, output TEXT, error TEXT, exit CODE"},
    Control{"off", 0, 1, removeFault, "[PATTERN]: end the misbehaviour for PATTERN, or all"},
    Control{"install", 1, 2, installApp, "PACKAGE [ACTIVITY|none]: install an app"},
    Control{"uninstall", 1, 1, uninstallApp, "PACKAGE: remove an app"},
    Control{"installs-as", 1, 1, installsAs, "PACKAGE: what the next installed file is taken for"},
    Control{"start", 1, 1, startApp, "PACKAGE: run an app; replies its process ID"},
    Control{"stop", 1, 1, stopApp, "PACKAGE: end an app"},
    Control{"log", 2, 2, writeLog, "TAG TEXT: write a line to the phone's log, as the app in front"},
    Control{"chatter", 1, 1, chatter, "on|off: whether the log grows by itself"},
    Control{"announce", 1, 1, announce, "PORT: tell the adb server on PORT about this phone, as an emulator does"},
    Control{"status", 0, 0, status, ": state, port, processes and more as JSON"},
    Control{"quit", 0, 0, quit, ": end the program"},
};

} // namespace

QString executeControl(Phone &phone, const QString &line)
{
    const ShellScript script = parseShell(line);
    if (!script.error.isEmpty() || script.commands.size() != 1)
        return failed(script.error.isEmpty() ? u"one command per line"_s : script.error);
    Words words = script.commands.first().words;
    const QString name = words.isEmpty() ? QString() : words.takeFirst();
    for (const Control &control : controls) {
        if (name != QLatin1StringView(control.name))
            continue;
        if (words.size() < control.minWords || words.size() > control.maxWords)
            return failed(u"usage: %1 %2"_s.arg(name, QLatin1StringView(control.help)));
        return control.run(phone, words);
    }
    return failed(u"no such command: "_s + name);
}

QString controlHelp()
{
    QString text;
    for (const Control &control : controls) {
        const QString help = QString::fromLatin1(control.help);
        const QString separator = help.startsWith(u':') ? QString() : u" "_s;
        text += u"  "_s + QLatin1StringView(control.name) + separator + help + u'\n';
    }
    return text;
}

} // namespace varda::phone
