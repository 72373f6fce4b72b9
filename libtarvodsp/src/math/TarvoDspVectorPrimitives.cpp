#include "math/TarvoDspVectorPrimitives.h"

#include "math/TarvoDspWideVectors.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

// Plain loops: the compiler vectorises them at -O3 without any intrinsic. The one kernel
// that holds a run in registers spells its vectors out, with a wider body for AVX2.

namespace ondo::primitives
{
namespace
{
template <typename... Pointers>
Status check(int n, const Pointers*... pointers)
{
    if ((!pointers || ...))
        return nullPointer;
    if (n < 1)
        return badLength;
    return done;
}

template <typename T>
Status set(T value, T* dst, int n)
{
    if (const Status s = check(n, dst); s != done)
        return s;
    std::fill(dst, dst + n, value);
    return done;
}

template <typename T>
Status zero(T* dst, int n)
{
    if (const Status s = check(n, dst); s != done)
        return s;
    std::memset(dst, 0, static_cast<std::size_t>(n) * sizeof(T));
    return done;
}

template <typename T>
Status copy(const T* src, T* dst, int n)
{
    if (const Status s = check(n, src, dst); s != done)
        return s;
    if (src != dst)
        std::memmove(dst, src, static_cast<std::size_t>(n) * sizeof(T));
    return done;
}

// dst[i] = op(dst[i], src[i]): the in-place arithmetic family.
template <typename T, typename Operation>
Status inPlace(const T* src, T* dst, int n, Operation op)
{
    if (const Status s = check(n, src, dst); s != done)
        return s;
    for (int i = 0; i < n; ++i)
        dst[i] = op(dst[i], src[i]);
    return done;
}

// dst[i] = op(a[i], b[i]).
template <typename T, typename Operation>
Status outOfPlace(const T* a, const T* b, T* dst, int n, Operation op)
{
    if (const Status s = check(n, a, b, dst); s != done)
        return s;
    for (int i = 0; i < n; ++i)
        dst[i] = op(a[i], b[i]);
    return done;
}

constexpr auto plus = [](auto x, auto y) { return x + y; };
constexpr auto minus = [](auto x, auto y) { return x - y; };
constexpr auto times = [](auto x, auto y) { return x * y; };

template <typename T>
Status multiplyConstantInPlace(T value, T* dst, int n)
{
    if (const Status s = check(n, dst); s != done)
        return s;
    if (value == T(1))
        return done;
    if (value == T(0))
        return zero(dst, n);
    for (int i = 0; i < n; ++i)
        dst[i] *= value;
    return done;
}

template <typename T>
ONDO_KERNEL_INLINE void scale(const T* src, T value, T* dst, int n)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i] * value;
}

#if ONDO_WIDE_VECTORS
/// Gains on whole channels run in every block of the room, so they have an AVX2 body.
ONDO_WIDE_VECTORS_TARGET void scaleWide(const float* src, float value, float* dst, int n)
{
    scale(src, value, dst, n);
}
#endif

template <typename T>
Status multiplyConstant(const T* src, T value, T* dst, int n)
{
    if (const Status s = check(n, src, dst); s != done)
        return s;
    if (value == T(1))
        return copy(src, dst, n);
    if (value == T(0))
        return zero(dst, n);
#if ONDO_WIDE_VECTORS
    if constexpr (std::is_same_v<T, float>)
        if (simd::useWideVectors())
        {
            scaleWide(src, value, dst, n);
            return done;
        }
#endif
    scale(src, value, dst, n);
    return done;
}


template <typename T>
Status dot(const T* a, const T* b, int n, T* result)
{
    if (const Status s = check(n, a, b, result); s != done)
        return s;
    double sum = 0.0;
    for (int i = 0; i < n; ++i)
        sum += static_cast<double>(a[i]) * static_cast<double>(b[i]);
    *result = static_cast<T>(sum);
    return done;
}
/// The sums of `vectorAddProductsConstant32` over `numVectors` vectors from `i`, which stay
/// in registers while every source adds into them. With `fromZero` the sums start with the
/// first product (at 0 when there is none) instead of at `dst`, which is then only written.
template <typename V, int numVectors, bool fromZero>
ONDO_KERNEL_INLINE void addProductsRun(const float* const* srcs, const float* values, int count, float* dst, int i)
{
    constexpr int width = static_cast<int>(sizeof(V) / sizeof(float));
    // From zero, the first source's products are the sums' start, so the terms go on from
    // the second.
    const bool firstWritten = fromZero && count > 0;
    V sums[numVectors];
#pragma GCC unroll 8
    for (int v = 0; v < numVectors; ++v)
    {
        if (firstWritten)
        {
            simd::load(sums[v], srcs[0] + i + v * width);
            sums[v] *= values[0];
        }
        else if constexpr (fromZero)
            sums[v] = V{};
        else
            simd::load(sums[v], dst + i + v * width);
    }
    for (int k = firstWritten ? 1 : 0; k < count; ++k)
    {
        const float* src = srcs[k] + i;
        const float value = values[k];
#pragma GCC unroll 8
        for (int v = 0; v < numVectors; ++v)
        {
            V x;
            simd::load(x, src + v * width);
            sums[v] += x * value;
        }
    }
#pragma GCC unroll 8
    for (int v = 0; v < numVectors; ++v)
        simd::store(dst + i + v * width, sums[v]);
}

