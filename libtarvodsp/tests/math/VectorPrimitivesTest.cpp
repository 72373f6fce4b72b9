#include "math/TarvoDspVectorPrimitives.h"

#include "WideVectorsRestored.h"
#include "math/TarvoDspWideVectors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

using namespace ondo::primitives;

namespace
{
std::vector<float> seededFloats(std::size_t n, unsigned seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<float> dist(-2.0f, 2.0f);
    std::vector<float> v(n);
    for (auto& x : v)
        x = dist(rng);
    return v;
}

TEST(VectorPrimitives, ZeroOrNegativeLengthChangesNothing)
{
    float f[4] = {1, 2, 3, 4};
    double d[4] = {1, 2, 3, 4};
    const float fs[4] = {9, 9, 9, 9};
    const double ds[4] = {9, 9, 9, 9};
    for (int n : {0, -1, -1000})
    {
        EXPECT_EQ(vectorSet32(7.0f, f, n), badLength);
        EXPECT_EQ(vectorZero64(d, n), badLength);
        EXPECT_EQ(vectorCopy32(fs, f, n), badLength);
        EXPECT_EQ(vectorAdd32(fs, fs, f, n), badLength);
        EXPECT_EQ(vectorSubtract64(ds, ds, d, n), badLength);
        EXPECT_EQ(vectorMultiplyConstant32InPlace(0.0f, f, n), badLength);
        EXPECT_EQ(vectorAddProductConstant32(fs, 2.0f, f, n), badLength);
        EXPECT_EQ(vectorConvert32To64(fs, d, n), badLength);
        EXPECT_EQ(vectorReverse64InPlace(d, n), badLength);
    }
    EXPECT_EQ(f[0], 1.0f);
    EXPECT_EQ(f[3], 4.0f);
    EXPECT_EQ(d[0], 1.0);
    EXPECT_EQ(d[3], 4.0);
}

TEST(VectorPrimitives, NullPointerIsReported)
{
    float f[2] = {};
    EXPECT_EQ(vectorCopy32(nullptr, f, 2), nullPointer);
    EXPECT_EQ(vectorAdd32(f, nullptr, f, 2), nullPointer);
    float result = 0;
    EXPECT_EQ(vectorSum32(nullptr, 2, &result, 2), nullPointer);
}

// Each operation against a naive loop in double on seeded data, with an odd length so
// that vector loop remainders are exercised.
TEST(VectorPrimitives, ArithmeticMatchesNaiveLoops)
{
    constexpr int n = 37;
    const auto a = seededFloats(n, 1);
    const auto b = seededFloats(n, 2);
    std::vector<float> dst(n);

    vectorAdd32(a.data(), b.data(), dst.data(), n);
    for (int i = 0; i < n; ++i)
        EXPECT_EQ(dst[i], a[i] + b[i]);

    vectorSubtract32(b.data(), a.data(), dst.data(), n);
    for (int i = 0; i < n; ++i)
        EXPECT_EQ(dst[i], a[i] - b[i]) << "the subtrahend comes first";

    dst = a;
    vectorAddProductConstant32(b.data(), 0.25f, dst.data(), n);
    for (int i = 0; i < n; ++i)
        EXPECT_FLOAT_EQ(dst[i], a[i] + b[i] * 0.25f);

    dst = a;
    vectorAddProduct32(a.data(), b.data(), dst.data(), n);
    for (int i = 0; i < n; ++i)
        EXPECT_FLOAT_EQ(dst[i], a[i] + a[i] * b[i]);

    dst = a;
    vectorMultiply32InPlace(b.data(), dst.data(), n);
    for (int i = 0; i < n; ++i)
        EXPECT_EQ(dst[i], a[i] * b[i]);

    vectorMultiplyConstant32(a.data(), -3.0f, dst.data(), n);
    for (int i = 0; i < n; ++i)
        EXPECT_EQ(dst[i], a[i] * -3.0f);

    dst = a;
    vectorSubtract32InPlace(b.data(), dst.data(), n);
    vectorAdd32InPlace(b.data(), dst.data(), n);
    for (int i = 0; i < n; ++i)
        EXPECT_FLOAT_EQ(dst[i], a[i]);

    double dot = 0, sum = 0;
    for (int i = 0; i < n; ++i)
    {
        dot += static_cast<double>(a[i]) * b[i];
        sum += a[i];
    }
    float result = 0;
    vectorDot32(a.data(), b.data(), n, &result);
    EXPECT_NEAR(result, dot, 1e-5);
    vectorSum32(a.data(), n, &result, 2);
    EXPECT_NEAR(result, sum, 1e-5);
}

TEST(VectorPrimitives, DoubleOperations)
{
    double d[5] = {1, -4, 2, 0.5, 3};
    double e[5] = {};
    vectorReverse64(d, e, 5);
    EXPECT_EQ(e[0], 3.0);
    EXPECT_EQ(e[4], 1.0);
    vectorReverse64(e, e, 5); // the same array reverses in place
    EXPECT_EQ(e[0], 1.0);
    EXPECT_EQ(e[1], -4.0);

    double norm = 0;
    vectorNormInfinity64(d, 5, &norm);
    EXPECT_EQ(norm, 4.0);
    vectorNormL2_64(d, 5, &norm);
    EXPECT_DOUBLE_EQ(norm, std::sqrt(1 + 16 + 4 + 0.25 + 9));

    vectorAddConstant64(1.5, d, 5);
    EXPECT_EQ(d[1], -2.5);
    vectorMultiplyConstant64InPlace(2.0, d, 5);
    EXPECT_EQ(d[1], -5.0);
    vectorSubtract64InPlace(d, d, 5);
    EXPECT_EQ(d[4], 0.0);
}

TEST(VectorPrimitives, MultiplyByOneLeavesNaNsAlone)
{
    float x[3] = {std::numeric_limits<float>::quiet_NaN(), 1.0f, -0.0f};
    vectorMultiplyConstant32InPlace(1.0f, x, 3);
    EXPECT_TRUE(std::isnan(x[0]));
    EXPECT_TRUE(std::signbit(x[2]));
    vectorMultiplyConstant32InPlace(0.0f, x, 3); // a zeroing, NaN included
    EXPECT_EQ(x[0], 0.0f);
}

TEST(VectorPrimitives, NarrowingClampsToLargestFloat)
{
    const double src[4] = {1e300, -1e300, 0.1, std::numeric_limits<double>::infinity()};
    float dst[4] = {};
    vectorConvert64To32(src, dst, 4);
    EXPECT_EQ(dst[0], std::numeric_limits<float>::max());
    EXPECT_EQ(dst[1], -std::numeric_limits<float>::max());
    EXPECT_EQ(dst[2], 0.1f);
    EXPECT_EQ(dst[3], std::numeric_limits<float>::max());
}

TEST(VectorPrimitives, SquareRootOfNegativeGoesOnAndWarnsAtTheEnd)
{
    float x[4] = {4.0f, -1.0f, 9.0f, 0.0f};
    EXPECT_EQ(vectorSquareRoot32InPlace(x, 4), squareRootOfNegative);
    EXPECT_EQ(x[0], 2.0f);
    EXPECT_TRUE(std::isnan(x[1]));
    EXPECT_TRUE(std::signbit(x[1]));
    EXPECT_EQ(x[2], 3.0f);
    EXPECT_EQ(vectorSquareRoot32InPlace(x + 2, 2), done);
}

TEST(VectorPrimitives, SetZeroCopyOnUnalignedPointers)
{
    std::vector<double> storage(9, 5.0);
    vectorZero64(storage.data() + 1, 7);
    EXPECT_EQ(storage[0], 5.0);
    EXPECT_EQ(storage[1], 0.0);
    EXPECT_EQ(storage[7], 0.0);
    EXPECT_EQ(storage[8], 5.0);
    vectorSet64(-1.0, storage.data() + 3, 2);
    EXPECT_EQ(storage[4], -1.0);
    std::vector<double> copy(9);
    vectorCopy64(storage.data(), copy.data(), 9);
    EXPECT_EQ(copy, storage);
}
} // namespace

