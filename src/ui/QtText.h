// Text of the core (UTF-8 std::string_view) as Qt text.
#pragma once

#include <QString>

#include <string_view>

namespace quarvex::ui {

inline QString qText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace quarvex::ui
