#pragma once

#include "containers/TarvoDspVector.h"

namespace ondo
{
/// One step down the Levinson-Durbin recursion: a monic polynomial of order p (leading 1)
/// becomes the monic polynomial of order p - 1 and the reflection coefficient k of order p.
struct DurbinStep
{
    Vector<double> polynomial;
    double k = 0.0;
};

/// Raises "invalid parameter" when |k| is exactly 1 (the lower order is not defined).
/// A polynomial of order 0 gives itself and k = 0. Control thread; allocates.
DurbinStep DurbinStepDown(const Vector<double>& polynomial);
} // namespace ondo
