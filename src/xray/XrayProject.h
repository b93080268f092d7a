// An X-ray project in memory (the pattern, its wavelengths and its phases) and the names of
// its files and tags.
#pragma once

#include "specdata/SpecDataGlobals.h"
#include "xray/RefinedCellRecord.h"
#include "xray/XrayGlobals.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// Everything a project keeps.
struct XrayProject {
    SpectrumRecord pattern;          ///< name, data type, x (2-theta) and y of the pattern
    std::vector<double> wavelengths; ///< 0 to 3 wavelengths, angstroms (none: not yet known)
    std::vector<XrayPhase> phases;   ///< phase n is index n-1
    std::optional<RefinedCellRecord> refined; ///< the last refinement (refinedRecordPath)
};

inline constexpr std::string_view kProjectExtension = ".xproj";
inline constexpr std::string_view kPatternExtension = ".spec";
/// XRAYPROJNEW's prompt and the "|"-separated filter list of its dialog.
inline constexpr std::string_view kNewProjectPrompt = "New Project:";
inline constexpr std::string_view kProjectFilter = "GRELT Xray Project (*.xproj)|*.xproj|";

/// Tags of the project files: the tag text with its trailing blank, then the value.
namespace xproj {
inline constexpr std::string_view kNumXrays = "<numxrays> ";
inline constexpr std::string_view kNumPhases = "<numphases> ";
inline constexpr std::string_view kWave = "<wave> ";
inline constexpr std::string_view kPattern = "<pattern> ";
inline constexpr std::string_view kDataType = "<dtype> ";
inline constexpr std::string_view kNumPeaks = "<numpeaks> ";
inline constexpr std::string_view kName = "<name> ";
inline constexpr std::string_view kSystem = "<system> ";
inline constexpr std::string_view kSource = "<source> ";
inline constexpr std::string_view kNumAssign = "<numassign> ";
inline constexpr std::string_view kIcp = "<icp> ";
inline constexpr std::string_view kNumInp = "<numinp> ";
inline constexpr std::string_view kUseIcp = "<useicp> ";
inline constexpr std::string_view kUseIhkl = "<useihkl> ";
inline constexpr std::string_view kUseIints = "<useiints> ";
} // namespace xproj

/// The kinds of phase files.
enum class PhaseFile { Peak, Info, Ref, Input };

/// The folder of phase `number` (from 1): "Phase" + number, beside the main file.
std::filesystem::path phaseFolder(const std::filesystem::path& mainFile, int number);

/// A phase file as saved: "Phase" + number + ".peak" (".info", ".ref", ".input") in its folder.
std::filesystem::path phaseFilePath(const std::filesystem::path& mainFile, int number,
                                    PhaseFile kind);

/// The same file under the name a new project gives it: "phase1.peak", "phase1.info".
std::filesystem::path newPhaseFilePath(const std::filesystem::path& mainFile, int number,
                                       PhaseFile kind);

/// The pattern file: the main file's base name + ".spec", beside it.
std::filesystem::path patternFilePath(const std::filesystem::path& mainFile);

/// The journal of a save in progress: the main file's name + ".quarvex-journal", beside it. A
/// save killed after writing it is completed by the next read or save of the project.
std::filesystem::path projectJournalPath(const std::filesystem::path& mainFile);

/// The main file of the project folder made for a path given at creation: work/q.xproj and
/// work/q both give work/q/q.xproj.
std::filesystem::path projectFolderFile(const std::filesystem::path& given);

/// The main file of a project named by `path`: the file itself; the main file inside a project
/// folder (folder/<folder name>.xproj); or, for the path given when it was created (work/q.xproj
/// or work/q), the main file of the project folder made for it (work/q/q.xproj).
std::filesystem::path resolveProjectFile(const std::filesystem::path& path);

/// The project of the state: the pattern (spectrum `xrayPeak.pattern`), the wavelengths and
/// the phases (no refinement: its owner adds it). Throws QuarvexError (title "X-ray Project") when
/// no pattern is set.
XrayProject projectFromState(const SPECDATA_GLOBALS& specdata, const XRAY_PEAK_GLOBALS& xrayPeak);

} // namespace quarvex
