// The robust search's view of a spectrum: background removed, square root of the intensities,
// Savitzky-Golay first derivative on the 1 cm-1 grid; and the library in that view, kept in its
// own file beside the four files of the dot-product search.
#pragma once

#include "common/Progress.h"

#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarvex {

/// The library in the robust view: one "==" block per entry of the Slow file, in its order.
inline constexpr std::string_view kRobustLibraryFile = "RamanSearchFileRobust.rsf";
/// Points (on the 1 cm-1 grid) and order of the Savitzky-Golay derivative.
inline constexpr int kDerivativeWindow = 15;
inline constexpr int kDerivativeOrder = 2;

/// A spectrum in the robust view: values on the whole-number grid first, first + 1, ...
struct RobustSpectrum {
    std::string name;
    int first = 0;
    std::vector<float> values;
};

/// The robust view of values already on the 1 cm-1 grid starting at `first`: clipped at 0,
/// square root, first derivative. Fewer points than the derivative window give no values.
std::vector<float> robustTransform(int first, std::span<const float> gridValues);

/// An unknown (x ascending) resampled onto the 1 cm-1 grid with its ALS background removed
/// (values may fall below 0). Throws QuarvexError ("Raman Library") when the selected area is
/// narrower than the derivative window or holds a value that is not a number.
RobustSpectrum backgroundFreeUnknown(std::span<const float> x, std::span<const float> y);

/// The robust view of a background-free spectrum on the 1 cm-1 grid: robustTransform, or no
/// values when no band stands clearly above the noise.
RobustSpectrum robustView(const RobustSpectrum& clean);

/// The robust view of an unknown (x ascending): resampled onto the 1 cm-1 grid, its ALS
/// background removed, then robustTransform; no values when no band stands clearly above the
/// noise (then every entry scores 0). Throws QuarvexError ("Raman Library") when the
/// selected area is narrower than the derivative window.
RobustSpectrum robustUnknown(std::span<const float> x, std::span<const float> y);

/// Writes the robust file of the compiled library in `folder` from its Slow file (atomically).
/// Throws "Library File Needs To Be Compiled" when the Slow file is missing, and a message when
/// the robust file cannot be written.
void compileRobustLibrary(const std::filesystem::path& folder,
                          const ProgressCallback& progress = {});

/// Reads the "==" blocks of a library file in the Slow file's layout one by one, in file order,
/// and passes each (name, first grid position, values) with the fraction of the file read. A
/// block whose positions are not consecutive whole numbers keeps the run up to the first gap.
/// Only one block is held at a time. Throws "Library File Needs To Be Compiled" when the file
/// is missing.
void forEachLibraryBlock(const std::filesystem::path& path,
                         const std::function<void(RobustSpectrum&, double)>& use);

} // namespace quarvex
