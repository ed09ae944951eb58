// A program that behaves as its arguments say, for the core's tests, which start it themselves: each behaviour is a
// word and that word's own arguments, carried out from left to right, with exit status 0 at the end of the list.
//
//   stand-in error "no devices" exit 1
//   stand-in ignore TERM sleep 20
#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using Arguments = std::vector<std::string>;

constexpr int usageError = 64;

[[noreturn]] void fail(const std::string &what)
{
    std::fprintf(stderr, "stand-in: %s: %s\n", what.c_str(), std::strerror(errno));
    ::_exit(usageError);
}

void writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0)
            fail("write");
        bytes.remove_prefix(static_cast<size_t>(count));
    }
}

void flood(int descriptor, const std::string &size)
{
    const std::string block(65536, 'x');
    for (unsigned long left = std::stoul(size); left > 0;) {
        const size_t count = std::min<size_t>(left, block.size());
        writeAll(descriptor, std::string_view(block).substr(0, count));
        left -= count;
    }
}

void copyInput()
{
    std::string block(65536, '\0');
    for (;;) {
        const ssize_t count = ::read(STDIN_FILENO, block.data(), block.size());
        if (count < 0)
            fail("read");
        if (count == 0)
            return;
        writeAll(STDOUT_FILENO, std::string_view(block).substr(0, static_cast<size_t>(count)));
    }
}

int signalNumber(const std::string &name)
{
    static const std::map<std::string, int> numbers = {{"HUP", SIGHUP},   {"INT", SIGINT},   {"KILL", SIGKILL},
                                                       {"PIPE", SIGPIPE}, {"SEGV", SIGSEGV}, {"TERM", SIGTERM}};
    return numbers.at(name);
}

void sleepFor(const std::string &seconds)
{
    std::this_thread::sleep_for(std::chrono::duration<double>(std::stod(seconds)));
}

volatile std::sig_atomic_t statusAfterSignal = 0;

void exitOn(const std::string &signal, const std::string &status)
{
    statusAfterSignal = std::stoi(status);
    std::signal(signalNumber(signal), [](int) { ::_exit(statusAfterSignal); });
}

void createFile(const std::string &path)
{
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0)
        fail(path);
    ::close(descriptor);
}

/// Starts a process that holds on to this one's descriptors, sleeps and then creates a file; writes its identifier and
/// a line feed to standard output.
void leaveBehind(const std::string &seconds, const std::string &file)
{
    const pid_t pid = ::fork();
    if (pid < 0)
        fail("fork");
    if (pid == 0) {
        sleepFor(seconds);
        createFile(file);
        ::_exit(0);
    }
    writeAll(STDOUT_FILENO, std::to_string(pid) + '\n');
}

std::string linkTarget(const std::string &link)
{
    std::string target(4096, '\0');
    const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
    target.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
    return target;
}

/// Removes the file that a standard stream leads to.
void unlinkStream(int descriptor)
{
    if (::unlink(linkTarget("/proc/self/fd/" + std::to_string(descriptor)).c_str()) != 0)
        fail("unlink");
}

bool blocked(int number)
{
    sigset_t mask;
    ::sigprocmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, number) == 1;
}

bool ignored(int number)
{
    struct sigaction action = {};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void tell(const char *kind, const std::string &text)
{
    writeAll(STDOUT_FILENO, std::string(kind) + ' ' + text + '\0');
}

/// Writes what this process was given: texts that each begin with a word for their kind and end with a NUL.
void report(const Arguments &arguments)
{
    for (const std::string &argument : arguments)
        tell("argument", argument);
    for (char **variable = environ; *variable; ++variable)
        tell("variable", *variable);
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        // Not the one through which it is looked.
        const std::string target = linkTarget(entry.path());
        if (!target.starts_with("/proc/"))
            tell("descriptor", entry.path().filename().string() + ' ' + target);
    }
    for (int number = 1; number < NSIG; ++number) {
        if (blocked(number))
            tell("blocked", std::to_string(number));
        if (ignored(number))
            tell("ignored", std::to_string(number));
    }
    tell("directory", linkTarget("/proc/self/cwd"));
    tell("process", std::to_string(::getpid()));
    tell("session", std::to_string(::getsid(0)));
}

