// The function that Callgrind is told to watch for.
#include "Counted.h"

#include <algorithm>
#include <iostream>

namespace varda::bench {

/// Its name is what count-instructions knows it by.
[[gnu::noinline]] void counted(const std::function<void()> &follow)
{
    follow();
}

int followPaths(int argc, char *argv[], const std::vector<Path> &paths)
{
    if (argc < 2) {
        for (const Path &path : paths)
            std::cout << path.name << '\n';
        return 0;
    }
    const auto path = std::find_if(paths.begin(), paths.end(), [&](const Path &each) { return each.name == argv[1]; });
    if (path == paths.end())
        return 1;
    path->follow();
    counted(path->follow);
    return 0;
}

} // namespace varda::bench
