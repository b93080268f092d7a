// Bragg's law for the X-ray workflow: d-spacing and 2-theta of a line at a given wavelength.
#pragma once

namespace quarvex {

/// d-spacing in angstroms of a line at `twoThetaDeg` degrees for `wavelength` angstroms,
/// d = lambda / (2 sin(theta)) (the refinement's own formula). Not finite for 2-theta 0.
double dSpacingFromTwoTheta(double twoThetaDeg, double wavelength);

/// 2-theta in degrees of a line of d-spacing `dSpacing` angstroms at `wavelength` angstroms; NaN
/// when the line is out of reach (lambda / (2 d) above 1) or d is not positive.
double twoThetaFromDSpacing(double dSpacing, double wavelength);

/// Standard error of d (angstroms) from the standard error of 2-theta (degrees) at that line:
/// |dd/d(2-theta)| = d cot(theta) / 2 per radian.
double dSpacingError(double twoThetaDeg, double twoThetaErrorDeg, double wavelength);

} // namespace quarvex
