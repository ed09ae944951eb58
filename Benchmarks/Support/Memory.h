// How much memory this process holds, as the kernel counts it (proc(5)).
#pragma once

#include <cstdint>

namespace varda::bench {

/// Bytes resident now; shared pages count.
std::int64_t residentBytes();

/// The most bytes that were resident at any moment since `restartPeak` or the process's start.
std::int64_t peakResidentBytes();

/// Starts the search for the peak anew.
void restartPeak();

} // namespace varda::bench
