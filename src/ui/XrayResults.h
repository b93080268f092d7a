// The refined cell as the X-ray Diffraction mode shows it: values with their standard errors
// beside the reference cell, the volume and how the refinement went.
#pragma once

#include "xray/RefinedCellRecord.h"

#include <QString>

#include <array>

namespace quarvex::ui {

/// A rich-text table: a, b, c (angstroms) beside alpha, beta, gamma (degrees), and the volume,
/// each as value ± standard error (a parameter that the crystal system fixes: its value and
/// "fixed"), each followed by the reference cell's value in grey; then the crystal system, the
/// lines used, the rmse, the machine error (and whether its search converged) and the iterations.
QString refinedCellHtml(const RefinedCellRecord& refined, const std::array<float, 6>& reference);

} // namespace quarvex::ui
