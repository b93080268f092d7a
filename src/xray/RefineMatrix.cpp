// Small dense matrix routines of the refinement: LU decomposition, inverses, normal equations.
#include "xray/RefineMatrix.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quarvex {

namespace {

constexpr double kPivotTolerance = 1.0e-13;
constexpr double kDeterminantTolerance = 1.0e-12;

} // namespace

bool LUDCMP(RefineMatrix6& a, int n, std::array<int, PARMMAX::kMaxUnknowns>& index) {
    RefineVector6 rowSize{};
    for (int i = 0; i < n; ++i) {
        double largest = 0.0;
        for (int j = 0; j < n; ++j) {
            largest = std::max(largest, std::fabs(a[i][j]));
        }
        if (largest == 0.0) {
            return false;
        }
        rowSize[i] = largest;
    }
    // Crout's order with partial pivoting on the scaled candidates; rowSize travels with its row
    // so that each pivot is judged against the size of the row it came from.
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < j; ++i) {
            double sum = a[i][j];
            for (int m = 0; m < i; ++m) {
                sum -= a[i][m] * a[m][j];
            }
            a[i][j] = sum;
        }
        double bestScaled = -1.0;
        int pivotRow = j;
        for (int i = j; i < n; ++i) {
            double sum = a[i][j];
            for (int m = 0; m < j; ++m) {
                sum -= a[i][m] * a[m][j];
            }
            a[i][j] = sum;
            const double scaled = std::fabs(sum) / rowSize[i];
            if (scaled > bestScaled) {
                bestScaled = scaled;
                pivotRow = i;
            }
        }
        if (pivotRow != j) {
            std::swap(a[pivotRow], a[j]);
            std::swap(rowSize[pivotRow], rowSize[j]);
        }
        index[j] = pivotRow;
        if (!(bestScaled > kPivotTolerance)) {
            return false;
        }
        for (int i = j + 1; i < n; ++i) {
            a[i][j] /= a[j][j];
        }
    }
    return true;
}

void LUBKSB(const RefineMatrix6& lu, int n, const std::array<int, PARMMAX::kMaxUnknowns>& index,
            RefineVector6& b) {
    for (int i = 0; i < n; ++i) {
        std::swap(b[i], b[index[i]]);
        double sum = b[i];
        for (int j = 0; j < i; ++j) {
            sum -= lu[i][j] * b[j];
        }
        b[i] = sum;
    }
    for (int i = n - 1; i >= 0; --i) {
        double sum = b[i];
        for (int j = i + 1; j < n; ++j) {
            sum -= lu[i][j] * b[j];
        }
        b[i] = sum / lu[i][i];
    }
}

bool MINVSE(RefineMatrix6& a, int n) {
    RefineMatrix6 lu = a;
    std::array<int, PARMMAX::kMaxUnknowns> index{};
    if (!LUDCMP(lu, n, index)) {
        return false;
    }
    RefineMatrix6 inverse{};
    for (int j = 0; j < n; ++j) {
        RefineVector6 column{};
        column[j] = 1.0;
        LUBKSB(lu, n, index, column);
        for (int i = 0; i < n; ++i) {
            inverse[i][j] = column[i];
        }
    }
    // The inverse of a symmetric matrix is symmetric; average away the rounding of the solve.
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            a[i][j] = 0.5 * (inverse[i][j] + inverse[j][i]);
        }
    }
    return true;
}

bool INV3D(const Matrix3& a, Matrix3& inverse) {
    Matrix3 cofactor{};
    for (int i = 0; i < 3; ++i) {
        const int i1 = (i + 1) % 3;
        const int i2 = (i + 2) % 3;
        for (int j = 0; j < 3; ++j) {
            const int j1 = (j + 1) % 3;
            const int j2 = (j + 2) % 3;
            cofactor[i][j] = a[i1][j1] * a[i2][j2] - a[i1][j2] * a[i2][j1];
        }
    }
    const double determinant =
        a[0][0] * cofactor[0][0] + a[0][1] * cofactor[0][1] + a[0][2] * cofactor[0][2];
    double scale = 1.0;
    for (const auto& row : a) {
        scale *= std::sqrt(row[0] * row[0] + row[1] * row[1] + row[2] * row[2]);
    }
    if (!(std::fabs(determinant) > kDeterminantTolerance * scale)) {
        return false;
    }
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j) {
            inverse[i][j] = cofactor[j][i] / determinant;
        }
    }
    return true;
}

bool MAKEDP(const LeastSquaresDesign& design, RefineVector6& shifts, RefineMatrix6& inverse) {
    const int p = design.columns;
    RefineMatrix6 normal{};
    RefineVector6 rightSide{};
    for (int r = 0; r < design.rows; ++r) {
        const RefineVector6& row = design.a[r];
        for (int i = 0; i < p; ++i) {
            rightSide[i] += row[i] * design.y[r];
            for (int j = 0; j < p; ++j) {
                normal[i][j] += row[i] * row[j];
            }
        }
    }
    // Scale to a unit diagonal: the columns differ by orders of magnitude (edges against angles,
    // s against s^2), and the pivot test should judge dependence, not units.
    RefineVector6 scale{};
    for (int i = 0; i < p; ++i) {
        if (!(normal[i][i] > 0.0) || !std::isfinite(normal[i][i])) {
            return false;
        }
        scale[i] = std::sqrt(normal[i][i]);
    }
    for (int i = 0; i < p; ++i) {
        for (int j = 0; j < p; ++j) {
            normal[i][j] /= scale[i] * scale[j];
        }
    }
    if (!MINVSE(normal, p)) {
        return false;
    }
    inverse = RefineMatrix6{};
    for (int i = 0; i < p; ++i) {
        for (int j = 0; j < p; ++j) {
            inverse[i][j] = normal[i][j] / (scale[i] * scale[j]);
        }
    }
    shifts = RefineVector6{};
    for (int i = 0; i < p; ++i) {
        for (int j = 0; j < p; ++j) {
            shifts[i] += inverse[i][j] * rightSide[j];
        }
    }
    return true;
}

} // namespace quarvex
