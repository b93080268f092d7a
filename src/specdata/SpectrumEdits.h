// The editing operations on one loaded spectrum (trim, cosmic-ray removal, background removal,
// smoothing): each is computed on a record, then applied with its undo record and a
// "processing:" comment line. The desktop program's dialogs and quarvex-cli process share them.
#pragma once

#include "processing/AlsBaseline.h"
#include "processing/ArplsBaseline.h"
#include "processing/CosmicRays.h"
#include "processing/SnipBaseline.h"
#include "specdata/SpecDataGlobals.h"
#include "specdata/SpectrumFileWriter.h"
#include "specdata/UndoRecords.h"

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

namespace quarvex {

/// Keep the points with low <= x <= high.
struct TrimEdit {
    double low = 0.0;
    double high = 0.0;
};

/// Remove every cosmic-ray spike (RUN_AUTO_CRE).
struct DespikeEdit {
    DespikeParameters parameters;
};

/// Remove the spike nearest to a point the user clicked.
struct ManualSpikeEdit {
    double x = 0.0;
    DespikeParameters parameters;
};

enum class BaselineMethod { Als, Arpls, Snip, Polynomial };

/// Subtract a baseline. Only the parameters of `method` are used.
struct BaselineEdit {
    BaselineMethod method = BaselineMethod::Als;
    AlsParameters als;
    ArplsParameters arpls;
    SnipParameters snip;
    std::vector<double> anchors; ///< picked x positions of the polynomial baseline
    int degree = 3;              ///< degree of the polynomial baseline
};

/// Savitzky-Golay smoothing; the window is `windowPoints` when > 0, else `width` x units.
struct SmoothEdit {
    double width = 0.0;
    int windowPoints = 0;
    int order = 2;
};

using SpectrumEdit = std::variant<TrimEdit, DespikeEdit, ManualSpikeEdit, BaselineEdit, SmoothEdit>;

/// What an edit did.
struct EditOutcome {
    SpectrumRecord record;       ///< the spectrum after the edit (the "processing:" line added)
    std::string label;           ///< short name for Undo/Redo, e.g. "Background (ALS)"
    std::string processingLine;  ///< the comment line recording method and parameters
    std::vector<float> baseline; ///< the subtracted baseline (background edits)
    int baselineIterations = 0;  ///< passes of the baseline estimate
    std::vector<float> spikeX;   ///< x of the points replaced as spikes
    int windowPoints = 0;        ///< smoothing window in points
    std::size_t pointsIn = 0;
    std::size_t pointsOut = 0;
};

/// The name of a baseline method ("als", "arpls", "snip", "polynomial").
std::string_view baselineMethodName(BaselineMethod method);

/// The baseline an edit would subtract from (x, y), for previews. Throws QuarvexError
/// ("Background") on bad input.
std::vector<float> proposedBaseline(std::span<const float> x, std::span<const float> y,
                                    const BaselineEdit& edit, int* iterations = nullptr);

/// The values a smoothing edit gives for (x, y), for previews; `windowPoints` receives the
/// window used. Throws QuarvexError ("Smoothing") on bad input.
std::vector<float> smoothedValues(std::span<const float> x, std::span<const float> y,
                                  const SmoothEdit& edit, int* windowPoints = nullptr);

/// Computes `edit` on `record` without changing any loaded data. Throws QuarvexError on bad
/// input (the record is not changed).
EditOutcome computeEdit(const SpectrumRecord& record, const SpectrumEdit& edit);

/// Applies `edit` to spectrum `index`: computes it, records the previous state as an undo record
/// below `home`, then puts the result in place. On any failure nothing is changed.
EditOutcome applyEdit(SPECDATA_GLOBALS& specdata, UndoHistory& history,
                      const std::filesystem::path& home, int index, const SpectrumEdit& edit);

/// Save (30004) and Save As (30005): writes spectrum `index` to `path` in `format`. Saved in the
/// program's format, the spectrum takes the new file as its path and name (its undo records
/// follow it). Throws QuarvexError ("Save") when the file cannot be written; nothing changes then.
void ORGANIZE_SAVEFILE(SPECDATA_GLOBALS& specdata, UndoHistory& history, int index,
                       const std::filesystem::path& path, SpectrumFileFormat format);

/// The values of (x, y) with spikes and background removed by the defaults (RUN_AUTO_CRE, then
/// the ALS baseline): what search --clean searches.
std::vector<float> cleanedValues(std::span<const float> x, std::span<const float> y);

} // namespace quarvex
