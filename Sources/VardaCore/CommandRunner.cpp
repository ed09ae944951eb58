// A command goes from worker to event loop to worker: prepared and launched on a worker, awaited on the event loop of
// the calling thread, read back and cleaned up on a worker.
#include "VardaCore/CommandRunner.h"

#include "Private/CaptureDirectory.h"
#include "Private/Descriptor.h"
#include "Private/InputPipe.h"
#include "VardaCore/Await.h"
#include "VardaCore/ChildProcess.h"
#include "VardaCore/ToolError.h"
#include "VardaCore/WorkerThreads.h"

#include <QFile>

#include <algorithm>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <unordered_set>

using namespace Qt::StringLiterals;

namespace varda {

namespace {

using namespace std::chrono_literals;
using Clock = ChildProcess::Clock;

/// Between SIGTERM and SIGKILL.
constexpr auto terminationGrace = 300ms;

/// Largest standard output in bytes, 32 MiB. Standard error has no limit: it is what explains a failure.
constexpr qint64 outputLimit = 33'554'432;

/// How often the output of a running command is looked at, so that a tool gone wild does not fill the disk.
constexpr auto boundInterval = 100ms;

/// Longer time-outs mean the same, and this one can be added to any time.
constexpr std::chrono::duration<double> longestTimeout = 24h * 36500;

/// Workers are busy for a millisecond or so per command; a few keep one slow disk access from holding up the others.
constexpr std::size_t fewestWorkers = 4;

constexpr auto outputName = "stdout";
constexpr auto errorName = "stderr";

/// One call of `run`. It lives in the frame of that call's coroutine; its members are released in reverse order. The
/// functions that are marked so block, and are called on a worker.
class Command
{
public:
    Command(QString executable, QStringList arguments, std::optional<QString> input);
    Q_DISABLE_COPY_MOVE(Command)
    ~Command();

    /// Makes the directory and its files and launches the child. Blocks.
    void launch();

    /// Writes as much input as the pipe takes, and tells whether that was the last of it. Blocks briefly.
    bool writeInput();

    /// Reads back what the child, which has exited, left behind. Blocks.
    CommandResult collect() const;

    /// Gives up all that is held. Blocks.
    void release();

    /// Keeps the output file from growing without end; its size still tells that there was too much. Blocks.
    void boundOutput() const { m_directory->bound(outputName, outputLimit + 1); }

    /// Removes the files early. Blocks.
    void removeFiles() const
    {
        if (m_directory)
            m_directory->remove();
    }

    const ChildProcess &child() const { return *m_child; }
    /// What to write the rest of the input to; never blocks.
    int inputDescriptor() const { return m_input->descriptor(); }
    /// When the child had been launched and its input been written.
    Clock::time_point started() const { return m_started; }

private:
    const QString m_executable;
    const QStringList m_arguments;
    const std::optional<QString> m_text;

    std::optional<CaptureDirectory> m_directory;
    /// Absent without input, and once it is written.
    std::optional<InputPipe> m_input;
    std::optional<ChildProcess> m_child;
    Clock::time_point m_started;
};

/// The commands in flight. Never destroyed, so that a frame whose event loop has ended is not lost but merely not
/// resumed.
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

    void removeFiles()
    {
        const std::lock_guard lock(m_mutex);
        for (const Command *command : m_commands)
            command->removeFiles();
    }

private:
    std::mutex m_mutex;
    std::unordered_set<Command *> m_commands;
};

/// The worker threads. When the process exits in order, they finish what they are at, and then the files of the
/// commands that will never be collected are removed.
class Workers
{
public:
    static WorkerThreads &threads()
    {
        static Workers workers;
        return *workers.m_threads;
    }

    Q_DISABLE_COPY_MOVE(Workers)

private:
    Workers()
        : m_threads(std::in_place, std::max<std::size_t>(fewestWorkers, std::thread::hardware_concurrency()))
    {
    }
    ~Workers()
    {
        m_threads.reset();
        InFlight::instance().removeFiles();
    }

