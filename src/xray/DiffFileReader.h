// Reading one reference diffraction-data file (".out", ".txt", ".dat"): header keys, wavelength
// mode and the reflection table (READ_DIFF_INFO, READ_DIFF_DATA).
#pragma once

#include "common/LineReader.h"

#include <array>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Title of the reader's own messages (a binary file).
inline constexpr std::string_view kDiffFileErrorTitle = "Diffraction Data File";
/// A table stops growing here: no reference pattern has this many lines, a runaway file may.
inline constexpr int kMaxDiffReflections = 100000;

/// One line of the reflection table.
struct DiffReflection {
    float twoTheta = 0.0F;   ///< degrees (mode 2: at the first wavelength)
    float intensity = 0.0F;  ///< (mode 2: at the first wavelength)
    float dSpacing = 0.0F;   ///< angstroms
    float twoTheta2 = 0.0F;  ///< mode 2: degrees at the second wavelength
    float intensity2 = 0.0F; ///< mode 2: intensity at the second wavelength
    std::array<int, 3> hkl{};
};

/// A reference file as read, before it joins the list of patterns.
struct DiffFileRecord {
    std::string name;       ///< file name
    std::string folder;     ///< folder of the file
    std::string title;      ///< first line when it is not a key line
    std::string spaceGroup; ///< after "SPACE GROUP:", trimmed
    int mode = 0;           ///< 0 no wavelength line, 1 "X-RAY WAVELENGTH:", 2 "X-RAY WAVELENGTHS:"
    std::array<double, 2> wavelengths{}; ///< as given on the wavelength line, A (0: not given)
    std::array<float, 6> cell{};         ///< "CELL PARAMETERS:", zeros when missing
    int sym = 0;                         ///< symmetry code from the space group and the cell
    bool referenceSection = false;       ///< a "For reference" line was seen
    std::vector<DiffReflection> reflections;
    std::vector<std::string> notes; ///< what a user should know about the reading
};

/// Reads a reference file. Keys are compared from the first non-blank character (files often
/// indent their header); see docs/xray.md for every key and rule. Each accepted table line is
/// copied as read to `tableCopy` when given. Throws QuarvexError ("ERROR WITH INCOMING DATA,
/// FILE READ" / "SHARING ERROR") when the file cannot be opened and a "Diffraction Data File"
/// error for a binary file; anything else that is wrong with the content becomes a note.
/// `bufferSize` (bytes read at a time) changes no result: tests and fuzzers make it small.
DiffFileRecord READ_DIFF_INFO(const std::filesystem::path& path, std::ostream* tableCopy,
                              std::size_t bufferSize = LineReader::kDefaultBufferSize);

/// Reads the table lines that follow the "2-THETA" line into `record` (3 reals then h k l in
/// modes 0 and 1, 5 reals then h k l in mode 2), until a line does not read as such numbers,
/// a "For reference" line, the end of the file or kMaxDiffReflections lines. Returns the line
/// that ended the table, for the caller to test against the keys; none at the end of the file.
std::optional<std::string> READ_DIFF_DATA(LineReader& reader, int mode, DiffFileRecord& record,
                                          std::ostream* tableCopy);

} // namespace quarvex
