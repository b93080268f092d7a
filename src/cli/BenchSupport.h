// Timing and memory figures for the benchmarks.
#pragma once

#include <chrono>

namespace quarvex::cli {

/// Wall-clock seconds that `work` takes.
template <class Work> double secondsTaken(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Peak resident memory of this process so far, in megabytes.
double peakMemoryMegabytes();

} // namespace quarvex::cli
