// Ends in order while a command is in flight: `quit-in-flight <program> <file>` runs `<program>` so that it creates
// `<file>` and sleeps, and leaves its event loop once the file is there. With "queued" as third argument it leaves
// while more commands wait for a worker than there are workers.
#include "VardaCore/CommandRunner.h"

#include <QCoreApplication>
#include <QFile>
#include <QTimer>

#include <chrono>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const auto start = [&] {
        varda::CommandRunner::run(arguments[1], {u"create-file"_s, arguments[2], u"sleep"_s, u"2"_s}, u"input"_s, 60s);
    };
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &application, [&] {
        if (QFile::exists(arguments[2]))
            QCoreApplication::quit();
    });
    poll.start(1ms);
    QTimer::singleShot(0, &application, [&] {
        start();
        if (arguments.value(3) != u"queued")
            return;
        for (int i = 0; i < 40; ++i)
            start();
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
