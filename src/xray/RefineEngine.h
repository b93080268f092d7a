// The refinement's routines and its crystal-system table, shared by its files and its tests.
#pragma once

#include "xray/Refine.h"
#include "xray/RefineMatrix.h"

#include <array>
#include <string_view>

namespace quarvex {

class LineReader;
class RefineReport;

/// Cell entries a, b, c, alpha, beta, gamma as bits, for the free parameters that stand for them.
enum CellEntryBit : unsigned {
    kEntryA = 1U,
    kEntryB = 2U,
    kEntryC = 4U,
    kEntryAlpha = 8U,
    kEntryBeta = 16U,
    kEntryGamma = 32U
};

/// How one crystal system constrains the cell, for the two parametrisations of the refinement.
/// Q = 1/d^2 = h^T G* h, with the reciprocal metric G* written as six terms
/// g = (g11, g22, g33, g12, g13, g23), so that Q = t . g with t = (h^2, k^2, l^2, 2hk, 2hl, 2kl).
struct CrystalSystemRule {
    std::string_view name;
    int unknowns = 0;
    bool linear = false; ///< solved by `ESTIMATE` alone; `NONLIN` does not iterate
    /// For free direct parameter j: the cell entries it stands for (a tetragonal a is a and b).
    std::array<unsigned, 6> directEntries{};
    /// For free reciprocal parameter j: its coefficient in each of the six terms g.
    std::array<std::array<double, 6>, 6> reciprocalTerms{};
};

/// The rule of a system name (compared after trimming), or nullptr for an unknown name.
const CrystalSystemRule* findCrystalSystem(std::string_view XTLSYS);

/// The cell entries (bits) that some free parameter stands for; the others are held by symmetry.
unsigned freeCellEntries(const CrystalSystemRule& rule);

/// The nine names, for messages ("TRICLINIC, MONOCLINIC1, ..., CUBIC").
std::string_view crystalSystemList();

/// Label of the cell entry m (0..5): "a", "b", "c", "alpha", "beta", "gamma".
std::string_view cellEntryLabel(int m);

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kDegree = kPi / 180.0; ///< radians per degree

// Input -------------------------------------------------------------------------------------

/// The next line that is not blank; false at the end of the file.
bool READLN(LineReader& reader, std::string_view& line);
/// A real number from one free-format value; false when it is not a finite number.
bool CH2NUM(std::string_view text, double& value);
/// An integer from one free-format value; false when it is not an integer.
bool CH2INT(std::string_view text, int& value);
/// Observed d by Bragg's law, d = lambda / (2 sin(theta)) with theta = 2-theta x (pi/180) x 0.5.
double braggD(double wavelength, double twoThetaDeg);
/// `DO` and `QO` = 1 / d^2 of every reflection from its `TTHETA` and wavelength.
void observedFromTwoTheta(DATASTFF& data);
/// Reads the input file into the blocks and prepares QO, DO and the starting cell (angles as
/// cosines). False (the error flag) after writing the reason to the report.
bool DATAIN(const std::filesystem::path& inputPath, INOUTPARMS& io, DATASTFF& data,
            RefineReport& report);

// Crystallography and least squares ---------------------------------------------------------

/// Direct metric tensor G of a cell with angles in degrees.
void MKMETRIC(const std::array<double, 6>& cell, Matrix3& metric);
/// The reciprocal metric G* = G^-1 of a cell in degrees; false when G is singular or not
/// positive definite (no real cell).
bool reciprocalMetric(const std::array<double, 6>& cell, Matrix3& reciprocal);
/// Linear least squares for the free reciprocal-metric terms: sets `CELL` (angles as cosines),
/// `RCELL` and the normal inverse (kind Reciprocal). False after a report line when the
/// reflections do not determine the terms or give no real cell.
bool ESTIMATE(INOUTPARMS& io, DATASTFF& data, RefineReport& report);
/// Gauss-Newton on the free direct-cell parameters (angles in degrees in `CELL`, radians in the
/// normal matrix). Turns the angles from cosines into degrees, then returns at once for a linear
/// system. False after a report line when the metric or the normal matrix is singular.
bool NONLIN(INOUTPARMS& io, DATASTFF& data, RefineReport& report);
/// dQ/dp of every reflection for the free direct parameters p of the system (per angstrom and
/// per radian), in the design rows, unweighted; `reciprocal` is G* of the current cell.
void QCALC(const DATASTFF& data, const CrystalSystemRule& rule, const Matrix3& reciprocal,
           LeastSquaresDesign& design);
/// Calculated Q (`QC`) and d (`DC`) of every reflection from G*.
void DCALC(DATASTFF& data, const Matrix3& reciprocal);
/// Calculated Q, d, 2-theta and the reciprocal cell from the final cell; false after a report
/// line when its metric cannot be inverted.
bool CALCVAL(INOUTPARMS& io, DATASTFF& data, RefineReport& report);

// Statistics and errors ---------------------------------------------------------------------

/// rmse, the cell covariance `COVAR`, `ERROR`, `CORR`, the volume and its error; writes the
/// results (cell, table, matrices, rmse) unless the report is quiet. False after the two metric
/// lines when the metric cannot be inverted.
bool STATS(INOUTPARMS& io, DATASTFF& data, RefineReport& report);
/// Jacobian of the cell (angstroms, radians) with respect to the parameters of the normal
/// inverse (6 x unknowns). False when the cell's metric cannot be inverted.
bool ERRPROP(const DATASTFF& data, const CrystalSystemRule& rule, RefineMatrix6& jacobian);
/// `COVAR` = rmse^2 J N^-1 J^T (entries fixed by symmetry set to zero), `ERROR` (angles in
/// degrees) and `CORR`.
void CELLERR(DATASTFF& data, const CrystalSystemRule& rule, const RefineMatrix6& jacobian,
             double rmse);
/// Volume of the cell (degrees) and its standard error from `COVAR`.
void VOLERR(const DATASTFF& data, double& volume, double& volumeError);

// Report and machine error -------------------------------------------------------------------

/// The observed/calculated table of the reflections, through its run-time-built format.
void RECAST(const INOUTPARMS& io, const DATASTFF& data, RefineReport& report);
/// The run-time-built record format of the table: one wavelength, several, or d only.
std::string tableFormat(bool tableInD, int wavelengths);
/// One whole refinement: `ESTIMATE` (unless skipped), `NONLIN`, `CALCVAL`, `STATS`.
bool refineOnce(INOUTPARMS& io, DATASTFF& data, RefineReport& report, bool estimate);
/// The zero-shift search over trial shifts +0.01, +0.05, -0.05 deg with a parabola vertex, and
/// the final refinement on the corrected 2-theta values. Judges it converged only when it met its
/// threshold, kept every 2-theta within (0, 180) and ended below its best first-pass rmse.
bool MACHERR(INOUTPARMS& io, DATASTFF& data, RefineReport& report);

} // namespace quarvex
