// Resampling of a spectrum onto a regular grid of whole-number positions, and normalisation of
// the resampled intensities to Euclidean norm 10: the common ground of the library and the search.
#pragma once

#include <span>
#include <vector>

namespace quarvex {

/// The two-column table INTERP_DATA: column 1 the grid positions, column 2 the values. Its
/// capacity is the number of rows both columns hold.
struct InterpData {
    std::vector<float> x; ///< column 1: grid positions
    std::vector<float> y; ///< column 2: resampled (and normalised) intensities

    InterpData() = default;
    explicit InterpData(int capacity);
    int capacity() const;
};

/// The most grid rows one resampling produces (2^24: beyond it whole numbers are no longer all
/// representable in single precision).
inline constexpr int kMaxGridPoints = 1 << 24;

/// Rows that FILL_INT_DATA needs for measured x from `first` to `last` with `step`, at most
/// kMaxGridPoints; 0 when the arguments cannot give a grid (not finite, step not positive).
int gridCapacity(float first, float last, float step);

/// Resamples the points (x, y), x strictly ascending, onto the grid of whole-number positions
/// with spacing STEP that starts at the first aligned position at or above x.front() (steps 2
/// and 5 start on a multiple of 2 and 10) and stays strictly below x.back(). Each value is the
/// straight line through the two measured points around it, intervals half-open. All arithmetic
/// is single precision. On entry NINT is the capacity of INTERP_DATA (never written past); on
/// return the number of grid rows. A row that no interval covers gets the value 0. NINT is 0
/// when there are no points, STEP is not positive, or an end of x is not finite or lies beyond
/// +-2^24.
void FILL_INT_DATA(std::span<const float> x, std::span<const float> y, InterpData& INTERP_DATA,
                   int& NINT, float STEP);

/// Scales column 2 of rows 1..NINT so that its Euclidean norm is 10 (sum of squares and square
/// root in single precision). All-zero values give NaN: callers test for it.
void NORMALIZE_INT_DATA(InterpData& INTERP_DATA, int NINT);

/// The most grid rows resampleSpectrum builds: far more than any measured spectrum needs (two
/// million rows is 2 cm-1 to 2,000,000 cm-1 at step 1), far fewer than a stray x near 2^24 asks.
inline constexpr int kMaxResampleRows = 1 << 21;

/// A spectrum on the grid: FILL_INT_DATA into a table of the needed capacity, optionally
/// NORMALIZE_INT_DATA, cut to the NINT rows filled. Throws QuarvexError ("x range too wide to
/// resample: LO to HI at step S") when the grid would need more than kMaxResampleRows rows.
InterpData resampleSpectrum(std::span<const float> x, std::span<const float> y, float step,
                            bool normalize);

/// True when the table holds at least one row and every value is finite (a normalised all-zero
/// spectrum is not).
bool hasFiniteValues(const InterpData& data);

} // namespace quarvex
