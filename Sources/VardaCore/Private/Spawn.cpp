// Launches with posix_spawn, which reports a failed exec by its error number. What the child inherits is decided here.
#include "Private/Spawn.h"

#include "Private/Descriptor.h"
#include "VardaCore/ChildDescription.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace varda {

namespace {

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
    std::vector<QByteArray> list(description.inheritedEnvironment.begin(), description.inheritedEnvironment.end());
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

pid_t spawn(const ChildDescription &description)
{
    const QByteArray path = QFile::encodeName(description.executable);
    const std::string what = path.constData();
    check(holdsNul(description) ? EINVAL : 0, what);
    makeChildrenWaitable();

    const CStrings arguments = argumentList(description);
    const CStrings environment = environmentList(description);
    const FileActions actions(description, what);
    const Attributes attributes(description, what);
    pid_t pid = -1;
    check(::posix_spawn(&pid, path.constData(), actions.get(), attributes.get(), arguments.data(), environment.data()),
          what);
    return pid;
}

} // namespace varda
