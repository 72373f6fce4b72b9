#pragma once

#include "containers/TarvoDspComplex.h"

namespace ondo
{
/// Puts a root list in conjugate-pair order: each complex root with a positive imaginary
/// part followed by its conjugate (pairs by ascending real part), then the real roots
/// ascending, their imaginary parts set to 0. A root is real, and two roots are conjugate,
/// within `tolerance` times max(1, modulus); conjugates are made exact. Returns false, and
/// leaves the list as it was, when a complex root has no conjugate. Control thread; allocates.
bool sortIntoConjugatePairs(ComplexArray<double>& roots, double tolerance);
} // namespace ondo
