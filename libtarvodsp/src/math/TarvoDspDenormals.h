#pragma once

#include "math/TarvoDspPrimitiveStatus.h"

namespace ondo::primitives
{
/// Sets or clears flush-to-zero and denormals-are-zero for the calling thread: the SSE
/// control register on x86-64, FPCR.FZ on 64-bit ARM. `denormalModeUnsupported` elsewhere.
/// Audio thread; real-time safe (a register write, no system call).
Status setDenormalsAreZero(bool enable);

/// True when the calling thread flushes denormals to zero.
bool areDenormalsZero();
} // namespace ondo::primitives
