#pragma once

#include "containers/TarvoDspVector.h"

namespace ondo
{
/// The reflection coefficients k1 ... kp of a polynomial of order p (any leading value but
/// 0, which raises "invalid polynomial"); k[i] belongs to order i + 1. |k| < 1 for all of
/// them exactly when the polynomial is minimum phase. Control thread; allocates.
Vector<double> ReflectionCoefficients(const Vector<double>& polynomial);
} // namespace ondo