/// Vectors in a long run: enough independent sums to hide the latency of the additions.
constexpr int longRun = 8;

/// The sums of `addProductsRun` for every set, run by run: long runs, then single vectors.
/// Each set's pass over a run is short, so its setup is kept to the fields it reads. Each
/// sample's sum is the same whichever run it falls in. Returns where the vectors end.
template <typename V, bool fromZero>
ONDO_KERNEL_INLINE int productsInRuns(const Products* sets, int numSets, int n)
{
    constexpr int width = static_cast<int>(sizeof(V) / sizeof(float));
    int i = 0;
    for (; i + longRun * width <= n; i += longRun * width)
        for (int s = 0; s < numSets; ++s)
            addProductsRun<V, longRun, fromZero>(sets[s].srcs, sets[s].values, sets[s].count, sets[s].dst, i);
    for (; i + width <= n; i += width)
        for (int s = 0; s < numSets; ++s)
            addProductsRun<V, 1, fromZero>(sets[s].srcs, sets[s].values, sets[s].count, sets[s].dst, i);
    return i;
}

#if ONDO_WIDE_VECTORS
template <bool fromZero>
ONDO_WIDE_VECTORS_TARGET int productsInRunsWide(const Products* sets, int numSets, int n)
{
    return productsInRuns<simd::Floats8, fromZero>(sets, numSets, n);
}
#endif

/// The vectors of `sets`, in the wider body where the machine has it; returns where they end.
template <bool fromZero>
int productsInRunsOfEitherBody(const Products* sets, int numSets, int n)
{
#if ONDO_WIDE_VECTORS
    if (simd::useWideVectors())
        return productsInRunsWide<fromZero>(sets, numSets, n);
#endif
    return productsInRuns<simd::Floats4, fromZero>(sets, numSets, n);
}
} // namespace

Status vectorSet32(float value, float* dst, int n) { return set(value, dst, n); }
Status vectorSet64(double value, double* dst, int n) { return set(value, dst, n); }
Status vectorZero32(float* dst, int n) { return zero(dst, n); }
Status vectorZero64(double* dst, int n) { return zero(dst, n); }
Status vectorCopy32(const float* src, float* dst, int n) { return copy(src, dst, n); }
Status vectorCopy64(const double* src, double* dst, int n) { return copy(src, dst, n); }

Status vectorAddConstant64(double value, double* dst, int n)
{
    if (const Status s = check(n, dst); s != done)
        return s;
    if (value == 0.0)
        return done;
    for (int i = 0; i < n; ++i)
        dst[i] += value;
    return done;
}

Status vectorAdd32InPlace(const float* src, float* dst, int n) { return inPlace(src, dst, n, plus); }
Status vectorAdd64InPlace(const double* src, double* dst, int n) { return inPlace(src, dst, n, plus); }
Status vectorAdd32(const float* a, const float* b, float* dst, int n) { return outOfPlace(a, b, dst, n, plus); }
Status vectorSubtract32InPlace(const float* src, float* dst, int n) { return inPlace(src, dst, n, minus); }
Status vectorSubtract64InPlace(const double* src, double* dst, int n) { return inPlace(src, dst, n, minus); }
Status vectorSubtract32(const float* b, const float* a, float* dst, int n) { return outOfPlace(a, b, dst, n, minus); }
Status vectorSubtract64(const double* b, const double* a, double* dst, int n) { return outOfPlace(a, b, dst, n, minus); }

Status vectorMultiplyConstant32InPlace(float value, float* dst, int n)
{
    return multiplyConstantInPlace(value, dst, n);
}
Status vectorMultiplyConstant64InPlace(double value, double* dst, int n)
{
    return multiplyConstantInPlace(value, dst, n);
}
Status vectorMultiplyConstant32(const float* src, float value, float* dst, int n)
{
    return multiplyConstant(src, value, dst, n);
}
Status vectorMultiplyConstant64(const double* src, double value, double* dst, int n)
{
    return multiplyConstant(src, value, dst, n);
}

Status vectorMultiply32InPlace(const float* src, float* dst, int n) { return inPlace(src, dst, n, times); }
Status vectorMultiply64InPlace(const double* src, double* dst, int n) { return inPlace(src, dst, n, times); }

Status vectorAddProductConstant32(const float* src, float value, float* dst, int n)
{
    if (const Status s = check(n, src, dst); s != done)
        return s;
    for (int i = 0; i < n; ++i)
        dst[i] += src[i] * value;
    return done;
}

