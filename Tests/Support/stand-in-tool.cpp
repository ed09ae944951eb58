// stand-in-tool: plays adb or scrcpy as a test has scripted it, and keeps a record of how it was called. Its arguments
// are the product's, so unlike stand-in it takes its orders from files.
//
// A test stages it under the name of the tool. What it does stands in the directory "<itself>.script":
//   rules/<number>-<key>/   answers the arguments with this key (see `keyOf`), "any": whatever the arguments
//     argv                  these arguments, each ended by a NUL
//     plan                  lines of a word and a value, see `Plan`
//     stdout, stderr        bytes to print
//   gates/<name>            a gate is open once this file exists
//   released                every stand-in ends at once when this file exists: the test has given up
//   calls/<when>-<pid>      one record per run, see `record`
//   inputs/<when>-<pid>     what the run read, if it read something
// The rule with the highest number that fits is played. Plain C++ and POSIX, so that nothing but the call itself opens
// a descriptor, starts a thread or changes a signal.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// No stand-in outlives this, whatever it was told: a test that hangs ends by itself.
constexpr auto maxLifetime = 90s;
constexpr auto gatePoll = 2ms;
/// Exit status of a run that no rule fits.
constexpr int unexpectedCall = 97;
/// Exit status of a run that ended because its test gave up, or because nobody waits for it any more.
constexpr int givenUp = 98;

enum class Termination { Die, Ignore, Exit };

/// What a rule asks for, in the order in which it happens: gate, delay, output, gate after the output, end.
struct Plan
{
    std::string gate;
    std::chrono::milliseconds delay{0};
    std::string gateAfterOutput;
    int exitCode = 0;
    int signal = 0;
    bool hang = false;
    Termination termination = Termination::Die;
    int terminationExit = 0;
    std::string terminationGate;
};

std::string contents(const fs::path &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A part of a record: a line with its name and its size, and its bytes.
std::string part(const std::string &name, const std::string &bytes = {})
{
    return name + ' ' + std::to_string(bytes.size()) + '\n' + bytes;
}

void append(const fs::path &path, const std::string &bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::app) << bytes;
}

Plan readPlan(const fs::path &path)
{
    Plan plan;
    std::istringstream lines(contents(path));
    std::string word;
    std::string value;
    while (lines >> word && std::getline(lines >> std::ws, value)) {
        if (word == "gate")
            plan.gate = value;
        else if (word == "delay")
            plan.delay = std::chrono::milliseconds(std::stoi(value));
        else if (word == "gate-after-output")
            plan.gateAfterOutput = value;
        else if (word == "exit")
            plan.exitCode = std::stoi(value);
        else if (word == "signal")
            plan.signal = std::stoi(value);
        else if (word == "hang")
            plan.hang = value == "yes";
        else if (word == "termination")
            plan.termination = value == "ignore" ? Termination::Ignore : Termination::Exit;
        else if (word == "termination-exit")
            plan.terminationExit = std::stoi(value);
        else if (word == "termination-gate")
            plan.terminationGate = value;
    }
    return plan;
}

/// A rule marked "once" serves the first run that takes it.
bool available(const fs::path &rule)
{
    if (!fs::exists(rule / "once"))
        return true;
    const int taken = open((rule / "taken").c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (taken < 0)
        return false;
    close(taken);
    return true;
}

/// FNV-1a, 64 bits, in hexadecimal: spares a run most of the looking into rules.
std::string keyOf(const std::string &arguments)
{
    std::uint64_t hash = 14695981039346656037U;
    for (const char byte : arguments)
        hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211U;
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

std::optional<fs::path> findRule(const fs::path &script, const std::string &arguments)
{
    std::vector<fs::path> rules(fs::directory_iterator(script / "rules"), fs::directory_iterator{});
    std::sort(rules.rbegin(), rules.rend());
    const std::string ownKey = keyOf(arguments);
    for (const fs::path &rule : rules) {
        const std::string name = rule.filename();
        const std::string key = name.substr(name.find('-') + 1);
        const bool fits = key == "any" || (key == ownKey && contents(rule / "argv") == arguments);
        if (fits && available(rule))
            return rule;
    }
    return std::nullopt;
}

std::string joined(char **texts)
{
    std::string all;
    for (char **text = texts; *text; ++text)
        all.append(*text).push_back('\0');
    return all;
}

/// One line per descriptor: number, blank, target.
std::string heldDescriptors()
{
    std::string lines;
    for (const auto &entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const fs::path target = fs::read_symlink(entry.path(), gone);
        const bool own = target.string().find("/fd") != std::string::npos && target.string().rfind("/proc/", 0) == 0;
        if (!gone && !own)
            lines += entry.path().filename().string() + ' ' + target.string() + '\n';
    }
    return lines;
}

std::string pipedInput()
{
    struct stat input
    {
    };
    if (fstat(STDIN_FILENO, &input) != 0 || !S_ISFIFO(input.st_mode))
        return {};
    std::string bytes;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(STDIN_FILENO, buffer, sizeof buffer)) > 0;)
        bytes.append(buffer, static_cast<std::size_t>(count));
    return bytes;
}

