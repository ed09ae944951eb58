// What it costs to bring home a large output: in time, and in memory at the worst moment.
#include "BareCommand.h"
#include "Claims.h"
#include "Memory.h"
#include "Running.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <fstream>

#include <malloc.h>

namespace {

using namespace varda;

constexpr std::int64_t outputSize = 32LL * 1024 * 1024;
constexpr std::int64_t errorSize = 100'000'000;

std::string outputFile;
std::string errorFile;

std::vector<std::string> writeOutput()
{
    return {"/bin/cat", outputFile};
}

std::vector<std::string> writeError()
{
    return {"/bin/sh", "-c", "exec cat \"$0\" >&2", errorFile};
}

/// Fills `path` with lines of a log up to `size` bytes.
void fill(const std::string &path, std::int64_t size)
{
    static const std::string line =
        "11-21 03:14:15.926  5358  9793 I ActivityTaskManager: Displayed Größe für 240 ms\n";
    std::ofstream file(path, std::ios::binary);
    std::int64_t left = size;
    for (; left >= static_cast<std::int64_t>(line.size()); left -= static_cast<std::int64_t>(line.size()))
        file << line;
    file << std::string(static_cast<size_t>(left), '-');
}

void outputFloor(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(bench::runBare(writeOutput()));
}

void output(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(bench::run(writeOutput()));
}

void errorFloor(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(bench::runBare(writeError()));
}

void error(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(bench::run(writeError()));
}

/// Prints the most memory that a run of `command` took beside what was there before, against the `size` it brings.
void printPeak(const std::string &claim, const std::vector<std::string> &command, std::int64_t size,
               std::optional<double> atMost)
{
    bench::run({"/bin/true"});
    ::malloc_trim(0);
    const std::int64_t before = bench::residentBytes();
    bench::restartPeak();
    {
        const CommandResult result = bench::run(command);
        benchmark::DoNotOptimize(&result);
    }
    const auto peak = static_cast<double>(bench::peakResidentBytes() - before);
    bench::printRatio(claim, bench::bytes(peak), bench::bytes(static_cast<double>(size)),
                      peak / static_cast<double>(size), atMost);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir directory;
    outputFile = directory.filePath(QStringLiteral("output")).toStdString();
    errorFile = directory.filePath(QStringLiteral("error")).toStdString();
    fill(outputFile, outputSize);
    fill(errorFile, errorSize);
    bench::claimRatio("run that writes 32 MiB / cat into a file and one read", output, outputFloor, 1.3);
    bench::claimRatio("run that writes 100 MB of errors, decoded / cat into a file and one read", error, errorFloor,
                      1.5);
    bench::runClaims(&argc, argv);
    printPeak("peak memory of a run that writes 32 MiB / the output", writeOutput(), outputSize, 2);
    printPeak("peak memory of a run that writes 100 MB of errors / the errors", writeError(), errorSize, std::nullopt);
}
