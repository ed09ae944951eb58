// One queue, one lock.
#include "VardaCore/WorkerThreads.h"

#include <system_error>
#include <utility>

namespace varda {

WorkerThreads::WorkerThreads(std::size_t most)
    : m_most(most)
{
    m_threads.reserve(most);
}

WorkerThreads::~WorkerThreads()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        m_queue.clear();
    }
    m_change.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

void WorkerThreads::start(std::function<void()> work)
{
    const std::lock_guard lock(m_mutex);
    m_queue.push_back(std::move(work));
    m_change.notify_one();
    if (m_idle >= m_queue.size() || m_threads.size() == m_most)
        return;
    try {
        m_threads.emplace_back([this] { run(); });
    } catch (const std::system_error &failure) {
        // With fewer threads the work is done later.
        if (!m_threads.empty())
            return;
        m_queue.pop_back();
        throw std::system_error(failure.code(), "Cannot start a thread");
    }
}

void WorkerThreads::run()
{
    std::unique_lock lock(m_mutex);
    while (!m_ending) {
        if (m_queue.empty()) {
            ++m_idle;
            m_change.wait(lock);
            --m_idle;
            continue;
        }
        const std::function<void()> work = std::move(m_queue.front());
        m_queue.pop_front();
        lock.unlock();
        work();
        lock.lock();
    }
}

} // namespace varda
