// What a coroutine here can wait for: work on another thread, and a descriptor that becomes ready.
#pragma once

#include "VardaCore/WorkerThreads.h"

#include <QCoroTask>
#include <QObject>
#include <QScopedPointer>
#include <QSocketNotifier>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace varda {

/// Resumes one suspended coroutine from the event loop of the thread that made this object. It lives in the coroutine's
/// own frame, as a part of what is awaited.
class Resumption
{
public:
    void suspend(std::coroutine_handle<> coroutine) { m_coroutine = coroutine; }

    /// Resumes the coroutine on a later turn of its event loop. Call it once, on any thread; after that this object
    /// may be gone at any moment.
    void schedule()
    {
        QObject *receiver = m_receiver.get(); // read before the flag is set: that is the last touch of this object
        m_scheduled.store(true, std::memory_order_release);
        QMetaObject::invokeMethod(
            receiver, [this] { resume(); }, Qt::QueuedConnection);
    }

private:
    /// Qt's event queue orders this after `schedule`, which the thread sanitizer does not see. The flag shows it that
    /// order; otherwise it reports each result that a worker hands over as a data race.
    void resume() const
    {
        if (m_scheduled.load(std::memory_order_acquire))
            m_coroutine.resume();
    }

    /// The coroutine resumes, and may end, inside this object's event, so that the object has to outlive that.
    std::unique_ptr<QObject, QScopedPointerDeleteLater> m_receiver{new QObject};
    std::coroutine_handle<> m_coroutine;
    std::atomic<bool> m_scheduled = false;
};

/// Suspends a coroutine for an operation. It only points to the operation, because GCC 12 copies an awaiter that is a
/// variable.
template <typename Operation>
struct Awaiter
{
    bool await_ready() const { return false; }
    void await_suspend(std::coroutine_handle<> coroutine) const { operation->start(coroutine); }
    decltype(auto) await_resume() const { return operation->result(); }

    Operation *operation;
};

/// Runs `Work` on a worker thread while the awaiting coroutine is suspended; hands back its result, or throws what it
/// threw. Throws std::system_error if no thread can be started.
template <typename Work>
class [[nodiscard]] OnWorker
{
public:
    using Result = std::invoke_result_t<Work &>;

    OnWorker(WorkerThreads &workers, Work work)
        : m_workers(workers)
        , m_work(std::move(work))
    {
    }

    Awaiter<OnWorker> operator co_await() { return {this}; }

private:
    friend Awaiter<OnWorker>;

    struct Nothing
    {
    };

    void start(std::coroutine_handle<> coroutine)
    {
        m_resumption.suspend(coroutine);
        m_workers.start([this] { run(); });
    }

    Result result()
    {
        if (m_failure)
            std::rethrow_exception(std::exchange(m_failure, nullptr));
        if constexpr (!std::is_void_v<Result>)
            return std::move(*m_result);
    }

    void run()
    {
        try {
            if constexpr (std::is_void_v<Result>)
                m_work();
            else
                m_result.emplace(m_work());
        } catch (...) {
            m_failure = std::current_exception();
        }
        m_resumption.schedule();
    }

    WorkerThreads &m_workers;
    Work m_work;
    std::optional<std::conditional_t<std::is_void_v<Result>, Nothing, Result>> m_result;
    std::exception_ptr m_failure;
    Resumption m_resumption;
};

/// Suspends until a descriptor is ready or the deadline passes, whichever is first; it does not tell which. Waits for
/// the deadline alone when the descriptor is -1, and for the descriptor alone when the deadline is `time_point::max()`.
class [[nodiscard]] Readiness
{
public:
    using Clock = std::chrono::steady_clock;

    /// `descriptor` stays open, and with its owner, for as long as this object lives.
    Readiness(int descriptor, QSocketNotifier::Type type, Clock::time_point deadline);

    Awaiter<Readiness> operator co_await() { return {this}; }

private:
    friend Awaiter<Readiness>;

    void start(std::coroutine_handle<> coroutine);
    void result() const {}
    void finish();

    std::optional<QSocketNotifier> m_notifier;
    QTimer m_timer;
    Clock::time_point m_deadline;
    Resumption m_resumption;
};

} // namespace varda
