// Mean and spread, straight-line least squares, the noise level of a spectrum and the width of
// a fixed-decimal number format; all in single precision.
#pragma once

#include <span>
#include <string>

namespace quarvex {

/// Mean `avg` of `y` and the program's spread measure sqrt(|mean(y²) - mean(y)|): the mean, not
/// its square, is subtracted (the noise thresholds depend on this). N = y.size() must be > 0.
void GET_AVG_AND_STDDEV(std::span<const float> y, float& avg, float& sd);

/// Least-squares line y = slope·x + intercept through the points. When the points' x are all
/// equal (the determinant is exactly 0), `slope` and `intercept` keep their values.
void CALCULATE_LST_SQRS(std::span<const float> x, std::span<const float> y, float& slope,
                        float& intercept);

/// Noise level of a spectrum and the mean of its y values.
struct NoiseLevel {
    float noise = 0.0F; ///< mean spread of the residuals about a line in each segment
    float avg = 0.0F;   ///< mean of all y values
};

/// Noise level of the points (x, y): the points are cut into `segments` consecutive segments
/// (halved while a segment would hold 2 points or fewer), a line is fitted to each and the
/// spread of its residuals averaged. Segments that rounding leaves with fewer than 3 points are
/// not counted. A spectrum too short for one segment of more than 2 points has noise 0.
NoiseLevel FIND_NOISE_STDDEV(std::span<const float> x, std::span<const float> y, int segments);

/// A format that prints `value` with `decimals` decimals and no leading blanks: the text
/// "(f" W "." decimals ")" with W = P + decimals, P the place of the decimal point in the value
/// written left-justified in fixed notation, and W in two characters ("(f 5.3)", "(f12.3)").
struct FloatFormat {
    int width = 0;    ///< W: the characters the value needs
    int decimals = 0; ///< NDEC
    std::string text; ///< the format text
};

/// The format of `value` with `decimals` decimals; see FloatFormat.
FloatFormat GET_FLOAT_SIZE(float value, int decimals);

} // namespace quarvex
