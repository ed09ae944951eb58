// One child process: launched with exact control of what it inherits, watched without a thread, always reaped.
#pragma once

#include "VardaCore/ChildDescription.h"

#include <QCoroTask>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include <sys/types.h>

class QObject;

namespace varda {

/// A child process and the duty to reap it. Every child ends in one of three ways: it is seen to exit (`running`,
/// `waitForExit`, `onExit`), it is left behind (`abandon`), or the destructor kills and reaps it, which may block
/// briefly.
///
/// Threads: use an object from one thread at a time. It may be launched on one thread and moved to another; waiting
/// needs an event loop on the thread that waits.
class ChildProcess
{
public:
    using Clock = std::chrono::steady_clock;

    /// Launches a child. Blocks until the program has taken over or has failed to. Throws std::system_error that reads
    /// like "/path/adb: No such file or directory".
    static ChildProcess launch(const ChildDescription &description);

    ChildProcess(ChildProcess &&) noexcept = default;
    ChildProcess &operator=(ChildProcess &&other) noexcept;
    Q_DISABLE_COPY(ChildProcess)
    ~ChildProcess();

    /// The process identifier; once the child has been seen to exit it may belong to another process.
    pid_t pid() const;

    /// Whether the child has yet to exit. Reaps it when it has; never blocks.
    bool running() const;

    /// The exit code, or the number of the signal that ended the child; absent until it has been seen to exit. -1 when
    /// the system could not tell.
    std::optional<qint32> status() const;

    /// Asks the child to end (SIGTERM). Does nothing once it has been seen to exit; never reaches another process.
    void terminate() const;

    /// Ends the child (SIGKILL). Does nothing once it has been seen to exit; never reaches another process.
    void kill() const;

    /// Waits on the event loop until the child exits or `deadline` passes, and tells whether it has exited. Does not
    /// suspend if the child has already exited or the deadline has passed.
    QCoro::Task<bool> waitForExit(Clock::time_point deadline = Clock::time_point::max()) const;

    /// Calls `report` with the status exactly once, from the event loop of the calling thread and never within this
    /// call, as soon as the child has exited, also when it already has. `context` lives on the calling thread; when it
    /// is destroyed first, or this object is destroyed or abandons its child first, nothing is reported. `report` may
    /// destroy this object and `context`, and must not throw.
    void onExit(QObject *context, std::function<void(qint32 status)> report) const;

    /// Leaves the child behind: it runs on and is reaped, should it end while this process lives. This object then has
    /// no child: it is not running, has no status, and ignores requests to end it.
    void abandon();

private:
    struct State;
    class ExitWatch;

    explicit ChildProcess(std::shared_ptr<State> state);

    std::shared_ptr<State> m_state;
};

} // namespace varda
