// soak-tool: plays adb and scrcpy for the soak, which has no time for the scripts and records of stand-in-tool: it is
// run a hundred thousand times and answers every command line of the program at once. One run in sixteen fails, and
// phones come and go with the number of the listing. Beside it lies the file "counters", mapped and shared by all runs.
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>

namespace {

struct Counters
{
    std::atomic<uint64_t> runs;
    std::atomic<uint64_t> listings;
};

Counters &counters()
{
    const auto path = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "counters";
    const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    void *const memory = ::mmap(nullptr, sizeof(Counters), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED) {
        std::perror(path.c_str());
        std::exit(70);
    }
    return *static_cast<Counters *>(memory);
}

/// A phone that is always there, one that comes and goes, and an emulator that changes its state.
void listDevices(uint64_t number)
{
    std::puts("List of devices attached");
    std::puts("R58M42ABCDE\tdevice usb:1-2 product:x model:Pixel_7 device:x transport_id:1");
    if (number / 7 % 2 == 0)
        std::puts("192.168.1.50:37123\tdevice product:x model:SM_G991B device:x transport_id:2");
    if (number / 11 % 3 != 0)
        std::printf("emulator-5554\t%s product:x transport_id:3\n", number / 5 % 2 == 0 ? "offline" : "device");
}

void printLog()
{
    for (int line = 0; line < 350; ++line)
        std::printf("11-20 12:00:00.%03d  1234  1234 I Example : line %d of the log, é and ✓ among its letters\n", line,
                    line);
}

} // namespace

int main(int argc, char *argv[])
{
    std::string line;
    for (int i = 1; i < argc; ++i)
        line.append(argv[i]).push_back(' ');
    Counters &shared = counters();
    const uint64_t run = ++shared.runs;
    const bool listing = line == "devices -l ";
    const uint64_t number = listing ? ++shared.listings : 0;
    if (run % 16 == 0) {
        std::fputs("adb: device offline\n", stderr);
        return 1;
    }
    if (listing) {
        listDevices(number);
    } else if (line.find(" logcat ") != std::string::npos) {
        printLog();
    } else if (line.find(" pidof ") != std::string::npos) {
        std::puts("4242");
    } else if (line.find(" resolve-activity ") != std::string::npos) {
        std::puts("priority=0\ncom.example.app/.Main");
    } else if (line.find(" list packages ") != std::string::npos) {
        std::puts("package:com.example.app");
    } else if (line.find(" screencap ") != std::string::npos) {
        std::fwrite("\x89PNG\r\n\x1a\n....", 1, 12, stdout);
    } else {
        std::puts("Success: successfully paired, connected to the phone");
    }
    return 0;
}
