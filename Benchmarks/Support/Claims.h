// What a benchmark program claims, and the rows that it prints: each a measurement beside the floor or the baseline
// that was measured in the same run, because times on a busy machine mean something only beside each other.
#pragma once

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <vector>

namespace varda::bench {

/// Whether a measurement reached its goal; `Stated` where there is none.
enum class Verdict { Met, Missed, Stated };

/// Whether `figure` is at most what is to be reached; without a goal it is stated.
Verdict verdictOn(double figure, std::optional<double> atMost);

/// The middle one of the values, the upper of two; there has to be one.
double median(std::vector<double> values);

/// One line of the table, in words: "0.41 ms", "× 1.07".
struct Row
{
    std::string claim;
    std::string measured;
    /// What it is measured against; empty for an absolute figure.
    std::string baseline;
    std::string ratio;
    std::string goal;
    Verdict verdict = Verdict::Stated;
};

/// Prints the row on standard output, its cells between tabulators, the verdict last: "met", "missed" or "stated".
void print(const Row &row);

/// Prints a ratio of two measurements whose words are given; with a goal it must not be more than that.
void printRatio(const std::string &claim, const std::string &measured, const std::string &baseline, double ratio,
                std::optional<double> atMost);

/// A figure that must not be more than `atMost`, in words by `words`.
void printFigure(const std::string &claim, double figure, std::optional<double> atMost, std::string (*words)(double));

/// In a unit that suits: "83.2 µs", "1.25 s".
std::string seconds(double duration);
/// "31.4 MiB", "980 B"
std::string bytes(double count);
/// "× 1.07"
std::string times(double ratio);

using Function = void (*)(benchmark::State &);

/// Adds a claim to the next `runClaims`: that an iteration of `measured` takes at most `atMost` times the wall time of
/// an iteration of `baseline`. `scale` divides the measured time, for iterations that hold several operations.
void claimRatio(const std::string &claim, Function measured, Function baseline, std::optional<double> atMost,
                double scale = 1);

/// Measures the claims added since the last call, each pair in turns and in random order, and prints a row for each
/// with the medians. Understands Google Benchmark's command line (see its user guide), so that
/// `--benchmark_filter=REGEX` and `--benchmark_repetitions=N` work; the measurements go to standard error.
void runClaims(int *argc, char **argv);

} // namespace varda::bench
