#pragma once

#include "filterdesign/TarvoDspStateSpace.h"
#include "filterdesign/TarvoDspZeroPoleGain.h"

namespace ondo
{
/// A state-space realisation of `model`: a chain of first- and second-order blocks, one a
/// conjugate pair or a real pole, each in controller form, with the gain applied at the
/// output. More zeros than poles (an improper model) raises "invalid polynomial", as do
/// complex roots without their conjugates. Control thread; allocates.
StateSpace zeroPoleToStateSpace(const ZeroPoleGain& model);
} // namespace ondo
