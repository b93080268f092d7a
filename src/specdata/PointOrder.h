// Putting the points of a spectrum in the order the numerical code needs.
#pragma once

#include <vector>

namespace quarvex {

/// Sorts the points by ascending x (keeping the file order of equal x) and merges every run of
/// equal x into one point whose y is the mean of the run. Resampling needs strictly ascending x.
void orderByAscendingX(std::vector<float>& x, std::vector<float>& y);

} // namespace quarvex
