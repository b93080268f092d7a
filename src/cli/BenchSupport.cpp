#include "cli/BenchSupport.h"

#include <sys/resource.h>

namespace quarvex::cli {

double peakMemoryMegabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0; // ru_maxrss is in kilobytes on Linux
}

} // namespace quarvex::cli
