// Reader of powder-diffraction instrument files through xylib, and of .xy/.xye columns.
#pragma once

#include "specdata/SpecDataGlobals.h"

#include <filesystem>
#include <string_view>
#include <vector>

namespace quarvex {

/// True when `head` (the first up to 4096 bytes of a file) is recognised by content as one of
/// the diffraction formats (Bruker RAW 1-3 and 4, Philips RD, XRDML, Philips UDF, UXD, Rigaku
/// DAT, CPI, pdCIF), or `extensionLower` is one of theirs (raw, rd, sd, xrdml, udf, uxd, cpi,
/// dbw, rit, neu, xy, xye, brml). A ".dat" file is claimed only by content (Rigaku DAT, or the
/// start-step-stop line of RIET7), so that the program's own ".dat" files are left alone.
bool looksLikeDiffractionFile(std::string_view head, std::string_view extensionLower);

/// The patterns of a diffraction file, one per scan (block), 2-theta ascending, DTYPE "XRD",
/// WAVE_INFO the K-alpha1 (or single) wavelength in angstrom where the file states one. Throws
/// QuarvexError for a file in none of the formats, one xylib cannot read (its message is
/// passed on), Bruker RAW version 4 and .brml files, no data, or non-finite values.
std::vector<SpectrumRecord> readDiffractionFile(const std::filesystem::path& path);

/// readDiffractionFile on the bytes of the file at `path`, read beforehand.
std::vector<SpectrumRecord> readDiffractionBytes(const std::filesystem::path& path,
                                                 std::string_view bytes);

} // namespace quarvex
