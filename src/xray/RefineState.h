// The refinement's program-wide state: its bounds, its run settings and results, its data arrays.
#pragma once

#include <array>
#include <filesystem>
#include <string>

namespace quarvex {

/// Bounds of the refinement: everything it holds is sized by these, nothing grows during a run.
struct PARMMAX {
    static constexpr int kMaxReflections = 99;  ///< reflections of one run
    static constexpr int kMaxWavelengths = 3;   ///< wavelengths of one run
    static constexpr int kMaxUnknowns = 6;      ///< free parameters of the least-squares problem
    static constexpr int kSystemNameWidth = 12; ///< `XTLSYS` is blank-padded to this width
};

using RefineMatrix6 = std::array<std::array<double, PARMMAX::kMaxUnknowns>, PARMMAX::kMaxUnknowns>;

/// Which parameters the normal-equation inverse in `DATASTFF::normalInverse` belongs to.
enum class CovarianceKind {
    None,       ///< no least-squares solution yet in this run
    Reciprocal, ///< the free reciprocal-metric terms of the linear solution (`ESTIMATE`)
    Direct      ///< the free direct-cell parameters of the iteration (angstroms and radians)
};

/// The run's settings as read from the input file, and its scalar results.
struct INOUTPARMS {
    std::string title;  ///< line 1 of the input, echoed in the report
    int cellOption = 0; ///< 1: the starting cell of the input is used and forced to symmetry
    bool searchMachineError = false; ///< switch 1: run the machine-error (zero-shift) search
    bool reportIterations = false;   ///< switch 2: write "Number of iterations =" to the report
    bool tableInD = false;           ///< switch 3: observations are d-spacings, table in d only
    bool startCellGiven = false;     ///< switch 4: start from the input cell, skip `ESTIMATE`
    bool noEstimate = false; ///< set while reading: switch 4 with cell option 1 (after forcing)

    std::filesystem::path reportPath; ///< base name + "Refine.out" beside the input
    bool ok = false;                  ///< the run ended with refined results
    std::string message;              ///< why the run ended without results (empty when ok)

    int iterations = 0; ///< passes that changed the cell in the last `NONLIN` (0 if linear)
    bool iterationLimitHit = false; ///< the last `NONLIN` ran its 101 passes without converging
    double rmse = 0.0; ///< root-mean-square weighted Q residual, sqrt(SSR / (n - unknowns)), 1/A^2
    double volume = 0.0;      ///< cubic angstroms
    double volumeError = 0.0; ///< standard error of the volume, cubic angstroms

    double machineError = 0.0; ///< accepted 2-theta zero correction, degrees (added to 2-theta)
    bool machineErrorSearched = false;  ///< the machine-error search ran
    bool machineErrorConverged = false; ///< met its threshold with sane lines and a lower rmse
    int machineErrorPasses = 0;         ///< passes the search ran (1 to 5)
};

/// The reflections, wavelengths and cell of a run (index 0 is the user's reflection 1).
struct DATASTFF {
    using PerReflection = std::array<double, PARMMAX::kMaxReflections>;
    using PerReflectionInt = std::array<int, PARMMAX::kMaxReflections>;

    int NREF = 0;            ///< reflections read
    PerReflection TTHETA{};  ///< observed 2-theta, degrees; shifted by the machine-error search
    PerReflection TTHETAO{}; ///< 2-theta at the start of one pass of the machine-error search
    PerReflection TTHETAORIGINAL{}; ///< 2-theta as read (from d in a table in d only)
    PerReflection DO{};             ///< observed d, angstroms
    PerReflection QO{};             ///< observed Q = 1 / d^2, 1/A^2
    PerReflection DC{};             ///< calculated d, angstroms
    PerReflection QC{};             ///< calculated Q, 1/A^2
    PerReflection TTHETAC{};   ///< calculated 2-theta, degrees (NaN when the line is out of reach)
    PerReflectionInt WAVEID{}; ///< wavelength number of each reflection, 1 to 3
    PerReflection WAVE{};      ///< wavelength of each reflection, angstroms
    PerReflection SQW{};       ///< square-root weight of each reflection
    PerReflectionInt h{};      ///< Miller indices
    PerReflectionInt k{};
    PerReflectionInt l{};

    int NWAVES = 0;                                       ///< wavelengths of the run
    std::array<double, PARMMAX::kMaxWavelengths> WAVES{}; ///< angstroms

    std::string XTLSYS = std::string(PARMMAX::kSystemNameWidth, ' '); ///< crystal system, padded
    int unknowns = 0; ///< free parameters of the crystal system (`XTL`)

    /// a, b, c (angstroms), alpha, beta, gamma: cosines while read and estimated, degrees from
    /// the iteration on.
    std::array<double, 6> CELL{};
    std::array<double, 6> RCELL{}; ///< a*, b*, c* (1/angstroms), alpha*, beta*, gamma* (degrees)
    std::array<double, 6> ERROR{}; ///< standard errors: edges in angstroms, angles in degrees
    RefineMatrix6 CORR{};  ///< correlations of a, b, c, alpha, beta, gamma (0 for a fixed one)
    RefineMatrix6 COVAR{}; ///< covariance of a, b, c (A) and alpha, beta, gamma (radians)

    RefineMatrix6 normalInverse{}; ///< inverse normal matrix of the last least-squares solution
    CovarianceKind normalKind = CovarianceKind::None;
};

} // namespace quarvex
