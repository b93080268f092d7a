// Spectrum, entry and peak numbers are kept as int, as the state groups hold them; containers
// take std::size_t.
#pragma once

#include <cstddef>

namespace quarvex {

/// A 0-based index kept as int, as a container position.
constexpr std::size_t at(int index) {
    return static_cast<std::size_t>(index);
}

} // namespace quarvex
