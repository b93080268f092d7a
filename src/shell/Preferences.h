// The sixteen preference values and their file "QV.ini".
#pragma once

#include <filesystem>
#include <string_view>

namespace quarvex {

inline constexpr std::string_view kPreferencesFileName = "QV.ini";

/// The preferences, in the order of "QV.ini" (a logical, an integer, three logicals, two
/// integers, two reals, five integers, two logicals). docs/preferences.md explains each.
struct Preferences {
    bool compileLibraryAtStart = true; ///< 1: compile the Raman library at every start
    int profileSetting = 2;            ///< 2: peak profile, 1 = Gaussian, 2 = pseudo-Voigt
    bool machineErrorSearch = true;    ///< 3: search the 2-theta zero shift in refinements
    bool reportIterations = true;      ///< 4: write "Number of iterations =" in reports
    bool stackSpectra = true;          ///< 5: stack spectra in the view instead of overlaying
    int noiseSegments = 32;            ///< 6: segments of the noise estimate
    int peakThreshold = 5;             ///< 7: peak search threshold, multiples of the noise
    float matchTolerance = 0.10F;      ///< 8: peak-to-reflection tolerance, degrees 2-theta
    float xrayWavelength = 1.540562F;  ///< 9: X-ray wavelength when none is given, angstroms
    int searchRangeStart = 100;        ///< 10: default Raman search range start, cm-1
    int searchRangeEnd = 4000;         ///< 11: default Raman search range end, cm-1
    int resultsShown = 25;             ///< 12: search results listed
    int peakSmoothingPoints = 5;       ///< 13: smoothing window of the peak search, points
    int peakMinSeparation = 3;         ///< 14: least distance of two found peaks, points
    bool reverseXAxis = false;         ///< 15: draw x growing to the left
    bool showGrid = true;              ///< 16: draw the grid of the view
};

/// Mode 1 writes `preferences` to "QV.ini" in `home` (silently giving up on failure); mode 2
/// reads the file into `preferences`: a missing file keeps every default, and the first value
/// that cannot be read stops the reading, leaving it and all later values as they were.
void INI_PREF_SETUP(int mode, const std::filesystem::path& home, Preferences& preferences);

} // namespace quarvex
