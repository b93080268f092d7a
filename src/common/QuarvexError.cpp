#include "common/QuarvexError.h"

#include <utility>

namespace quarvex {

QuarvexError::QuarvexError(std::string text, std::string title)
    : std::runtime_error(title + ": " + text), text_(std::move(text)), title_(std::move(title)) {}

} // namespace quarvex
