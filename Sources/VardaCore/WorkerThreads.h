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
class WorkerThreads
{
public:
    /// Never more threads than `most`.
    explicit WorkerThreads(std::size_t most);
    Q_DISABLE_COPY_MOVE(WorkerThreads)
    /// Lets the threads finish what they are at, and drops what none has begun.
    ~WorkerThreads();

    /// Has `work`, which must not throw, done on one of the threads, in the order of the calls. Any thread. Throws
    /// std::system_error when there is no thread and none can be started; then the work will not be done.
    void start(std::function<void()> work);

private:
    void run();

    const std::size_t m_most;
    std::mutex m_mutex;
    std::condition_variable m_change;
    std::deque<std::function<void()>> m_queue;
    std::size_t m_idle = 0;
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};

} // namespace varda
