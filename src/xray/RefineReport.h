// The refinement report "Refine.out": its headings, cell blocks, results and matrices.
#pragma once

#include "xray/RefineState.h"

#include <array>
#include <initializer_list>
#include <ostream>
#include <string>
#include <string_view>

namespace quarvex {

struct CrystalSystemRule;

/// Writes the report as the run proceeds. While quiet (the trial refinements of the
/// machine-error search) only failures are written.
class RefineReport {
public:
    explicit RefineReport(std::ostream& out) : out_(out) {}

    void setQuiet(bool quiet) { quiet_ = quiet; }
    bool quiet() const { return quiet_; }

    /// One line, written as given (dropped while quiet).
    void line(std::string_view text);
    /// What ended the run: written even while quiet, and kept (lines joined) in `io.message`.
    void failure(INOUTPARMS& io, std::initializer_list<std::string_view> lines);
    /// The failure of a cell whose metric cannot be inverted (or is no metric of a real cell).
    void metricFailure(INOUTPARMS& io);

    /// The box of asterisk lines with the banner and credits lines.
    void banner();
    /// Title, "Symmetry constraint is:" with the system, the wavelengths and the reflections.
    void runHeading(const INOUTPARMS& io, const DATASTFF& data);
    /// A caption, the "A  B  C  Alpha  Beta  Gamma" heading and the six values (angles in deg).
    void cellTable(std::string_view caption, const std::array<double, 6>& cell);
    /// "A =" ... "Gamma =", "Volume =" with their standard errors.
    void cellResults(const INOUTPARMS& io, const DATASTFF& data, const CrystalSystemRule& rule);
    /// The variance/covariance and correlation matrices of the free parameters, and "rmse =".
    void statistics(const INOUTPARMS& io, const DATASTFF& data, const CrystalSystemRule& rule);

private:
    std::ostream& out_;
    bool quiet_ = false;
};

/// A value with its standard error in the compact crystallographic form, "4.91237(10)": the
/// error keeps two digits when they read 19 or less, else one. Empty when the error is not
/// positive.
std::string compactWithError(double value, double error);

} // namespace quarvex
