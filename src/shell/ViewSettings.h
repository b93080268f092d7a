// Settings of the view beyond the fixed set of "QV.ini", in a small file of their own.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace quarvex {

/// In the home folder beside "QV.ini", whose set of values stays as it is.
inline constexpr std::string_view kViewSettingsFileName = "quarvex-view.ini";

/// The view's own settings, at their defaults.
struct ViewSettings {
    bool intensityNumbers = false; ///< numbers on the y axis: the primary spectrum's intensities
};

/// The file's text: a comment line, then one "key=value" line per setting.
std::string viewSettingsText(const ViewSettings& settings);

/// Reads the file's text strictly: lines "key=value" (known keys, each at most once, values 0 or
/// 1), blank lines and "#" comments, LF or CRLF ends, at most 4096 bytes. Anything else: nullopt.
/// A key left out keeps its default.
std::optional<ViewSettings> parseViewSettings(std::string_view text);

/// The settings of the file in `home`; the defaults when it is missing, unreadable or not
/// entirely as parseViewSettings accepts (a damaged file never half-applies).
ViewSettings readViewSettings(const std::filesystem::path& home);

/// Writes the file in `home` atomically (a failed write leaves the old file whole); false when
/// it could not be written.
bool writeViewSettings(const std::filesystem::path& home, const ViewSettings& settings);

} // namespace quarvex
