// The set of loaded spectra: parallel arrays indexed by spectrum, and the operations that grow,
// rebuild and shrink them.
#pragma once

#include "specdata/MineralInfo.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace quarvex {

/// The loaded spectra. Spectrum k (numbered from 1 for the user) is index k-1 of every
/// per-spectrum array. `X` and `Y` hold `pointDimension` rows for every spectrum, column by
/// column, single precision; only the first `NUMDATA` rows of a column are meaningful.
/// The arrays named DATA_...2 are the spare copy used while the main arrays are rebuilt.
struct SPECDATA_GLOBALS {
    std::vector<std::string> NAME; ///< display name: the file name, at most 256 characters
    std::vector<std::string> PATH; ///< full path of the file, at most 256 characters
    std::vector<float> X;          ///< x values (Raman shift, energy or 2-theta)
    std::vector<float> Y;          ///< y values (intensity)
    std::vector<int> NUMDATA;      ///< valid points of each spectrum
    std::vector<std::array<float, 2>> Y_EXTREMES; ///< smallest and largest y
    std::vector<std::string> DTYPE;               ///< data type from "dtype:", "RAMAN" or another
    std::vector<std::string> WAVE_INFO;           ///< wavelength information from "wave:"
    std::vector<float> SCALE_FACT;   ///< factor the spectrum is drawn with (1 = as read)
    std::vector<float> STACK_BUFF;   ///< vertical offset above the spectrum below
    std::vector<float> ABS_SCALE;    ///< full-scale y of the drawing; 0 = automatic
    std::vector<bool> ACTIVE;        ///< the spectrum in focus
    std::vector<bool> VISIBLE;       ///< drawn in the view (false: hidden, still loaded)
    std::vector<MINERALINFO> HEADER; ///< the file's four header values
    /// Comment-block lines other than "dtype:" and "wave:", "processing:" lines included
    std::vector<std::vector<std::string>> COMMENTS;
    int pointDimension = 0; ///< rows of X and Y: the largest NUMDATA

    std::vector<std::string> DATA_NAME2;
    std::vector<std::string> DATA_PATH2;
    std::vector<float> DATA_X2;
    std::vector<float> DATA_Y2;
    std::vector<int> DATA_NUMDATA2;
    std::vector<std::array<float, 2>> DATA_Y_EXTREMES2;
    std::vector<std::string> DATA_DTYPE2;
    std::vector<std::string> DATA_WAVE_INFO2;
    std::vector<float> DATA_SCALE_FACT2;
    std::vector<float> DATA_STACK_BUFF2;
    std::vector<float> DATA_ABS_SCALE2;
    std::vector<bool> DATA_ACTIVE2;
    std::vector<bool> DATA_VISIBLE2;
    std::vector<MINERALINFO> DATA_HEADER2;
    std::vector<std::vector<std::string>> DATA_COMMENTS2;
    int DATA_pointDimension2 = 0;

    /// Number of loaded spectra.
    int count() const { return static_cast<int>(NUMDATA.size()); }

    /// The valid x (or y) values of spectrum `index` (0-based).
    std::span<const float> xValues(int index) const { return column(X, index); }
    std::span<const float> yValues(int index) const { return column(Y, index); }
    std::span<float> xColumn(int index) { return mutableColumn(X, index); }
    std::span<float> yColumn(int index) { return mutableColumn(Y, index); }

private:
    std::span<const float> column(const std::vector<float>& values, int index) const;
    std::span<float> mutableColumn(std::vector<float>& values, int index);
};

/// Recreates the main arrays, zeroed, for `spectra` spectra of `points` rows each.
void ALLOCATE_SPECDATA_ARRAYS(SPECDATA_GLOBALS& specdata, int spectra, int points);

/// Mode 1 copies every field of every loaded spectrum to the spare arrays; mode 2 copies the
/// spare spectra back into the (recreated) main arrays, column by column, and empties the spares.
void EXCHANGE_DATA_ARRAYS(SPECDATA_GLOBALS& specdata, int mode);

/// Removes spectrum `index` (0-based): the later ones move down by one place. The point
/// dimension shrinks to the largest NUMDATA left. An index out of range changes nothing.
void DELETE_SPECDATA_FILE(SPECDATA_GLOBALS& specdata, int index);

/// Releases all spectrum storage, so that nothing refers to it after shut-down.
void FREE_SPECDATA_POINTERS(SPECDATA_GLOBALS& specdata);

/// One spectrum as read from a file, before it joins the set.
struct SpectrumRecord {
    std::string name;
    std::string path;
    std::vector<float> x;
    std::vector<float> y;
    std::string dtype;
    std::string waveInfo;
    MINERALINFO header;
    std::int64_t skippedLines = 0;     ///< lines read as nothing (see SkippedLines)
    std::int64_t firstSkippedLine = 0; ///< 1-based; 0 when none
    std::vector<std::string> comments; ///< comment lines other than "dtype:" and "wave:"
};

/// Adds a spectrum at the end of the set (spare copy, recreate one larger, copy back, fill the
/// new place); it becomes the active spectrum. Returns its index.
int appendSpectrum(SPECDATA_GLOBALS& specdata, SpectrumRecord record);

} // namespace quarvex
