// Launching: from the description of a child to a process. Only ChildProcess calls it, which takes on the duty to reap.
#pragma once

#include <sys/types.h>

namespace varda {

struct ChildDescription;

/// Starts the child and returns its process identifier; the caller must wait for it. Blocks until the program has taken
/// over or has failed to. Throws std::system_error that reads like "/path/adb: No such file or directory". Any thread.
pid_t spawn(const ChildDescription &description);

} // namespace varda
