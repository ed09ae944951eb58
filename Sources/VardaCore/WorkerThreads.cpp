// All threads of a pool take their work from one queue, and one mutex guards all that they share.
#include "VardaCore/WorkerThreads.h"

#include <QCoreApplication>

#include <system_error>
#include <utility>

namespace varda {

namespace {

std::mutex poolsMutex;
/// The pools that have not ended.
std::vector<WorkerThreads *> pools;

void endPools()
{
    std::vector<WorkerThreads *> all;
    {
        const std::lock_guard lock(poolsMutex);
        all = pools;
    }
    for (WorkerThreads *pool : all)
        pool->end();
}

} // namespace

WorkerThreads::WorkerThreads(std::size_t maxThreads, std::function<void()> afterwards)
    : m_maxThreads(maxThreads)
    , m_afterwards(std::move(afterwards))
{
    m_threads.reserve(maxThreads);
    const std::lock_guard lock(poolsMutex);
    pools.push_back(this);
    static const bool arranged = (qAddPostRoutine(endPools), true);
    Q_UNUSED(arranged)
}

void WorkerThreads::end()
{
    {
        const std::lock_guard lock(poolsMutex);
        if (std::erase(pools, this) == 0)
            return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
        m_queue.clear();
    }
    m_change.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
    m_afterwards();
}

void WorkerThreads::start(std::function<void()> work)
{
    const std::lock_guard lock(m_mutex);
    if (m_ending)
        return;
    m_queue.push_back(std::move(work));
    m_change.notify_one();
    if (m_idle >= m_queue.size() || m_threads.size() == m_maxThreads)
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
