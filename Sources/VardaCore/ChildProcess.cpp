// Launches with posix_spawn, which tells a failed exec by its error number, and watches through a pidfd. Where the
// kernel has no pidfd, the child is asked for every 50 ms instead. Every call that only Linux has is in this file.
#include "VardaCore/ChildProcess.h"

#include "VardaCore/Await.h"
#include "VardaCore/Descriptor.h"

#include <QByteArray>
#include <QFile>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace varda {

namespace {

using namespace std::chrono_literals;

constexpr auto pollInterval = 50ms;

/// Stands for a status that the system could not tell.
constexpr qint32 unknownStatus = -1;

// The C library's own declarations of these two calls (2.36) lack C linkage.

/// -1 where the kernel has no pidfd. The descriptor is close-on-exec.
int openPidfd(pid_t pid)
{
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
}

bool sendSignal(int pidfd, int number)
{
    return ::syscall(SYS_pidfd_send_signal, pidfd, number, nullptr, 0) == 0;
}

/// Waits for `pid` without or, with WNOHANG, instead of blocking. Absent while the child runs.
std::optional<qint32> reap(pid_t pid, int options)
{
    int status = 0;
    pid_t reaped = 0;
    do {
        reaped = ::waitpid(pid, &status, options);
    } while (reaped < 0 && errno == EINTR);
    if (reaped == 0)
        return std::nullopt;
    if (reaped < 0)
        return unknownStatus;
    return WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status);
}

} // namespace

/// Shared between the object and what waits for it. No child once `abandoned`; reaped once there is a `status`.
struct ChildProcess::State
{
    bool running()
    {
        if (!status && !abandoned)
            status = reap(pid, WNOHANG);
        return !status && !abandoned;
    }

    void signal(int number)
    {
        if (!running())
            return;
        // Until it is reaped, the identifier cannot have passed to another process.
        if (!pidfd || !sendSignal(pidfd.get(), number))
            ::kill(pid, number);
    }

    static QCoro::Task<bool> exit(std::shared_ptr<State> state, Clock::time_point deadline)
    {
        while (state->running()) {
            const Clock::time_point now = Clock::now();
            if (now >= deadline)
                co_return false;
            const Clock::time_point next = state->pidfd ? deadline : std::min(deadline, now + pollInterval);
            Readiness change(state->pidfd.get(), QSocketNotifier::Read, next);
            co_await change;
        }
        co_return true;
    }

    pid_t pid = -1;
    /// None where the kernel has no pidfd.
    Descriptor pidfd;
    std::optional<qint32> status;
    bool abandoned = false;
};

namespace {

/// Reports one exit from the event loop, then goes; goes with its parent before.
template <typename State>
class ExitWatch final : public QObject
{
public:
    ExitWatch(QObject *parent, std::shared_ptr<State> state, std::function<void(qint32)> report)
        : QObject(parent)
        , m_state(std::move(state))
        , m_report(std::move(report))
    {
        if (m_state->pidfd) {
            m_notifier.emplace(m_state->pidfd.get(), QSocketNotifier::Read);
            connect(&*m_notifier, &QSocketNotifier::activated, this, [this] { check(); });
        } else {
            connect(&m_timer, &QTimer::timeout, this, [this] { check(); });
            m_timer.start(pollInterval);
        }
    }

private:
    void check()
    {
        if (m_state->running())
            return;
        if (m_notifier)
            m_notifier->setEnabled(false);
        m_timer.stop();
        deleteLater();
        // The report may destroy this object.
        const std::function<void(qint32)> report = std::move(m_report);
        if (const std::optional<qint32> status = m_state->status)
            report(*status);
    }

