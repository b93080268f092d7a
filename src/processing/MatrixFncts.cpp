// LU decomposition and inversion (single precision, no row exchanges) and Gauss-Jordan
// inversion with full pivoting (double precision).
#include "processing/MatrixFncts.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace quarvex {

namespace {

// Column-major position of (row, column), both from 0.
std::size_t at(int row, int column, int n) {
    return static_cast<std::size_t>(column) * static_cast<std::size_t>(n) +
           static_cast<std::size_t>(row);
}

} // namespace

void LUDECOMP(std::span<const float> matrix, std::span<float> decomposition, int n, float& det,
              bool& ok) {
    std::fill(decomposition.begin(), decomposition.end(), 0.0F);
    for (int i = 0; i < n; ++i) {
        decomposition[at(i, i, n)] = 1.0F;
    }
    ok = false;
    for (int j = 0; j < n; ++j) {
        decomposition[at(0, j, n)] = matrix[at(0, j, n)];
        for (int i = 1; i <= j; ++i) {
            float sum = matrix[at(i, j, n)];
            for (int k = 0; k < i; ++k) {
                sum -= decomposition[at(i, k, n)] * decomposition[at(k, j, n)];
            }
            decomposition[at(i, j, n)] = sum;
        }
        for (int i = j + 1; i < n; ++i) {
            const float pivot = decomposition[at(j, j, n)];
            if (pivot == 0.0F) {
                return;
            }
            float sum = matrix[at(i, j, n)];
            for (int k = 0; k < j; ++k) {
                sum -= decomposition[at(i, k, n)] * decomposition[at(k, j, n)];
            }
            decomposition[at(i, j, n)] = sum / pivot;
        }
    }
    det = 1.0F;
    for (int i = 0; i < n; ++i) {
        det *= decomposition[at(i, i, n)];
    }
    ok = std::fabs(det) > 1.0e-9F;
}

void INVERT_MATRIX(std::span<const float> matrix, std::span<float> inverse, int n, float& det,
                   bool& ok) {
    std::vector<float> lu(static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
    LUDECOMP(matrix, lu, n, det, ok);
    std::vector<float> z(static_cast<std::size_t>(n));
    for (int column = 0; column < n; ++column) {
        // L z = e (unit diagonal), then U x = z.
        for (int i = 0; i < n; ++i) {
            float sum = i == column ? 1.0F : 0.0F;
            for (int k = 0; k < i; ++k) {
                sum -= lu[at(i, k, n)] * z[static_cast<std::size_t>(k)];
            }
            z[static_cast<std::size_t>(i)] = sum;
        }
        for (int i = n - 1; i >= 0; --i) {
            float sum = z[static_cast<std::size_t>(i)];
            for (int k = i + 1; k < n; ++k) {
                sum -= lu[at(i, k, n)] * inverse[at(k, column, n)];
            }
            inverse[at(i, column, n)] = sum / lu[at(i, i, n)];
        }
    }
}

bool GAUSSJ(std::span<double> a, std::span<double> b, int n, int m) {
    std::vector<int> ipiv(static_cast<std::size_t>(n), 0);
    std::vector<int> indxr(static_cast<std::size_t>(n), 0);
    std::vector<int> indxc(static_cast<std::size_t>(n), 0);
    bool allPivotsNonZero = true;
    double pivinv = 1.0;
    for (int step = 0; step < n; ++step) {
        // Start from the first eligible element so that a matrix of NaN still picks a valid one.
        int irow = -1;
        int icol = -1;
        double big = 0.0;
        for (int j = 0; j < n; ++j) {
            if (ipiv[static_cast<std::size_t>(j)] == 1) {
                continue;
            }
            for (int k = 0; k < n; ++k) {
                if (ipiv[static_cast<std::size_t>(k)] != 0) {
                    continue;
                }
                if (irow < 0) {
                    irow = j;
                    icol = k;
                }
                // Greater-or-equal: a later element of the same size takes the place.
                if (std::fabs(a[at(j, k, n)]) >= big) {
                    big = std::fabs(a[at(j, k, n)]);
                    irow = j;
                    icol = k;
                }
            }
        }
        ++ipiv[static_cast<std::size_t>(icol)];
        if (irow != icol) {
            for (int l = 0; l < n; ++l) {
                std::swap(a[at(irow, l, n)], a[at(icol, l, n)]);
            }
            for (int l = 0; l < m; ++l) {
                std::swap(b[at(irow, l, n)], b[at(icol, l, n)]);
            }
        }
        indxr[static_cast<std::size_t>(step)] = irow;
        indxc[static_cast<std::size_t>(step)] = icol;
        // A zero pivot is passed over: the previous reciprocal is used again.
        if (a[at(icol, icol, n)] != 0.0) {
            pivinv = 1.0 / a[at(icol, icol, n)];
            a[at(icol, icol, n)] = 1.0;
        } else {
            allPivotsNonZero = false;
        }
        for (int l = 0; l < n; ++l) {
            a[at(icol, l, n)] *= pivinv;
        }
        for (int l = 0; l < m; ++l) {
            b[at(icol, l, n)] *= pivinv;
        }
        for (int ll = 0; ll < n; ++ll) {
            if (ll == icol) {
                continue;
            }
            const double dum = a[at(ll, icol, n)];
            a[at(ll, icol, n)] = 0.0;
            for (int l = 0; l < n; ++l) {
                a[at(ll, l, n)] -= a[at(icol, l, n)] * dum;
            }
            for (int l = 0; l < m; ++l) {
                b[at(ll, l, n)] -= b[at(icol, l, n)] * dum;
            }
        }
    }
    for (int l = n - 1; l >= 0; --l) {
        const int r = indxr[static_cast<std::size_t>(l)];
        const int c = indxc[static_cast<std::size_t>(l)];
        if (r != c) {
            for (int k = 0; k < n; ++k) {
                std::swap(a[at(k, r, n)], a[at(k, c, n)]);
            }
        }
    }
    return allPivotsNonZero;
}

bool INVERT_GAUSSJ(std::span<const double> a, std::span<double> inverse, int n) {
    std::copy(a.begin(), a.end(), inverse.begin());
    std::vector<double> identity(static_cast<std::size_t>(n) * static_cast<std::size_t>(n), 0.0);
    for (int i = 0; i < n; ++i) {
        identity[at(i, i, n)] = 1.0;
    }
    return GAUSSJ(inverse, identity, n, n);
}

} // namespace quarvex