    std::optional<WorkerThreads> m_threads;
};

Command::Command(QString executable, QStringList arguments, std::optional<QString> input)
    : m_executable(std::move(executable))
    , m_arguments(std::move(arguments))
    , m_text(std::move(input))
{
    InFlight::instance().add(this);
}

Command::~Command()
{
    InFlight::instance().remove(this);
}

void Command::launch()
{
    m_directory.emplace();
    const Descriptor output = m_directory->createFile(outputName);
    const Descriptor error = m_directory->createFile(errorName);
    ChildDescription description;
    description.executable = m_executable;
    description.arguments = m_arguments;
    description.standardInput = StandardStream::nullDevice();
    description.standardOutput = StandardStream::from(output.get());
    description.standardError = StandardStream::from(error.get());

    if (m_text) {
        m_input.emplace((*m_text + u'\n').toUtf8());
        description.standardInput = StandardStream::from(m_input->childSide());
    }
    m_child = ChildProcess::launch(description);
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
        throw std::system_error(error.code(), "Cannot write to " + QFile::encodeName(m_executable).toStdString());
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
        // What cannot be read is shown as nothing.
    }
    return {m_child->status().value(), output, error};
}

void Command::release()
{
    m_child.reset();
    m_input.reset();
    m_directory.reset();
}

/// The end of a time-out that began at `start`.
Clock::time_point deadline(Clock::time_point start, std::chrono::duration<double> timeout)
{
    // A time-out that is no number has passed as well.
    if (!(timeout > 0s))
        return start;
    return start + std::chrono::duration_cast<Clock::duration>(std::min(timeout, longestTimeout));
}

QCoro::Task<> start(Command *command)
{
    OnWorker launch(Workers::threads(), [command] {
        command->launch();
        return command->writeInput();
    });
    bool written = co_await launch;
    while (!written) {
        {
            Readiness room(command->inputDescriptor(), QSocketNotifier::Write, Clock::time_point::max());
            co_await room;
        }
        OnWorker write(Workers::threads(), [command] { return command->writeInput(); });
        written = co_await write;
    }
}

/// Waits until the child exits or `end` passes, and tells whether it has exited.
QCoro::Task<bool> waitForExit(Command *command, Clock::time_point end)
{
    for (;;) {
        const Clock::time_point next = std::min(end, Clock::now() + boundInterval);
        const bool exited = co_await command->child().waitForExit(next);
        if (exited || next == end)
            co_return exited;
        OnWorker bound(Workers::threads(), [command] { command->boundOutput(); });
        co_await bound;
    }
}

/// Sees the child to its end: its own, or the one that its time-out sets.
QCoro::Task<> finish(Command *command, std::chrono::duration<double> timeout)
{
    const bool finished = co_await waitForExit(command, deadline(command->started(), timeout));
    if (finished)
        co_return;
    command->child().terminate();
    const bool terminated = co_await waitForExit(command, Clock::now() + terminationGrace);
    if (!terminated) {
        command->child().kill();
        co_await command->child().waitForExit();
    }
    throw ToolError::message(u"The Android command timed out. Check the phone connection and try again."_s);
}

QCoro::Task<CommandResult> execute(Command *command, std::chrono::duration<double> timeout)
{
    co_await start(command);
    co_await finish(command, timeout);
    OnWorker collect(Workers::threads(), [command] { return command->collect(); });
    CommandResult result = co_await collect;
    co_return result;
}

} // namespace

QCoro::Task<CommandResult> CommandRunner::run(QString executable, QStringList arguments, std::optional<QString> input,
                                              std::chrono::duration<double> timeout)
{
    Command command(std::move(executable), std::move(arguments), std::move(input));
    std::optional<CommandResult> result;
    std::exception_ptr failure;
    try {
        result = co_await execute(&command, timeout);
    } catch (...) {
        failure = std::current_exception();
    }
    try {
        OnWorker release(Workers::threads(), [&command] { command.release(); });
        co_await release;
    } catch (const std::system_error &) {
        // There never was a thread, and so there is nothing that blocks.
        command.release();
    }
    if (failure)
        std::rethrow_exception(failure);
    co_return *std::move(result);
}

} // namespace varda
