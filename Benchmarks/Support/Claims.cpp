// Google Benchmark times the functions, interleaved; the medians of its repetitions make the rows.
#include "Claims.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <iostream>
#include <map>
#include <sstream>
#include <utility>
#include <vector>

namespace varda::bench {

namespace {

constexpr int repetitions = 40;
constexpr double shortestRepetition = 0.02; // s

struct Claim
{
    std::string text;
    std::optional<double> atMost;
    double scale = 1;
};

std::vector<Claim> &claims()
{
    static std::vector<Claim> list;
    return list;
}

/// Shows the measurements as the library does, and keeps the time of every repetition.
class Collector final : public benchmark::ConsoleReporter
{
public:
    Collector()
        : ConsoleReporter(OO_None)
    {
    }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                m_times[run.run_name.function_name].push_back(run.real_accumulated_time /
                                                              static_cast<double>(run.iterations));
        }
        ConsoleReporter::ReportRuns(runs);
    }

    /// In seconds; absent where the benchmark was not run.
    std::optional<double> median(const std::string &name) const
    {
        const auto found = m_times.find(name);
        if (found == m_times.end())
            return std::nullopt;
        return bench::median(found->second);
    }

private:
    std::map<std::string, std::vector<double>> m_times;
};

std::string fixed(double value, int decimals)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(decimals) << value;
    return text.str();
}

/// Three significant digits.
std::string inUnit(double value, const char *unit)
{
    return fixed(value, value < 10 ? 2 : value < 100 ? 1 : 0) + ' ' + unit;
}

void add(const std::string &name, Function function)
{
    benchmark::RegisterBenchmark(name.c_str(), function)
        ->UseRealTime()
        ->Unit(benchmark::kMicrosecond)
        ->MinTime(shortestRepetition)
        ->Repetitions(repetitions);
}

} // namespace

Verdict verdictOn(double figure, std::optional<double> atMost)
{
    if (!atMost)
        return Verdict::Stated;
    return figure <= *atMost ? Verdict::Met : Verdict::Missed;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void print(const Row &row)
{
    static constexpr std::array<const char *, 3> verdicts = {"met", "missed", "stated"};
    std::cout << row.claim << '\t' << row.measured << '\t' << row.baseline << '\t' << row.ratio << '\t' << row.goal
              << '\t' << verdicts[static_cast<size_t>(row.verdict)] << std::endl;
}

void printRatio(const std::string &claim, const std::string &measured, const std::string &baseline, double ratio,
                std::optional<double> atMost)
{
    print({claim, measured, baseline, times(ratio), atMost ? "≤ " + times(*atMost) : "", verdictOn(ratio, atMost)});
}

void printFigure(const std::string &claim, double figure, std::optional<double> atMost, std::string (*words)(double))
{
    print({claim, words(figure), "", "", atMost ? "≤ " + words(*atMost) : "", verdictOn(figure, atMost)});
}

std::string seconds(double duration)
{
    if (duration < 1e-6)
        return inUnit(duration * 1e9, "ns");
    if (duration < 1e-3)
        return inUnit(duration * 1e6, "µs");
    return duration < 1 ? inUnit(duration * 1e3, "ms") : inUnit(duration, "s");
}

std::string bytes(double count)
{
    if (count < 1024)
        return fixed(count, 0) + " B";
    return count < 1024 * 1024 ? inUnit(count / 1024, "KiB") : inUnit(count / 1024 / 1024, "MiB");
}

std::string times(double ratio)
{
    return "× " + fixed(ratio, 2);
}

void claimRatio(const std::string &claim, Function measured, Function baseline, std::optional<double> atMost,
                double scale)
{
    claims().push_back({claim, atMost, scale});
    add(claim, measured);
    add(claim + ", floor", baseline);
}

void runClaims(int *argc, char **argv)
{
    // The first of a flag counts less than the last: what the command line says wins.
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::vector<char *> arguments(argv, argv + *argc);
    arguments.insert(arguments.begin() + 1, interleaving.data());
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    benchmark::Initialize(&count, arguments.data());
    Collector collector;
    collector.SetOutputStream(&std::cerr);
    collector.SetErrorStream(&std::cerr);
    benchmark::RunSpecifiedBenchmarks(&collector);
    for (const Claim &claim : std::exchange(claims(), {})) {
        const std::optional<double> measured = collector.median(claim.text);
        const std::optional<double> baseline = collector.median(claim.text + ", floor");
        if (measured && baseline)
            printRatio(claim.text, seconds(*measured / claim.scale), seconds(*baseline),
                       *measured / claim.scale / *baseline, claim.atMost);
    }
    benchmark::ClearRegisteredBenchmarks();
}

} // namespace varda::bench
