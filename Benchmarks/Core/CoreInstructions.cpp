// The core's hot paths: what every tick, every console snapshot and every command goes through on the event loop.
#include "Counted.h"
#include "Running.h"

#include "VardaCore/AndroidDevice.h"
#include "VardaCore/Text.h"

#include <QCoreApplication>

using namespace varda;

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QString listing = QStringLiteral("List of devices attached\n"
                                           "R58M42ABCDE            device usb:1-4 product:beyond1 model:SM_G973F "
                                           "device:beyond1 transport_id:3\n");
    const QByteArray line = "11-21 03:14:15.926  5358  9793 I ActivityTaskManager: Displayed Größe für com.example.app "
                            "in 240 ms, and so on\n";
    const QByteArray log = line.repeated(350);
    const QByteArray brokenLog = QByteArray(line + '\xFF').repeated(350);
    return bench::followPaths(
        argc, argv,
        {
            {"listing of one phone read", [&] { AndroidDevice::parse(listing); }},
            {"350 lines of log decoded", [&] { decodeUtf8(log); }},
            {"350 lines of log with ill-formed bytes decoded", [&] { decodeUtf8(brokenLog); }},
            {"run of a program that exits at once, main thread", [] { bench::run({"/bin/true"}); }},
        });
}
