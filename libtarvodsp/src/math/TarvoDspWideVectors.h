#pragma once

// Default builds target the x86-64 and arm64 baselines, so that a binary runs on any machine.
// The few kernels that gain from wider vectors carry a second body compiled for AVX2 and
// pick it at run time through `useWideVectors`; this is the one place that knows how.
// AVX2 brings no FMA, so the wider bodies round every product and sum as the baseline does.

#include <atomic>
#include <type_traits>
#include <utility>

#if (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
#define ONDO_WIDE_VECTORS 1
/// Marks the body of a kernel compiled for AVX2; call it only when `useWideVectors()`.
#define ONDO_WIDE_VECTORS_TARGET __attribute__((target("avx2")))
#else
#define ONDO_WIDE_VECTORS 0
#define ONDO_WIDE_VECTORS_TARGET
#endif

/// For the helpers of a kernel: inlined into each body, so that each is compiled for the
/// instruction set of its caller.
#define ONDO_KERNEL_INLINE inline __attribute__((always_inline))

namespace ondo::simd
{
/// Four and eight floats in the compilers' portable vector types: element-wise operations
/// are the same IEEE operations as scalar. Four fill a register on the baseline (SSE on
/// x86-64, NEON on arm64), eight in an AVX2 body.
using Floats4 = float __attribute__((vector_size(16)));
using Floats8 = float __attribute__((vector_size(32)));

/// A float, or a vector of floats: what the loads and stores below move.
template <typename V>
constexpr bool holdsFloats()
{
    if constexpr (std::is_same_v<V, float>)
        return true;
    else
        return std::is_same_v<std::remove_cvref_t<decltype(std::declval<V&>()[0])>, float>;
}

// Unaligned. Vectors pass by reference: a wide vector by value would change the baseline's ABI.
// They move as floats rather than through memcpy, which may write anything: a kernel's arrays
// of channel pointers then stay in registers across its stores instead of being read again
// after each one.
template <typename V>
ONDO_KERNEL_INLINE void load(V& v, const float* p)
{
    static_assert(holdsFloats<V>());
    // A local typedef: clang drops the lowered alignment from an alias template.
    typedef V Unaligned __attribute__((aligned(alignof(float))));
    v = *reinterpret_cast<const Unaligned*>(p);
}

template <typename V>
ONDO_KERNEL_INLINE void store(float* p, const V& v)
{
    static_assert(holdsFloats<V>());
    typedef V Unaligned __attribute__((aligned(alignof(float))));
    *reinterpret_cast<Unaligned*>(p) = v;
}

namespace detail
{
/// The processor has AVX2 and `allowWideVectors` did not turn it off.
extern std::atomic<bool> wideVectorsInUse;
} // namespace detail

/// Whether the AVX2 bodies run: the processor has AVX2, unless `allowWideVectors(false)`.
/// Any thread; real-time safe (a relaxed load, inline: every kernel call asks).
inline bool useWideVectors()
{
    return detail::wideVectorsInUse.load(std::memory_order_relaxed);
}
/// Lets the AVX2 bodies run where the processor has them, or keeps the baseline bodies, for
/// tests and benchmarks that compare them. Any thread.
void allowWideVectors(bool allowed);
/// Whether the processor has AVX2, asked once at load.
bool processorHasWideVectors();
} // namespace ondo::simd
