// A pool of threads for work that blocks.
#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace varda {

/// A few threads, started when there is work for them and kept. Unlike QThreadPool it throws if no thread can be
/// started, instead of keeping the work for ever.
///
/// What is done here is reported to an event loop. The threads therefore end before the application object does, as
/// soon as its destructor begins: a function's static variable is a good place for a pool.
class WorkerThreads
{
public:
    /// Never more threads than `maxThreads`. When they have ended, `afterwards` is called, once, on the thread that
    /// ended them.
    explicit WorkerThreads(
        std::size_t maxThreads, std::function<void()> afterwards = [] {});
    Q_DISABLE_COPY_MOVE(WorkerThreads)
    ~WorkerThreads() { end(); }

    /// Lets the threads finish their current work, and drops all other work, also what is still to be started. The
    /// destructors of the application object and of this one do the same.
    void end();

    /// Runs `work`, which must not throw, on one of the threads, in the order of the calls. Any thread. Throws
    /// std::system_error if there is no thread and none can be started; then the work will not be done.
    void start(std::function<void()> work);

private:
    void run();

    const std::size_t m_maxThreads;
    const std::function<void()> m_afterwards;
    std::mutex m_mutex;
    std::condition_variable m_change;
    std::deque<std::function<void()>> m_queue;
    std::size_t m_idle = 0;
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};

} // namespace varda
