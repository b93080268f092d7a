#include "specdata/PointOrder.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace quarvex {

namespace {

bool strictlyAscending(const std::vector<float>& x) {
    return std::adjacent_find(x.begin(), x.end(), [](float a, float b) { return !(a < b); }) ==
           x.end();
}

} // namespace

void orderByAscendingX(std::vector<float>& x, std::vector<float>& y) {
    if (strictlyAscending(x)) {
        return; // the usual case: nothing to do
    }
    std::vector<std::size_t> order(x.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&x](std::size_t a, std::size_t b) { return x[a] < x[b]; });

    std::vector<float> mergedX;
    std::vector<float> mergedY;
    mergedX.reserve(x.size());
    mergedY.reserve(y.size());
    for (std::size_t i = 0; i < order.size();) {
        const float runX = x[order[i]];
        double sum = 0.0;
        std::size_t j = i;
        for (; j < order.size() && x[order[j]] == runX; ++j) {
            sum += y[order[j]];
        }
        mergedX.push_back(runX);
        mergedY.push_back(static_cast<float>(sum / static_cast<double>(j - i)));
        i = j;
    }
    x.swap(mergedX);
    y.swap(mergedY);
}

} // namespace quarvex
