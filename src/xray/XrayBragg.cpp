// Bragg's law both ways, in double precision, with the refinement's value of pi.
#include "xray/XrayBragg.h"

#include "xray/RefineEngine.h"

#include <cmath>
#include <limits>

namespace quarvex {

double dSpacingFromTwoTheta(double twoThetaDeg, double wavelength) {
    return braggD(wavelength, twoThetaDeg);
}

double twoThetaFromDSpacing(double dSpacing, double wavelength) {
    const double sine = wavelength / (2.0 * dSpacing);
    if (!(dSpacing > 0.0) || !(sine <= 1.0)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return 2.0 * std::asin(sine) / kDegree;
}

double dSpacingError(double twoThetaDeg, double twoThetaErrorDeg, double wavelength) {
    const double theta = 0.5 * twoThetaDeg * kDegree;
    const double d = dSpacingFromTwoTheta(twoThetaDeg, wavelength);
    return std::abs(d / std::tan(theta) * 0.5 * twoThetaErrorDeg * kDegree);
}

} // namespace quarvex
