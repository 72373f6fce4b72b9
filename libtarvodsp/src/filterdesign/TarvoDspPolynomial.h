#pragma once

#include "containers/TarvoDspComplex.h"
#include "containers/TarvoDspVector.h"

// Polynomials are Vector<double> with the highest power first; root lists are ComplexArray.
namespace ondo
{
/// The roots of `polynomial`, as the eigenvalues of its companion matrix. Leading zeros are
/// dropped first (they lower the degree); a constant or an all-zero polynomial has no roots.
/// Control thread; allocates.
ComplexArray<double> polynomialRoots(const Vector<double>& polynomial);

/// True when every root of `a` lies strictly inside the unit circle (a constant is stable;
/// an all-zero polynomial is not). Control thread; allocates.
bool isStable(const Vector<double>& a);

/// The n + 1 coefficients of prod(x - r), beginning at 1. A list of conjugate pairs gives
/// imaginary parts of rounding size; callers read the real parts. Control thread; allocates.
ComplexArray<double> polynomialFromRoots(const ComplexArray<double>& roots);
} // namespace ondo
