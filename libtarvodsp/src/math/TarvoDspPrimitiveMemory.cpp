#include "math/TarvoDspPrimitiveMemory.h"

#include <limits>
#include <new>

namespace ondo::primitives
{
namespace
{
constexpr std::size_t memoryAlignment = 64;

void* allocate(long long bytes)
{
    if (bytes < 1 || bytes > std::numeric_limits<std::int32_t>::max())
        return nullptr;
    return ::operator new(static_cast<std::size_t>(bytes), std::align_val_t{memoryAlignment}, std::nothrow);
}
} // namespace

std::uint8_t* allocateBytes(int n)
{
    return static_cast<std::uint8_t*>(allocate(n));
}

float* allocateFloats(int n)
{
    return n < 1 ? nullptr : static_cast<float*>(allocate(static_cast<long long>(n) * sizeof(float)));
}

void freeMemory(void* p)
{
    if (p != nullptr)
        ::operator delete(p, std::align_val_t{memoryAlignment});
}
} // namespace ondo::primitives
