// The view settings file: a strict key=value reader and an atomic writer.
#include "shell/ViewSettings.h"

#include "common/AtomicFile.h"

#include <fstream>

namespace quarvex {

namespace {

constexpr std::size_t kLargestFile = 4096;
constexpr std::string_view kIntensityNumbersKey = "intensity_numbers";

std::string_view withoutLineEnd(std::string_view line) {
    return !line.empty() && line.back() == '\r' ? line.substr(0, line.size() - 1) : line;
}

} // namespace

std::string viewSettingsText(const ViewSettings& settings) {
    std::string text = "# Quarvex view settings (QV.ini holds the preferences)\n";
    text += std::string(kIntensityNumbersKey) + '=' + (settings.intensityNumbers ? '1' : '0');
    return text + '\n';
}

std::optional<ViewSettings> parseViewSettings(std::string_view text) {
    if (text.size() > kLargestFile) {
        return std::nullopt;
    }
    ViewSettings settings;
    bool intensityNumbersSeen = false;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::string_view line = withoutLineEnd(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos || line.substr(0, equals) != kIntensityNumbersKey ||
            intensityNumbersSeen) {
            return std::nullopt;
        }
        const std::string_view value = line.substr(equals + 1);
        if (value != "0" && value != "1") {
            return std::nullopt;
        }
        settings.intensityNumbers = value == "1";
        intensityNumbersSeen = true;
    }
    return settings;
}

ViewSettings readViewSettings(const std::filesystem::path& home) {
    std::ifstream in(home / kViewSettingsFileName, std::ios::binary);
    if (!in) {
        return {};
    }
    // One byte past the limit is enough to refuse an oversized file without reading it all.
    std::string text(kLargestFile + 1, '\0');
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(in.gcount()));
    return parseViewSettings(text).value_or(ViewSettings{});
}

bool writeViewSettings(const std::filesystem::path& home, const ViewSettings& settings) {
    AtomicFile file(home / kViewSettingsFileName);
    if (!file.isOpen()) {
        return false;
    }
    file.stream() << viewSettingsText(settings);
    return file.commit();
}

} // namespace quarvex
