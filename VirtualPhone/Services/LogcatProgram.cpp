// LogcatProgram: `logcat [-d] [-t COUNT] [-v threadtime] [--pid N]`. Without -d or -t it follows the log until the host
// goes away.
#include "Services/Programs.h"

#include "Phone.h"

#include <limits>
#include <optional>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

struct LogcatOptions
{
    bool follow = true;
    qsizetype count = std::numeric_limits<qsizetype>::max();
    std::optional<qint64> pid;
    QString error;
};

LogcatOptions parseOptions(QStringList arguments)
{
    LogcatOptions options;
    while (!arguments.isEmpty() && options.error.isEmpty()) {
        const QString option = arguments.takeFirst();
        const bool inOneWord = option.startsWith("--pid="_L1);
        if (option == "-d"_L1) {
            options.follow = false;
            continue;
        }
        if (option == "-v"_L1 && arguments.value(0) == "threadtime"_L1) {
            arguments.removeFirst();
            continue;
        }
        if (option != "-t"_L1 && option != "--pid"_L1 && !inOneWord) {
            options.error = u"Unknown or invalid option: "_s + option;
            continue;
        }
        bool isNumber = false;
        const QString value = inOneWord             ? option.section(u'=', 1)
                              : arguments.isEmpty() ? QString()
                                                    : arguments.takeFirst();
        const qint64 number = value.toLongLong(&isNumber);
        if (!isNumber || number < 0)
            options.error = u"%1 requires a number, got '%2'"_s.arg(option, value);
        else if (option == "-t"_L1)
            options.count = number, options.follow = false;
        else
            options.pid = number;
    }
    return options;
}

} // namespace

void runLogcat(const Invocation &invocation)
{
    const LogcatOptions options = parseOptions(invocation.arguments);
    CommandChannel *channel = &invocation.channel;
    if (!options.error.isEmpty()) {
        channel->error("logcat: " + options.error.toUtf8() + '\n');
        return channel->exit(1);
    }
    QByteArray text = "--------- beginning of main\n";
    SystemLog &log = invocation.phone.device().log();
    for (const LogLine &line : log.tail(options.count, options.pid))
        text += line.threadTime();
    channel->output(text);
    if (!options.follow)
        return channel->exit(0);
    QObject::connect(&log, &SystemLog::appended, channel, [channel, pid = options.pid](const LogLine &line) {
        if (!pid || line.pid == *pid)
            channel->output(line.threadTime());
    });
}

} // namespace varda::phone
