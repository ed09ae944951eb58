// stand-in-scrcpy: takes scrcpy's place where a test asks only how it is called and how it is ended.
//
// It writes its arguments to "$HOME/scrcpy-arguments", one per line, and to "$HOME/scrcpy-end" the number of the signal
// that asked it to end, or "by itself" where none came. Exit status 0, as scrcpy's.
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>

namespace {

// No test plays longer; one that is killed leaves no stand-in behind for ever.
constexpr timespec patience{.tv_sec = 900, .tv_nsec = 0};

} // namespace

int main(int argc, char *argv[])
{
    sigset_t awaited;
    sigemptyset(&awaited);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&awaited, signal);
    sigprocmask(SIG_BLOCK, &awaited, nullptr);

    const std::string home = std::getenv("HOME");
    std::ofstream arguments{home + "/scrcpy-arguments.part"};
    for (int i = 1; i < argc; ++i)
        arguments << argv[i] << '\n';
    arguments.close();
    std::rename((home + "/scrcpy-arguments.part").c_str(), (home + "/scrcpy-arguments").c_str());

    const int signal = sigtimedwait(&awaited, nullptr, &patience);
    std::ofstream end{home + "/scrcpy-end"};
    if (signal > 0)
        end << signal;
    else
        end << "by itself";
    return 0;
}
