// Progress reporting of long operations (library compilation, search, refinement).
#pragma once

#include <functional>
#include <string_view>

namespace quarvex {

/// Called with the operation's status text ("Compiling Library...") and the fraction done, 0 to 1.
/// The GUI turns it into a progress dialog, the CLI into a line on stderr. May be empty.
using ProgressCallback = std::function<void(std::string_view status, double fraction)>;

inline void reportProgress(const ProgressCallback& progress, std::string_view status,
                           double fraction) {
    if (progress) {
        progress(status, fraction);
    }
}

} // namespace quarvex
