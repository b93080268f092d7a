// Creating an X-ray project: its folder, its "Phase1" folder, the main file, the pattern file
// and the first phase's peak and information files (XRAYPROJNEW).
#pragma once

#include "xray/XrayProject.h"

#include <filesystem>
#include <iosfwd>

namespace quarvex {

/// GETXRAYNEWPATH: the main file of a new project for the path the user gave (work/q.xproj or
/// work/q: work/q/q.xproj, the project getting a folder of its own). Throws QuarvexError (title
/// "X-ray Project") when the path names no file or its folder does not exist.
std::filesystem::path GETXRAYNEWPATH(const std::filesystem::path& given);

/// CREATEXRAYPROJFOLDER: makes the project folder and its "Phase1" folder. Throws QuarvexError
/// when a project already exists there (a new project never overwrites one) or a folder cannot
/// be made.
void CREATEXRAYPROJFOLDER(const std::filesystem::path& mainFile);

/// The pattern file: one line "x y" per point.
void writePatternFile(std::ostream& out, const SpectrumRecord& pattern);

/// CREATEXRAYPROJFILES: writes, all or nothing, the main file ("<numxrays> 1" alone), the
/// pattern file, and "phase1.peak" and "phase1.info" of the first phase (named "Phase1" with no
/// peaks when the project has no phase yet).
void CREATEXRAYPROJFILES(const std::filesystem::path& mainFile, const XrayProject& project);

/// XRAYPROJNEW: GETXRAYNEWPATH, CREATEXRAYPROJFOLDER, CREATEXRAYPROJFILES. Returns the main file.
std::filesystem::path XRAYPROJNEW(const std::filesystem::path& given, const XrayProject& project);

} // namespace quarvex
