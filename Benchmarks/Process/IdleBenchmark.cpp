// What the program costs while nobody touches it and one phone is attached, at its true pace.
//
//   IdleBenchmark [MINUTES]
#include "AttachedPhone.h"
#include "Claims.h"
#include "Program.h"

#include <QCoreApplication>
#include <QDir>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Qt::StringLiterals;
using namespace varda;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr double usualMinutes = 1;
constexpr auto warmUp = 10s;
constexpr auto pace = 100ms;
constexpr double cpuGoal = 2;            // seconds per hour
constexpr double wakeUpGoal = 1;         // per second
constexpr double growthGoal = 64 * 1024; // bytes: some pages that the allocator had not touched yet
constexpr double secondsPerHour = 3600;

/// What happened between two looks at the program.
struct Interval
{
    double seconds;
    std::uint64_t wakeUps;
    bool tick; ///< a command ended
};

std::uint64_t newSleeps(const std::map<int, std::uint64_t> &before, const std::map<int, std::uint64_t> &after)
{
    std::uint64_t sum = 0;
    for (const auto &[thread, count] : after) {
        const auto former = before.find(thread);
        sum += count - (former == before.end() ? 0 : former->second);
    }
    return sum;
}

std::vector<Interval> watch(const bench::Program &program, std::chrono::duration<double> time)
{
    std::vector<Interval> intervals;
    auto sleeps = program.sleeps();
    std::uint64_t faults = program.childrenFaults();
    auto begun = Clock::now();
    for (const auto end = begun + time; begun < end;) {
        std::this_thread::sleep_for(pace);
        const auto now = Clock::now();
        const auto nextSleeps = program.sleeps();
        const std::uint64_t nextFaults = program.childrenFaults();
        intervals.push_back(
            {std::chrono::duration<double>(now - begun).count(), newSleeps(sleeps, nextSleeps), nextFaults != faults});
        sleeps = nextSleeps;
        faults = nextFaults;
        begun = now;
    }
    return intervals;
}

/// A tick may begin in one interval and be done with in the next: those around one belong to it.
void reportWakeUps(const std::vector<Interval> &intervals)
{
    double seconds = 0;
    std::uint64_t wakeUps = 0;
    std::uint64_t all = 0;
    int ticks = 0;
    for (size_t i = 1; i + 1 < intervals.size(); ++i) {
        all += intervals[i].wakeUps;
        ticks += intervals[i].tick && !intervals[i - 1].tick ? 1 : 0;
        if (intervals[i - 1].tick || intervals[i].tick || intervals[i + 1].tick)
            continue;
        seconds += intervals[i].seconds;
        wakeUps += intervals[i].wakeUps;
    }
    if (ticks == 0 || seconds == 0)
        qFatal("No tick was seen");
    const auto perSecond = [](double figure) { return std::to_string(figure).substr(0, 5) + " per s"; };
    bench::printFigure("idle: wake-ups of all threads outside ticks", static_cast<double>(wakeUps) / seconds,
                       wakeUpGoal, perSecond);
    bench::printFigure("idle: wake-ups of all threads per tick", static_cast<double>(all - wakeUps) / ticks,
                       std::nullopt, [](double figure) { return std::to_string(figure).substr(0, 5); });
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const double minutes = argc > 1 ? std::stod(argv[1]) : usualMinutes;
    const QString home = QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/.."_s);
    bench::forgetDesktop();
    const bench::AttachedPhone phone(home, bench::AttachedPhone::Adb::Real);
    bench::Program program(bench::stageVarda(home));
    program.firstFrame();
    std::this_thread::sleep_for(warmUp);

    const auto begun = Clock::now();
    const double cpu = program.cpuSeconds();
    const double children = program.childrenSeconds();
    const bench::Memory memory = program.memory();
    const std::int64_t descriptors = program.descriptors();
    const auto intervals = watch(program, std::chrono::duration<double>(minutes * 60));
    const double perHour = secondsPerHour / std::chrono::duration<double>(Clock::now() - begun).count();

    const double own = (program.cpuSeconds() - cpu) * perHour;
    const double adb = (program.childrenSeconds() - children) * perHour;
    bench::print({"idle, " + phone.name().toStdString() + ": CPU time per hour / of the adb that it runs",
                  bench::seconds(own), bench::seconds(adb), bench::times(own / adb), "≤ " + bench::seconds(cpuGoal),
                  bench::verdictOn(own, cpuGoal)});
    reportWakeUps(intervals);
    const auto words = [](double figure) { return std::to_string(figure).substr(0, 4); };
    const std::string during = " in " + words(minutes) + " minutes";
    bench::printFigure("idle: memory grown" + during, program.memory().own - memory.own, growthGoal, bench::bytes);
    bench::printFigure("idle: descriptors grown" + during, static_cast<double>(program.descriptors() - descriptors), 0,
                       [](double figure) { return std::to_string(static_cast<int>(figure)); });
}
