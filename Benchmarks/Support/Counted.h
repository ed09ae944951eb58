// Programs whose instructions are counted: a figure without noise, for one build of the program and of its libraries.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace varda::bench {

/// A path through the program. It is followed twice, and counted the second time, when caches are filled and tables
/// made.
struct Path
{
    std::string name;
    std::function<void()> follow;
};

/// The main function of such a program: without an argument prints the names, one on a line; with a name as argument
/// follows that path. The script count-instructions has Callgrind count what the calling thread does meanwhile.
int followPaths(int argc, char *argv[], const std::vector<Path> &paths);

} // namespace varda::bench