/// The record appears whole: it is made under another name first. What happens later is appended to it. The input has a
/// file of its own, so that a test can look for the input in all others.
fs::path record(const fs::path &script, const std::string &parts, const std::string &input)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    char when[32];
    std::snprintf(when, sizeof when, "%012lld%09ld-", static_cast<long long>(now.tv_sec), now.tv_nsec);
    const std::string name = when + std::to_string(getpid());
    if (!input.empty())
        append(script / "inputs" / name, input);
    append(script / name, parts);
    fs::rename(script / name, script / "calls" / name);
    return script / "calls" / name;
}

/// Copies the file to the descriptor; no file is nothing to print.
void print(int descriptor, const fs::path &path)
{
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return;
    std::vector<char> buffer(1 << 16);
    for (ssize_t count = 0; (count = read(file, buffer.data(), buffer.size())) > 0;) {
        for (ssize_t done = 0, written = 0; done < count; done += written) {
            written = ::write(descriptor, buffer.data() + done, static_cast<std::size_t>(count - done));
            if (written < 0)
                return;
        }
    }
    close(file);
}

class Run
{
public:
    Run(fs::path script, fs::path call, Plan plan, sigset_t watched)
        : m_script(std::move(script))
        , m_call(std::move(call))
        , m_plan(std::move(plan))
        , m_watched(watched)
    {
    }

    [[noreturn]] void play(const fs::path &rule)
    {
        waitFor(m_plan.gate);
        pauseUntil(std::chrono::steady_clock::now() + m_plan.delay);
        print(STDOUT_FILENO, rule / "stdout");
        print(STDERR_FILENO, rule / "stderr");
        waitFor(m_plan.gateAfterOutput);
        while (m_plan.hang)
            wait(gatePoll);
        if (m_plan.signal != 0)
            dieBy(m_plan.signal);
        leave(m_plan.exitCode);
    }

private:
    bool opened(const std::string &gate) const { return gate.empty() || fs::exists(m_script / "gates" / gate); }

    void waitFor(const std::string &gate)
    {
        while (!opened(gate))
            wait(gatePoll);
    }

    void pauseUntil(std::chrono::steady_clock::time_point end)
    {
        while (std::chrono::steady_clock::now() < end)
            wait(gatePoll);
    }

    /// Waits, obeys a termination request that comes meanwhile, and ends a run that nobody wants any more.
    void wait(std::chrono::milliseconds time)
    {
        // Looked at first: a parent that asks for the end and goes is obeyed, whatever comes between.
        const bool orphaned = getppid() != m_parent;
        const timespec pause{0, std::chrono::nanoseconds(time).count()};
        if (sigtimedwait(&m_watched, nullptr, &pause) == SIGTERM)
            terminationRequested();
        const bool tooOld = std::chrono::steady_clock::now() - m_start > maxLifetime;
        if (orphaned || tooOld || fs::exists(m_script / "released") || !fs::exists(m_script))
            _exit(givenUp);
    }

    void terminationRequested()
    {
        append(m_call, part("termination"));
        if (m_plan.termination == Termination::Ignore)
            return;
        if (m_plan.termination == Termination::Die)
            dieBy(SIGTERM);
        if (!m_ending) { // the second request while the first one is being obeyed changes nothing
            m_ending = true;
            waitFor(m_plan.terminationGate);
            leave(m_plan.terminationExit);
        }
    }

    [[noreturn]] void leave(int exitCode)
    {
        append(m_call, part("ended"));
        _exit(exitCode);
    }

    [[noreturn]] void dieBy(int signal)
    {
        append(m_call, part("ended"));
        std::signal(signal, SIG_DFL);
        sigset_t only;
        sigemptyset(&only);
        sigaddset(&only, signal);
        std::raise(signal);
        sigprocmask(SIG_UNBLOCK, &only, nullptr);
        _exit(givenUp);
    }

    const fs::path m_script;
    const fs::path m_call;
    const Plan m_plan;
    const sigset_t m_watched;
    const pid_t m_parent = getppid();
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    bool m_ending = false;
};

} // namespace

int main(int, char **argv)
{
    const std::string descriptors = heldDescriptors();
    const fs::path script = fs::read_symlink("/proc/self/exe").string() + ".script";

    sigset_t watched;
    sigemptyset(&watched);
    sigaddset(&watched, SIGTERM);
    sigprocmask(SIG_BLOCK, &watched, nullptr);

    const std::string input = fs::exists(script / "reads-input") ? pipedInput() : std::string();
    const std::optional<fs::path> rule = findRule(script, joined(argv + 1));
    std::string parts = part("argv", joined(argv)) + part("environment", joined(environ)) +
                        part("descriptors", descriptors) + part("directory", fs::current_path().string()) +
                        part("session", std::to_string(getsid(0)));
    if (!rule)
        parts += part("unexpected");
    const fs::path call = record(script, parts, input);
    if (!rule) {
        std::fputs("stand-in: no rule for these arguments\n", stderr);
        return unexpectedCall;
    }
    Run(script, call, readPlan(*rule / "plan"), watched).play(*rule);
}
