#pragma once

#include <cstddef>
#include <cstdint>

namespace ondo::primitives
{
/// The primitives' own allocator, for biquad states only. Null for a length below 1 or a
/// byte size above 2^31 - 1. Control thread only.
std::uint8_t* allocateBytes(int n);
float* allocateFloats(int n);
void freeMemory(void* p);
} // namespace ondo::primitives