TEST(VectorPrimitives, SeveralProductsAddAsTheSameSumsInOrder)
{
    const tarvo::testing::WideVectorsRestored wideAfterwards;
    // 77 samples cover the long runs held in registers, single vectors and the tail, in
    // either body. Every buffer starts one float past the allocation's alignment, where an
    // aligned vector move would fault.
    constexpr int n = 77;
    const auto start = seededFloats(n, 7);
    const auto offAlignment = [](std::vector<float> v) {
        v.insert(v.begin(), -99.0f);
        return v;
    };
    const std::vector<std::vector<float>> sources{offAlignment(seededFloats(n, 8)), offAlignment(seededFloats(n, 9)),
                                                  offAlignment(seededFloats(n, 10))};
    const float gains[] = {0.3f, -1.7f, 0.0625f};
    const float* pointers[] = {sources[0].data() + 1, sources[1].data() + 1, sources[2].data() + 1};
    const auto source = [&](int k, int i) { return sources[k][i + 1]; };
    for (const bool wide : {false, true})
    {
        ondo::simd::allowWideVectors(wide);
        std::vector<float> fused = offAlignment(start);
        ASSERT_EQ(vectorAddProductsConstant32(pointers, gains, 3, fused.data() + 1, n), done);
        for (int i = 0; i < n; ++i)
        {
            float expected = start[i];
            for (int k = 0; k < 3; ++k)
                expected = expected + source(k, i) * gains[k];
            EXPECT_EQ(fused[i + 1], expected) << "sample " << i << (wide ? ", wide body" : "");
        }
        EXPECT_EQ(fused[0], -99.0f);
        std::vector<float> untouched = offAlignment(start);
        EXPECT_EQ(vectorAddProductsConstant32(pointers, gains, 0, untouched.data() + 1, n), done);
        EXPECT_EQ(untouched, offAlignment(start));
        // Written rather than added to: the sums start with the first product, whatever the
        // output held, and at 0 without one.
        std::vector<float> written = offAlignment(start);
        ASSERT_EQ(vectorProductsConstant32(pointers, gains, 3, written.data() + 1, n), done);
        for (int i = 0; i < n; ++i)
            EXPECT_EQ(written[i + 1], (source(0, i) * gains[0] + source(1, i) * gains[1]) + source(2, i) * gains[2])
                << "sample " << i << (wide ? ", wide body" : "");
        EXPECT_EQ(vectorProductsConstant32(pointers, gains, 0, written.data() + 1, n), done);
        written.erase(written.begin());
        EXPECT_EQ(written, std::vector<float>(n, 0.0f));
        // So a sum of negative zeros is -0 (from 0 it would be +0), in every run alike.
        const std::vector<float> ones(n, 1.0f);
        const float* onesTwice[] = {ones.data(), ones.data()};
        const float negativeZeros[] = {-0.0f, -0.0f};
        ASSERT_EQ(vectorProductsConstant32(onesTwice, negativeZeros, 2, written.data(), n), done);
        for (int i = 0; i < n; ++i)
            EXPECT_TRUE(written[i] == 0.0f && std::signbit(written[i])) << "sample " << i << (wide ? ", wide" : "");
        // Several outputs in one call: each gets its own sums, as alone; one bad set stops all.
        std::vector<float> first = offAlignment(start), second = offAlignment(start);
        const Products sets[] = {{pointers + 1, gains + 1, 2, first.data() + 1},
                                 {pointers, gains, 1, second.data() + 1}};
        const Products unusable[] = {sets[0], {pointers, gains, 1, nullptr}};
        EXPECT_EQ(vectorProductsConstant32(unusable, 2, n), nullPointer);
        EXPECT_EQ(first, offAlignment(start));
        ASSERT_EQ(vectorProductsConstant32(sets, 2, n), done);
        for (int i = 0; i < n; ++i)
            EXPECT_EQ(first[i + 1], (0.0f + source(1, i) * gains[1]) + source(2, i) * gains[2]) << "sample " << i;
        for (int i = 0; i < n; ++i)
            EXPECT_EQ(second[i + 1], 0.0f + source(0, i) * gains[0]) << "sample " << i;
    }
}