Status vectorAddProductsConstant32(const float* const* srcs, const float* values, int count, float* dst, int n)
{
    if (const Status s = check(n, srcs, values, dst); s != done)
        return s;
    const Products set{srcs, values, count, dst};
    int i = productsInRunsOfEitherBody<false>(&set, 1, n);
    for (; i < n; ++i)
    {
        float sum = dst[i];
        for (int k = 0; k < count; ++k)
            sum += srcs[k][i] * values[k];
        dst[i] = sum;
    }
    return done;
}

Status vectorProductsConstant32(const float* const* srcs, const float* values, int count, float* dst, int n)
{
    const Products set{srcs, values, count, dst};
    return vectorProductsConstant32(&set, 1, n);
}

Status vectorProductsConstant32(const Products* sets, int numSets, int n)
{
    if (const Status s = check(n, sets); s != done)
        return s;
    for (int s = 0; s < numSets; ++s)
        if (const Status c = check(n, sets[s].srcs, sets[s].values, sets[s].dst); c != done)
            return c;
    const int i = productsInRunsOfEitherBody<true>(sets, numSets, n);
    for (int s = 0; s < numSets; ++s)
    {
        const Products& set = sets[s];
        for (int j = i; j < n; ++j)
        {
            float sum = set.count > 0 ? set.srcs[0][j] * set.values[0] : 0.0f;
            for (int k = 1; k < set.count; ++k)
                sum += set.srcs[k][j] * set.values[k];
            set.dst[j] = sum;
        }
    }
    return done;
}

Status vectorAddProduct32(const float* a, const float* b, float* dst, int n)
{
    if (const Status s = check(n, a, b, dst); s != done)
        return s;
    for (int i = 0; i < n; ++i)
        dst[i] += a[i] * b[i];
    return done;
}

Status vectorSquareRoot32InPlace(float* dst, int n)
{
    if (const Status s = check(n, dst); s != done)
        return s;
    bool sawNegative = false;
    for (int i = 0; i < n; ++i)
        sawNegative |= dst[i] < 0.0f;
    for (int i = 0; i < n; ++i)
        dst[i] = dst[i] < 0.0f ? -std::numeric_limits<float>::quiet_NaN() : std::sqrt(dst[i]);
    return sawNegative ? squareRootOfNegative : done;
}

Status vectorReverse64InPlace(double* dst, int n)
{
    if (const Status s = check(n, dst); s != done)
        return s;
    std::reverse(dst, dst + n);
    return done;
}

Status vectorReverse64(const double* src, double* dst, int n)
{
    if (src == dst)
        return vectorReverse64InPlace(dst, n);
    if (const Status s = check(n, src, dst); s != done)
        return s;
    for (int i = 0; i < n; ++i)
        dst[n - 1 - i] = src[i];
    return done;
}

Status vectorConvert32To64(const float* src, double* dst, int n)
{
    if (const Status s = check(n, src, dst); s != done)
        return s;
    for (int i = 0; i < n; ++i)
        dst[i] = static_cast<double>(src[i]);
    return done;
}

Status vectorConvert64To32(const double* src, float* dst, int n)
{
    if (const Status s = check(n, src, dst); s != done)
        return s;
    constexpr double largest = std::numeric_limits<float>::max();
    // The clamp comes before the narrowing so that it stays defined; a NaN passes through.
    // Selects on values, not references, so that the loop stays branch-free and vectorises.
    for (int i = 0; i < n; ++i)
    {
        const double x = src[i];
        const double below = largest < x ? largest : x;
        dst[i] = static_cast<float>(below < -largest ? -largest : below);
    }
    return done;
}

Status vectorSum32(const float* src, int n, float* result, int /*hint*/)
{
    if (const Status s = check(n, src, result); s != done)
        return s;
    double sum = 0.0;
    for (int i = 0; i < n; ++i)
        sum += static_cast<double>(src[i]);
    *result = static_cast<float>(sum);
    return done;
}

Status vectorDot32(const float* a, const float* b, int n, float* result) { return dot(a, b, n, result); }
Status vectorDot64(const double* a, const double* b, int n, double* result) { return dot(a, b, n, result); }

Status vectorNormInfinity64(const double* src, int n, double* result)
{
    if (const Status s = check(n, src, result); s != done)
        return s;
    double largest = 0.0;
    for (int i = 0; i < n; ++i)
        largest = std::max(largest, std::abs(src[i]));
    *result = largest;
    return done;
}

Status vectorNormL2_64(const double* src, int n, double* result)
{
    if (const Status s = check(n, src, result); s != done)
        return s;
    double sum = 0.0;
    for (int i = 0; i < n; ++i)
        sum += src[i] * src[i];
    *result = std::sqrt(sum);
    return done;
}
} // namespace ondo::primitives
