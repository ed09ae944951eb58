// A command goes from worker to event loop to worker: prepared and launched on a worker, awaited on the event loop of
// the calling thread, read back and cleaned up on a worker.
#include "VardaCore/CommandRunner.h"

#include "Private/CaptureDirectory.h"
#include "Private/Descriptor.h"
#include "Private/InputPipe.h"
#include "Private/Keeper.h"
#include "VardaCore/Await.h"
#include "VardaCore/ChildProcess.h"
#include "VardaCore/ToolError.h"
#include "VardaCore/WorkerThreads.h"

#include <QFile>

#include <algorithm>
#include <exception>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <thread>
#include <unordered_set>

namespace varda {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Clock = ChildProcess::Clock;

/// Largest standard output in bytes, 32 MiB. Standard error has no limit: it is what explains a failure. Output is
/// measured only when the child has exited: truncating a file that is still written to may lengthen it instead, and
/// looking at a file on a disk that hangs would delay the time-out.
constexpr qint64 outputLimit = 33'554'432;

/// Longer time-outs are cut to this one, which can be added to the present time without an overflow.
constexpr std::chrono::duration<double> maxTimeout = 24h * 36500;

/// Workers are busy for a millisecond or so per command; a few keep one slow disk access from holding up the others.
constexpr std::size_t minWorkers = 4;

constexpr auto outputName = "stdout";
constexpr auto errorName = "stderr";

/// One call of `run`. It lives in the frame of that call's coroutine; its members are released in reverse order. The
/// functions that are marked so block, and are called on a worker.
class Command
{
public:
    Command(const QString &executable, const QStringList &arguments, std::optional<QString> input,
            std::chrono::duration<double> timeout);
    Q_DISABLE_COPY_MOVE(Command)
    ~Command();

    /// Makes the directory and its files and launches the child. Blocks.
    void launch();

    /// Writes as much input as the pipe takes, and tells whether that was the last of it. Blocks briefly.
    bool writeInput();

    /// Reads back what the child, which has exited, left behind. Blocks.
    CommandResult collect() const;

    /// Releases the child, the pipe and the directory. Blocks.
    void release();

    /// Ends the supervision of a child that outlives this process: removes the files, and has a keeper end the
    /// child at its time-out. Blocks.
    void leave() const;

    const ChildProcess &child() const { return *m_child; }
    /// What to write the rest of the input to; never blocks.
    int inputDescriptor() const { return m_input->descriptor(); }
    /// The end of the time-out, which begins when the child has been launched and its input been written.
    Clock::time_point deadline() const;

private:
    /// Made when `run` is called, and with it a copy of the environment at that time.
    ChildDescription m_description;
    const std::filesystem::path m_temporaryDirectory = CaptureDirectory::temporaryDirectory();
    const std::optional<QString> m_text;
    const std::chrono::duration<double> m_timeout;

    std::optional<CaptureDirectory> m_directory;
    /// Absent without input, and once it is written.
    std::optional<InputPipe> m_input;
    std::optional<ChildProcess> m_child;
    Clock::time_point m_started;
};

/// The commands in flight. Never destroyed: a command whose event loop has ended is never resumed, and its frame stays
/// reachable from here.
class InFlight
{
public:
    static InFlight &instance()
    {
        static auto &inFlight = *new InFlight;
        return inFlight;
    }

    void add(Command *command)
    {
        const std::lock_guard lock(m_mutex);
        m_commands.insert(command);
    }

    void remove(Command *command)
    {
        const std::lock_guard lock(m_mutex);
        m_commands.erase(command);
    }

