// Small reference spectra and library folders for the library tests.
#pragma once

#include "TestSupport.h"

#include "common/WorkingFolders.h"
#include "library/CreateLibraryFile.h"

#include <filesystem>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex::test {

/// The text of a spectrum file with the given header lines and "x, y" data lines.
inline std::string spectrumText(std::string_view header, const std::vector<float>& x,
                                const std::vector<float>& y) {
    std::ostringstream text;
    text << header;
    for (std::size_t i = 0; i < x.size(); ++i) {
        text << x[i] << ", " << y[i] << '\n';
    }
    return text.str();
}

/// A spectrum of two bands between `from` and `to` every 0.5 cm-1 (bands at `band` and
/// band + 200), as x and y.
inline void twoBands(float from, float to, float band, std::vector<float>& x,
                     std::vector<float>& y) {
    for (float shift = from; shift <= to; shift += 0.5F) {
        const float a = (shift - band) / 6.0F;
        const float b = (shift - band - 200.0F) / 9.0F;
        x.push_back(shift);
        y.push_back(1000.0F / (1.0F + a * a) + 400.0F / (1.0F + b * b));
    }
}

/// Sets up the folders of `home` with the shipped model library in its library folder, compiled.
inline void compileModelLibrary(const std::filesystem::path& home) {
    SET_UP_FOLDERS(home);
    std::filesystem::copy(sourcePath("data/raman/model_library"), ramanLibraryFolder(home));
    CREATE_SEARCH_LIB(home);
}

/// The lines of a text file.
inline std::vector<std::string> fileLines(const std::filesystem::path& path) {
    std::istringstream text(readFile(path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

} // namespace quarvex::test
