// What one tick of the poll loop costs: the CPU time of the window's thread beside that of the adb which it runs.
#include "AttachedPhone.h"
#include "Claims.h"
#include "Window.h"

#include <QApplication>
#include <QCoroTask>
#include <QDir>

#include <ctime>
#include <utility>
#include <vector>

#include <sys/resource.h>

namespace {

using namespace Qt::StringLiterals;
using namespace varda;

constexpr int ticks = 100;
constexpr double mainThreadGoal = 0.001; // s

double seconds(clockid_t clock)
{
    timespec time = {};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The CPU time of the children that have ended.
double childrenSeconds()
{
    rusage usage = {};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    const auto sum = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return sum(usage.ru_utime) + sum(usage.ru_stime);
}

/// CPU seconds of one tick.
struct Costs
{
    double mainThread;
    double otherThreads;
    double adb;
};

/// As the poll loop does it, but for its pause.
Costs tick(VardaModel &model)
{
    const double mainBefore = seconds(CLOCK_THREAD_CPUTIME_ID);
    const double allBefore = seconds(CLOCK_PROCESS_CPUTIME_ID);
    const double childrenBefore = childrenSeconds();
    QCoro::waitFor(model.refresh());
    if (model.logging())
        QCoro::waitFor(model.readLogs());
    bench::settle();
    const double mainThread = seconds(CLOCK_THREAD_CPUTIME_ID) - mainBefore;
    return {mainThread, seconds(CLOCK_PROCESS_CPUTIME_ID) - allBefore - mainThread, childrenSeconds() - childrenBefore};
}

double median(const std::vector<Costs> &samples, double Costs::*member)
{
    std::vector<double> values;
    for (const Costs &sample : samples)
        values.push_back(sample.*member);
    return bench::median(std::move(values));
}

void report(const std::string &claim, const std::vector<Costs> &samples, std::optional<double> atMost)
{
    const double own = median(samples, &Costs::mainThread);
    const double adb = median(samples, &Costs::adb);
    bench::print({claim + ", CPU time of the main thread / of adb", bench::seconds(own), bench::seconds(adb),
                  bench::times(own / adb), atMost ? "≤ " + bench::seconds(*atMost) : "",
                  bench::verdictOn(own, atMost)});
    const double others = median(samples, &Costs::otherThreads);
    bench::print({claim + ", CPU time of the other threads / of adb", bench::seconds(others), bench::seconds(adb),
                  bench::times(others / adb), "", bench::Verdict::Stated});
}

std::vector<Costs> measure(VardaModel &model)
{
    for (int warmUp = 0; warmUp < 5; ++warmUp)
        tick(model);
    std::vector<Costs> samples;
    for (int number = 0; number < ticks; ++number)
        samples.push_back(tick(model));
    return samples;
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const bench::AttachedPhone phone(QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/.."_s),
                                     bench::AttachedPhone::Adb::Real);
    const std::string beside = " (" + phone.name().toStdString() + ")";
    const bench::Window window;
    VardaModel &model = *window.model;
    model.selectedID = std::nullopt;
    tick(model);
    if (!model.deviceReady())
        qFatal("No phone is attached: %s", qUtf8Printable(model.status()));

    const bench::PaintCounter counter;
    report("tick" + beside, measure(model), mainThreadGoal);
    bench::print({"tick" + beside + ", unchanged list: paint events", std::to_string(counter.painted()), "", "", "0",
                  bench::verdictOn(counter.painted(), 0)});
    model.logging = true;
    report("tick with the console on" + beside, measure(model), std::nullopt);
}
