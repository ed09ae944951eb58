// Reads /proc/self/status; "5" in clear_refs resets the high-water mark.
#include "Memory.h"

#include <fstream>
#include <string>

namespace varda::bench {

namespace {

/// The value of a line like "VmRSS:     1234 kB".
std::int64_t statusBytes(const std::string &field)
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        if (word == field + ':') {
            std::int64_t kibibytes = 0;
            status >> kibibytes;
            return kibibytes * 1024;
        }
    }
    return 0;
}

} // namespace

std::int64_t residentBytes()
{
    return statusBytes("VmRSS");
}

std::int64_t peakResidentBytes()
{
    return statusBytes("VmHWM");
}

void restartPeak()
{
    std::ofstream("/proc/self/clear_refs") << "5";
}

} // namespace varda::bench
