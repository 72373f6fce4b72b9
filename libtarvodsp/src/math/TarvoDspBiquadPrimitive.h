#pragma once

#include "math/TarvoDspPrimitiveStatus.h"

#include <cstdint>

namespace ondo::primitives
{
/// The state of a cascade of biquad sections, placed in memory that the caller provides.
struct BiquadState;

/// Bytes of memory a state of `numSections` needs (alignment slack included).
Status biquadGetStateSize(int numSections, int* size);

/// Installs a cascade into `memory` and stores its handle in `*handle`. `taps` holds six
/// floats a section: b0 b1 b2 a0 a1 a2. A section whose a0 or b0 is 0 ends the loop with
/// `divisionByZeroInTaps`, the sections before it being installed and the later ones
/// keeping what the memory held. `delayLine` (two floats a section) is copied in; null
/// means zeros. Re-running it on the same memory with the present delay line carries the
/// signal on without a click.
Status biquadInit(BiquadState** handle, const float* taps, int numSections, const float* delayLine,
                  std::uint8_t* memory);

/// Runs the cascade, transposed direct form II, section after section on each sample.
/// `src` and `dst` may be the same. Real-time safe.
///
/// The delay pair moves as y = b0 x + z0; z0 = b1 x + z1 - a1 y; z1 = b2 x - a2 y, with y
/// written out: z0 = (z1 + c1 x) - a1 z0 and z1 = c2 x - a2 z0, where c1 = b1 - a1 b0 and
/// c2 = b2 - a2 b0 are worked out once, at installation. The same pair, the same output up to
/// rounding; but the feedback is one product and one sum a sample instead of three
/// operations, and a shelf's small c1 is not left to cancel between two large products.
Status biquadProcess(const float* src, float* dst, int n, BiquadState* handle);

/// Copies two floats a section into the delay line; null zeroes it.
Status biquadSetDelayLine(BiquadState* handle, const float* delayLine);

/// Copies the present delay line (two floats a section) out, so that an owner can keep it.
Status biquadGetDelayLine(const BiquadState* handle, float* delayLine);

/// The delay line itself (two floats a section), for a kernel that runs the recursion
/// elsewhere and hands the state back; null for a handle that is not a cascade.
float* biquadDelayLineInPlace(BiquadState* handle);

/// What the recursion runs on, five floats a section: b0, c1, c2, a1, a2 (see
/// `biquadProcess`), for a kernel that runs it elsewhere; null for a handle that is not a
/// cascade.
const float* biquadRecursionTaps(const BiquadState* handle);
} // namespace ondo::primitives
