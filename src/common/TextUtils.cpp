#include "common/TextUtils.h"

#include <array>
#include <charconv>

namespace quarvex {

namespace {

template <class Real> std::string shortest(Real value) {
    std::array<char, 64> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return std::string(buffer.data(), result.ptr);
}

} // namespace

std::string_view trimmedRight(std::string_view text) {
    while (!text.empty() && isBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

std::string_view trimmed(std::string_view text) {
    text = trimmedRight(text);
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

std::string shortestText(float value) {
    return shortest(value);
}
std::string shortestText(double value) {
    return shortest(value);
}

} // namespace quarvex