    std::shared_ptr<State> m_state;
    std::function<void(qint32)> m_report;
    std::optional<QSocketNotifier> m_notifier;
    QTimer m_timer;
};

void check(int error, const std::string &what)
{
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

/// A program that was started with SIGCHLD ignored, as some launchers do, would never learn how its children ended.
void makeChildrenWaitable()
{
    struct sigaction action = {};
    if (::sigaction(SIGCHLD, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
        action.sa_handler = SIG_DFL;
        ::sigaction(SIGCHLD, &action, nullptr);
    }
}

/// A list of C strings with the null pointer behind its last.
class CStrings
{
public:
    explicit CStrings(std::vector<QByteArray> strings)
        : m_strings(std::move(strings))
    {
        for (QByteArray &string : m_strings)
            m_pointers.push_back(string.data());
        m_pointers.push_back(nullptr);
    }

    char *const *data() const { return m_pointers.data(); }

private:
    std::vector<QByteArray> m_strings;
    std::vector<char *> m_pointers;
};

CStrings argumentList(const ChildDescription &description)
{
    std::vector<QByteArray> list = {QFile::encodeName(description.executable)};
    for (const QString &argument : description.arguments)
        list.push_back(argument.toUtf8());
    return CStrings(std::move(list));
}

CStrings environmentList(const ChildDescription &description)
{
    std::vector<QByteArray> list;
    for (char **variable = environ; variable && *variable; ++variable)
        list.emplace_back(*variable);
    for (const auto &[name, value] : description.environment) {
        const QByteArray prefix = name.toUtf8() + '=';
        std::erase_if(list, [&prefix](const QByteArray &variable) { return variable.startsWith(prefix); });
        list.push_back(prefix + value.toUtf8());
    }
    return CStrings(std::move(list));
}

/// Whether a text would lose its end as a C string.
bool holdsNul(const ChildDescription &description)
{
    const auto nul = [](const QString &text) { return text.contains(QChar::Null); };
    return nul(description.executable) ||
           std::any_of(description.arguments.begin(), description.arguments.end(), nul) ||
           std::any_of(description.environment.begin(), description.environment.end(),
                       [&nul](const auto &variable) { return nul(variable.first) || nul(variable.second); });
}

/// What the child does between its birth and the program: sets up its three streams, closes all else.
class FileActions
{
public:
    FileActions(const ChildDescription &description, std::string what)
        : m_what(std::move(what))
    {
        check(::posix_spawn_file_actions_init(&m_actions), m_what);
        try {
            connect(description.standardInput, STDIN_FILENO);
            connect(description.standardOutput, STDOUT_FILENO);
            connect(description.standardError, STDERR_FILENO);
            check(::posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1), m_what);
        } catch (...) {
            ::posix_spawn_file_actions_destroy(&m_actions);
            throw;
        }
    }
    Q_DISABLE_COPY_MOVE(FileActions)
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }

    const posix_spawn_file_actions_t *get() const { return &m_actions; }

private:
    void connect(StandardStream stream, int target)
    {
        if (stream.kind == StandardStream::Kind::NullDevice) {
            const int mode = target == STDIN_FILENO ? O_RDONLY : O_WRONLY;
            check(::posix_spawn_file_actions_addopen(&m_actions, target, "/dev/null", mode, 0), m_what);
        } else if (stream.kind == StandardStream::Kind::Descriptor) {
            // In a process that was started with a standard stream closed, the descriptor may itself be one of the
            // three and be overwritten before its turn: hand on a copy from above them.
            Descriptor copy(::fcntl(stream.descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
            check(copy ? 0 : errno, m_what);
            check(::posix_spawn_file_actions_adddup2(&m_actions, copy.get(), target), m_what);
            m_copies.push_back(std::move(copy));
        }
    }

    std::string m_what;
    std::vector<Descriptor> m_copies;
    posix_spawn_file_actions_t m_actions = {};
};

/// The child's signals and session.
class Attributes
{
public:
    Attributes(const ChildDescription &description, const std::string &what)
    {
        check(::posix_spawnattr_init(&m_attributes), what);
        sigset_t none;
        ::sigemptyset(&none);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        sigset_t defaults;
        ::sigemptyset(&defaults);
        ::sigaddset(&defaults, SIGPIPE);
        ::posix_spawnattr_setsigdefault(&m_attributes, &defaults);
        const int session = description.ownSession ? POSIX_SPAWN_SETSID : 0;
        ::posix_spawnattr_setflags(&m_attributes,
                                   static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | session));
    }
    Q_DISABLE_COPY_MOVE(Attributes)
    ~Attributes() { ::posix_spawnattr_destroy(&m_attributes); }

    const posix_spawnattr_t *get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes = {};
};

} // namespace

ChildProcess ChildProcess::launch(const ChildDescription &description)
{
    const QByteArray path = QFile::encodeName(description.executable);
    const std::string what = path.constData();
    check(holdsNul(description) ? EINVAL : 0, what);
    makeChildrenWaitable();

    const CStrings arguments = argumentList(description);
    const CStrings environment = environmentList(description);
    const FileActions actions(description, what);
    const Attributes attributes(description, what);
    auto state = std::make_shared<State>();
    check(::posix_spawn(&state->pid, path.constData(), actions.get(), attributes.get(), arguments.data(),
                        environment.data()),
          what);
    state->pidfd = Descriptor(openPidfd(state->pid));
    return ChildProcess(std::move(state));
}

ChildProcess::ChildProcess(std::shared_ptr<State> state)
    : m_state(std::move(state))
{
}

ChildProcess &ChildProcess::operator=(ChildProcess &&other) noexcept
{
    ChildProcess taken(std::move(other));
    std::swap(m_state, taken.m_state);
    return *this;
}

ChildProcess::~ChildProcess()
{
    if (!m_state || !m_state->running())
        return;
    m_state->signal(SIGKILL);
    m_state->status = reap(m_state->pid, 0);
}

pid_t ChildProcess::pid() const
{
    return m_state->pid;
}

bool ChildProcess::running() const
{
    return m_state->running();
}

std::optional<qint32> ChildProcess::status() const
{
    return m_state->status;
}

void ChildProcess::terminate() const
{
    m_state->signal(SIGTERM);
}

void ChildProcess::kill() const
{
    m_state->signal(SIGKILL);
}

QCoro::Task<bool> ChildProcess::waitForExit(Clock::time_point deadline) const
{
    return State::exit(m_state, deadline);
}

void ChildProcess::onExit(QObject *context, std::function<void(qint32)> report) const
{
    new ExitWatch<State>(context, m_state, std::move(report));
}

void ChildProcess::abandon()
{
    if (!m_state->running())
        return;
    m_state->abandoned = true;
    try {
        std::thread([pid = m_state->pid] { reap(pid, 0); }).detach();
    } catch (const std::system_error &) {
        // Without a thread to be had, its entry in the process table stays until this process ends.
    }
}

} // namespace varda
