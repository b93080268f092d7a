// The refinement's own small matrix routines and its least-squares solve (at most six unknowns).
#pragma once

#include "xray/RefineState.h"

#include <array>

namespace quarvex {

using Matrix3 = std::array<std::array<double, 3>, 3>;
using RefineVector6 = std::array<double, PARMMAX::kMaxUnknowns>;

/// A weighted least-squares problem: `rows` design rows of `columns` entries and their targets.
struct LeastSquaresDesign {
    int rows = 0;
    int columns = 0;
    std::array<RefineVector6, PARMMAX::kMaxReflections> a{};
    std::array<double, PARMMAX::kMaxReflections> y{};
};

/// LU decomposition with partial pivoting (implicit row scaling) of the leading n x n block, in
/// place; `index` records the row interchanges. False, with `a` undefined, when a pivot vanishes
/// against its row's size (relative 1e-13): the matrix is singular for this purpose.
bool LUDCMP(RefineMatrix6& a, int n, std::array<int, PARMMAX::kMaxUnknowns>& index);

/// Solves (LU) x = b in place for one right-hand side, after `LUDCMP`.
void LUBKSB(const RefineMatrix6& lu, int n, const std::array<int, PARMMAX::kMaxUnknowns>& index,
            RefineVector6& b);

/// Inverts the leading n x n block of a symmetric matrix in place (column by column through
/// `LUDCMP`/`LUBKSB`, then symmetrised). False, with `a` unchanged, when it is singular.
bool MINVSE(RefineMatrix6& a, int n);

/// Inverse of a 3 x 3 matrix by cofactors. False, with `inverse` untouched, when the determinant
/// vanishes against the product of the row lengths (relative 1e-12).
bool INV3D(const Matrix3& a, Matrix3& inverse);

/// Solves the least-squares problem through its normal equations, scaled to a unit diagonal for
/// the solve: `shifts` minimises |a x - y|, `inverse` is (a^T a)^-1 (unscaled). False when the
/// normal matrix is singular (a column of zeros, or columns that depend on each other).
bool MAKEDP(const LeastSquaresDesign& design, RefineVector6& shifts, RefineMatrix6& inverse);

} // namespace quarvex
