// Small dense matrices: LU decomposition and inversion in single precision, Gauss-Jordan
// inversion in double precision. Matrices are square and stored column by column.
#pragma once

#include <span>

namespace quarvex {

/// Doolittle LU factors of the N x N `matrix` without row exchanges: U on and above the diagonal
/// of `decomposition`, L (unit diagonal implied) below it. `det` is the product of U's diagonal.
/// `ok` is true only when |det| > 1.0e-9F. An exact zero pivot stops at once with `ok` false
/// and `det` unwritten; a nearly singular matrix keeps its factors with `ok` false.
void LUDECOMP(std::span<const float> matrix, std::span<float> decomposition, int n, float& det,
              bool& ok);

/// Inverse of `matrix` through LUDECOMP and forward/back substitution on each column of the
/// identity. The substitution runs whatever `ok` says: callers must test `ok` first.
void INVERT_MATRIX(std::span<const float> matrix, std::span<float> inverse, int n, float& det,
                   bool& ok);

/// Gauss-Jordan elimination with full pivoting: the N x N matrix `a` is replaced by its inverse
/// and the N x M block `b` by the solutions of a x = b. A zero pivot is passed over silently
/// (the result is then meaningless); the return value is false when that happened.
bool GAUSSJ(std::span<double> a, std::span<double> b, int n, int m);

/// Inverse of the N x N matrix `a` through GAUSSJ on a copy with the identity as right-hand
/// side. Returns false when a zero pivot was met (the inverse is then meaningless).
bool INVERT_GAUSSJ(std::span<const double> a, std::span<double> inverse, int n);

} // namespace quarvex
