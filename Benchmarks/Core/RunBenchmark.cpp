// What a command costs that does nothing: alone, beside 32 that wait, and as one of 33 that start at once.
#include "BareCommand.h"
#include "Claims.h"
#include "Running.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace varda;

constexpr auto others = 32;

const std::vector<std::string> exitAtOnce = {"/bin/true"};

void runFloor(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state)
        bench::runBare(exitAtOnce);
}

void runAlone(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state)
        bench::run(exitAtOnce);
}

/// Runs of cat that read a named pipe, for as long as this object lives.
class WaitingCommands
{
public:
    WaitingCommands()
    {
        const std::string path = m_directory.filePath(QStringLiteral("pipe")).toStdString();
        if (::mkfifo(path.c_str(), 0600) != 0 || (m_pipe = ::open(path.c_str(), O_RDWR | O_CLOEXEC)) < 0)
            std::abort();
        for (int count = 0; count < others; ++count)
            m_commands.push_back(bench::start({"/bin/cat", path}));
        // With one that has started after them, they are all past their start.
        bench::run(exitAtOnce);
    }
    Q_DISABLE_COPY_MOVE(WaitingCommands)
    ~WaitingCommands()
    {
        ::close(m_pipe);
        for (auto &command : m_commands)
            QCoro::waitFor(command);
    }

private:
    QTemporaryDir m_directory;
    int m_pipe = -1;
    std::vector<QCoro::Task<CommandResult>> m_commands;
};

void runBesideWaiting(benchmark::State &state)
{
    const WaitingCommands waiting;
    for ([[maybe_unused]] auto _ : state)
        bench::run(exitAtOnce);
}

void runManyAtOnce(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state) {
        std::vector<QCoro::Task<CommandResult>> commands;
        for (int count = 0; count <= others; ++count)
            commands.push_back(bench::start(exitAtOnce));
        for (auto &command : commands)
            QCoro::waitFor(command);
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    bench::claimRatio("run of a program that exits at once / posix_spawn, wait and read", runAlone, runFloor, 1.25);
    bench::claimRatio("run beside 32 that wait / run alone", runBesideWaiting, runAlone, 2);
    bench::claimRatio("run as one of 33 at once, per command / run alone", runManyAtOnce, runAlone, 2, others + 1);
    bench::runClaims(&argc, argv);
}
