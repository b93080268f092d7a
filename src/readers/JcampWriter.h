// Writing a spectrum as JCAMP-DX 5.01 with its points as plain numbers (AFFN ##XYPOINTS).
#pragma once

#include "specdata/SpecDataGlobals.h"

#include <filesystem>
#include <ostream>

namespace quarvex {

/// Writes `record`: ##TITLE (the name), the header values (##NAMES, ##MOLFORM, ##$LOCALITY,
/// ##$ID), the data type and wavelength, then one "x, y" line per point in the shortest texts
/// that read back as the same single-precision values, XFACTOR and YFACTOR 1.
void writeJcampDx(std::ostream& out, const SpectrumRecord& record);

/// True for a name that asks for JCAMP-DX: the extension ".jdx" or ".dx", in any case.
bool isJcampDxName(const std::filesystem::path& path);

/// Writes `record` to `path` atomically; throws QuarvexError ("Save") when it cannot, leaving
/// the destination as it was.
void writeJcampDxFile(const std::filesystem::path& path, const SpectrumRecord& record);

} // namespace quarvex
