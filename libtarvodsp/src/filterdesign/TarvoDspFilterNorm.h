#pragma once

#include "containers/TarvoDspVector.h"

namespace ondo
{
/// The norm of the filter b / a (coefficients highest power of z^-1 last, a[0] the leading
/// one). `normType` 0 is the L2 norm of the impulse response, computed by recursion over a
/// length at which the tail's energy has fallen by about `tolerance`; other types give 0.
/// A denominator with a root on or outside the unit circle raises "unstable polynomial".
/// Control thread; allocates.
double FilterNorm(const Vector<double>& b, const Vector<double>& a, int normType = 0, double tolerance = 1e-12);
} // namespace ondo