/// Has the kernel deny this process and what it becomes the calls about pidfds, as a kernel without them does.
void denyPidfds()
{
    std::array<sock_filter, 5> filter = {sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                                         sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_pidfd_open, 1, 0),
                                         sock_filter BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_pidfd_send_signal, 0, 1),
                                         sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ENOSYS),
                                         sock_filter BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog program = {filter.size(), filter.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
        fail("seccomp");
}

/// Gives up after a minute: the test that was to create the file has ended badly.
void awaitFile(const std::string &path)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (::access(path.c_str(), F_OK) != 0) {
        if (std::chrono::steady_clock::now() > end)
            fail(path);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

/// Becomes the program that the arguments from the one at `first` on name.
[[noreturn]] void become(const Arguments &arguments, size_t first)
{
    std::vector<char *> list;
    for (size_t i = first; i < arguments.size(); ++i)
        list.push_back(const_cast<char *>(arguments[i].c_str()));
    list.push_back(nullptr);
    ::execv(list.front(), list.data());
    fail(list.front());
}

void closeStreams()
{
    ::close(STDIN_FILENO);
    ::close(STDOUT_FILENO);
    ::close(STDERR_FILENO);
}

struct Behaviour
{
    size_t argumentCount;
    void (*act)(const std::string *arguments);
};

const std::map<std::string, Behaviour> behaviours = {
    {"output", {1, [](const std::string *a) { writeAll(STDOUT_FILENO, a[0]); }}},
    {"error", {1, [](const std::string *a) { writeAll(STDERR_FILENO, a[0]); }}},
    {"flood-output", {1, [](const std::string *a) { flood(STDOUT_FILENO, a[0]); }}},
    {"flood-error", {1, [](const std::string *a) { flood(STDERR_FILENO, a[0]); }}},
    {"copy-input", {0, [](const std::string *) { copyInput(); }}},
    {"sleep", {1, [](const std::string *a) { sleepFor(a[0]); }}},
    {"ignore", {1, [](const std::string *a) { std::signal(signalNumber(a[0]), SIG_IGN); }}},
    {"exit-on", {2, [](const std::string *a) { exitOn(a[0], a[1]); }}},
    {"die-by", {1, [](const std::string *a) { ::kill(::getpid(), signalNumber(a[0])); }}},
    {"close-input", {0, [](const std::string *) { ::close(STDIN_FILENO); }}},
    {"close-streams", {0, [](const std::string *) { closeStreams(); }}},
    {"leave-behind", {2, [](const std::string *a) { leaveBehind(a[0], a[1]); }}},
    {"unlink-output", {0, [](const std::string *) { unlinkStream(STDOUT_FILENO); }}},
    {"unlink-error", {0, [](const std::string *) { unlinkStream(STDERR_FILENO); }}},
    {"create-file", {1, [](const std::string *a) { createFile(a[0]); }}},
    {"await-file", {1, [](const std::string *a) { awaitFile(a[0]); }}},
    {"deny-pidfds", {0, [](const std::string *) { denyPidfds(); }}},
    {"exit", {1, [](const std::string *a) { ::_exit(std::stoi(a[0])); }}},
};

} // namespace

int main(int argc, char *argv[])
{
    const Arguments arguments(argv, argv + argc);
    for (size_t i = 1; i < arguments.size();) {
        const std::string &word = arguments[i++];
        // These two take all that is left of the list.
        if (word == "report") {
            report(arguments);
            return 0;
        }
        if (word == "become")
            become(arguments, i);
        const auto behaviour = behaviours.find(word);
        if (behaviour == behaviours.end() || i + behaviour->second.argumentCount > arguments.size()) {
            std::fprintf(stderr, "stand-in: no such behaviour: %s\n", word.c_str());
            return usageError;
        }
        behaviour->second.act(arguments.data() + i);
        i += behaviour->second.argumentCount;
    }
    return 0;
}
