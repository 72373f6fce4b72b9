#include "math/TarvoDspDenormals.h"

#include <cstdint>

#if defined(__x86_64__) || defined(_M_X64) || defined(__i386__)
#include <xmmintrin.h>
#define ONDO_DENORMALS_SSE 1
#elif defined(__aarch64__)
#define ONDO_DENORMALS_ARM64 1
#endif

namespace ondo::primitives
{
#if ONDO_DENORMALS_SSE
namespace
{
constexpr unsigned int denormalsAreZeroBit = 1u << 6;
constexpr unsigned int flushToZeroBit = 1u << 15;
constexpr unsigned int bothBits = denormalsAreZeroBit | flushToZeroBit;
} // namespace

Status setDenormalsAreZero(bool enable)
{
    const unsigned int csr = _mm_getcsr();
    _mm_setcsr(enable ? (csr | bothBits) : (csr & ~bothBits));
    return done;
}

bool areDenormalsZero()
{
    return (_mm_getcsr() & bothBits) == bothBits;
}
#elif ONDO_DENORMALS_ARM64
namespace
{
constexpr std::uint64_t flushToZeroBit = 1ull << 24;

std::uint64_t readFpcr()
{
    std::uint64_t value;
    asm volatile("mrs %0, fpcr" : "=r"(value));
    return value;
}
} // namespace

Status setDenormalsAreZero(bool enable)
{
    const std::uint64_t fpcr = readFpcr();
    const std::uint64_t next = enable ? (fpcr | flushToZeroBit) : (fpcr & ~flushToZeroBit);
    asm volatile("msr fpcr, %0" : : "r"(next));
    return done;
}

bool areDenormalsZero()
{
    return (readFpcr() & flushToZeroBit) != 0;
}
#else
Status setDenormalsAreZero(bool)
{
    return denormalModeUnsupported;
}

bool areDenormalsZero()
{
    return false;
}
#endif
} // namespace ondo::primitives
