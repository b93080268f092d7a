// Progress reporting of long operations (library compilation, search, refinement).
#pragma once

#include <exception>
#include <functional>
#include <string_view>

namespace quarvex {

/// Called with the operation's status text ("Compiling Library...") and the fraction done, 0 to 1.
/// The GUI turns it into a progress dialog, the CLI into a line on stderr. May be empty.
using ProgressCallback = std::function<void(std::string_view status, double fraction)>;

/// Thrown out of a progress callback when the user cancels the operation. The operations that
/// can be cancelled (library compilation, search, consistency exam) then leave their results and
/// files as they were before they started.
class OperationCancelled : public std::exception {
public:
    const char* what() const noexcept override { return "operation cancelled"; }
};

inline void reportProgress(const ProgressCallback& progress, std::string_view status,
                           double fraction) {
    if (progress) {
        progress(status, fraction);
    }
}

} // namespace quarvex
