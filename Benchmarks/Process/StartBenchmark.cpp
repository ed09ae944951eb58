// From the start of the program to its first picture, and the memory that it holds then, beside windows of the same
// size on the same toolkit, in turns: a bare one, one with a line of text, and one with the same texts in plain labels.
#include "AttachedPhone.h"
#include "Claims.h"
#include "Program.h"

#include <QCoreApplication>
#include <QDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>
#include <vector>

namespace {

using namespace Qt::StringLiterals;
using namespace varda;
using namespace std::chrono_literals;

constexpr int starts = 40;
/// How many of them are looked at when they have come to rest.
constexpr int restingStarts = 5;
/// From the first picture until a program has come to rest; Varda's first tick is over then.
constexpr auto untilRest = 1000ms;
constexpr double timeGoal = 1.5; // of the window with one line of text
constexpr double memoryGoal = 1.4;

struct Samples
{
    std::vector<double> seconds;
    std::vector<double> cpuSeconds;
    std::vector<double> resident;
    std::vector<double> proportional;
};

void sample(const QString &path, const QString &argument, bool resting, Samples &samples)
{
    bench::Program program(path, argument);
    const bench::FirstFrame frame = program.firstFrame();
    samples.seconds.push_back(frame.seconds);
    samples.cpuSeconds.push_back(frame.cpuSeconds);
    if (!resting)
        return;
    std::this_thread::sleep_for(untilRest);
    const bench::Memory memory = program.memory();
    samples.resident.push_back(memory.resident);
    samples.proportional.push_back(memory.proportional);
}

struct Summary
{
    double least;
    double median;
    double most;
};

Summary summary(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return {values.front(), values[values.size() / 2], values.back()};
}

void report(const std::string &claim, const std::vector<double> &varda, const std::vector<double> &bare,
            std::string (*words)(double), std::optional<double> atMost)
{
    const auto text = [&](const Summary &figures) {
        return words(figures.median) + " (" + words(figures.least) + " to " + words(figures.most) + ")";
    };
    const Summary measured = summary(varda);
    const Summary baseline = summary(bare);
    bench::printRatio(claim, text(measured), text(baseline), measured.median / baseline.median, atMost);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QString home = QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/.."_s);
    bench::forgetDesktop();
    const bench::AttachedPhone phone(home, bench::AttachedPhone::Adb::StandIn);
    const QString program = bench::stageVarda(home);
    const QString bareWindow = QStringLiteral(BARE_WINDOW);
    const QString labelWindow = QStringLiteral(LABEL_WINDOW);
    const QString line = u"One line of text"_s;
    Samples varda;
    Samples bare;
    Samples withText;
    Samples withLabels;
    {
        Samples warmUp;
        sample(program, {}, false, warmUp);
        sample(bareWindow, line, false, warmUp);
        sample(labelWindow, {}, false, warmUp);
    }
    for (int start = 0; start < starts; ++start) {
        sample(program, {}, start < restingStarts, varda);
        sample(bareWindow, {}, start < restingStarts, bare);
        sample(bareWindow, line, start < restingStarts, withText);
        sample(labelWindow, {}, start < restingStarts, withLabels);
    }
    report("start to the first picture / bare window", varda.seconds, bare.seconds, bench::seconds, std::nullopt);
    report("start to the first picture / window with one line of text", varda.seconds, withText.seconds, bench::seconds,
           timeGoal);
    report("start to the first picture / window with the same texts in labels", varda.seconds, withLabels.seconds,
           bench::seconds, std::nullopt);
    report("start to the first picture, CPU time / window with one line of text", varda.cpuSeconds, withText.cpuSeconds,
           bench::seconds, std::nullopt);
    report("resident memory after it / bare window", varda.resident, bare.resident, bench::bytes, memoryGoal);
    report("proportional memory after it / bare window", varda.proportional, bare.proportional, bench::bytes,
           memoryGoal);
    report("resident memory after it / window with one line of text", varda.resident, withText.resident, bench::bytes,
           std::nullopt);
    report("proportional memory after it / window with the same texts in labels", varda.proportional,
           withLabels.proportional, bench::bytes, std::nullopt);
}
