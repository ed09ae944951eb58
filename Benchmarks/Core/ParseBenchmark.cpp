// Reading a device listing takes time in proportion to its length.
#include "Claims.h"

#include "VardaCore/AndroidDevice.h"

#include <array>
#include <chrono>
#include <cmath>
#include <vector>

namespace {

using namespace varda;

/// A listing of that many phones as `adb devices -l` prints it.
QString listing(int lines)
{
    QString text = QStringLiteral("List of devices attached\n");
    for (int line = 0; line < lines; ++line)
        text += QStringLiteral("R58M%1ABCDE            device usb:1-%1 product:beyond1 model:SM_G973F "
                               "device:beyond1 transport_id:%1\n")
                    .arg(line);
    return text;
}

/// Seconds for one reading: the least of several rounds, each of about 20 ms.
double secondsToParse(const QString &text, int lines)
{
    using Clock = std::chrono::steady_clock;
    const int turns = std::max(1, 20'000 / lines);
    double least = INFINITY;
    for (int round = 0; round < 15; ++round) {
        const Clock::time_point start = Clock::now();
        for (int turn = 0; turn < turns; ++turn) {
            const QList<AndroidDevice> devices = AndroidDevice::parse(text);
            benchmark::DoNotOptimize(devices.constData());
        }
        least = std::min(least, std::chrono::duration<double>(Clock::now() - start).count() / turns);
    }
    return least;
}

} // namespace

int main()
{
    static constexpr std::array<int, 4> sizes = {10, 100, 1'000, 10'000};
    std::vector<double> times;
    for (const int size : sizes) {
        const QString text = listing(size);
        times.push_back(secondsToParse(text, size));
        bench::print({"listing of " + std::to_string(size) + " devices read", bench::seconds(times.back()), "",
                      bench::bytes(static_cast<double>(text.toUtf8().size()) / times.back()) + "/s", "",
                      bench::Verdict::Stated});
    }
    double steepest = 0;
    for (size_t index = 1; index < times.size(); ++index)
        steepest = std::max(steepest, std::log10(times[index] / times[index - 1]));
    bench::printFigure("steepest growth of that per decade of lines", steepest, 1.1,
                       [](double slope) { return "10^" + std::to_string(slope).substr(0, 4); });
}
