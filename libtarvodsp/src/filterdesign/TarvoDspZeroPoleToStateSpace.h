#pragma once

#include "filterdesign/TarvoDspStateSpace.h"
#include "filterdesign/TarvoDspZeroPoleGain.h"

#include <vector>

namespace ondo
{
/// A state-space realisation of `model`: a chain of first- and second-order blocks, one a
/// conjugate pair or a real pole, each in controller form, with the gain applied at the
/// output. More zeros than poles (an improper model) raises "invalid polynomial", as do
/// complex roots without their conjugates. Control thread; allocates.
StateSpace zeroPoleToStateSpace(const ZeroPoleGain& model);

/// The blocks of that chain one by one, of order 1 or 2, the gain in the last: their
/// transfer functions multiply to the model's. A chain's matrix is block-triangular, so its
/// eigenvalues are those of the blocks; taken block by block they keep their accuracy where
/// the eigenvalues of the whole, a strongly non-normal matrix, lose it (poles within 1e-6
/// of the unit circle in a 20th-order elliptic design). No poles give one block of order 0
/// holding the gain. Control thread; allocates.
std::vector<StateSpace> zeroPoleToStateSpaceBlocks(const ZeroPoleGain& model);
} // namespace ondo
