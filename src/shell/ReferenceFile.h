// The reference file "ForReference.txt": how to cite the program.
#pragma once

#include <array>
#include <filesystem>
#include <functional>
#include <string_view>

namespace quarvex {

inline constexpr std::string_view kReferenceFileName = "ForReference.txt";

/// The five lines of the citation (71, 70, 69, 61 and 56 characters).
inline constexpr std::array<std::string_view, 5> kReferenceLines = {
    "Quarvex Development Team, with the help of its users and testers (2026)",
    "Quarvex: the desktop program that identifies minerals from their Raman",
    "spectra and refines unit cells from X-ray powder diffraction patterns",
    "Abstract, Annual Meeting on Mineral Spectroscopy and Software",
    "Programme and abstracts volume, session on data software",
};

/// Shows a text file to the user (the GUI opens it in the desktop's text editor).
using FileDisplay = std::function<void(const std::filesystem::path&)>;

/// Mode 1 (re)writes the reference file in `home`, silently giving up on failure; mode 2 shows
/// it through `display`; other modes do nothing.
void SET_UP_REF_FILE(int mode, const std::filesystem::path& home, const FileDisplay& display = {});

} // namespace quarvex
