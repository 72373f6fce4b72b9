#pragma once

#include "math/TarvoDspWideVectors.h"

namespace tarvo::testing
{
/// Held by a test that switches between the wide and baseline bodies: lets the wide bodies
/// run again when the test ends, also when an assertion ends it halfway, so that the tests
/// after it in the same binary run as they would alone.
class WideVectorsRestored
{
public:
    WideVectorsRestored() = default;
    WideVectorsRestored(const WideVectorsRestored&) = delete;
    WideVectorsRestored& operator=(const WideVectorsRestored&) = delete;
    ~WideVectorsRestored() { ondo::simd::allowWideVectors(true); }
};
} // namespace tarvo::testing