    void leave()
    {
        const std::lock_guard lock(m_mutex);
        for (const Command *command : m_commands)
            command->leave();
    }

private:
    std::mutex m_mutex;
    std::unordered_set<Command *> m_commands;
};

/// The worker threads. When the program ends in order, they finish their current work; then the supervision of the
/// commands still in flight ends.
WorkerThreads &workers()
{
    static WorkerThreads threads(std::max<std::size_t>(minWorkers, std::thread::hardware_concurrency()),
                                 [] { InFlight::instance().leave(); });
    return threads;
}

Command::Command(const QString &executable, const QStringList &arguments, std::optional<QString> input,
                 std::chrono::duration<double> timeout)
    : m_text(std::move(input))
    , m_timeout(timeout)
{
    m_description.executable = executable;
    m_description.arguments = arguments;
    m_description.standardInput = StandardStream::nullDevice();
    InFlight::instance().add(this);
}

Command::~Command()
{
    InFlight::instance().remove(this);
}

void Command::launch()
{
    m_directory.emplace(m_temporaryDirectory);
    const Descriptor output = m_directory->createFile(outputName);
    const Descriptor error = m_directory->createFile(errorName);
    m_description.standardOutput = StandardStream::from(output.get());
    m_description.standardError = StandardStream::from(error.get());
    if (m_text) {
        m_input.emplace((*m_text + u'\n').toUtf8());
        m_description.standardInput = StandardStream::from(m_input->childSide());
    }
    m_child = ChildProcess::launch(m_description);
    if (m_input)
        m_input->closeChildSide();
    m_started = Clock::now();
}

bool Command::writeInput()
{
    try {
        if (m_input && !m_input->write())
            return false;
    } catch (const std::system_error &error) {
        m_child->abandon();
        throw std::system_error(error.code(),
                                "Cannot write to " + QFile::encodeName(m_description.executable).toStdString());
    }
    m_input.reset();
    m_started = Clock::now();
    return true;
}

CommandResult Command::collect() const
{
    const std::optional<qint64> size = m_directory->size(outputName);
    if (size > outputLimit)
        throw ToolError::message(u"Command output was too large to display safely."_s);
    const QByteArray output = m_directory->read(outputName, size);
    QString error;
    try {
        error = m_directory->readText(errorName);
    } catch (const std::system_error &) {
        // Standard error that cannot be read counts as empty.
    }
    return {m_child->status().value(), output, error};
}

void Command::release()
{
    m_child.reset();
    m_input.reset();
    m_directory.reset();
}

void Command::leave() const
{
    if (m_directory)
        m_directory->remove();
    if (m_child && m_child->running())
        leaveToKeeper(m_child->pid(), deadline());
}

Clock::time_point Command::deadline() const
{
    // NaN counts as passed, too.
    if (!(m_timeout > 0s))
        return m_started;
    return m_started + std::chrono::duration_cast<Clock::duration>(std::min(m_timeout, maxTimeout));
}

QCoro::Task<> start(Command *command)
{
    OnWorker launch(workers(), [command] {
        command->launch();
        return command->writeInput();
    });
    bool written = co_await launch;
    while (!written) {
        {
            Readiness room(command->inputDescriptor(), QSocketNotifier::Write, Clock::time_point::max());
            co_await room;
        }
        OnWorker write(workers(), [command] { return command->writeInput(); });
        written = co_await write;
    }
}

/// Waits until the child exits, or ends it at its time-out.
QCoro::Task<> finish(const Command *command)
{
    const bool finished = co_await command->child().waitForExit(command->deadline());
    if (finished)
        co_return;
    command->child().terminate();
    const bool terminated = co_await command->child().waitForExit(Clock::now() + terminationGrace);
    if (!terminated) {
        command->child().kill();
        co_await command->child().waitForExit();
    }
    throw ToolError::message(u"The Android command timed out. Check the phone connection and try again."_s);
}

QCoro::Task<CommandResult> execute(Command *command)
{
    co_await start(command);
    co_await finish(command);
    OnWorker collect(workers(), [command] { return command->collect(); });
    CommandResult result = co_await collect;
    co_return result;
}

} // namespace

QCoro::Task<CommandResult> CommandRunner::run(QString executable, QStringList arguments, std::optional<QString> input,
                                              std::chrono::duration<double> timeout)
{
    Command command(executable, arguments, std::move(input), timeout);
    std::optional<CommandResult> result;
    std::exception_ptr failure;
    try {
        result = co_await execute(&command);
    } catch (...) {
        failure = std::current_exception();
    }
    try {
        OnWorker release(workers(), [&command] { command.release(); });
        co_await release;
    } catch (const std::system_error &) {
        // No thread could ever be started, so nothing was made whose release could block.
        command.release();
    }
    if (failure)
        std::rethrow_exception(failure);
    co_return *std::move(result);
}

} // namespace varda
