// The floor of running a command: what no implementation can do without, in plain system calls on one thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace varda::bench {

/// How many bytes the command wrote.
struct Written
{
    std::int64_t output = 0;
    std::int64_t error = 0;
};

/// Makes a directory with two capture files, has posix_spawn(3) start the program at the path `command.front()` with
/// them, waits, reads each file with one read(2), removes all. Ends the benchmark program when a call fails.
Written runBare(const std::vector<std::string> &command);

} // namespace varda::bench
