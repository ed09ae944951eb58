// What a new listing of the devices costs the window where one of them has changed, or none, in lists of any length.
#include "Claims.h"
#include "Window.h"

#include <QApplication>

#include <array>

namespace {

using namespace Qt::StringLiterals;
using namespace varda;

QList<AndroidDevice> listing(int count, bool firstIsOffline)
{
    QList<AndroidDevice> devices;
    for (int number = 0; number < count; ++number)
        devices.append({u"R58M4%1"_s.arg(number, 6, 10, QChar(u'0')), u"device"_s, u"Pixel %1"_s.arg(number)});
    if (firstIsOffline)
        devices.first().state = u"offline"_s;
    return devices;
}

template <int Count, bool Changing>
void publish(benchmark::State &state)
{
    const bench::Window window;
    const std::array listings{listing(Count, false), listing(Count, Changing)};
    window.model->devices = listings[0];
    window.model->selectedID = u"elsewhere"_s; // the list alone shows the change
    bench::settle();
    size_t number = 0;
    for ([[maybe_unused]] auto _ : state) {
        window.model->devices = listings[++number % listings.size()];
        bench::settle();
    }
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    bench::claimRatio("listing of 10 devices, one changed / of 1 device, changed", publish<10, true>, publish<1, true>,
                      std::nullopt);
    bench::claimRatio("listing of 200 devices, one changed / of 1 device, changed", publish<200, true>,
                      publish<1, true>, std::nullopt);
    bench::claimRatio("listing of 200 devices, none changed / of 1 device, unchanged", publish<200, false>,
                      publish<1, false>, std::nullopt);
    bench::runClaims(&argc, argv);
}
