// The threads that blocking work is handed to.
#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace varda {

/// A few threads, started when there is work for them, which then stay. Unlike QThreadPool it tells when there is no
/// thread to be had, instead of keeping the work for ever.
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

    /// Lets the threads finish what they are at, and drops what none has begun and all that is still to come. The
    /// destructors of the application object and of this one do the same.
    void end();

    /// Has `work`, which must not throw, done on one of the threads, in the order of the calls. Any thread. Throws
    /// std::system_error when there is no thread and none can be started; then the work will not be done.
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
