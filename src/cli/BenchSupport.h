// Timing and memory figures for the benchmarks.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace quarvex::cli {

/// Wall-clock seconds that `work` takes.
template <class Work> double secondsTaken(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Peak resident memory of this process so far, in megabytes.
double peakMemoryMegabytes();

/// What a child process took.
struct ProcessFigures {
    int status = 1;          ///< exit status (1 when it could not be started or was killed)
    double seconds = 0.0;    ///< wall clock, from start to exit
    double cpuSeconds = 0.0; ///< user + system time of the child
    double peakMegabytes = 0.0;
};

/// Runs `program` with `arguments` and waits for it; its standard output goes to `output` when
/// given (e.g. "/dev/null").
ProcessFigures runProgram(const std::string& program, const std::vector<std::string>& arguments,
                          const std::string& output = {});

/// Runs this program (quarvex-cli) again with `arguments`: a fresh process, whose figures are
/// its own.
ProcessFigures runSelf(const std::vector<std::string>& arguments, const std::string& output = {});

} // namespace quarvex::cli
