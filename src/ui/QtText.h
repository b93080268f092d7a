// Text of the core (UTF-8 std::string_view) as Qt text.
#pragma once

#include <QString>

#include <string_view>

namespace quarvex::ui {

inline QString qText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// "1 peak", "3 peaks": a count with its noun in the right number.
inline QString countOf(long long count, const QString& singular, const QString& plural) {
    return QStringLiteral("%1 %2").arg(count).arg(count == 1 ? singular : plural);
}

} // namespace quarvex::ui
