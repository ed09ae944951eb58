// virtual-phone: a simulated Android phone on the loopback address, for the real adb and scrcpy clients.
#include "Control/ControlCommands.h"
#include "VirtualPhone.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using varda::PhoneOptions;
using varda::VirtualPhone;

namespace {

constexpr int exitUsage = 2;
constexpr qsizetype pieceSize = 4096;

void printLine(const QString &line)
{
    std::fputs(qPrintable(line + u'\n'), stdout);
    std::fflush(stdout);
}

/// SIGTERM and SIGINT as a readable descriptor. To be called before any thread starts: threads inherit the mask.
int terminationDescriptor()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

/// Every option that is a shorthand for a control command, with the command that it stands for.
struct Shorthand
{
    const char *option;
    const char *command;
    const char *value;
    const char *help;
};

constexpr std::array shorthands = {
    Shorthand{"latency", "latency %1", "ms", "Delay every service."},
    Shorthand{"hang", "on '%1' hang", "pattern", "Never answer services whose name contains the pattern."},
    Shorthand{"drop-install-after", "on 'package install' drop %1", "bytes", "Break the connection in mid-install."},
    Shorthand{"install-failure", "on 'package install' output '%1\\n'", "text",
              "Answer installs with this text, such as \"Failure [INSTALL_FAILED_OLDER_SDK]\"."},
    Shorthand{"announce", "announce %1", "port", "Tell the adb server on this port about the phone."},
    Shorthand{"control", "%1", "command", "Carry out a control command. May be given several times."},
};

void addOptions(QCommandLineParser &parser)
{
    const PhoneOptions defaults;
    parser.setApplicationDescription(u"A simulated Android phone for adb and scrcpy, on the loopback address only.\n\n"
                                     "It prints \"ready 127.0.0.1:PORT\" when it listens, then reads control commands\n"
                                     "from standard input, one per line with words quoted as in a shell, and\n"
                                     "answers each with one line:\n\n"_s +
                                     varda::phone::controlHelp());
    parser.addHelpOption();
    parser.addOptions({
        {u"port"_s, u"Port; 0 takes a free one. Odd ports from 5555 to 5585 adb finds by itself."_s, u"port"_s, u"0"_s},
        {u"state"_s, u"device, unauthorized, recovery, sideload or offline."_s, u"state"_s, defaults.state},
        {u"model"_s, u"The phone's model name."_s, u"name"_s, defaults.model},
        {u"screen"_s, u"Size of the screen in pixels."_s, u"WxH"_s,
         u"%1x%2"_s.arg(defaults.screen.width()).arg(defaults.screen.height())},
        {u"fps"_s, u"Pictures per second of a mirrored screen."_s, u"number"_s, QString::number(defaults.frameRate)},
        {u"package"_s, u"An installed app, instead of the usual ones. May be given several times."_s, u"package"_s},
        {u"installs-as"_s, u"The package that installed files are taken for."_s, u"package"_s, defaults.installsAs},
        {u"wireless"_s, u"Turn wireless debugging on: print its addresses and a pairing code."_s},
        {u"log"_s, u"Append the log of services to this file, one JSON object per line."_s, u"file"_s},
        {u"until-stdin-closes"_s, u"End when standard input is closed."_s},
    });
    for (const Shorthand &shorthand : shorthands) {
        parser.addOption({QString::fromLatin1(shorthand.option), QString::fromLatin1(shorthand.help),
                          QString::fromLatin1(shorthand.value)});
    }
}

PhoneOptions optionsFrom(const QCommandLineParser &parser)
{
    PhoneOptions options;
    options.port = parser.value(u"port"_s).toUShort();
    options.state = parser.value(u"state"_s);
    options.model = parser.value(u"model"_s);
    const QString screen = parser.value(u"screen"_s);
    options.screen = {screen.section(u'x', 0, 0).toInt(), screen.section(u'x', 1).toInt()};
    options.frameRate = parser.value(u"fps"_s).toInt();
    if (parser.isSet(u"package"_s))
        options.packages = parser.values(u"package"_s);
    options.installsAs = parser.value(u"installs-as"_s);
    options.renewsPairingCodes = true;
    options.onWireless = printLine;
    options.serviceLog = parser.value(u"log"_s);
    for (const Shorthand &shorthand : shorthands) {
        for (const QString &value : parser.values(QString::fromLatin1(shorthand.option)))
            options.commands.append(QString::fromLatin1(shorthand.command).arg(value));
    }
    return options;
}

/// What is wrong with the options that the phone itself does not check; empty where nothing is.
QString problemWith(const QCommandLineParser &parser, const PhoneOptions &options)
{
    bool isPort = false;
    parser.value(u"port"_s).toUShort(&isPort);
    if (!isPort)
        return u"--port takes a number from 0 to 65535"_s;
    // H.264 pictures have an even width and height.
    if (options.screen.width() < 64 || options.screen.height() < 64 || options.screen.width() % 2 != 0 ||
        options.screen.height() % 2 != 0)
        return u"--screen takes two even numbers of 64 or more, such as 720x1600"_s;
    if (options.frameRate < 1 || options.frameRate > 60)
        return u"--fps takes a number from 1 to 60"_s;
    return {};
}

/// Carries out the complete lines of what standard input holds; false at its end.
bool answerInput(VirtualPhone &phone, QByteArray &pending)
{
    std::array<char, pieceSize> piece{};
    const ssize_t size = read(STDIN_FILENO, piece.data(), piece.size());
    if (size <= 0)
        return false;
    pending.append(piece.data(), size);
    for (qsizetype end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n')) {
        const QString line = QString::fromUtf8(pending.left(end)).trimmed();
        pending.remove(0, end + 1);
        if (!line.isEmpty())
            printLine(phone.command(line));
    }
    return true;
}

/// What keeps wireless debugging from being turned on; empty where nothing does.
QString turnOnWireless(VirtualPhone &phone)
{
    for (const QString &command : {u"wireless on"_s, u"pair"_s}) {
        QString reply = phone.command(command);
        if (!reply.startsWith("ok"_L1))
            return reply;
    }
    return {};
}

int fail(const QString &problem, int status = EXIT_FAILURE)
{
    std::fputs(qPrintable(u"virtual-phone: "_s + problem + u'\n'), stderr);
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    const int terminations = terminationDescriptor();
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    addOptions(parser);
    parser.process(application);
    const PhoneOptions options = optionsFrom(parser);
    QString problem = problemWith(parser, options);
    if (!problem.isEmpty())
        return fail(problem, exitUsage);
    VirtualPhone phone(options);
    if (!phone.errorString().isEmpty())
        return fail(phone.errorString());
    printLine(u"ready "_s + phone.endpoint());
    if (parser.isSet(u"wireless"_s)) {
        problem = turnOnWireless(phone);
        if (!problem.isEmpty())
            return fail(problem);
    }

    QSocketNotifier termination(terminations, QSocketNotifier::Read);
    QObject::connect(&termination, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QByteArray pending;
    const bool endsWithInput = parser.isSet(u"until-stdin-closes"_s);
    QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
        if (answerInput(phone, pending))
            return;
        input.setEnabled(false);
        if (endsWithInput)
            QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
