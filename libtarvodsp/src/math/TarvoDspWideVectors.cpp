#include "math/TarvoDspWideVectors.h"

#include <atomic>

namespace ondo::simd
{
namespace
{
bool askProcessor()
{
#if ONDO_WIDE_VECTORS
    // Static initialisers may run before the library's own, so the model is read first.
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

// Asked at load, so that the audio thread never meets a first-use guard.
const bool hasWideVectors = askProcessor();
} // namespace

std::atomic<bool> detail::wideVectorsInUse{hasWideVectors};

bool processorHasWideVectors()
{
    return hasWideVectors;
}

void allowWideVectors(bool allowed)
{
    detail::wideVectorsInUse.store(allowed && hasWideVectors, std::memory_order_relaxed);
}
} // namespace ondo::simd
