// Mixture search: the components of an unknown found one at a time with the robust score, each
// fitted and subtracted before the residual is searched for the next.
#pragma once

#include "common/Progress.h"
#include "library/CreateLibraryFile.h"
#include "library/LibraryGlobals.h"
#include "library/RobustSearch.h"

#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace quarvex {

/// Components a mixture search reports at most unless told otherwise.
inline constexpr int kDefaultMixtureComponents = 3;
/// The search stops once the residual holds less than this share of the unknown's signal.
inline constexpr double kMixtureResidualShare = 0.05;

/// One component of a mixture.
struct MixtureComponent {
    std::size_t entry = 0; ///< library entry (0-based)
    double score = 0.0;    ///< robust score against what was left when it was taken, 0 to 100
    double fraction = 0.0; ///< share of the unknown's signal it accounts for
    int shift = 0;         ///< cm-1: the unknown's band positions minus the entry's
    double scale = 0.0;    ///< non-negative factor on the entry's intensities
};

/// What a mixture search found. The signal of a spectrum is its sum of squares, which noise
/// hardly feeds; the fractions and the residual's share add up to 1.
struct MixtureResult {
    std::vector<MixtureComponent> components;
    double residualFraction = 1.0;
    RobustSpectrum unknown;      ///< the unknown, background removed, clipped at 0
    std::vector<float> fitted;   ///< sum of the scaled, shifted components on the unknown's grid
    std::vector<float> residual; ///< the unknown minus the components, clipped at 0
    std::vector<RobustMatch> firstPass; ///< the robust score of every entry on the unknown
};

/// The library in the two views the mixture search needs, in library order.
struct MixtureLibrary {
    std::vector<RobustSpectrum> views;       ///< robust view of each entry
    std::vector<RobustSpectrum> intensities; ///< each entry on the 1 cm-1 grid
};

/// Greedy mixture search of `clean` (background removed, 1 cm-1 grid): take the entry with the
/// best robust score, fit its non-negative scale at each shift of -3..+3 cm-1 (least squares,
/// the best shift kept), subtract it and clip at 0, then search the residual without the entries
/// taken. Stops after `maxComponents`, when the residual's share falls below
/// kMixtureResidualShare, when no band stands above the residual's noise, or when no entry
/// scores above 0 or fits with a positive scale.
MixtureResult mixtureSearch(const RobustSpectrum& clean, const MixtureLibrary& library,
                            int maxComponents);

/// Reads the robust file and the Slow file of the compiled library in `folder` (the robust file
/// derived first when missing). Throws "Library File Needs To Be Compiled" when the Slow file is
/// missing.
MixtureLibrary loadMixtureLibrary(const std::filesystem::path& folder,
                                  const ProgressCallback& progress = {});

/// A mixture search as the user starts it: the library of `home` compiled when missing
/// (returned in `compilation`), `library` given the entries with the robust score of each on
/// the whole unknown, sorted. Throws QuarvexError when `maxComponents` < 1, as the robust
/// search does for a bad unknown or library; `library` then stays as it was.
MixtureResult searchMixture(const std::filesystem::path& home, std::span<const float> x,
                            std::span<const float> y, int maxComponents, LIBRARY_GLOBALS& library,
                            std::optional<LibraryCompilation>& compilation,
                            const ProgressCallback& progress = {});

} // namespace quarvex
