#pragma once

#include "containers/TarvoDspMatrix.h"
#include "filterdesign/TarvoDspZeroPoleGain.h"

namespace ondo
{
/// Pairs a digital model's roots into second-order sections: `sections` gets one row of
/// b0 b1 b2 1 a1 a2 a section (factors in z^-1; a single root has b2 = a2 = 0) and `gain`
/// the model's gain, which the caller puts into the first section. Each pole pair takes the
/// zeros nearest to it, pairs closest to the unit circle choosing first; the sections are
/// ordered by the energy of their recursive part's impulse response, the most resonant
/// last. No roots at all give the one unit section. Returns false, with no sections, for
/// more zeros than poles or roots that do not come in conjugate pairs. Raises "unstable
/// polynomial" for a pole on or outside the unit circle. Control thread; allocates.
bool zeroPoleToSections(const ZeroPoleGain& model, Matrix<double>& sections, double& gain);
} // namespace ondo
