#include "library/TextColumn.h"

#include <limits>
#include <stdexcept>

namespace quarvex {

void TextColumn::push_back(std::string_view text) {
    if (text.size() > std::numeric_limits<std::uint32_t>::max() - text_.size()) {
        throw std::length_error("TextColumn: more than 4 GiB of text");
    }
    text_.append(text);
    ends_.push_back(static_cast<std::uint32_t>(text_.size()));
}

std::string_view TextColumn::view(std::size_t k) const {
    const std::uint32_t begin = k == 0 ? 0 : ends_[k - 1];
    return std::string_view(text_).substr(begin, ends_[k] - begin);
}

void TextColumn::reserve(std::size_t elements, std::size_t bytes) {
    text_.reserve(text_.size() + bytes);
    ends_.reserve(ends_.size() + elements);
}

void TextColumn::shrink_to_fit() {
    text_.shrink_to_fit();
    ends_.shrink_to_fit();
}

} // namespace quarvex
