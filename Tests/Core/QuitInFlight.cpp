// Ends in order while commands are in flight: `quit-in-flight COUNT SECONDS FILE PROGRAM ARGUMENT…` starts as many
// commands, each with so long a time-out, and leaves its event loop once FILE is there.
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
    const std::chrono::duration<double> timeout(arguments[2].toDouble());
    const auto leave = [&] {
        if (QFile::exists(arguments[3]))
            QCoreApplication::quit();
    };
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &application, leave);
    poll.start(1ms);
    QTimer::singleShot(0, &application, [&] {
        for (int i = 0; i < arguments[1].toInt(); ++i)
            varda::CommandRunner::run(arguments[4], arguments.sliced(5), u"input"_s, timeout);
        leave();
    });
    return QCoreApplication::exec();
}
