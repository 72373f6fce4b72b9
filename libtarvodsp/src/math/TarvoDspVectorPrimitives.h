#pragma once

#include "math/TarvoDspPrimitiveStatus.h"

#include <cstdint>

namespace ondo::primitives
{
// One-line vector operations on float (32) and double (64) arrays. Each returns
// `nullPointer` for a null array and `badLength` for n below 1, touching nothing.
// All are real-time safe: no allocation, no system call. Arrays need not be aligned;
// where an operation has a source and a destination they may be the same array.

Status vectorSet32(float value, float* dst, int n);
Status vectorSet64(double value, double* dst, int n);
Status vectorZero32(float* dst, int n);
Status vectorZero64(double* dst, int n);
Status vectorCopy32(const float* src, float* dst, int n);
Status vectorCopy64(const double* src, double* dst, int n);
/// dst[i] += value; a value of 0 returns at once.
Status vectorAddConstant64(double value, double* dst, int n);
Status vectorAdd32InPlace(const float* src, float* dst, int n);
Status vectorAdd64InPlace(const double* src, double* dst, int n);
Status vectorAdd32(const float* a, const float* b, float* dst, int n);
Status vectorSubtract32InPlace(const float* src, float* dst, int n);
Status vectorSubtract64InPlace(const double* src, double* dst, int n);
/// dst[i] = a[i] - b[i]: the subtrahend comes first.
Status vectorSubtract32(const float* b, const float* a, float* dst, int n);
Status vectorSubtract64(const double* b, const double* a, double* dst, int n);
/// dst[i] *= value; a value of 1 leaves the data untouched (NaNs stay), 0 zeroes.
Status vectorMultiplyConstant32InPlace(float value, float* dst, int n);
Status vectorMultiplyConstant64InPlace(double value, double* dst, int n);
/// dst[i] = src[i] * value; 1 is a copy, 0 a zeroing.
Status vectorMultiplyConstant32(const float* src, float value, float* dst, int n);
Status vectorMultiplyConstant64(const double* src, double value, double* dst, int n);
Status vectorMultiply32InPlace(const float* src, float* dst, int n);
Status vectorMultiply64InPlace(const double* src, double* dst, int n);
/// dst[i] += src[i] * value: the matrix mix.
Status vectorAddProductConstant32(const float* src, float value, float* dst, int n);
/// dst[i] += srcs[0][i] * values[0], then += srcs[1][i] * values[1], and so on: the same sums
/// as `count` calls of `vectorAddProductConstant32` in that order, with `dst` read and written
/// once. No source may be `dst`. A `count` of 0 leaves `dst` as it is.
Status vectorAddProductsConstant32(const float* const* srcs, const float* values, int count, float* dst, int n);
/// dst[i] = srcs[0][i] * values[0] + srcs[1][i] * values[1] ..., 0 for a `count` of 0: the
/// sums of `vectorAddProductsConstant32` into a zeroed `dst`, in one pass that never reads
/// `dst`. Equal values; only a sum of negative zeros keeps its sign, as the first product
/// is written rather than added to 0.
Status vectorProductsConstant32(const float* const* srcs, const float* values, int count, float* dst, int n);
/// The arguments of one `vectorProductsConstant32`.
struct Products
{
    const float* const* srcs;
    const float* values;
    int count;
    float* dst;
};
/// `vectorProductsConstant32` of each of `numSets` sets in turn, in one call: a mix that
/// writes many outputs pays for the call and the checks once. Touches nothing when a set
/// fails its checks.
Status vectorProductsConstant32(const Products* sets, int numSets, int n);
/// dst[i] += a[i] * b[i].
Status vectorAddProduct32(const float* a, const float* b, float* dst, int n);
/// A negative element becomes a quiet NaN with the sign bit set; the others go on,
/// and `squareRootOfNegative` is returned at the end.
Status vectorSquareRoot32InPlace(float* dst, int n);
/// dst[n-1-i] = src[i]; the same array reverses in place.
Status vectorReverse64(const double* src, double* dst, int n);
Status vectorReverse64InPlace(double* dst, int n);
Status vectorConvert32To64(const float* src, double* dst, int n);
/// Values beyond the float range become plus or minus the largest float, never infinity.
Status vectorConvert64To32(const double* src, float* dst, int n);
/// Accumulates in double; `hint` is accepted for compatibility and ignored.
Status vectorSum32(const float* src, int n, float* result, int hint);
Status vectorDot32(const float* a, const float* b, int n, float* result);
Status vectorDot64(const double* a, const double* b, int n, double* result);
Status vectorNormInfinity64(const double* src, int n, double* result);
Status vectorNormL2_64(const double* src, int n, double* result);
} // namespace ondo::primitives
