#include "math/TarvoDspBiquadPrimitive.h"
#include "math/TarvoDspDenormals.h"
#include "math/TarvoDspPrimitiveMemory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using namespace ondo::primitives;

namespace
{
bool isDenormal(float x)
{
    return x != 0.0f && std::fpclassify(x) == FP_SUBNORMAL;
}

/// Runs a loud burst and then long silence through a slowly decaying resonator and
/// reports whether any output or state ever fell in the denormal range.
bool burstThenSilenceProducesDenormals()
{
    const std::vector<float> taps = {1.0f, 0.0f, 0.0f, 1.0f, -1.98f, 0.9801f}; // double pole at 0.99
    int size = 0;
    biquadGetStateSize(1, &size);
    std::uint8_t* memory = allocateBytes(size);
    BiquadState* handle = nullptr;
    biquadInit(&handle, taps.data(), 1, nullptr, memory);
    std::vector<float> block(64, 1000.0f);
    bool sawDenormal = false;
    for (int b = 0; b < 2000 && !sawDenormal; ++b)
    {
        biquadProcess(block.data(), block.data(), 64, handle);
        float line[2];
        biquadGetDelayLine(handle, line);
        for (float y : block)
            sawDenormal |= isDenormal(y);
        sawDenormal |= isDenormal(line[0]) || isDenormal(line[1]);
        std::fill(block.begin(), block.end(), 0.0f);
    }
    freeMemory(memory);
    return sawDenormal;
}

class Denormals : public testing::Test
{
protected:
    void TearDown() override { setDenormalsAreZero(wasOn); }
    bool wasOn = areDenormalsZero();
};

TEST_F(Denormals, ModeCanBeSetAndCleared)
{
    ASSERT_EQ(setDenormalsAreZero(true), done);
    EXPECT_TRUE(areDenormalsZero());
    volatile float tiny = std::numeric_limits<float>::min();
    volatile float half = tiny * 0.5f;
    EXPECT_EQ(half, 0.0f) << "a result below the normal range is flushed";
    setDenormalsAreZero(false);
    EXPECT_FALSE(areDenormalsZero());
    half = tiny * 0.5f;
    EXPECT_NE(half, 0.0f);
}

TEST_F(Denormals, RecursiveFilterFedSilenceStaysOutOfDenormalRange)
{
    setDenormalsAreZero(false);
    ASSERT_TRUE(burstThenSilenceProducesDenormals()) << "without the mode the decay must reach denormals";
    setDenormalsAreZero(true);
    EXPECT_FALSE(burstThenSilenceProducesDenormals());
}
} // namespace
